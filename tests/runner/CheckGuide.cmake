# Fails unless the guide shows examples/runner/main.cpp, which is compiled, byte by byte.
file(READ ${ROOT}/examples/runner/main.cpp code)
file(READ ${ROOT}/docs/guide.md guide)
string(FIND "${guide}" "\n```cpp\n${code}```\n" position)
if(position LESS 0)
  message(FATAL_ERROR "docs/guide.md does not show the text of examples/runner/main.cpp")
endif()
