# Helpers shared by every subsystem's CMakeLists.txt.

# tessaly_library(NAME SOURCES... [DEPS ...]) : a static library of plain C++ logic (no Qt).
function(tessaly_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
endfunction()

# Puts an executable or shared library into the program folder.
function(tessaly_install_in_program_folder target)
  set_target_properties(${target} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${TESSALY_PROGRAM_DIR}
    LIBRARY_OUTPUT_DIRECTORY ${TESSALY_PROGRAM_DIR}
    BUILD_RPATH "$ORIGIN"
    INSTALL_RPATH "$ORIGIN")
endfunction()

# tessaly_test(NAME SOURCES... [DEPS ...]) : a GoogleTest executable registered with CTest.
# Tests find the built program folder through TESSALY_PROGRAM_DIR and the source tree
# (test data, examples) through TESSALY_SOURCE_DIR.
function(tessaly_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} tessaly_test_support GTest::gtest GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
