#include "app/shell/unavailable_screen.h"

#include "app/shell/empty_state.h"
#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "app/shell/theme.h"
#include "core/text/qt_text.h"

#include <QVBoxLayout>

namespace tarvik {

bool hasScreen(AppSection section) {
    switch (section) {
    case AppSection::ProjectJunk:
    case AppSection::SpaceLens:
    case AppSection::DevServers:
    case AppSection::DeviceCheck:
    case AppSection::SystemInfo:
    case AppSection::Uninstaller:
        return false;
    default:
        return true;
    }
}

QString comingLater() {
    return QStringLiteral("Coming in a later version");
}

QString UnavailableScreen::message(AppSection section) {
    const auto& t = info(section).title;
    return QStringLiteral("%1 is not available in this version of Tarvik yet.").arg(toQString(t));
}

UnavailableScreen::UnavailableScreen(AppSection section, QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::xl, space::l, space::xl, space::l);
    const SectionInfo& s = info(section);
    layout->addWidget(new ScreenHeader(toQString(s.title), sectionSubtitle(section), this));
    auto* empty = new EmptyState(s.symbol, message(section), this);
    empty->setObjectName(QStringLiteral("unavailableMessage"));
    layout->addWidget(empty, 1);
}

} // namespace tarvik
