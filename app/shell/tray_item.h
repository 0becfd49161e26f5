#pragma once

#include <QObject>

class QMenu;
class QSystemTrayIcon;

namespace tarvik {

class AppModels;

// The tray item: the app symbol, a menu that opens the window at any section, and Quit. It is
// present while "showMenuBarExtra" is on and the desktop has a tray.
class TrayItem : public QObject {
    Q_OBJECT
public:
    explicit TrayItem(AppModels& models, QObject* parent = nullptr);
    ~TrayItem() override;

    static bool trayAvailable();
    // The item is really there for the user to reach.
    bool isShown() const;
    QMenu* menu() const { return menu_; }
    QSystemTrayIcon* icon() const { return icon_; }

signals:
    void openWindowRequested();
    void quitRequested();
    void shownChanged(bool shown);

private:
    void applyPreferences();

    AppModels& models_;
    QSystemTrayIcon* icon_ = nullptr;
    QMenu* menu_ = nullptr;
};

} // namespace tarvik
