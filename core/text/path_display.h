#pragma once

#include <QString>

namespace tarvik::PathDisplay {

// "~" for home itself, "~/…" inside it, the full path elsewhere.
QString abbreviate(const QString& path, const QString& home);

} // namespace tarvik::PathDisplay
