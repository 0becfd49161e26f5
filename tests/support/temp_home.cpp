#include "tests/support/temp_home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tarvik::test {

QByteArray readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& contents) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        f.write(contents);
    }
}

} // namespace tarvik::test
