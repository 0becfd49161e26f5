#pragma once

#include <QString>
#include <optional>
#include <string_view>

// Paths as the kernel spells them, held without loss in QStrings (see file_names.h).
namespace tarvik::filePath {

// `p` is `q` or lies below it (a `q` ending in "/" gets no second slash).
bool isWithin(QStringView p, QStringView q);
// `p` lies below `q`, not equal to it.
bool isStrictlyWithin(std::string_view p, std::string_view q);

// The current folder, its bytes kept even when they are not UTF-8.
QString currentFolder();
// `path` made absolute against the current folder, otherwise as written.
QString absolute(const QString& path);
// Where `path` really is, every link followed (realpath); none when it doesn't exist.
std::optional<QString> resolved(const QString& path);

} // namespace tarvik::filePath
