# ltlib_add_component(NAME SOURCES...): a component library, which ltlib loads and unloads at run
# time by the file name NAME with the system's suffix.
function(ltlib_add_component name)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE ltlib::ltlib)
  set_target_properties(${name} PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden
                                           VISIBILITY_INLINES_HIDDEN ON)
  # GCC marks the statics of inline functions and templates as unique in the process, and the
  # loader never unmaps a library that defines such a symbol.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND UNIX)
    target_compile_options(${name} PRIVATE -fno-gnu-unique)
  endif()
endfunction()
