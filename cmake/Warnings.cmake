# Our own code compiles without a warning; g++ 12 raises a false -Wrestrict on std::string at -O3.
add_library(zeltbraidwerk_warnings INTERFACE)
target_compile_options(zeltbraidwerk_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
