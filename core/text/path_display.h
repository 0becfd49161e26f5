#pragma once

#include <QString>
#include <cstdint>

namespace tarvik::PathDisplay {

// Decimal units, as file managers show sizes ("1.2 MB").
QString bytes(std::int64_t count);
// "~" for home itself, "~/…" inside it, the full path elsewhere.
QString abbreviate(const QString& path, const QString& home);

} // namespace tarvik::PathDisplay
