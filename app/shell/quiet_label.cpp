#include "app/shell/quiet_label.h"

#include <QLabel>

namespace tarvik {

QLabel* quietLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setWordWrap(true);
    return label;
}

} // namespace tarvik
