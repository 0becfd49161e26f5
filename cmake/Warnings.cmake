# Warnings are errors on our own targets only; Qt's and GoogleTest's headers come in as system headers.
function(tarvik_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror -Wpedantic -Wshadow
                                             -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
                                             -Woverloaded-virtual)
endfunction()
