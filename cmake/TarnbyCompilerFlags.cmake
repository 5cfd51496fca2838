# Warnings for our own code, and the sanitizer switch that CI uses.
add_compile_options(-Wall -Wextra -Wno-unused-parameter)
add_compile_definitions(QT_NO_FOREACH)

if(TARNBY_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
