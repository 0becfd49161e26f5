#pragma once

#include "core/shell/app_section.h"

#include <QWidget>

namespace tarvik {

// Whether this version has the section's screen; the others are listed, dimmed, and say so.
bool hasScreen(AppSection section);
// Why a section without its screen cannot be used yet: "Coming in a later version".
QString comingLater();

// The screen of a section this version does not have yet: it says so, and offers nothing.
class UnavailableScreen : public QWidget {
    Q_OBJECT
public:
    explicit UnavailableScreen(AppSection section, QWidget* parent = nullptr);
    static QString message(AppSection section);
};

} // namespace tarvik
