#include "core/homebrew/brew_askpass.h"

#include "core/sys/xdg_paths.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace tarvik::BrewAskpass {

QString script() {
    return QStringLiteral(
        "#!/bin/sh\n"
        "prompt='Homebrew needs your password to finish updating or removing this app.'\n"
        "for helper in ksshaskpass ssh-askpass /usr/lib/ssh/ssh-askpass "
        "/usr/lib/openssh/gnome-ssh-askpass /usr/bin/ssh-askpass-gnome; do\n"
        "  if command -v \"$helper\" >/dev/null 2>&1; then exec \"$helper\" \"$prompt\" "
        "2>/dev/null; fi\n"
        "done\n"
        "if command -v zenity >/dev/null 2>&1; then exec zenity --password --title=Tarvik "
        "2>/dev/null; fi\n"
        "if command -v kdialog >/dev/null 2>&1; then exec kdialog --title Tarvik --password "
        "\"$prompt\" 2>/dev/null; fi\n"
        "exit 1");
}

QMap<QString, QString> environment(const QString& supportDirectory) {
    QDir().mkpath(supportDirectory);
    const QString path = supportDirectory + QStringLiteral("/askpass.sh");
    QFile existing(path);
    const bool same = existing.open(QIODevice::ReadOnly) && existing.readAll() == script().toUtf8();
    existing.close();
    if (!same) {
        QSaveFile f(path);
        if (f.open(QIODevice::WriteOnly)) {
            f.write(script().toUtf8());
            f.commit();
        }
    }
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return {{QStringLiteral("SUDO_ASKPASS"), path}};
}

QString defaultSupportDirectory() {
    return xdg::applicationSupport() + QStringLiteral("/Homebrew");
}

} // namespace tarvik::BrewAskpass
