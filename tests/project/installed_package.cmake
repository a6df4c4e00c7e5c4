# Installs BUILD below WORK, moves the installation elsewhere, and builds and runs the project
# CONSUMER against it with the compiler COMPILER and the generator GENERATOR; for a foreign system
# with the file TOOLCHAIN, and the programs, which end in SUFFIX, run by EMULATOR.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/first")
file(RENAME "${WORK}/first" "${WORK}/moved")

run("${CMAKE_COMMAND}" -S "${CONSUMER}" -B "${WORK}/build" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}"
    "-DCMAKE_PREFIX_PATH=${WORK}/moved")
run("${CMAKE_COMMAND}" --build "${WORK}/build" --parallel 2)

# Programs find DLLs beside themselves, and a marker there chooses store files.
file(GLOB libraries "${WORK}/moved/bin/*.dll")
if(libraries)
  file(COPY ${libraries} DESTINATION "${WORK}/build")
  file(TOUCH "${WORK}/build/registry.dat")
endif()
run(${EMULATOR} "${WORK}/build/consumer${SUFFIX}")

# The quick start leaves the store file that the read-me file shows.
set(store "${WORK}/HKEY_LOCAL_MACHINE.cfg")
set(ENV{HKEY_LOCAL_MACHINE} "${store}")
run(${EMULATOR} "${WORK}/build/quick_start${SUFFIX}")
file(READ "${store}" content)
string(REPLACE "\r" "" content "${content}")
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
