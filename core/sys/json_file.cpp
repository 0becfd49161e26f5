#include "core/sys/json_file.h"

#include "core/sys/directory_handle.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace tarvik::JsonFile {

Contents read(const QString& path) {
    Contents c;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        c.state = QFileInfo::exists(path) ? State::Unreadable : State::Missing;
        return c;
    }
    if (f.size() > kLargest) {
        c.state = State::Damaged;
        return c;
    }
    QJsonParseError error{};
    c.document = QJsonDocument::fromJson(f.readAll(), &error);
    c.state = error.error == QJsonParseError::NoError ? State::Read : State::Damaged;
    if (c.state == State::Damaged) {
        c.document = {};
    }
    return c;
}

bool update(const QString& path, const std::function<void(QJsonDocument&)>& change) {
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        return false;
    }
    const UniqueFd lock(::open(QFile::encodeName(path + QStringLiteral(".lock")).constData(),
                               O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock.valid()) {
        return false;
    }
    while (::flock(lock.get(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    Contents c = read(path);
    if (c.state == State::Unreadable) {
        return false;
    }
    if (c.state == State::Damaged) {
        const QString aside = path + QStringLiteral(".damaged");
        QFile::remove(aside);
        if (!QFile::rename(path, aside)) {
            return false;
        }
    }
    change(c.document);
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly)) {
        return false;
    }
    f.write(c.document.toJson(QJsonDocument::Indented));
    return f.commit(); // the lock goes with the descriptor
}

} // namespace tarvik::JsonFile
