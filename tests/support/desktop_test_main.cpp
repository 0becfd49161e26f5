#include "tests/support/desktop_session.h"

#include <QGuiApplication>
#include <gtest/gtest.h>

// The desktop is made before the application object, which may already ask GIO.
int main(int argc, char** argv) {
    tarvik::test::DesktopSession session;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
