#include "fuzz/fuzz_input.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace tarvik::fuzz {

InputFile::InputFile(const std::uint8_t* data, std::size_t size)
    : fd_(memfd_create("fuzz-input", MFD_CLOEXEC)) {
    if (fd_ < 0) {
        std::abort();
    }
    for (std::size_t done = 0; done < size;) {
        const ssize_t n = ::write(fd_, data + done, size - done);
        if (n <= 0) {
            std::abort();
        }
        done += static_cast<std::size_t>(n);
    }
    path_ = "/proc/self/fd/" + std::to_string(fd_);
}

InputFile::~InputFile() {
    ::close(fd_);
}

namespace {

// A name under the root, never leaving it: absolute names and ".." steps are dropped.
std::filesystem::path inside(std::string_view name) {
    std::filesystem::path safe;
    for (const auto& part : std::filesystem::path(name).relative_path()) {
        if (part != ".." && part != "." && !part.empty()) {
            safe /= part;
        }
    }
    return safe;
}

} // namespace

InputTree::InputTree(const std::uint8_t* data, std::size_t size) {
    std::string folder = (std::filesystem::temp_directory_path() / "tarvik-fuzz-XXXXXX").string();
    if (!mkdtemp(folder.data())) {
        std::abort();
    }
    root_ = folder;
    std::string_view rest = text(data, size);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\0'), rest.size());
        const std::string_view entry = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        const std::size_t lineEnd = std::min(entry.find('\n'), entry.size());
        const std::string_view name = entry.substr(0, lineEnd);
        const std::string_view contents = entry.substr(std::min(lineEnd + 1, entry.size()));
        std::error_code ignored;
        const std::size_t arrow = name.find(" -> ");
        const std::filesystem::path at = inside(name.substr(0, arrow));
        if (at.empty()) {
            continue;
        }
        std::filesystem::create_directories(root_ / at.parent_path(), ignored);
        if (arrow != std::string_view::npos) {
            // Relative links within the tree, as /sys has them; one out of it would have the
            // readers read this machine's files (or /dev/zero) instead of the input.
            const std::filesystem::path target(name.substr(arrow + 4));
            const auto lands = (at.parent_path() / target).lexically_normal();
            if (target.is_relative() && !lands.empty() && *lands.begin() != "..") {
                std::filesystem::create_symlink(target, root_ / at, ignored);
            }
        } else {
            std::ofstream(root_ / at, std::ios::binary)
                .write(contents.data(), static_cast<std::streamsize>(contents.size()));
        }
    }
}

InputTree::~InputTree() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::string packTree(const std::filesystem::path& folder, std::uintmax_t largestFile) {
    std::vector<std::filesystem::path> entries;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) {
        entries.push_back(entry.path());
    }
    std::sort(entries.begin(), entries.end());
    std::string packed;
    for (const auto& path : entries) {
        const std::string name = path.lexically_relative(folder).string();
        if (std::filesystem::is_symlink(path, error)) {
            packed += name + " -> " + std::filesystem::read_symlink(path, error).string() + '\n';
        } else if (std::filesystem::is_regular_file(path, error) &&
                   std::filesystem::file_size(path, error) <= largestFile) {
            std::ifstream in(path, std::ios::binary);
            packed += name + '\n';
            packed.append(std::istreambuf_iterator<char>(in), {});
        } else {
            continue;
        }
        packed += '\0';
    }
    return packed;
}

} // namespace tarvik::fuzz
