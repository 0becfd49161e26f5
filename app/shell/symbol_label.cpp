#include "app/shell/symbol_label.h"

#include "app/shell/section_icons.h"

#include <QEvent>

namespace tarvik {

SymbolLabel::SymbolLabel(std::string_view symbol, int size, bool muted, QWidget* parent)
    : QLabel(parent), symbol_(symbol), size_(size), muted_(muted) {
    setFixedSize(size, size);
    setAlignment(Qt::AlignCenter);
    draw();
}

void SymbolLabel::setTint(std::optional<QColor> tint) {
    tint_ = tint;
    draw();
}

void SymbolLabel::draw() {
    std::optional<QColor> ink = tint_;
    if (!ink && muted_) {
        ink = palette().color(QPalette::PlaceholderText);
    }
    setPixmap(symbolIcon(symbol_, {}, ink).pixmap(QSize(size_, size_), devicePixelRatioF()));
}

void SymbolLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        draw();
    }
}

} // namespace tarvik
