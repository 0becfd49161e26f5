# Our own targets get the full set of warnings; Qt's and GoogleTest's headers come in as system
# headers. Warnings are errors only when asked (the test build and CI do): a distribution's own
# flags or a newer compiler must not break a packager's build over a new warning.
function(tarvik_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                                             -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
                                             -Woverloaded-virtual)
    if(TARVIK_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
