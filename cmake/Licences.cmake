# zeltbraidwerk_licence(name file): the licence text of something that becomes part of the library is
# installed with it, and into the metadata of a wheel. Texts come from the sources that are built.
function(zeltbraidwerk_licence name file)
  install(FILES "${file}" DESTINATION "${CMAKE_INSTALL_DOCDIR}/licenses" RENAME "${name}.txt")
  zeltbraidwerk_wheel_licence(${name} "${file}")
endfunction()

# The same for what the Python module alone is built from.
function(zeltbraidwerk_wheel_licence name file)
  if(SKBUILD)
    install(FILES "${file}" DESTINATION "${SKBUILD_METADATA_DIR}/licenses" RENAME "${name}.txt"
      COMPONENT python)
  endif()
endfunction()
