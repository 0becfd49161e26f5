#pragma once

#include "core/shell/startup.h"
#include "dock/folder_link.h"

#include <QObject>
#include <memory>

namespace tarvik {

class AppModels;
class MainWindow;
class TrayItem;

// Runs the start-up sequence and keeps the window, the tray item and the dock-icon policy in
// step for the life of the process.
class GuiShell : public QObject {
    Q_OBJECT
public:
    GuiShell(AppModels& models, bool isLoginLaunch, QObject* parent = nullptr);
    ~GuiShell() override;

    void start();
    void openWindow();
    // Opens the window on Dock Folders for a link from a folder's helper.
    void openLink(const FolderLink& link);
    // Ends Tarvik, from the File menu, Ctrl+Q or the tray.
    void quit();

    MainWindow& window() { return *window_; }
    TrayItem& tray() { return *tray_; }
    ActivationPolicy policy() const { return policy_; }
    bool startedInBackground() const { return plan_.startInBackground; }

private:
    bool trayReachable() const;
    ActivationPolicy wantedPolicy(bool windowOpen) const;
    void applyDockIconPolicy(bool windowOpen);

    AppModels& models_;
    bool isLoginLaunch_;
    StartupPlan plan_;
    ActivationPolicy policy_ = ActivationPolicy::Regular;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<TrayItem> tray_;
};

} // namespace tarvik
