# Exports a program of each method and has the compiler check them all.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " command "${ARGV}")
    message(FATAL_ERROR "${command}\nended with ${result}\n${output}")
  endif()
endfunction()

separate_arguments(flags NATIVE_COMMAND "${FLAGS}")
run("${EXPORTER}" "${SOURCE}")
run("${COMPILER}" ${flags} -std=c++20 -fsyntax-only "-I${ROOT}" "${SOURCE}")
