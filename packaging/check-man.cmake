# Fails when man(1) warns about a manual page: cmake -DMAN=man -DPAGE=x.1 -P check-man.cmake
execute_process(COMMAND ${CMAKE_COMMAND} -E env MANWIDTH=80 ${MAN} --warnings -E UTF-8 -l ${PAGE}
  RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE warnings)
if(NOT rc EQUAL 0 OR NOT warnings STREQUAL "")
  message(FATAL_ERROR "man --warnings on ${PAGE} (${rc}):\n${warnings}")
endif()
