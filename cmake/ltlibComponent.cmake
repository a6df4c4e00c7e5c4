# ltlib_add_component(NAME SOURCES... [CLASSES IDENTIFIERS...]): a component library, which ltlib
# loads and unloads at run time by the file name NAME with the system's suffix.
#
# CLASSES names the classes that the library offers in another way than by LTLIB_COMPONENT, which has
# the library's own file tell of them. The list becomes the target's property LTLIB_CLASSES and the file
# NAME.classes beside the library, one identifier a line, for whoever registers the library.
#
# On Linux an exception of a static object must not reach the system's loader, which would stay
# locked for all other threads. There the library's initialisers run under a handler of ltlib's,
# if the linker takes the script that puts them aside; GNU ld and LLVM's do.
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
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    include(CheckLinkerFlag)
    set(start ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/component)
    set(CMAKE_REQUIRED_FLAGS "${CMAKE_MODULE_LINKER_FLAGS}")
    check_linker_flag(CXX "LINKER:-T,${start}/start.ld" LTLIB_LINKER_TAKES_START_SCRIPT)
    if(LTLIB_LINKER_TAKES_START_SCRIPT)
      target_sources(${name} PRIVATE ${start}/start.cpp)
      set_source_files_properties(${start}/start.cpp PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON
                                                                SKIP_PRECOMPILE_HEADERS ON)
      target_link_options(${name} PRIVATE "LINKER:-T,${start}/start.ld")
      set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${start}/start.ld)
    endif()
  endif()
  if(arg_CLASSES)
    list(JOIN arg_CLASSES "\n" classes)
    file(GENERATE OUTPUT "$<TARGET_FILE_DIR:${name}>/${name}.classes" CONTENT "${classes}\n")
  endif()
endfunction()
