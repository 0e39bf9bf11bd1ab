# A list of what is built into a wheel, as CycloneDX 1.6, for the metadata of the wheel (PEP 770).

# zeltbraidwerk_component(name version licence purl [sha256]): something of others that is built in;
# the licence as an expression of SPDX, the hash that of its archive.
function(zeltbraidwerk_component name version licence purl)
  set(hashes "")
  if(ARGN)
    set(hashes "\"hashes\": [{\"alg\": \"SHA-256\", \"content\": \"${ARGN}\"}], ")
  endif()
  string(CONCAT component
    "{\"type\": \"library\", \"bom-ref\": \"${name}\", \"name\": \"${name}\", "
    "\"version\": \"${version}\", \"licenses\": [{\"expression\": \"${licence}\"}], ${hashes}"
    "\"purl\": \"${purl}@${version}\"}")
  set_property(GLOBAL APPEND PROPERTY ZELTBRAIDWERK_COMPONENTS "${component}")
  set_property(GLOBAL APPEND PROPERTY ZELTBRAIDWERK_COMPONENT_NAMES "\"${name}\"")
endfunction()

# zeltbraidwerk_version_in(result file macro...): the numbers that macros of a header have, with dots.
function(zeltbraidwerk_version_in result file)
  file(READ "${file}" text)
  set(numbers "")
  foreach(macro IN LISTS ARGN)
    if(NOT text MATCHES "define ${macro} \"?([0-9.]+)")
      message(FATAL_ERROR "${file}: no ${macro}")
    endif()
    list(APPEND numbers "${CMAKE_MATCH_1}")
  endforeach()
  list(JOIN numbers "." numbers)
  set(${result} "${numbers}" PARENT_SCOPE)
endfunction()

# Writes the list, and installs it with the Python module of a wheel. The same input makes the same
# bytes.
function(zeltbraidwerk_sbom)
  get_property(components GLOBAL PROPERTY ZELTBRAIDWERK_COMPONENTS)
  get_property(names GLOBAL PROPERTY ZELTBRAIDWERK_COMPONENT_NAMES)
  list(JOIN components ",\n    " components)
  list(JOIN names ", " names)
  set(purl "pkg:pypi/zeltbraidwerk@${PROJECT_VERSION}")
  set(file "${CMAKE_CURRENT_BINARY_DIR}/zeltbraidwerk.cdx.json")
  file(CONFIGURE OUTPUT "${file}" @ONLY CONTENT [[{
  "bomFormat": "CycloneDX",
  "specVersion": "1.6",
  "version": 1,
  "metadata": {
    "component": {"type": "library", "bom-ref": "zeltbraidwerk", "name": "zeltbraidwerk",
                  "version": "@PROJECT_VERSION@", "purl": "@purl@"}
  },
  "components": [
    @components@
  ],
  "dependencies": [{"ref": "zeltbraidwerk", "dependsOn": [@names@]}]
}
]])
  if(SKBUILD)
    install(FILES "${file}" DESTINATION "${SKBUILD_METADATA_DIR}/sboms" COMPONENT python)
  endif()
endfunction()
