#pragma once

#include "core/shell/app_section.h"

#include <QWidget>
#include <initializer_list>

class QTabWidget;

namespace tarvik {

class AppModels;

// The small window the tray item opens: the live data in tabs (processors, network and disk,
// battery, agents, keep awake), each with buttons that open the main window at its section.
// It holds the monitor model while it is open. Ctrl+Tab and the arrow keys on the tabs move
// between them; Escape closes it.
class TrayPanel : public QWidget {
    Q_OBJECT
public:
    explicit TrayPanel(AppModels& models, QWidget* parent = nullptr);

    QTabWidget* tabs() const { return tabs_; }
    // Opens near `anchor` (the tray icon's place, or the pointer), kept on screen.
    void popUp(const QPoint& anchor);

signals:
    void openSection(tarvik::AppSection section);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    void addPage(QWidget* page, const QString& title, std::initializer_list<AppSection> sections);

    QTabWidget* tabs_ = nullptr;
};

} // namespace tarvik
