# Writes a man page from its template, gzipped as Debian ships them:
#
#   cmake -DTEMPLATE=… -DOUTPUT=…gz [-DCOPPERWICK=path] -DPROJECT_VERSION=…
#         -DCOPPERWICK_RELEASE_DATE=… -P make_man_page.cmake
#
# With COPPERWICK, the page's list of commands is read from the program's own
# --help, so the page can't fall behind the commands it describes.
set(COPPERWICK_COMMANDS "")
if(COPPERWICK)
    execute_process(COMMAND ${COPPERWICK} --help OUTPUT_VARIABLE help RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${COPPERWICK} --help failed")
    endif()
    string(REGEX REPLACE "^.*\nSubcommands:\n" "" commands "${help}")
    string(REGEX REPLACE "\n\n.*$" "" commands "${commands}")
    string(REPLACE "\n" ";" lines "${commands}")
    foreach(line IN LISTS lines)
        if(line MATCHES "^  ([a-z-]+) +(.*)$")
            set(name "${CMAKE_MATCH_1}")
            set(words "${CMAKE_MATCH_2}")
            # troff reads a backslash as an escape and a bare hyphen as a
            # place it may break a word.
            string(REPLACE "\\" "\\e" words "${words}")
            string(REPLACE "-" "\\-" words "${words}")
            string(REPLACE "-" "\\-" name "${name}")
            string(APPEND COPPERWICK_COMMANDS ".TP\n.B ${name}\n${words}.\n")
        endif()
    endforeach()
    if(COPPERWICK_COMMANDS STREQUAL "")
        message(FATAL_ERROR "${COPPERWICK} --help listed no commands")
    endif()
    string(REGEX REPLACE "\n$" "" COPPERWICK_COMMANDS "${COPPERWICK_COMMANDS}")
endif()

string(REGEX REPLACE "\\.gz$" "" page "${OUTPUT}")
configure_file(${TEMPLATE} ${page} @ONLY)
file(REMOVE ${OUTPUT})
execute_process(COMMAND gzip -9n ${page} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "gzip ${page} failed")
endif()
