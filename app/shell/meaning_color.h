#pragma once

#include "core/monitor/menu_bar_stat.h"

#include <QColor>

namespace tarvik {

// The colour a level means: good, watch, critical, each readable on light and dark palettes.
// Neutral has none (an invalid colour): the caller draws it in the palette's own.
inline QColor meaningColor(ReadingLevel level) {
    switch (level) {
    case ReadingLevel::Good:
        return QColor(0x2e, 0x9d, 0x5b);
    case ReadingLevel::Watch:
        return QColor(0xd3, 0x8b, 0x12);
    case ReadingLevel::Critical:
        return QColor(0xd0, 0x45, 0x3a);
    case ReadingLevel::Neutral:
        break;
    }
    return {};
}

} // namespace tarvik
