# Fails when the program's shared libraries include Qt.
# Run as: cmake -DPROGRAM=<path> -P noqt.cmake
execute_process(COMMAND ldd ${PROGRAM} OUTPUT_VARIABLE libs RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "ldd failed on ${PROGRAM}")
endif()
if(libs MATCHES "[Qq]t[0-9]" OR libs MATCHES "libQt")
  message(FATAL_ERROR "${PROGRAM} links Qt:\n${libs}")
endif()
message(STATUS "no Qt in ${PROGRAM}")
