#include "app/shell/screen_header.h"

#include "app/shell/theme.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tarvik {

ScreenHeader::ScreenHeader(const QString& title, const QString& subtitle, QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, space::s);
    layout->setSpacing(space::xs);
    auto* titleLabel = new QLabel(title, this);
    titleLabel->setObjectName(QStringLiteral("screenTitle"));
    setTextStyle(titleLabel, TextStyle::Title);
    titleLabel->setAccessibleName(title);
    auto* subtitleLabel = new QLabel(subtitle, this);
    subtitleLabel->setWordWrap(true);
    setTextStyle(subtitleLabel, TextStyle::Secondary);
    layout->addWidget(titleLabel);
    layout->addWidget(subtitleLabel);
}

} // namespace tarvik
