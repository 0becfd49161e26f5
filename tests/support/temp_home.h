#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace tarvik::test {

// A temporary home: HOME and the XDG folders point into it for the life of the object, and
// are put back afterwards.
class TempHome {
public:
    TempHome() {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
            const char* v = std::getenv(name);
            saved_[name] = v ? std::optional<std::string>(v) : std::nullopt;
        }
        ::setenv("HOME", path().toLocal8Bit().constData(), 1);
        ::setenv("XDG_CONFIG_HOME", config().toLocal8Bit().constData(), 1);
        ::setenv("XDG_DATA_HOME", data().toLocal8Bit().constData(), 1);
    }
    ~TempHome() {
        for (const auto& [name, value] : saved_) {
            if (value) {
                ::setenv(name.c_str(), value->c_str(), 1);
            } else {
                ::unsetenv(name.c_str());
            }
        }
    }
    TempHome(const TempHome&) = delete;
    TempHome& operator=(const TempHome&) = delete;

    QString path() const { return dir_.path(); }
    QString config() const { return dir_.path() + QStringLiteral("/.config"); }
    QString data() const { return dir_.path() + QStringLiteral("/.local/share"); }

private:
    QTemporaryDir dir_;
    std::map<std::string, std::optional<std::string>> saved_;
};

QByteArray readAll(const QString& path);
void writeFile(const QString& path, const QByteArray& contents);

} // namespace tarvik::test
