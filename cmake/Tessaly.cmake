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

# Test programs that start or kill engine processes. A cancel makes sure no engine outlives
# it by killing every engine process of the user, so these programs never run beside each
# other under ctest -j.
set(TESSALY_ENGINE_PROCESS_TESTS
  desktop_tests batch_tests batch_engine_run_tests engine_client_tests batch_forms_progress_tests
  qvxengine_tests platform_process_tests shell_program_tests
  rules_tests tsly_tests
  pool_engine_tests pool_command_tests pool_desktop_tests
  spreadsheet_engine_tests spreadsheet_desktop_tests
  aggregate_engine_tests aggregate_forms_tests
  genseries_cli_tests
  tsly_scale_tests)
list(APPEND TESSALY_ENGINE_PROCESS_TESTS desktop_overview_tests)
list(APPEND TESSALY_ENGINE_PROCESS_TESTS desktop_run_tests)
list(APPEND TESSALY_ENGINE_PROCESS_TESTS run_state_tests)

# tessaly_test(NAME SOURCES... [DEPS ...]) : a GoogleTest executable registered with CTest.
# Tests find the built program folder through TESSALY_PROGRAM_DIR and the source tree
# (test data, examples) through TESSALY_SOURCE_DIR.
function(tessaly_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} tessaly_test_support GTest::gtest GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  set(props TIMEOUT 300)
  if(name IN_LIST TESSALY_ENGINE_PROCESS_TESTS)
    list(APPEND props RESOURCE_LOCK engine_processes)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${props})
endfunction()

# The file readers and writers: a conversion that may change a number's sign fails the
# build (GCC; clang reports it as a warning), since their counts and offsets come from files.
function(tessaly_file_reader_sources)
  set_source_files_properties(${ARGN} DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} PROPERTIES
    COMPILE_OPTIONS "-Wsign-conversion;$<$<CXX_COMPILER_ID:GNU>:-Werror=sign-conversion>")
endfunction()
