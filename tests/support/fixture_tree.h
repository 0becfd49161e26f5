#pragma once

#include <QTemporaryDir>
#include <filesystem>
#include <optional>
#include <string>

namespace tarvik::test {

// A root directory for the readers, built file by file in a temporary folder, optionally
// starting from a copy of a captured tree.
class FixtureTree {
public:
    FixtureTree() = default;
    explicit FixtureTree(const std::filesystem::path& capturedRoot) {
        std::filesystem::copy(capturedRoot, root(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::copy_symlinks);
    }
    std::filesystem::path root() const { return dir_.path().toStdString(); }
    void write(const std::string& relative, const std::string& contents) const;
    void remove(const std::string& relative) const {
        std::filesystem::remove_all(root() / relative);
    }

private:
    QTemporaryDir dir_;
};

} // namespace tarvik::test
