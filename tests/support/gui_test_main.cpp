#include "core/sys/desktop_apps.h"
#include "core/sys/gnome_favorites.h"
#include "tests/support/gnome_shell_settings.h"

#include <QApplication>
#include <cstdio>
#include <gtest/gtest.h>

// Widget tests draw offscreen: no display is needed and none is touched.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Before the first GSettings call anywhere in the process, the Dock's settings are a test's.
    QString error;
    if (!tarvik::test::GnomeShellSettings::setUp(&error)) {
        std::fprintf(stderr, "GNOME Shell's test settings: %s\n", qPrintable(error));
        return 1;
    }
    // GLib settles the settings file and the app folders on first use: here, not inside the
    // temporary home of whichever test comes first.
    tarvik::GnomeFavorites::read();
    tarvik::DesktopApps::installed();
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
