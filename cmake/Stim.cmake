# zeltbraidwerk_stim: the part of Stim that is used here (circuits, tableaus and the conversions
# between them), built from its pinned and hashed source distribution as a hidden static library.
# Sets ZELTBRAIDWERK_HAS_STIM; without Stim everything else still builds. A wheel lacks nothing in
# silence: there Stim must be had unless it is switched off.
if(SKBUILD)
  set(zeltbraidwerk_with_stim ON)
else()
  set(zeltbraidwerk_with_stim AUTO)
endif()
set(ZELTBRAIDWERK_WITH_STIM ${zeltbraidwerk_with_stim} CACHE STRING "Build with Stim: AUTO (if it can be had), ON or OFF")
set_property(CACHE ZELTBRAIDWERK_WITH_STIM PROPERTY STRINGS AUTO ON OFF)
set(ZELTBRAIDWERK_STIM_SDIST "" CACHE FILEPATH
  "Stim's source distribution, already downloaded (empty: pip fetches it)")

# One copy for all build folders of a checkout.
if(PROJECT_IS_TOP_LEVEL)
  set(ZELTBRAIDWERK_DEPS_DIR "${PROJECT_SOURCE_DIR}/build/_deps" CACHE PATH
    "Where fetched dependencies are unpacked")
else()
  set(ZELTBRAIDWERK_DEPS_DIR "${CMAKE_BINARY_DIR}/_deps" CACHE PATH
    "Where fetched dependencies are unpacked")
endif()

# Unpacks Stim and sets <source> to its source folder, or <source> to "" and <problem> to a line.
function(zeltbraidwerk_fetch_stim source problem)
  set(${source} "" PARENT_SCOPE)
  set(pin_file "${PROJECT_SOURCE_DIR}/third_party/stim.txt")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${pin_file}")
  file(STRINGS "${pin_file}" pin LIMIT_COUNT 1)
  if(NOT pin MATCHES "^stim==([0-9.]+) --hash=sha256:([0-9a-f]+)$")
    message(FATAL_ERROR "${pin_file}: expected 'stim==VERSION --hash=sha256:HASH'")
  endif()
  set(version "${CMAKE_MATCH_1}")
  set(wanted "${CMAKE_MATCH_2}")

  set(root "${ZELTBRAIDWERK_DEPS_DIR}/stim")
  set(unpacked "${root}/stim-${version}")
  file(MAKE_DIRECTORY "${root}")
  file(LOCK "${root}.lock" GUARD FUNCTION TIMEOUT 600)
  if(NOT EXISTS "${unpacked}/.complete")
    set(archive "${ZELTBRAIDWERK_STIM_SDIST}")
    if(NOT archive)
      set(archive "${root}/stim-${version}.tar.gz")
      find_package(Python 3.11 COMPONENTS Interpreter)
      if(NOT Python_Interpreter_FOUND)
        set(${problem} "no Python 3.11 to fetch it with" PARENT_SCOPE)
        return()
      endif()
      message(STATUS "Fetching Stim ${version}")
      # Inside an isolated `pip install` the PYTHONPATH of pip hides pip itself.
      execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env --unset=PYTHONPATH --unset=PYTHONNOUSERSITE
          "${Python_EXECUTABLE}" -m pip download --quiet --disable-pip-version-check --retries 1
          --no-deps --no-binary stim --require-hashes --requirement "${pin_file}" --dest "${root}"
        RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE log)
      if(NOT status EQUAL 0)
        string(REGEX REPLACE ".*ERROR: |[\r\n]+$" "" log "${log}")
        set(${problem} "pip could not fetch it: ${log}" PARENT_SCOPE)
        return()
      endif()
    endif()
    file(SHA256 "${archive}" found)
    if(NOT found STREQUAL wanted)
      message(FATAL_ERROR "${archive}: SHA-256 is ${found}, expected ${wanted}")
    endif()
    file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${root}"
      PATTERNS "stim-${version}/src/*" "*/LICENSE")
    file(TOUCH "${unpacked}/.complete")
  endif()
  set(${source} "${unpacked}/src" PARENT_SCOPE)
  zeltbraidwerk_component(stim "${version}" "Apache-2.0" "pkg:pypi/stim" "${wanted}")
endfunction()

# zeltbraidwerk_stim_units(file...): the library's source files that include Stim's headers.
# Stim needs -fno-strict-aliasing; the kernels would pay for it, so it stays with these units.
function(zeltbraidwerk_stim_units)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY zeltbraidwerk_objects
    PROPERTIES COMPILE_OPTIONS -fno-strict-aliasing)
endfunction()

set(ZELTBRAIDWERK_HAS_STIM OFF)
if(NOT ZELTBRAIDWERK_WITH_STIM)
  message(STATUS "Stim: switched off; what needs it is left out")
  return()
endif()
zeltbraidwerk_fetch_stim(stim_source stim_problem)
if(NOT stim_source)
  if(NOT ZELTBRAIDWERK_WITH_STIM STREQUAL "AUTO")
    message(FATAL_ERROR "Stim: ${stim_problem}\n"
      "Give its archive by -DZELTBRAIDWERK_STIM_SDIST=<file>, or -DZELTBRAIDWERK_WITH_STIM=OFF")
  endif()
  message(STATUS "Stim: not there; what needs it is left out (${stim_problem})")
  return()
endif()
set(ZELTBRAIDWERK_HAS_STIM ON)
zeltbraidwerk_licence(stim "${stim_source}/../LICENSE")

set(stim_files
  circuit/circuit.cc
  circuit/circuit_instruction.cc
  circuit/gate_decomposition.cc
  circuit/gate_target.cc
  gates/gate_data_annotations.cc
  gates/gate_data_blocks.cc
  gates/gate_data_collapsing.cc
  gates/gate_data_controlled.cc
  gates/gate_data_hada.cc
  gates/gate_data_heralded.cc
  gates/gate_data_noisy.cc
  gates/gate_data_pair_measure.cc
  gates/gate_data_pauli.cc
  gates/gate_data_pauli_product.cc
  gates/gate_data_period_3.cc
  gates/gate_data_period_4.cc
  gates/gate_data_pp.cc
  gates/gate_data_swaps.cc
  gates/gates.cc
  io/measure_record.cc
  io/measure_record_writer.cc
  mem/bit_ref.cc
  mem/simd_util.cc
  simulators/graph_simulator.cc
  simulators/vector_simulator.cc
  stabilizers/flex_pauli_string.cc
  util_bot/arg_parse.cc
  util_bot/probability_util.cc
  util_top/circuit_inverse_unitary.cc)
list(TRANSFORM stim_files PREPEND "${stim_source}/stim/")

add_library(zeltbraidwerk_stim STATIC EXCLUDE_FROM_ALL ${stim_files})
target_compile_features(zeltbraidwerk_stim PUBLIC cxx_std_20)
target_include_directories(zeltbraidwerk_stim SYSTEM PUBLIC "${stim_source}")
target_compile_options(zeltbraidwerk_stim PUBLIC -fno-strict-aliasing PRIVATE -w -g0)
set_target_properties(zeltbraidwerk_stim PROPERTIES
  POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
