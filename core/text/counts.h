#pragma once

#include <QString>
#include <QStringView>
#include <cstdint>

namespace tarvik {

// A count as a person reads it: "0 files", "1 file", "1,204 files". The number is grouped as
// the user's locale groups it, like every other number the window and the commands show.
QString countOf(std::int64_t n, QStringView one, QStringView many);

} // namespace tarvik
