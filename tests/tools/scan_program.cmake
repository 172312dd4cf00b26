# mailslice scan over a folder of good, broken and unreadable messages: the lines, the exit
# status and the summary; the progress bar only when standard error is a terminal.
#   PROGRAM, SOURCE (data/program/scan), GOLDEN (its expected output), SCRATCH
set(folder "${SCRATCH}/scan")
file(REMOVE_RECURSE "${SCRATCH}")
file(MAKE_DIRECTORY "${SCRATCH}")
file(COPY "${SOURCE}/" DESTINATION "${folder}")

# What no repository can hold: a file over the limit of device type 3, a link to nothing and a
# named pipe (which must be reported, not opened: a read would wait for ever).
string(REPEAT "x" 4500000 filler)
file(WRITE "${folder}/archive/too-large.eml" "Subject: big\r\n\r\n${filler}")
file(CREATE_LINK "${folder}/archive/gone" "${folder}/archive/link-to-nothing.eml" SYMBOLIC)
execute_process(COMMAND mkfifo "${folder}/archive/pipe.eml" RESULT_VARIABLE no_fifo)
if(no_fifo)
  message(FATAL_ERROR "mkfifo failed")
endif()

execute_process(COMMAND "${PROGRAM}" scan --device-type 3 --24h . no-such.eml
  WORKING_DIRECTORY "${folder}"
  OUTPUT_FILE "${SCRATCH}/scan.stdout" ERROR_VARIABLE errors RESULT_VARIABLE status)
if(NOT status EQUAL 7)
  message(FATAL_ERROR "scan gave exit status ${status}, expected 7:\n${errors}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${GOLDEN}" "${SCRATCH}/scan.stdout"
  RESULT_VARIABLE differs)
if(differs)
  execute_process(COMMAND diff -u "${GOLDEN}" "${SCRATCH}/scan.stdout" OUTPUT_VARIABLE diff)
  message(FATAL_ERROR "scan lines differ from ${GOLDEN}:\n${diff}")
endif()
# Standard error is a pipe here: the summary alone, no bar.
if(NOT errors MATCHES "^mailslice: 10 messages, 6 could not be read, [0-9]+\\.[0-9][0-9] s\n$")
  message(FATAL_ERROR "unexpected standard error:\n${errors}")
endif()

# On a terminal, a long scan draws its bar there, and takes it off before the summary.
find_program(SCRIPT script)
if(NOT SCRIPT)
  message(STATUS "no 'script' to make a terminal: the bar on a terminal is not checked")
  return()
endif()
file(MAKE_DIRECTORY "${SCRATCH}/many")
foreach(index RANGE 1 120)
  file(COPY_FILE "${SOURCE}/Maildir/new/1231229700.M2P101.mailhost" "${SCRATCH}/many/${index}.eml")
endforeach()
execute_process(COMMAND "${SCRIPT}" -qec "'${PROGRAM}' scan many >/dev/null" /dev/null
  WORKING_DIRECTORY "${SCRATCH}" INPUT_FILE /dev/null
  OUTPUT_VARIABLE terminal RESULT_VARIABLE status)
string(ASCII 27 escape)
if(NOT terminal MATCHES "\\[#+\\] 120/120 messages\r${escape}\\[Kmailslice: 120 messages, 0 could")
  message(FATAL_ERROR "no progress bar on the terminal (status ${status}):\n${terminal}")
endif()
