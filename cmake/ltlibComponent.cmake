# ltlib_add_component(NAME SOURCES... [CLASSES IDENTIFIERS...]): a component library, which ltlib
# loads and unloads at run time by the file name NAME with the system's suffix.
#
# CLASSES names the classes that the library offers. The list becomes the target's property
# LTLIB_CLASSES and the file NAME.classes beside the library, one identifier a line, for whoever
# registers the library.
function(ltlib_add_component name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "CLASSES")
  add_library(${name} MODULE ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ltlib::ltlib)
  set_target_properties(${name} PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden
                                           VISIBILITY_INLINES_HIDDEN ON
                                           LTLIB_CLASSES "${arg_CLASSES}")
  # GCC marks the statics of inline functions and templates as unique in the process, and the
  # loader never unmaps a library that defines such a symbol.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND UNIX)
    target_compile_options(${name} PRIVATE -fno-gnu-unique)
  endif()
  if(arg_CLASSES)
    list(JOIN arg_CLASSES "\n" classes)
    file(GENERATE OUTPUT "$<TARGET_FILE_DIR:${name}>/${name}.classes" CONTENT "${classes}\n")
  endif()
endfunction()
