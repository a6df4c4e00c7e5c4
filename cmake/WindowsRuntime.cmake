# The C++ runtime as shared libraries beside the programs: exceptions and their types cross the
# library's boundary only if both sides use one runtime. Each width has its own way of unwinding.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(unwinder libgcc_s_seh-1.dll)
else()
  set(unwinder libgcc_s_dw2-1.dll)
endif()
foreach(name IN ITEMS libstdc++-6.dll ${unwinder} libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                  OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${file}")
    message(FATAL_ERROR "The compiler does not know where ${name} is")
  endif()
  file(COPY ${file} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  list(APPEND LTLIB_RUNTIME_FILES ${file})
  if(LTLIB_INSTALL)
    install(FILES ${file} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endforeach()
