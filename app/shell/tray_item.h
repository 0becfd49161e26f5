#pragma once

#include "core/shell/app_section.h"

#include <QObject>

class QMenu;
class QSystemTrayIcon;

namespace tarvik {

class AppModels;
class TrayPanel;

// The tray item: the app symbol or the chosen live readings, a panel with the live data, a
// menu that opens the window at any section, and Quit. It is present while
// "showMenuBarExtra" is on and the desktop has a tray.
class TrayItem : public QObject {
    Q_OBJECT
public:
    explicit TrayItem(AppModels& models, QObject* parent = nullptr);
    ~TrayItem() override;

    static bool trayAvailable();
    // The item is really there for the user to reach.
    bool isShown() const;
    // Readings are drawn (and the monitor is held for them).
    bool showsReadings() const { return holdingMonitor_; }
    QMenu* menu() const { return menu_; }
    QSystemTrayIcon* icon() const { return icon_; }
    TrayPanel* panel() const { return panel_; }
    QString toolTip() const;

    void openPanel();

signals:
    void openWindowRequested();
    void quitRequested();
    void shownChanged(bool shown);

private:
    void applyPreferences();
    void refreshIcon();

    AppModels& models_;
    QSystemTrayIcon* icon_ = nullptr;
    QMenu* menu_ = nullptr;
    TrayPanel* panel_ = nullptr;
    bool holdingMonitor_ = false;
    bool holdingAgents_ = false;
};

} // namespace tarvik
