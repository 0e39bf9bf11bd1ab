# Installs the build in BUILD_DIR into a scratch prefix, moves that, and builds the consumer against
# it twice: by find_package and by pkg-config. What is built then runs without the files that only
# building needs.
cmake_minimum_required(VERSION 3.25)

set(work "${BUILD_DIR}/consumer")
set(prefix "${work}/moved")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${work}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${work}/installed")
file(RENAME "${work}/installed" "${prefix}")

run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}" -B "${work}/build" -G "${GENERATOR}"
  "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${work}/build")

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
execute_process(COMMAND pkg-config --cflags --libs zeltbraidwerk
  OUTPUT_VARIABLE package_flags COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(package_flags UNIX_COMMAND "${package_flags}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
run("${CXX}" -std=c++20 ${flags} "${CMAKE_CURRENT_LIST_DIR}/main.cpp" ${package_flags}
  "-Wl,-rpath,${prefix}/${LIBDIR}" -o "${work}/consumer")

# Only libzeltbraidwerk.so.0 and what it points to are there when programs run.
file(REMOVE "${prefix}/${LIBDIR}/libzeltbraidwerk.so")
run("${work}/build/consumer")
run("${work}/consumer")

foreach(licence IN ITEMS eigen lemon)
  if(NOT EXISTS "${prefix}/${DOCDIR}/licenses/${licence}.txt")
    message(FATAL_ERROR "the licence of ${licence} was not installed into ${DOCDIR}/licenses")
  endif()
endforeach()
