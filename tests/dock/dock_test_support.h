#pragma once

#include "dock/app_folder.h"
#include "dock/dock_paths.h"
#include "tests/support/desktop_session.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <gtest/gtest.h>
#include <ostream>

// Readable failures for Qt's strings.
inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}
inline void PrintTo(const QStringList& l, std::ostream* os) {
    *os << '[' << l.join(QStringLiteral(", ")).toStdString() << ']';
}

namespace tarvik::test {

// Each dock test starts from an empty dock and no generated files, in the program's desktop.
class DockTest : public ::testing::Test {
protected:
    void SetUp() override;
    // Paths of the session, with an executable stand-in for the folder helper.
    DockPaths paths() const;
    static AppFolder folder(const QString& name, std::initializer_list<int> apps);
    static QStringList ids(std::initializer_list<int> apps);
    // The favourites as this process reads them, once another process's write has reached it.
    static bool favouritesBecome(const QStringList& expected);
    static QString validate(const QString& desktopEntry); // desktop-file-validate's complaints
};

} // namespace tarvik::test
