#pragma once

#include "core/shell/app_section.h"

#include <QWidget>

namespace tarvik {

// The screen of a section this version does not have yet: it says so, and offers nothing.
class UnavailableScreen : public QWidget {
    Q_OBJECT
public:
    explicit UnavailableScreen(AppSection section, QWidget* parent = nullptr);
    static QString message(AppSection section);
};

} // namespace tarvik
