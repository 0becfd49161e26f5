#pragma once

// GNOME Shell's list of favourite apps (the Dock) through the real GSettings stack: a compiled
// org.gnome.shell schema and the keyfile backend, in a home of the test process's own. GLib
// reads the schema folders and the user's folders once, on first use, so this is set up in the
// test program's main before anything touches GSettings, and lasts for the whole process.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdlib>
#include <utility>

namespace tarvik::test {

class GnomeShellSettings {
public:
    // Set in a child run of the test program: no GNOME Shell schema at all.
    static constexpr const char* kAbsentVariable = "TARVIK_TEST_WITHOUT_GNOME_SHELL";

    static bool schemaWanted() { return qEnvironmentVariableIsEmpty(kAbsentVariable); }

    // False with `error` set when the schema couldn't be compiled.
    static bool setUp(QString* error) {
        const QString root = dir().path();
        const QString schemas = root + QStringLiteral("/schemas");
        QDir().mkpath(schemas);
        QDir().mkpath(home() + QStringLiteral("/.config"));
        QDir().mkpath(applications());
        // Installed apps for the app picker: GIO too reads its folders once.
        for (const auto& [id, name] : {std::pair{"org.example.Alpha", "Alpha Notes"},
                                       std::pair{"org.example.Beta", "Beta Player"}}) {
            QFile entry(applications() + QLatin1Char('/') + QLatin1String(id) +
                        QStringLiteral(".desktop"));
            if (!entry.open(QIODevice::WriteOnly) ||
                entry.write(QByteArray("[Desktop Entry]\nType=Application\nName=") + name +
                            "\nExec=true\n") < 0) {
                *error = QStringLiteral("can't write %1").arg(entry.fileName());
                return false;
            }
        }
        if (schemaWanted()) {
            if (!QFile::copy(
                    QStringLiteral(TARVIK_FIXTURES "/gnome-shell/org.gnome.shell.gschema.xml"),
                    schemas + QStringLiteral("/org.gnome.shell.gschema.xml"))) {
                *error = QStringLiteral("can't copy the schema");
                return false;
            }
            if (QProcess::execute(QStringLiteral("glib-compile-schemas"), {schemas}) != 0) {
                *error = QStringLiteral("glib-compile-schemas failed");
                return false;
            }
        } else {
            // The system's own schemas (a GNOME Shell installed here) stay out of reach too.
            ::setenv("XDG_DATA_DIRS", QFile::encodeName(root + "/no-system-data").constData(), 1);
        }
        const QProcessEnvironment env = environment();
        for (const QString& name : env.keys()) {
            ::setenv(name.toLocal8Bit().constData(), env.value(name).toLocal8Bit().constData(), 1);
        }
        return true;
    }

    static QString home() { return dir().path() + QStringLiteral("/home"); }
    static QString applications() { return home() + QStringLiteral("/.local/share/applications"); }

    // The environment another process needs to see the same settings.
    static QProcessEnvironment environment() {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("GSETTINGS_SCHEMA_DIR"),
                   dir().path() + QStringLiteral("/schemas"));
        env.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("keyfile"));
        env.insert(QStringLiteral("HOME"), home());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home() + QStringLiteral("/.config"));
        env.insert(QStringLiteral("XDG_DATA_HOME"), home() + QStringLiteral("/.local/share"));
        return env;
    }

    // `gsettings get|set org.gnome.shell favorite-apps …` as a separate process; its output.
    static QString gsettings(const QStringList& arguments) {
        QProcess p;
        p.setProcessEnvironment(environment());
        p.start(QStringLiteral("gsettings"), arguments);
        p.waitForFinished(30000);
        return QString::fromUtf8(p.readAllStandardOutput()).trimmed();
    }
    static QString favourites() {
        return gsettings({QStringLiteral("get"), QStringLiteral("org.gnome.shell"),
                          QStringLiteral("favorite-apps")});
    }
    static void setFavourites(const QString& gvariant) {
        gsettings({QStringLiteral("set"), QStringLiteral("org.gnome.shell"),
                   QStringLiteral("favorite-apps"), gvariant});
    }

private:
    static QTemporaryDir& dir() {
        static QTemporaryDir d;
        return d;
    }
};

} // namespace tarvik::test
