#pragma once

#include "core/shell/app_section.h"

#include <QKeySequence>

class QAction;
class QMenu;
class QWidget;

namespace tarvik {

class Navigator;

// The "Go" menu: one command per section with its shortcut, and next/previous section.
// A menu command for `section`: its symbol and title as written; a section this version has
// no screen for yet is listed dimmed, and says why when hovered.
QAction* addSectionAction(QMenu* menu, AppSection section);

class NavigationCommands {
public:
    static QKeySequence shortcut(AppSection section);
    static QMenu* createMenu(Navigator& navigator, QWidget* parent);
};

} // namespace tarvik
