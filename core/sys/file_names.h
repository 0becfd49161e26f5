#pragma once

#include <QString>
#include <string>
#include <string_view>

// File names are the kernel's bytes, and need not be UTF-8. A QString holds them without loss:
// each byte that is not part of valid UTF-8 becomes one of U+DC80…U+DCFF (a lone surrogate,
// which valid UTF-8 can never produce) and turns back into that byte on the way out. So two
// names that differ in their bytes never become one name, and the file removed is the file
// found. Only showing a name to a person is lossy: the stray bytes read as "\xNN".
namespace tarvik::fileName {

QString decode(std::string_view bytes);
std::string encode(QStringView name);
// The name as a person can read it: every byte that is not UTF-8 written as \xNN.
QString display(const QString& name);
// The name holds bytes that are not UTF-8.
bool hasRawBytes(QStringView name);

} // namespace tarvik::fileName
