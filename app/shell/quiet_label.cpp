#include "app/shell/quiet_label.h"

#include "app/shell/theme.h"

#include <QLabel>

namespace tarvik {

QLabel* quietLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    setTextStyle(label, TextStyle::Secondary);
    label->setWordWrap(true);
    return label;
}

} // namespace tarvik
