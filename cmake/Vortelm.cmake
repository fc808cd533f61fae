# Shared build settings for every Vortelm target.

set(VORTELM_WARNINGS -Wall -Wextra -Wpedantic -Wnon-virtual-dtor)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND VORTELM_WARNINGS -Wshadow=local)  # gcc's spelling; clang has no "=local"
endif()
if(VORTELM_WERROR)
  list(APPEND VORTELM_WARNINGS -Werror)
endif()

# The fuzz build instruments every library for libFuzzer and checks it with
# ASan and UBSan; the fuzz targets add the libFuzzer main (fuzz/).
if(VORTELM_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(VORTELM_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  # gcc's flow analysis under the sanitizers reports std::regex and
  # std::function members as maybe uninitialised where they are not.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
  add_link_options(-fsanitize=address,undefined)
endif()

# vortelm_library(<name> SOURCES ... [DEPS ...])
# A library of one folder. Its headers are included as "<folder>/<file>.h"
# from the source root; the layering test checks that a folder includes only
# the folders below it.
function(vortelm_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_options(${name} PRIVATE ${VORTELM_WARNINGS})
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
endfunction()

# vortelm_program(<name> SOURCES ... [DEPS ...])
function(vortelm_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${VORTELM_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS})
  install(TARGETS ${name} RUNTIME DESTINATION bin)
endfunction()

# vortelm_test(<folder> SOURCES ... [DEPS ...])
# One GoogleTest program per folder; ctest names its cases "<folder>/Suite.Case".
function(vortelm_test folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  set(exe test_${folder})
  add_executable(${exe} ${ARG_SOURCES})
  target_compile_options(${exe} PRIVATE ${VORTELM_WARNINGS})
  target_link_libraries(${exe} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gtest_main)
  target_compile_definitions(${exe} PRIVATE
    VORTELM_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    VORTELM_BINARY_DIR="${PROJECT_BINARY_DIR}")
  gtest_discover_tests(${exe} TEST_PREFIX "${folder}/" DISCOVERY_TIMEOUT 120
    PROPERTIES TIMEOUT 300)
endfunction()
