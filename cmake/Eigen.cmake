# zeltbraidwerk_eigen: the headers of Eigen 3.4, for small dense matrices. Nothing is linked.
find_package(Eigen3 3.4 CONFIG QUIET)
if(NOT Eigen3_FOUND)
  message(FATAL_ERROR "The headers of Eigen 3.4 are missing: apt-get install libeigen3-dev")
endif()
get_target_property(ZELTBRAIDWERK_EIGEN_INCLUDE_DIR Eigen3::Eigen INTERFACE_INCLUDE_DIRECTORIES)
add_library(zeltbraidwerk_eigen INTERFACE)
target_include_directories(zeltbraidwerk_eigen SYSTEM INTERFACE
  "${ZELTBRAIDWERK_EIGEN_INCLUDE_DIR}")
# Without the parts of Eigen that stand under the LGPL.
target_compile_definitions(zeltbraidwerk_eigen INTERFACE EIGEN_MPL2_ONLY)

# The Mozilla Public License asks that users are told of it and of where the source is.
find_file(ZELTBRAIDWERK_EIGEN_LICENCE NAMES copyright COPYING.MPL2 LICENSE NO_DEFAULT_PATH
  PATHS "${ZELTBRAIDWERK_EIGEN_INCLUDE_DIR}/../../share/doc" PATH_SUFFIXES libeigen3-dev eigen3)
mark_as_advanced(ZELTBRAIDWERK_EIGEN_LICENCE)
if(ZELTBRAIDWERK_EIGEN_LICENCE)
  zeltbraidwerk_licence(eigen "${ZELTBRAIDWERK_EIGEN_LICENCE}")
endif()
zeltbraidwerk_component(eigen "${Eigen3_VERSION}" "MPL-2.0" "pkg:generic/eigen")
