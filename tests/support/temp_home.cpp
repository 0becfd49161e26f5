#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tarvik::test {

QByteArray readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& contents) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        f.write(contents);
    }
}

} // namespace tarvik::test

#include "tests/support/fixture_tree.h"

#include <fstream>

namespace tarvik::test {

void FixtureTree::write(const std::string& relative, const std::string& contents) const {
    const auto path = root() / relative;
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::remove(path); // captured files are read-only and may be symbolic links
    std::ofstream(path, std::ios::binary) << contents;
}

} // namespace tarvik::test
