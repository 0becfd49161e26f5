#pragma once

#include "core/shell/app_section.h"

#include <QString>

namespace tarvik {

// The one-line subtitle under each screen's title.
QString sectionSubtitle(AppSection section);

} // namespace tarvik
