#include "tests/dock/dock_test_support.h"

#include "core/sys/gnome_favorites.h"
#include "tests/support/wait.h"

#include <QProcess>

namespace tarvik::test {

void DockTest::SetUp() {
    const DesktopSession& s = DesktopSession::current();
    for (const QString& dir :
         {s.dataHome() + QStringLiteral("/applications"), s.dataHome() + QStringLiteral("/icons"),
          s.dataHome() + QStringLiteral("/Tarvik"), s.home() + QStringLiteral("/.config/autostart"),
          s.home() + QStringLiteral("/bin")}) {
        QDir(dir).removeRecursively();
    }
    QFile::remove(s.home() + QStringLiteral("/.config/mimeapps.list"));
    ASSERT_TRUE(GnomeFavorites::write({}, nullptr));
    QDir().mkpath(s.home() + QStringLiteral("/bin"));
    // A stand-in for tarvik, which the tests run only through links; the helper is the real one.
    QFile stand(s.home() + QStringLiteral("/bin/tarvik"));
    ASSERT_TRUE(stand.open(QIODevice::WriteOnly));
    stand.write("#!/bin/sh\nexit 0\n");
    stand.close();
    stand.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

DockPaths DockTest::paths() const {
    const DesktopSession& s = DesktopSession::current();
    DockPaths p;
    p.applications = s.dataHome() + QStringLiteral("/applications");
    p.icons = s.dataHome() + QStringLiteral("/icons/hicolor");
    p.autostart = s.home() + QStringLiteral("/.config/autostart");
    p.tarvik = s.home() + QStringLiteral("/bin/tarvik");
    p.helper = QStringLiteral(TARVIK_FOLDER_HELPER);
    return p;
}

AppFolder DockTest::folder(const QString& name, std::initializer_list<int> apps) {
    AppFolder f;
    f.id = QUuid::createUuid();
    f.name = name;
    for (int n : apps) {
        const QString id = DesktopSession::appId(n);
        f.apps.push_back(
            {QStringLiteral("App %1").arg(n),
             DesktopSession::current().systemData() + QStringLiteral("/applications/") + id, id});
    }
    return f;
}

QStringList DockTest::ids(std::initializer_list<int> apps) {
    QStringList out;
    for (int n : apps) {
        out.append(DesktopSession::appId(n));
    }
    return out;
}

bool DockTest::favouritesBecome(const QStringList& expected) {
    return waitUntil([&] { return GnomeFavorites::read() == expected; }, 10000);
}

QString DockTest::validate(const QString& desktopEntry) {
    QProcess p;
    p.start(QStringLiteral("desktop-file-validate"), {desktopEntry});
    p.waitForFinished();
    return QString::fromUtf8(p.readAllStandardOutput() + p.readAllStandardError()).trimmed();
}

} // namespace tarvik::test
