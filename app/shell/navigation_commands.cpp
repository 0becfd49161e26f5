#include "app/shell/navigation_commands.h"

#include "app/shell/menu_text.h"
#include "app/shell/navigator.h"
#include "app/shell/section_icons.h"
#include "app/shell/unavailable_screen.h"
#include "core/text/qt_text.h"

#include <QMenu>

namespace tarvik {

QAction* addSectionAction(QMenu* menu, AppSection section) {
    auto* action = menu->addAction(sectionIcon(section), menuText(toQString(info(section).title)));
    if (!hasScreen(section)) {
        action->setEnabled(false);
        action->setToolTip(comingLater());
        menu->setToolTipsVisible(true);
    }
    return action;
}

QKeySequence NavigationCommands::shortcut(AppSection section) {
    const auto index = static_cast<int>(section);
    if (section == AppSection::Settings) {
        return QKeySequence(Qt::CTRL | Qt::Key_Comma);
    }
    // Ctrl+1…9 for the first nine sections, Ctrl+Alt+1…7 for the rest.
    if (index < 9) {
        return QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + index));
    }
    return QKeySequence(Qt::CTRL | Qt::ALT | static_cast<Qt::Key>(Qt::Key_1 + index - 9));
}

QMenu* NavigationCommands::createMenu(Navigator& navigator, QWidget* parent) {
    auto* menu = new QMenu(QObject::tr("&Go"), parent);
    for (const auto& s : allSections()) {
        auto* action = addSectionAction(menu, s.section);
        action->setShortcut(shortcut(s.section));
        action->setCheckable(true);
        action->setChecked(navigator.selection() == s.section);
        action->setData(static_cast<int>(s.section));
        QObject::connect(action, &QAction::triggered, &navigator,
                         [&navigator, section = s.section] { navigator.select(section); });
        QObject::connect(
            &navigator, &Navigator::selectionChanged, action,
            [action, section = s.section](AppSection now) { action->setChecked(now == section); });
        if (s.section == AppSection::Overview || s.section == AppSection::KeepAwake) {
            menu->addSeparator();
        }
    }
    menu->addSeparator();
    auto* next = menu->addAction(QObject::tr("Next Section"));
    next->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageDown));
    QObject::connect(next, &QAction::triggered, &navigator, &Navigator::selectNext);
    auto* previous = menu->addAction(QObject::tr("Previous Section"));
    previous->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageUp));
    QObject::connect(previous, &QAction::triggered, &navigator, &Navigator::selectPrevious);
    return menu;
}

} // namespace tarvik
