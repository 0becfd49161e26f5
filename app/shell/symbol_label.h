#pragma once

#include <QColor>
#include <QLabel>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik {

// A symbol shown at one size, drawn again when the palette changes (light to dark) or the
// window moves to a screen with another pixel ratio.
class SymbolLabel : public QLabel {
    Q_OBJECT
public:
    // `muted` draws it in the palette's secondary text colour instead of the text colour.
    SymbolLabel(std::string_view symbol, int size, bool muted, QWidget* parent = nullptr);
    void setTint(std::optional<QColor> tint);

protected:
    void changeEvent(QEvent* event) override;

private:
    void draw();

    std::string symbol_;
    int size_;
    bool muted_;
    std::optional<QColor> tint_;
};

} // namespace tarvik
