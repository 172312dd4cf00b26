# Runs the program once and compares what it prints with golden files, byte for byte.
#   PROGRAM     the program
#   ARGS        its arguments, separated by "^"
#   WORKDIR     the folder it runs in
#   STATUS      the exit status it must give
#   OUT         golden standard output (optional: then standard output must be empty)
#   ERR         golden standard error (optional)
#   ERR_REGEX   a pattern standard error must match (optional)
#   SCRATCH     where the outputs are kept for a look after a failure
string(REPLACE "^" ";" arguments "${ARGS}")
get_filename_component(name "${OUT}${ERR}" NAME)
set(out "${SCRATCH}/${name}.stdout")
set(err "${SCRATCH}/${name}.stderr")
file(MAKE_DIRECTORY "${SCRATCH}")
file(REMOVE "${SCRATCH}/registry.reg")
execute_process(COMMAND "${PROGRAM}" ${arguments}
  WORKING_DIRECTORY "${WORKDIR}"
  OUTPUT_FILE "${out}" ERROR_FILE "${err}" RESULT_VARIABLE status)

set(failures "")
if(NOT status STREQUAL STATUS)
  file(READ "${err}" errors)
  string(APPEND failures "exit status ${status}, expected ${STATUS}; standard error:\n${errors}\n")
endif()

function(compare_with golden actual stream)
  if(NOT golden)
    file(SIZE "${actual}" size)
    if(NOT size EQUAL 0)
      file(READ "${actual}" text)
      set(failures "${failures}${stream} should be empty but holds:\n${text}\n" PARENT_SCOPE)
    endif()
    return()
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${golden}" "${actual}"
    RESULT_VARIABLE differs)
  if(differs)
    execute_process(COMMAND diff -u "${golden}" "${actual}" OUTPUT_VARIABLE diff)
    set(failures "${failures}${stream} differs from ${golden}:\n${diff}\n" PARENT_SCOPE)
  endif()
endfunction()

compare_with("${OUT}" "${out}" "standard output")
if(ERR)
  compare_with("${ERR}" "${err}" "standard error")
elseif(ERR_REGEX)
  file(READ "${err}" errors)
  if(NOT errors MATCHES "${ERR_REGEX}")
    string(APPEND failures "standard error does not match '${ERR_REGEX}':\n${errors}\n")
  endif()
endif()

# A clock chosen on the command line lives in a registry file of the run's own: the device's
# store (MAILSLICE_REGISTRY, in SCRATCH) is never written for it.
if(arguments MATCHES "--(12|24)h" AND EXISTS "${SCRATCH}/registry.reg")
  string(APPEND failures "the device's registry store was written\n")
endif()

if(failures)
  message(FATAL_ERROR "mailslice ${arguments}\n${failures}")
endif()
