# Our own code compiles without a warning. g++ 12 raises two false ones at -O3, on std::string and on
# the comparison of vectors of bytes; clang counts signedness to -Wconversion, g++ does not.
add_library(zeltbraidwerk_warnings INTERFACE)
target_compile_options(zeltbraidwerk_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  "$<$<CXX_COMPILER_ID:GNU>:-Wno-restrict;-Wno-stringop-overread>"
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)
