#include "core/shell/login_item.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <utility>

namespace tarvik {

LoginItem::LoginItem(QString autostartDir, QString executable)
    : dir_(std::move(autostartDir)), executable_(std::move(executable)) {}

QString LoginItem::entryPath() const {
    return dir_ + QLatin1Char('/') + QLatin1String(kEntryName);
}

bool LoginItem::isEnabled() const {
    QFile f(entryPath());
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    while (!f.atEnd()) {
        const QString line = QString::fromUtf8(f.readLine()).trimmed();
        if (line.compare(QLatin1String("Hidden=true"), Qt::CaseInsensitive) == 0 ||
            line.compare(QLatin1String("X-GNOME-Autostart-enabled=false"), Qt::CaseInsensitive) ==
                0) {
            return false;
        }
    }
    return true;
}

void LoginItem::setEnabled(bool on) {
    if (on == isEnabled()) {
        return;
    }
    if (!on) {
        QFile f(entryPath());
        if (!f.remove()) {
            throw LoginItemError{QStringLiteral("Couldn't turn off Start at login: %1 (%2).")
                                     .arg(f.errorString(), entryPath())};
        }
        return;
    }
    if (!QDir().mkpath(dir_)) {
        throw LoginItemError{
            QStringLiteral("Couldn't turn on Start at login: the folder %1 can't be created.")
                .arg(dir_)};
    }
    QSaveFile f(entryPath());
    if (!f.open(QIODevice::WriteOnly | QIODevice::Text) ||
        f.write(entryText(executable_).toUtf8()) < 0 || !f.commit()) {
        throw LoginItemError{QStringLiteral("Couldn't turn on Start at login: %1 (%2).")
                                 .arg(f.errorString(), entryPath())};
    }
}

bool LoginItem::currentLaunchIsLogin(const QStringList& arguments) {
    return arguments.contains(QLatin1String(kLoginFlag));
}

QString LoginItem::quoteExecArgument(const QString& argument) {
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    bool needsQuotes = argument.isEmpty();
    for (QChar c : argument) {
        needsQuotes = needsQuotes || reserved.contains(c);
    }
    // A literal percent sign is doubled, quoted or not: "%x" is a field code.
    if (!needsQuotes) {
        return QString(argument).replace(QLatin1Char('%'), QLatin1String("%%"));
    }
    QString quoted;
    for (QChar c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            quoted += QLatin1Char('\\');
        }
        quoted += c;
    }
    // Inside a desktop-entry string value a backslash is itself escaped once more.
    quoted.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    quoted.replace(QLatin1Char('%'), QLatin1String("%%"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString LoginItem::entryText(const QString& executable) {
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Tarvik\n"
                          "Comment=Starts Tarvik in the tray when you sign in\n"
                          "Exec=%1 %2\n"
                          "Icon=org.pellor.tarvik\n"
                          "Terminal=false\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(quoteExecArgument(executable), QLatin1String(kLoginFlag));
}

} // namespace tarvik
