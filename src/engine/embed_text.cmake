# cmake -DINPUT=<file> -DOUTPUT=<file.cpp> -DSYMBOL=<name> -P embed_text.cmake
# Writes a C++ source holding the bytes of INPUT (line ends and all) as a char array
# `SYMBOL` and its length `SYMBOL`Size.
file(READ "${INPUT}" hex HEX)
string(LENGTH "${hex}" hex_length)
math(EXPR size "${hex_length} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){16})" "\\1\n  " bytes "${bytes}")
file(WRITE "${OUTPUT}.tmp"
  "// Generated from ${INPUT}; do not edit.\n"
  "extern const char ${SYMBOL}[];\n"
  "extern const unsigned long ${SYMBOL}Size;\n"
  "const char ${SYMBOL}[] = {\n  ${bytes}0x00};\n"
  "const unsigned long ${SYMBOL}Size = ${size};\n")
execute_process(COMMAND ${CMAKE_COMMAND} -E copy_if_different "${OUTPUT}.tmp" "${OUTPUT}")
file(REMOVE "${OUTPUT}.tmp")
