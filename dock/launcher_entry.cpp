#include "dock/launcher_entry.h"

#include "core/shell/login_item.h"

namespace tarvik::LauncherEntry {

QString escapeValue(const QString& value) {
    QString out;
    out.reserve(value.size());
    for (QChar c : value) {
        switch (c.unicode()) {
        case '\\':
            out += QLatin1String("\\\\");
            break;
        case '\n':
            out += QLatin1String("\\n");
            break;
        case '\r':
            out += QLatin1String("\\r");
            break;
        case '\t':
            out += QLatin1String("\\t");
            break;
        default:
            out += c;
        }
    }
    if (out.startsWith(QLatin1Char(' '))) {
        out.replace(0, 1, QLatin1String("\\s"));
    }
    return out;
}

QString folder(const AppFolder& folder, const FolderLauncher& launcher) {
    const QString apps = folder.apps.size() == 1
                             ? QStringLiteral("1 app")
                             : QStringLiteral("%1 apps").arg(folder.apps.size());
    QString text =
        QStringLiteral("[Desktop Entry]\n"
                       "Type=Application\n"
                       "Version=1.0\n"
                       "Name=%1\n"
                       "Comment=%2\n"
                       "Icon=%3\n"
                       "Exec=%4 %5\n"
                       "Terminal=false\n"
                       "StartupNotify=false\n"
                       "StartupWMClass=%6\n"
                       "Categories=Utility;\n"
                       "X-Tarvik-Folder=%7\n"
                       "X-Tarvik-Version=%8\n"
                       "X-Tarvik-Resident=%9\n"
                       "X-Tarvik-Content=%10\n")
            .arg(escapeValue(folder.name.isEmpty() ? folder.sanitizedName() : folder.name),
                 escapeValue(QStringLiteral("A folder of %1, made with Tarvik").arg(apps)),
                 launcher.icon, LoginItem::quoteExecArgument(launcher.helper),
                 LoginItem::quoteExecArgument(launcher.folderFile), folder.bundleIdentifier(),
                 folder.id.toString(QUuid::WithoutBraces).toUpper(),
                 QString::number(launcher.version),
                 launcher.resident ? QStringLiteral("true") : QStringLiteral("false"))
            .arg(launcher.content);
    return text;
}

QString spacer(DockSpacer kind, const QString& blankIcon) {
    // A name is required; a space reads as none under the tile.
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Version=1.0\n"
                          "Name=\\s\n"
                          "Comment=%1 between dock apps, made with Tarvik\n"
                          "Icon=%2\n"
                          "Exec=true\n"
                          "Terminal=false\n"
                          "StartupNotify=false\n"
                          "NoDisplay=true\n")
        .arg(DockSpacers::title(kind), blankIcon);
}

QString linkHandler(const QString& tarvik) {
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Version=1.0\n"
                          "Name=Tarvik\n"
                          "Comment=Opens Tarvik's links from dock folders\n"
                          "Icon=org.pellor.tarvik\n"
                          "Exec=%1 %u\n"
                          "Terminal=false\n"
                          "NoDisplay=true\n"
                          "MimeType=x-scheme-handler/tarvik;\n")
        .arg(LoginItem::quoteExecArgument(tarvik));
}

QString loginAgent(const QString& tarvik) {
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Version=1.0\n"
                          "Name=Tarvik Dock Folders\n"
                          "Comment=Starts the helpers of Tarvik's dock folders when you sign in\n"
                          "Icon=org.pellor.tarvik\n"
                          "Exec=%1 --launch-folders\n"
                          "Terminal=false\n"
                          "NoDisplay=true\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(LoginItem::quoteExecArgument(tarvik));
}

} // namespace tarvik::LauncherEntry
