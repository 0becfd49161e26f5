#include "app/shell/gui_main.h"

#include "app/shell/app_models.h"
#include "app/shell/gui_shell.h"
#include "app/shell/section_icons.h"
#include "app/shell/theme.h"
#include "app/shell/wheel_guard.h"
#include "core/shell/login_item.h"
#include "core/sys/single_instance.h"

#include <QApplication>
#include <QIcon>

namespace tarvik {

int runGui(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Tarvik"));
    QApplication::setApplicationName(QStringLiteral("Tarvik"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tarvik"));
    QApplication::setApplicationVersion(QStringLiteral(TARVIK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.pellor.tarvik"));
    QApplication::setQuitOnLastWindowClosed(false);
    // Desktops without an icon theme of their own still get the file kinds' icons.
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
    QApplication::setWindowIcon(appIcon());
    Theme theme(std::make_unique<ColorSchemePortal>());
    theme.start();
    WheelGuard wheelGuard;
    app.installEventFilter(&wheelGuard);

    const bool isLoginLaunch = LoginItem::currentLaunchIsLogin(QApplication::arguments());
    SingleInstance instance;
    if (instance.notifyRunning(isLoginLaunch ? "login" : "show")) {
        return 0;
    }
    instance.listen();

    AppModels models(AppModels::defaultOptions());
    GuiShell shell(models, isLoginLaunch);
    QObject::connect(&instance, &SingleInstance::messageReceived, &shell,
                     [&shell](const QByteArray& message) {
                         if (message == "show") {
                             shell.openWindow();
                         }
                     });
    shell.start();
    return QApplication::exec();
}

} // namespace tarvik
