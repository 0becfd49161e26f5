#include "app/shell/gui_shell.h"

#include "app/shell/app_models.h"
#include "app/shell/main_window.h"
#include "app/shell/tray_item.h"
#include "core/awake/keep_awake_controller.h"

#include <QApplication>
#include <QTimer>

namespace tarvik {

GuiShell::GuiShell(AppModels& models, bool isLoginLaunch, QObject* parent)
    : QObject(parent), models_(models), isLoginLaunch_(isLoginLaunch) {}

GuiShell::~GuiShell() = default;

bool GuiShell::trayReachable() const {
    return tray_ && tray_->isShown();
}

ActivationPolicy GuiShell::wantedPolicy(bool windowOpen) const {
    // Only a tray item the user can really click counts: without a tray host, hiding the
    // taskbar entry would leave Tarvik unreachable.
    return dockIconPolicy(models_.preferences().hideDockIcon(), trayReachable(), windowOpen);
}

void GuiShell::applyDockIconPolicy(bool windowOpen) {
    const auto change = policyChange(policy_, wantedPolicy(windowOpen));
    if (!change) {
        return;
    }
    policy_ = *change;
    if (windowOpen) {
        return;
    }
    // With the window closed, the taskbar entry follows the policy at once.
    if (policy_ == ActivationPolicy::Accessory && window_->isVisible()) {
        window_->hide();
    } else if (policy_ == ActivationPolicy::Regular && !window_->isVisible() &&
               !plan_.startInBackground) {
        window_->showMinimized();
    }
}

void GuiShell::start() {
    Preferences& prefs = models_.preferences();
    prefs.watchFile();

    // 1. Where to start.
    plan_ = planStartup({isLoginLaunch_, prefs.opensWindowAtLaunch(), prefs.showMenuBarExtra(),
                         prefs.hideDockIcon()});

    window_ = std::make_unique<MainWindow>(models_);
    tray_ = std::make_unique<TrayItem>(models_);
    connect(tray_.get(), &TrayItem::openWindowRequested, this, &GuiShell::openWindow);
    connect(tray_.get(), &TrayItem::quitRequested, this, &GuiShell::quit);
    connect(window_.get(), &MainWindow::quitRequested, this, &GuiShell::quit);

    // 2. The dock-icon policy with no window open.
    policy_ = plan_.initialPolicy;
    applyDockIconPolicy(false);

    // 3. Re-apply whenever the main window opens or closes.
    window_->setPolicyWhenClosed([this] { return wantedPolicy(false); });
    connect(window_.get(), &MainWindow::openChanged, this, &GuiShell::applyDockIconPolicy);

    // 4. Re-apply when a preference changes (here or from `tarvik settings`).
    connect(&prefs, &Preferences::changed, this,
            [this] { applyDockIconPolicy(window_->isVisible() && !window_->isMinimized()); });
    connect(tray_.get(), &TrayItem::shownChanged, this,
            [this] { applyDockIconPolicy(window_->isVisible() && !window_->isMinimized()); });

    // 5–7. Usage-reset notifications, the Homebrew update notifier and the updater are started
    // by their capabilities when they exist; Linux updates Tarvik through its package manager.

    // 8. Start silently in the tray, or bring the window to the front.
    if (plan_.startInBackground && trayReachable()) {
        return;
    }
    if (plan_.startInBackground) {
        // The tray item was asked for but no tray exists: keep a taskbar entry instead.
        plan_.startInBackground = false;
        window_->showMinimized();
        return;
    }
    openWindow();
}

void GuiShell::quit() {
    // QApplication::quit first asks every window to close, and closing the window only puts it
    // away, so Qt drops the quit; exit() ends the event loop itself. The keep-awake locks go
    // at once; work still running stops between items as its models go.
    models_.keepAwake().releaseAll();
    window_->hide();
    QCoreApplication::exit(0);
}

void GuiShell::openWindow() {
    plan_.startInBackground = false;
    window_->present();
}

void GuiShell::openLink(const FolderLink& link) {
    openWindow();
    window_->openLink(link);
}

} // namespace tarvik
