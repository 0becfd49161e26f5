#pragma once

#include "core/cleanup/file_kind.h"

#include <QIcon>

namespace tarvik {

// The desktop theme's icon for a kind of file (its generic MIME icon), or a drawn badge with
// the kind's initial where the theme has none.
QIcon fileKindIcon(FileKind kind);

} // namespace tarvik
