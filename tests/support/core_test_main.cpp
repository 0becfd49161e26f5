#include <QCoreApplication>
#include <gtest/gtest.h>

// An application object so watchers, timers and child processes have an event loop.
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
