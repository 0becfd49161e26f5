#pragma once

#include "core/monitor/menu_bar_stat.h"
#include "core/sys/color_scheme_portal.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPalette>
#include <memory>

class QWidget;

namespace tarvik {

// The window's look in one place: the spacing scale, the type scale, the light and dark palettes
// and the colours that carry meaning.
namespace space {
constexpr int xs = 4;
constexpr int s = 8;
constexpr int m = 12;
constexpr int l = 16;
constexpr int xl = 24;
} // namespace space

enum class TextStyle {
    Title,     // a screen's name
    Headline,  // a card's big figure
    Heading,   // a card's or a group's name
    Body,      // the desktop's own size
    Secondary, // details under a figure, in the muted colour
};
QFont font(TextStyle style, QFont base);
// Sets the label's font (and, for secondary text, its muted colour).
void setTextStyle(QWidget* widget, TextStyle style);

// Good, watch, critical: the only colours not taken from the palette, chosen to read on light
// and dark backgrounds alike.
enum class Meaning { Good, Watch, Critical };
QColor meaningColor(Meaning meaning);
// The colour of a reading's level; neutral has none (an invalid colour): the caller draws it in
// the palette's own.
QColor meaningColor(ReadingLevel level);
// Draws the widget's text in the meaning's colour (an error in red, a warning in amber).
void setTextMeaning(QWidget* widget, Meaning meaning);
// The meaning of a fraction of a limit: below 70 % good, below 90 % watch, then critical.
Meaning meaningOfFraction(double fraction);

// The palettes Tarvik draws with, around the desktop's accent colour.
QPalette themePalette(bool dark, QColor accent);
// Whether `palette` is a dark one (its window darker than its text).
bool isDark(const QPalette& palette);

// Follows the desktop's light/dark preference, live: the portal's answer at start and every
// change after it. Without a preference the desktop's own palette decides.
class Theme : public QObject {
    Q_OBJECT
public:
    explicit Theme(std::unique_ptr<ColorSchemePortal> portal, QObject* parent = nullptr);
    ~Theme() override;

    // Reads the preference and applies it to the application.
    void start();
    void apply(ColorScheme scheme);
    bool dark() const { return dark_; }

signals:
    void changed(bool dark);

private:
    std::unique_ptr<ColorSchemePortal> portal_;
    QPalette desktopPalette_;
    bool dark_ = false;
};

} // namespace tarvik
