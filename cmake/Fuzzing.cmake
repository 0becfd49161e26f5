# The fuzz build: everything is compiled with libFuzzer's coverage hooks and the address and
# undefined-behaviour checks, so a target finds what the parsers do with any input.
if(TARVIK_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "TARVIK_FUZZ needs clang (CXX=clang++): libFuzzer is part of clang")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                        -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()
