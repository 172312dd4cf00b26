# The program end to end: every example and every kind of failure, compared byte for byte with
# the golden files under data/program/ (each file is named after its test). The runs never reach
# the user's settings: no message files, a registry store and temporary folder of their own.
set(program_golden ${CMAKE_CURRENT_SOURCE_DIR}/data/program)
set(program_scratch ${CMAKE_CURRENT_BINARY_DIR}/program)

# program_case(NAME STATUS TZ ARGS... [OUT] [ERR] [ERR_REGEX]): OUT and ERR are flags naming
# the golden files NAME.out and NAME.err.
function(program_case name)
  cmake_parse_arguments(CASE "OUT;ERR" "STATUS;TZ;ERR_REGEX" "ARGS" ${ARGN})
  set(out "")
  set(err "")
  if(CASE_OUT)
    set(out ${program_golden}/${name}.out)
  endif()
  if(CASE_ERR)
    set(err ${program_golden}/${name}.err)
  endif()
  string(REPLACE ";" "^" arguments "${CASE_ARGS}")
  add_test(NAME program_${name}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:mailslice_tool> "-DARGS=${arguments}"
            -DWORKDIR=${PROJECT_SOURCE_DIR} -DSTATUS=${CASE_STATUS} -DOUT=${out} -DERR=${err}
            "-DERR_REGEX=${CASE_ERR_REGEX}" -DSCRATCH=${program_scratch}/${name}
            -P ${CMAKE_CURRENT_SOURCE_DIR}/tools/run_program.cmake)
  set_tests_properties(program_${name} PROPERTIES
    ENVIRONMENT "TZ=${CASE_TZ};MAILSLICE_REGISTRY=${program_scratch}/${name}/registry.reg;MAILSLICE_TEMP=${program_scratch}/${name}/temp"
    ENVIRONMENT_MODIFICATION
      "MAILSLICE_LANGUAGE=unset:;MAILSLICE_CODEPAGE=unset:;MAILSLICE_MESSAGES=unset:;MAILSLICE_DEVICE_TYPE=unset:")
endfunction()

# Each example as the README shows it, in the language and zone it was written for.
program_case(show_welcome OUT STATUS 0 TZ JST-9 ARGS show --12h examples/welcome.eml)
program_case(show_with_attachments OUT STATUS 0 TZ CET-1 ARGS show --24h examples/with-attachments.eml)
program_case(show_plain OUT STATUS 0 TZ EST5 ARGS show --12h examples/plain.eml)
program_case(show_japanese OUT STATUS 0 TZ JST-9 ARGS show --language 81 --12h examples/japanese.eml)
program_case(show_korean OUT STATUS 0 TZ KST-9 ARGS show --language 82 --12h examples/korean.eml)
program_case(show_russian OUT STATUS 0 TZ MSK-3
  ARGS show --language 7 --codepage KOI8-R --24h examples/russian.eml)
# Under English settings the KOI8-R words narrow to nothing and the body reads as Windows-1252.
program_case(show_russian_english OUT STATUS 0 TZ MSK-3 ARGS show --24h examples/russian.eml)
program_case(show_newsletter OUT STATUS 0 TZ UTC0 ARGS show --24h examples/newsletter.eml)
program_case(show_forwarded OUT STATUS 0 TZ CET-1 ARGS show --24h examples/forwarded.eml)
program_case(headers_japanese OUT STATUS 0 TZ JST-9
  ARGS headers --language 81 --24h examples/japanese.eml)
program_case(headers_raw_plain OUT STATUS 0 TZ EST5 ARGS headers --raw --24h examples/plain.eml)
program_case(body_korean OUT STATUS 0 TZ KST-9 ARGS body --language 82 examples/korean.eml)
program_case(attachments_forwarded OUT STATUS 0 TZ UTC0 ARGS attachments examples/forwarded.eml)

# One line naming the file and the problem, and the status --help gives for it.
program_case(error_missing_file ERR STATUS 1 TZ UTC0 ARGS show examples/no-such.eml)
program_case(error_folder ERR STATUS 3 TZ UTC0 ARGS headers examples)
program_case(error_not_a_message ERR STATUS 5 TZ UTC0
  ARGS body tests/data/program/scan/archive/notes.txt)
program_case(error_no_such_attachment ERR STATUS 1 TZ UTC0
  ARGS save examples/with-attachments.eml report.pdf missing.pdf -o ${program_scratch})
program_case(error_unknown_command STATUS 2 TZ UTC0 ERR_REGEX "^mailslice: .*frobnicate"
  ARGS frobnicate examples/welcome.eml)
program_case(error_both_clocks STATUS 2 TZ UTC0 ERR_REGEX "^mailslice: .*--12h"
  ARGS show --12h --24h examples/welcome.eml)
program_case(error_unknown_code_page STATUS 2 TZ UTC0 ERR_REGEX "^mailslice: .*unknown code page 'NO-SUCH'"
  ARGS show --codepage NO-SUCH examples/welcome.eml)

# scan over good, broken and unreadable messages, and its progress bar.
add_test(NAME program_scan_folder
  COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:mailslice_tool>
          -DSOURCE=${program_golden}/scan -DGOLDEN=${program_golden}/scan_folder.out
          -DSCRATCH=${program_scratch}/scan -P ${CMAKE_CURRENT_SOURCE_DIR}/tools/scan_program.cmake)
set_tests_properties(program_scan_folder PROPERTIES
  ENVIRONMENT "TZ=UTC0;MAILSLICE_TEMP=${program_scratch}/scan-temp"
  ENVIRONMENT_MODIFICATION
    "MAILSLICE_LANGUAGE=unset:;MAILSLICE_CODEPAGE=unset:;MAILSLICE_MESSAGES=unset:;MAILSLICE_DEVICE_TYPE=unset:")
