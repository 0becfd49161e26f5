#include "app/shell/theme.h"

#include <QApplication>
#include <QStyle>
#include <QStyleFactory>
#include <QWidget>

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
    if (dark) {
        const QColor text(0xea, 0xea, 0xea);
        const QColor muted(0x9a, 0x9a, 0x9e);
        set(QPalette::Window, QColor(0x24, 0x24, 0x27), QColor(0x24, 0x24, 0x27));
        set(QPalette::WindowText, text, muted.darker(130));
        set(QPalette::Base, QColor(0x2e, 0x2e, 0x32), QColor(0x2a, 0x2a, 0x2d));
        set(QPalette::AlternateBase, QColor(0x34, 0x34, 0x38), QColor(0x2e, 0x2e, 0x32));
        set(QPalette::Text, text, muted.darker(130));
        set(QPalette::Button, QColor(0x3a, 0x3a, 0x3f), QColor(0x30, 0x30, 0x34));
        set(QPalette::ButtonText, text, muted.darker(130));
        set(QPalette::PlaceholderText, muted, muted.darker(130));
        set(QPalette::ToolTipBase, QColor(0x3a, 0x3a, 0x3f), QColor(0x3a, 0x3a, 0x3f));
        set(QPalette::ToolTipText, text, text);
        set(QPalette::Light, QColor(0x4a, 0x4a, 0x50), QColor(0x40, 0x40, 0x45));
        set(QPalette::Midlight, QColor(0x40, 0x40, 0x45), QColor(0x38, 0x38, 0x3c));
        set(QPalette::Mid, QColor(0x48, 0x48, 0x4e), QColor(0x40, 0x40, 0x45));
        set(QPalette::Dark, QColor(0x18, 0x18, 0x1a), QColor(0x18, 0x18, 0x1a));
        set(QPalette::Shadow, QColor(0x0a, 0x0a, 0x0b), QColor(0x0a, 0x0a, 0x0b));
        set(QPalette::BrightText, QColor(0xff, 0xff, 0xff), QColor(0xff, 0xff, 0xff));
        set(QPalette::Link, accent.lighter(135), muted);
        set(QPalette::LinkVisited, accent.lighter(120), muted);
    } else {
        const QColor text(0x1f, 0x1f, 0x22);
        const QColor muted(0x6b, 0x6b, 0x72);
        set(QPalette::Window, QColor(0xf4, 0xf4, 0xf6), QColor(0xf4, 0xf4, 0xf6));
        set(QPalette::WindowText, text, muted.lighter(150));
        set(QPalette::Base, QColor(0xff, 0xff, 0xff), QColor(0xf7, 0xf7, 0xf8));
        set(QPalette::AlternateBase, QColor(0xf6, 0xf6, 0xf8), QColor(0xf2, 0xf2, 0xf4));
        set(QPalette::Text, text, muted.lighter(150));
        set(QPalette::Button, QColor(0xfb, 0xfb, 0xfc), QColor(0xf0, 0xf0, 0xf2));
        set(QPalette::ButtonText, text, muted.lighter(150));
        set(QPalette::PlaceholderText, muted, muted.lighter(150));
        set(QPalette::ToolTipBase, QColor(0xff, 0xff, 0xff), QColor(0xff, 0xff, 0xff));
        set(QPalette::ToolTipText, text, text);
        set(QPalette::Light, QColor(0xff, 0xff, 0xff), QColor(0xff, 0xff, 0xff));
        set(QPalette::Midlight, QColor(0xe8, 0xe8, 0xec), QColor(0xe8, 0xe8, 0xec));
        set(QPalette::Mid, QColor(0xd4, 0xd4, 0xda), QColor(0xdc, 0xdc, 0xe0));
        set(QPalette::Dark, QColor(0xa0, 0xa0, 0xa8), QColor(0xb0, 0xb0, 0xb6));
        set(QPalette::Shadow, QColor(0x60, 0x60, 0x66), QColor(0x70, 0x70, 0x76));
        set(QPalette::BrightText, QColor(0xff, 0xff, 0xff), QColor(0xff, 0xff, 0xff));
        set(QPalette::Link, accent.darker(115), muted);
        set(QPalette::LinkVisited, accent.darker(135), muted);
    }
    set(QPalette::Highlight, accent, dark ? QColor(0x44, 0x44, 0x4a) : QColor(0xd8, 0xd8, 0xdd));
    set(QPalette::HighlightedText, QColor(0xff, 0xff, 0xff),
        dark ? QColor(0x9a, 0x9a, 0x9e) : QColor(0x6b, 0x6b, 0x72));
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
