// Writes a folder packed as one input of the tree-reading fuzz targets, for their seeds.
// usage: tarvik_fuzz_pack FOLDER > INPUT
#include "fuzz/fuzz_input.h"

#include <cstdio>
#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    std::cout << tarvik::fuzz::packTree(argv[1]);
    return std::cout ? 0 : 1;
}
