if(TARVIK_SANITIZE)
    # GCC leaves float-cast-overflow out of "undefined": a number from outside that does not fit
    # its integer must fail the tests as it fails the fuzzers.
    set(_tarvik_san -fsanitize=address,undefined,float-cast-overflow -fno-omit-frame-pointer
                    -fno-sanitize-recover=undefined,float-cast-overflow)
    add_compile_options(${_tarvik_san})
    add_link_options(${_tarvik_san})
endif()
