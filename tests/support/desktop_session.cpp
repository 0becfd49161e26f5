#include "tests/support/desktop_session.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
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

constexpr const char* kSchema = R"(<?xml version="1.0" encoding="UTF-8"?>
<schemalist>
  <schema id="org.gnome.shell" path="/org/gnome/shell/">
    <key name="favorite-apps" type="as">
      <default>[]</default>
    </key>
  </schema>
</schemalist>
)";

} // namespace

DesktopSession::DesktopSession() {
    session = this;
    const QString schemas = dir_.path() + QStringLiteral("/schemas");
    write(schemas + QStringLiteral("/org.gnome.shell.gschema.xml"), kSchema);
    if (QProcess::execute(QStringLiteral("glib-compile-schemas"), {schemas}) != 0) {
        throw std::runtime_error("glib-compile-schemas failed");
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
    const auto set = [](const char* name, const QString& value) {
        ::setenv(name, value.toLocal8Bit().constData(), 1);
    };
    QDir().mkpath(home());
    set("HOME", home());
    set("XDG_CONFIG_HOME", home() + QStringLiteral("/.config"));
    set("XDG_DATA_HOME", dataHome());
    set("XDG_DATA_DIRS", systemData());
    set("GSETTINGS_SCHEMA_DIR", schemas);
    set("GSETTINGS_BACKEND", QStringLiteral("keyfile"));
}

DesktopSession& DesktopSession::current() {
    return *session;
}

QString DesktopSession::appId(int n) {
    return QStringLiteral("app%1.desktop").arg(n);
}

QColor DesktopSession::appColour(int n) {
    return QColor::fromHsv((n * 360 / (kApps + 1)) % 360, 220, 230);
}

QString DesktopSession::favouritesSeenByGsettings() {
    QProcess p;
    p.start(QStringLiteral("gsettings"), {QStringLiteral("get"), QStringLiteral("org.gnome.shell"),
                                          QStringLiteral("favorite-apps")});
    p.waitForFinished();
    return QString::fromUtf8(p.readAllStandardOutput()).trimmed();
}

void DesktopSession::setFavouritesFromOutside(const QStringList& ids) {
    QStringList quoted;
    for (const QString& id : ids) {
        quoted.append(QLatin1Char('\'') + id + QLatin1Char('\''));
    }
    QProcess::execute(QStringLiteral("gsettings"),
                      {QStringLiteral("set"), QStringLiteral("org.gnome.shell"),
                       QStringLiteral("favorite-apps"),
                       QLatin1Char('[') + quoted.join(QStringLiteral(", ")) + QLatin1Char(']')});
}

} // namespace tarvik::test
