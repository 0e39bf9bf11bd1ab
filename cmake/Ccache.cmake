# Compile through ccache where there is one. Paths are taken relative to the checkout, so that
# another clone finds what this one compiled.
find_program(ZELTBRAIDWERK_CCACHE ccache)
mark_as_advanced(ZELTBRAIDWERK_CCACHE)
if(PROJECT_IS_TOP_LEVEL AND ZELTBRAIDWERK_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" "${ZELTBRAIDWERK_CCACHE}")
endif()
