# Installs BUILD below WORK, moves the installation elsewhere, and builds and runs the project
# CONSUMER against it with the compiler COMPILER and the generator GENERATOR.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/first")
file(RENAME "${WORK}/first" "${WORK}/moved")

run("${CMAKE_COMMAND}" -S "${CONSUMER}" -B "${WORK}/build" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_PREFIX_PATH=${WORK}/moved")
run("${CMAKE_COMMAND}" --build "${WORK}/build" --parallel 2)
run("${WORK}/build/consumer")

# Nothing of the installation may lead back to the tree that it was built in.
file(GLOB_RECURSE texts "${WORK}/moved/*.cmake" "${WORK}/moved/*.h")
foreach(text IN LISTS texts)
  file(READ "${text}" content)
  string(FIND "${content}" "${BUILD}" at)
  if(NOT at EQUAL -1)
    message(FATAL_ERROR "${text} names the build tree ${BUILD}")
  endif()
endforeach()
