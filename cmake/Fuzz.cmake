# The hardening build (TESSALY_FUZZ=ON, clang only, a build folder of its own): every object
# carries AddressSanitizer, UndefinedBehaviorSanitizer and libFuzzer's coverage hooks, so one
# build serves both the fuzz targets and the readers' tests under the sanitizers.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "TESSALY_FUZZ needs clang (CC=clang CXX=clang++), found ${CMAKE_CXX_COMPILER_ID}")
endif()
set(tessaly_sanitizers address,undefined)
# Undefined behaviour stops the program, so that a fuzz target and a test both fail on it.
add_compile_options(-fsanitize=${tessaly_sanitizers},fuzzer-no-link -fno-sanitize-recover=all
                    -fno-omit-frame-pointer -gline-tables-only)
add_link_options(-fsanitize=${tessaly_sanitizers})
