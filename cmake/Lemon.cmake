# zeltbraidwerk_lemon: the headers of LEMON 1.3.1, fit for C++20.
#
# Three of them call std::allocator<T>::construct and destroy, which C++20 removed, or declare a
# conversion to a const value, which clang rejects. They are rewritten into the build tree, in
# front of the system's folder. Nothing is linked: lemon::INVALID comes from the headers.
find_package(lemon CONFIG QUIET)
if(NOT lemon_FOUND)
  message(FATAL_ERROR "The headers of LEMON 1.3 are missing: apt-get install liblemon-dev")
endif()
# As object code LEMON asks for no copy of its licence; it goes along where its package left one.
find_file(ZELTBRAIDWERK_LEMON_LICENCE NAMES copyright LICENSE NO_DEFAULT_PATH
  PATHS "${LEMON_INCLUDE_DIR}/../share/doc" PATH_SUFFIXES liblemon-dev lemon)
mark_as_advanced(ZELTBRAIDWERK_LEMON_LICENCE)
if(ZELTBRAIDWERK_LEMON_LICENCE)
  zeltbraidwerk_licence(lemon "${ZELTBRAIDWERK_LEMON_LICENCE}")
endif()
zeltbraidwerk_version_in(zeltbraidwerk_lemon_version "${LEMON_INCLUDE_DIR}/lemon/config.h"
  LEMON_VERSION)
zeltbraidwerk_component(lemon "${zeltbraidwerk_lemon_version}" "BSL-1.0" "pkg:generic/lemon")

block()
  set(overlay "${CMAKE_CURRENT_BINARY_DIR}/lemon_overlay")
  foreach(header IN ITEMS bits/array_map.h bits/path_dump.h path.h)
    set(original "${LEMON_INCLUDE_DIR}/lemon/${header}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${original}")
    file(READ "${original}" text)
    string(REGEX REPLACE "allocator\\.(construct|destroy)\\("
      "std::allocator_traits<Allocator>::\\1(allocator, " text "${text}")
    string(REGEX REPLACE "alloc\\.(construct|destroy)\\("
      "std::allocator_traits<std::allocator<Node>>::\\1(alloc, " text "${text}")
    string(REPLACE "operator const typename Digraph::Arc()" "operator typename Digraph::Arc()"
      text "${text}")
    if(text MATCHES "alloc(ator)?\\.(construct|destroy)\\(")
      message(FATAL_ERROR "lemon/${header}: an allocator call is left that C++20 does not know")
    endif()
    file(CONFIGURE OUTPUT "${overlay}/lemon/${header}" CONTENT "${text}" @ONLY)
  endforeach()

  add_library(zeltbraidwerk_lemon INTERFACE)
  target_include_directories(zeltbraidwerk_lemon SYSTEM INTERFACE
    "${overlay}" "${LEMON_INCLUDE_DIR}")
  target_compile_definitions(zeltbraidwerk_lemon INTERFACE LEMON_ONLY_TEMPLATES)
endblock()
