// Runs the fuzz targets, built without libFuzzer, over saved inputs: the seeds they start from
// and every input that once made one fail. usage: tarvik_fuzz_replay TARGET PATH... [--trees
// FOLDER...] (a folder stands for every file in it, a missing one for none; after --trees, each
// folder is packed into one input)
#include "fuzz/fuzz_input.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#define TARVIK_FUZZ_TARGET(name)                                                                   \
    extern "C" int tarvik_fuzz_##name(const std::uint8_t* data, std::size_t size);
#include "fuzz_targets.inc"
#undef TARVIK_FUZZ_TARGET

namespace {

struct Target {
    const char* name;
    int (*run)(const std::uint8_t*, std::size_t);
};
constexpr Target kTargets[] = {
#define TARVIK_FUZZ_TARGET(name) {#name, tarvik_fuzz_##name},
#include "fuzz_targets.inc"
#undef TARVIK_FUZZ_TARGET
};

std::vector<std::filesystem::path> inputs(const std::filesystem::path& path) {
    std::vector<std::filesystem::path> found;
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) {
        found.push_back(path);
    }
    if (std::filesystem::is_directory(path, error)) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path, error)) {
            if (entry.is_regular_file(error)) {
                found.push_back(entry.path());
            }
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace

int main(int argc, char** argv) {
    const auto target =
        std::find_if(std::begin(kTargets), std::end(kTargets), [&](const Target& t) {
            return argc > 1 && std::strcmp(t.name, argv[1]) == 0;
        });
    if (target == std::end(kTargets)) {
        std::fprintf(stderr, "usage: %s TARGET PATH...\n", argv[0]);
        return 2;
    }
    int count = 0;
    const auto run = [&](const std::string& label, const std::string& bytes) {
        std::printf("%s\n", label.c_str());
        std::fflush(stdout);
        target->run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++count;
    };
    bool trees = false;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--trees") == 0) {
            trees = true;
        } else if (trees) {
            run(argv[i], tarvik::fuzz::packTree(argv[i]));
        } else {
            for (const auto& file : inputs(argv[i])) {
                std::ifstream in(file, std::ios::binary);
                run(file.string(), std::string(std::istreambuf_iterator<char>(in), {}));
            }
        }
    }
    std::printf("%s: %d inputs, none failed\n", target->name, count);
    return 0;
}
