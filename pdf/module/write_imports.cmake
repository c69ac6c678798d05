# Lists what the PDF writer module leaves for its program to define: the
# undefined dynamic symbols in copperwick's namespace. Writes OUTPUT.list, a
# linker dynamic list, and OUTPUT.options, one -u per symbol for the
# compiler driver's response file.
execute_process(COMMAND ${NM} --dynamic --undefined-only --format=just-symbols ${MODULE}
    OUTPUT_VARIABLE symbols RESULT_VARIABLE failed)
if(failed)
    message(FATAL_ERROR "${NM} couldn't read ${MODULE}")
endif()
string(REPLACE "\n" ";" symbols "${symbols}")
set(list "{\n")
set(options "")
foreach(symbol IN LISTS symbols)
    if(symbol MATCHES "^_Z[A-Z]*10copperwick")
        string(APPEND list "  ${symbol};\n")
        string(APPEND options "-Wl,-u,${symbol}\n")
    endif()
endforeach()
string(APPEND list "};\n")
# Written only when changed, so that an unchanged list relinks nothing.
file(CONFIGURE OUTPUT ${OUTPUT}.list CONTENT "${list}" @ONLY)
file(CONFIGURE OUTPUT ${OUTPUT}.options CONTENT "${options}" @ONLY)
