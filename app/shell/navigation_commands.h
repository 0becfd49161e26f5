#pragma once

#include "core/shell/app_section.h"

#include <QKeySequence>

class QMenu;
class QWidget;

namespace tarvik {

class Navigator;

// The "Go" menu: one command per section with its shortcut, and next/previous section.
class NavigationCommands {
public:
    static QKeySequence shortcut(AppSection section);
    static QMenu* createMenu(Navigator& navigator, QWidget* parent);
};

} // namespace tarvik
