#include "app/shell/screen_header.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tarvik {

ScreenHeader::ScreenHeader(const QString& title, const QString& subtitle, QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 8);
    auto* titleLabel = new QLabel(title, this);
    QFont f = titleLabel->font();
    f.setPointSizeF(f.pointSizeF() * 1.6);
    f.setBold(true);
    titleLabel->setFont(f);
    titleLabel->setAccessibleName(title);
    auto* subtitleLabel = new QLabel(subtitle, this);
    subtitleLabel->setWordWrap(true);
    subtitleLabel->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(titleLabel);
    layout->addWidget(subtitleLabel);
}

} // namespace tarvik
