#include "app/shell/unavailable_screen.h"

#include "app/shell/screen_header.h"
#include "app/shell/section_subtitles.h"
#include "core/text/qt_text.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tarvik {

QString UnavailableScreen::message(AppSection section) {
    const auto& t = info(section).title;
    return QStringLiteral("%1 is not available in this version of Tarvik yet.").arg(toQString(t));
}

UnavailableScreen::UnavailableScreen(AppSection section, QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    const auto& t = info(section).title;
    layout->addWidget(new ScreenHeader(toQString(t), sectionSubtitle(section), this));
    auto* label = new QLabel(message(section), this);
    label->setObjectName(QStringLiteral("unavailableMessage"));
    label->setWordWrap(true);
    layout->addWidget(label);
    layout->addStretch(1);
}

} // namespace tarvik
