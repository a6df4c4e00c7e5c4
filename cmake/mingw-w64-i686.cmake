# As mingw-w64.cmake, for Windows of 32 bits.
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
