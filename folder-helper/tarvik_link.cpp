#include "folder-helper/tarvik_link.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

namespace tarvik {

bool sendToTarvik(const QString& tarvik, const QString& link) {
    if (QFileInfo(tarvik).isExecutable()) {
        return QProcess::startDetached(tarvik, {link});
    }
    return QDesktopServices::openUrl(QUrl(link));
}

QString tarvikBesideHelper() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/tarvik");
}

} // namespace tarvik
