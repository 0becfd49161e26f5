#include "tests/support/desktop_session.h"

#include "tests/support/gnome_shell_settings.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <cstdlib>
#include <stdexcept>

namespace tarvik::test {
namespace {

DesktopSession* session = nullptr;

void write(const QString& path, const QByteArray& contents) {
    QDir().mkpath(path.section(QLatin1Char('/'), 0, -2));
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(contents) != contents.size()) {
        throw std::runtime_error("can't write " + path.toStdString());
    }
}

} // namespace

DesktopSession::DesktopSession() {
    session = this;
    QString error;
    if (!GnomeShellSettings::setUp(&error)) {
        throw std::runtime_error(error.toStdString());
    }
    for (int n = 1; n <= kApps; ++n) {
        write(systemData() + QStringLiteral("/applications/") + appId(n),
              QStringLiteral("[Desktop Entry]\nType=Application\nName=App %1\nExec=true\n"
                             "Icon=app%1\n")
                  .arg(n)
                  .toUtf8());
        QImage icon(64, 64, QImage::Format_ARGB32);
        icon.fill(appColour(n));
        const QString iconPath =
            systemData() + QStringLiteral("/icons/hicolor/64x64/apps/app%1.png").arg(n);
        QDir().mkpath(iconPath.section(QLatin1Char('/'), 0, -2));
        icon.save(iconPath);
    }
    // Only these apps are installed, so names and icons are the tests' own.
    ::setenv("XDG_DATA_DIRS", QFile::encodeName(systemData()).constData(), 1);
}

DesktopSession& DesktopSession::current() {
    return *session;
}

QString DesktopSession::home() const {
    return GnomeShellSettings::home();
}

QString DesktopSession::appId(int n) {
    return QStringLiteral("app%1.desktop").arg(n);
}

QColor DesktopSession::appColour(int n) {
    return QColor::fromHsv((n * 360 / (kApps + 1)) % 360, 220, 230);
}

QString DesktopSession::favouritesSeenByGsettings() {
    return GnomeShellSettings::favourites();
}

void DesktopSession::setFavouritesFromOutside(const QStringList& ids) {
    QStringList quoted;
    for (const QString& id : ids) {
        quoted.append(QLatin1Char('\'') + id + QLatin1Char('\''));
    }
    GnomeShellSettings::setFavourites(QLatin1Char('[') + quoted.join(QStringLiteral(", ")) +
                                      QLatin1Char(']'));
}

} // namespace tarvik::test
