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

# The quick start leaves the store file that the read-me file shows.
set(store "${WORK}/HKEY_LOCAL_MACHINE.cfg")
set(ENV{HKEY_LOCAL_MACHINE} "${store}")
run("${WORK}/build/quick_start")
file(READ "${store}" content)
if(NOT content STREQUAL "[Software\\Demo]\n\"Title\"=string:\"Hello, world\"\n\n")
  message(FATAL_ERROR "The quick start left\n${content}")
endif()

# Nothing of the installation may lead back to the tree that it was built in.
file(GLOB_RECURSE texts "${WORK}/moved/*.cmake" "${WORK}/moved/*.h")
foreach(text IN LISTS texts)
  file(READ "${text}" content)
  string(FIND "${content}" "${BUILD}" at)
  if(NOT at EQUAL -1)
    message(FATAL_ERROR "${text} names the build tree ${BUILD}")
  endif()
endforeach()
