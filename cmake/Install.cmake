# Install rules: the library, its public headers, and what find_package and pkg-config read.
include(CMakePackageConfigHelpers)

install(TARGETS zeltbraidwerk EXPORT zeltbraidwerkTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/zeltbraidwerk"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zeltbraidwerk")
install(EXPORT zeltbraidwerkTargets NAMESPACE zeltbraidwerk:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/zeltbraidwerkConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/zeltbraidwerkConfig.cmake" INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/zeltbraidwerkConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/zeltbraidwerkConfig.cmake"
  "${PROJECT_BINARY_DIR}/zeltbraidwerkConfigVersion.cmake"
  DESTINATION "${package_dir}")

# The pkg-config file finds its prefix from where it lies, so that the tree may be moved.
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH pkgconfig_to_prefix "/prefix/${pkgconfig_dir}" "/prefix")
configure_file("${CMAKE_CURRENT_LIST_DIR}/zeltbraidwerk.pc.in"
  "${PROJECT_BINARY_DIR}/zeltbraidwerk.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zeltbraidwerk.pc" DESTINATION "${pkgconfig_dir}")
