# The header-only libraries of the command line tool.
if(NOT CMAKE_CROSSCOMPILING)
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json REQUIRED)
  return()
endif()

# They suit every system, but the folder in which they lie does not: the other headers there are
# those of the building system. So each is seen alone.
set(headers ${PROJECT_BINARY_DIR}/tool_headers)
foreach(name IN ITEMS CLI nlohmann)
  find_path(found NAMES ${name} PATHS /usr/include /usr/local/include NO_DEFAULT_PATH
                                      NO_CMAKE_FIND_ROOT_PATH NO_CACHE REQUIRED)
  file(MAKE_DIRECTORY ${headers})
  file(CREATE_LINK ${found}/${name} ${headers}/${name} SYMBOLIC)
  unset(found)
endforeach()
foreach(target IN ITEMS CLI11::CLI11 nlohmann_json::nlohmann_json)
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} SYSTEM INTERFACE ${headers})
endforeach()
