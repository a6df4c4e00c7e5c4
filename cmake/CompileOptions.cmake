# Warnings and sanitizers for every target of this project; nothing of this is installed.
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion)

if(LTLIB_SANITIZE)
  add_compile_options(-fsanitize=${LTLIB_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  # What a sanitizer adds makes GCC see uninitialised variables in the standard library, and copies
  # past the end of its strings.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized -Wno-array-bounds -Wno-restrict
                        -Wno-stringop-overflow -Wno-stringop-overread)
  endif()
  add_link_options(-fsanitize=${LTLIB_SANITIZE})
endif()

# All objects report what they cover; only the fuzzers themselves bring the engine.
if(LTLIB_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
