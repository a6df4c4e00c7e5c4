# GoogleTest for the tests. Built from its sources where the system has them for its own programs
# only; as Debian's package "googletest" lays them down, unless told otherwise.
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest REQUIRED)
  return()
endif()

set(LTLIB_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "The sources of GoogleTest")
set(BUILD_GMOCK OFF)
set(INSTALL_GTEST OFF)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
add_subdirectory(${LTLIB_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
# The warnings of this project are no rules for that one.
set_target_properties(gtest gtest_main PROPERTIES COMPILE_OPTIONS "" COMPILE_WARNING_AS_ERROR OFF)
