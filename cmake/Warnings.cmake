# Warnings for every target of the project; the build is kept free of them.
add_compile_options(-Wall -Wextra -Wpedantic)
if(BREVANTI_WERROR)
    add_compile_options(-Werror)
endif()
