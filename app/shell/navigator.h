#pragma once

#include "core/shell/app_section.h"

#include <QObject>

namespace tarvik {

// The one shared selection: every view that changes the screen sets it, and the main
// window's detail area follows it.
class Navigator : public QObject {
    Q_OBJECT
public:
    explicit Navigator(QObject* parent = nullptr) : QObject(parent) {}

    AppSection selection() const { return selection_; }
    void select(AppSection section);
    // Keyboard navigation walks the sections in order and stops at the ends.
    void selectNext();
    void selectPrevious();

signals:
    void selectionChanged(tarvik::AppSection section);

private:
    AppSection selection_ = AppSection::Overview;
};

} // namespace tarvik
