# Installs the build in BUILD_DIR into a scratch prefix, moves that, and builds the consumer against
# it twice: by find_package and by pkg-config.
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
run("${work}/build/consumer")

set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
execute_process(COMMAND pkg-config --cflags --libs zeltbraidwerk
  OUTPUT_VARIABLE package_flags COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(package_flags UNIX_COMMAND "${package_flags}")
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
run("${CXX}" -std=c++20 ${flags} "${CMAKE_CURRENT_LIST_DIR}/main.cpp" ${package_flags}
  "-Wl,-rpath,${prefix}/${LIBDIR}" -o "${work}/consumer")
run("${work}/consumer")
