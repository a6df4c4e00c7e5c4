# What `cmake --install` lays down, and the package that find_package(ltlib) reads.
include(CMakePackageConfigHelpers)

# The umbrella headers are the list of the public headers, so that the two never differ.
foreach(umbrella IN ITEMS ltlib.h settings.h component.h diagnosis.h)
  set(umbrella ${PROJECT_SOURCE_DIR}/ltlib/${umbrella})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${umbrella})
  file(STRINGS ${umbrella} included REGEX "^#include \"")
  list(TRANSFORM included REPLACE "^#include \"(.+)\".*" "${PROJECT_SOURCE_DIR}/\\1")
  list(APPEND public_headers ${umbrella} ${included})
endforeach()
list(REMOVE_DUPLICATES public_headers)
target_sources(ltlib PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}
                            FILES ${public_headers})

# Of the tracer a program needs the header alone to take its lines; the loader has to find it beside
# the library.
install(TARGETS ltlib lttracer EXPORT ltlibTargets FILE_SET HEADERS)
if(WIN32)
  set(library_dir ${CMAKE_INSTALL_BINDIR})
else()
  set(library_dir ${CMAKE_INSTALL_LIBDIR})
endif()
install(FILES $<TARGET_FILE:ltlib>-gdb.py DESTINATION ${library_dir})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ltlib)
install(EXPORT ltlibTargets NAMESPACE ltlib:: DESTINATION ${package_dir})
configure_package_config_file(cmake/ltlibConfig.cmake.in ltlibConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(ltlibConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ltlibConfig.cmake
              ${PROJECT_BINARY_DIR}/ltlibConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/ltlibComponent.cmake
        DESTINATION ${package_dir})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/cmake/component DESTINATION ${package_dir})
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
