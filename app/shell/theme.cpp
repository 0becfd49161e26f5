#include "app/shell/theme.h"

#include <QApplication>
#include <QStyle>
#include <QStyleFactory>
#include <QWidget>
#include <array>

namespace tarvik {

QFont font(TextStyle style, QFont base) {
    const double size = base.pointSizeF() > 0 ? base.pointSizeF() : 10.0;
    switch (style) {
    case TextStyle::Title:
        base.setPointSizeF(size * 1.7);
        base.setWeight(QFont::Bold);
        break;
    case TextStyle::Headline:
        base.setPointSizeF(size * 1.6);
        base.setWeight(QFont::DemiBold);
        break;
    case TextStyle::Heading:
        base.setPointSizeF(size * 1.05);
        base.setWeight(QFont::DemiBold);
        break;
    case TextStyle::Body:
        break;
    case TextStyle::Secondary:
        base.setPointSizeF(size * 0.92);
        break;
    }
    return base;
}

void setTextStyle(QWidget* widget, TextStyle style) {
    widget->setFont(font(style, QApplication::font(widget)));
    if (style == TextStyle::Secondary) {
        widget->setForegroundRole(QPalette::PlaceholderText);
    }
}

QColor meaningColor(Meaning meaning) {
    // Mid-tone hues: dark enough for white text on light windows, bright enough on dark ones.
    switch (meaning) {
    case Meaning::Good:
        return {0x2e, 0xa0, 0x5e};
    case Meaning::Watch:
        return {0xd9, 0x8a, 0x10};
    case Meaning::Critical:
        return {0xd9, 0x46, 0x3b};
    }
    return {};
}

void setTextMeaning(QWidget* widget, Meaning meaning) {
    QPalette p = widget->palette();
    p.setColor(QPalette::WindowText, meaningColor(meaning));
    p.setColor(QPalette::Text, meaningColor(meaning));
    widget->setPalette(p);
}

QColor meaningColor(ReadingLevel level) {
    switch (level) {
    case ReadingLevel::Good:
        return meaningColor(Meaning::Good);
    case ReadingLevel::Watch:
        return meaningColor(Meaning::Watch);
    case ReadingLevel::Critical:
        return meaningColor(Meaning::Critical);
    case ReadingLevel::Neutral:
        break;
    }
    return {};
}

Meaning meaningOfFraction(double fraction) {
    if (fraction >= 0.9) {
        return Meaning::Critical;
    }
    return fraction >= 0.7 ? Meaning::Watch : Meaning::Good;
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

namespace {

// One role's colours: enabled and disabled, in the light palette and in the dark one.
struct RoleColours {
    QPalette::ColorRole role;
    QRgb light;
    QRgb lightDisabled;
    QRgb dark;
    QRgb darkDisabled;
};

constexpr std::array<RoleColours, 17> kRoles{{
    {QPalette::Window, 0xf4f4f6, 0xf4f4f6, 0x242427, 0x242427},
    {QPalette::WindowText, 0x1f1f22, 0xa0a0ab, 0xeaeaea, 0x767679},
    {QPalette::Base, 0xffffff, 0xf7f7f8, 0x2e2e32, 0x2a2a2d},
    {QPalette::AlternateBase, 0xf6f6f8, 0xf2f2f4, 0x343438, 0x2e2e32},
    {QPalette::Text, 0x1f1f22, 0xa0a0ab, 0xeaeaea, 0x767679},
    {QPalette::Button, 0xfbfbfc, 0xf0f0f2, 0x3a3a3f, 0x303034},
    {QPalette::ButtonText, 0x1f1f22, 0xa0a0ab, 0xeaeaea, 0x767679},
    {QPalette::PlaceholderText, 0x6b6b72, 0xa0a0ab, 0x9a9a9e, 0x767679},
    {QPalette::ToolTipBase, 0xffffff, 0xffffff, 0x3a3a3f, 0x3a3a3f},
    {QPalette::ToolTipText, 0x1f1f22, 0x1f1f22, 0xeaeaea, 0xeaeaea},
    {QPalette::Light, 0xffffff, 0xffffff, 0x4a4a50, 0x404045},
    {QPalette::Midlight, 0xe8e8ec, 0xe8e8ec, 0x404045, 0x38383c},
    {QPalette::Mid, 0xd4d4da, 0xdcdce0, 0x48484e, 0x404045},
    {QPalette::Dark, 0xa0a0a8, 0xb0b0b6, 0x18181a, 0x18181a},
    {QPalette::Shadow, 0x606066, 0x707076, 0x0a0a0b, 0x0a0a0b},
    {QPalette::BrightText, 0xffffff, 0xffffff, 0xffffff, 0xffffff},
    {QPalette::HighlightedText, 0xffffff, 0x6b6b72, 0xffffff, 0x9a9a9e},
}};

} // namespace

QPalette themePalette(bool dark, QColor accent) {
    if (!accent.isValid()) {
        accent = QColor(0x35, 0x84, 0xe4);
    }
    QPalette p;
    const auto set = [&p](QPalette::ColorRole role, QColor active, QColor disabled) {
        p.setColor(QPalette::Active, role, active);
        p.setColor(QPalette::Inactive, role, active);
        p.setColor(QPalette::Disabled, role, disabled);
    };
    for (const RoleColours& r : kRoles) {
        set(r.role, QColor(dark ? r.dark : r.light),
            QColor(dark ? r.darkDisabled : r.lightDisabled));
    }
    const QColor muted(dark ? 0x9a9a9e : 0x6b6b72);
    // Links and the selection take the desktop's accent, lightened on dark windows.
    set(QPalette::Link, dark ? accent.lighter(135) : accent.darker(115), muted);
    set(QPalette::LinkVisited, dark ? accent.lighter(120) : accent.darker(135), muted);
    set(QPalette::Highlight, accent, QColor(dark ? 0x44444a : 0xd8d8dd));
    // An unfocused window keeps its selection legible, only calmer.
    p.setColor(QPalette::Inactive, QPalette::Highlight,
               dark ? accent.darker(140) : accent.lighter(140));
    return p;
}

Theme::Theme(std::unique_ptr<ColorSchemePortal> portal, QObject* parent)
    : QObject(parent), portal_(std::move(portal)), desktopPalette_(QApplication::palette()) {
    connect(portal_.get(), &ColorSchemePortal::changed, this, &Theme::apply);
}

Theme::~Theme() = default;

void Theme::start() {
    apply(portal_->read().value_or(ColorScheme::NoPreference));
}

void Theme::apply(ColorScheme scheme) {
    const bool dark = scheme == ColorScheme::PreferDark ||
                      (scheme == ColorScheme::NoPreference && isDark(desktopPalette_));
    // The palettes are drawn for the desktop's own widget style where it takes one; Fusion
    // otherwise, since the bare default style ignores the palette's depth.
    if (QApplication::style() != nullptr &&
        QApplication::style()->name().compare(QLatin1String("windows"), Qt::CaseInsensitive) == 0) {
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    }
    QApplication::setPalette(themePalette(dark, desktopPalette_.color(QPalette::Highlight)));
    const bool was = dark_;
    dark_ = dark;
    if (was != dark) {
        emit changed(dark);
    }
}

} // namespace tarvik
