# Warnings and sanitizers for every target of this project; nothing of this is installed.
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion)

if(LTLIB_SANITIZE)
  add_compile_options(-fsanitize=${LTLIB_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${LTLIB_SANITIZE})
endif()
