#pragma once

#include <QString>
#include <string_view>

namespace tarvik {

// The core's fixed texts are UTF-8 string_views; Qt wants QString.
inline QString toQString(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

} // namespace tarvik
