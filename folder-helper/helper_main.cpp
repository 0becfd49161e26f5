// tarvik-folder FOLDER_FILE: a dock folder's apps as a popup grid.
// tarvik-folder --background FOLDER_FILE: the same folder's helper kept running without a
// window, so that the launcher's next click shows the popup at once.
// tarvik-folder --icons THEME (FOLDER_FILE NAME)…: draws each folder's icon set into the icon
// theme folder THEME, for Tarvik, whose commands don't load Qt's Gui.
#include "core/sys/single_instance.h"
#include "dock/folder_file.h"
#include "folder-helper/folder_icon_renderer.h"
#include "folder-helper/folder_popup.h"
#include "folder-helper/quit_on_terminate.h"
#include "folder-helper/resident_channel.h"
#include "folder-helper/tarvik_link.h"

#include <QApplication>
#include <QGuiApplication>
#include <QIcon>
#include <QStringList>
#include <QtConcurrent/QtConcurrentMap>
#include <cstdio>
#include <vector>

using namespace tarvik;

namespace {

void showRead(FolderPopup& popup, const FolderFileRead& read) {
    if (read.folder) {
        popup.showFolder(*read.folder);
    } else {
        popup.showProblem(read.problem);
    }
}

// Draws without a window or a display; fonts and image plugins need a Gui application.
int drawIcons(int argc, char** argv, const QStringList& args) {
    if (args.size() < 4 || args.size() % 2 != 0) {
        std::fputs("Usage: tarvik-folder --icons THEME FOLDER_FILE NAME [FOLDER_FILE NAME]…\n",
                   stderr);
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    std::vector<qsizetype> jobs;
    for (qsizetype i = 2; i < args.size(); i += 2) {
        jobs.push_back(i);
    }
    // Folders are drawn side by side: encoding the large sizes is most of the work.
    const QStringList problems = QtConcurrent::blockingMapped<QStringList>(jobs, [&](qsizetype i) {
        const FolderFileRead read = readFolderFile(args[i]);
        QString error = read.problem;
        if (read.folder &&
            FolderIconRenderer(*read.folder).writeIconSet(args[1], args[i + 1], &error)) {
            return QString();
        }
        return args[i + 1] + QStringLiteral(": ") + error + QLatin1Char('\n');
    });
    int failed = 0;
    for (const QString& problem : problems) {
        if (!problem.isEmpty()) {
            std::fputs(problem.toUtf8().constData(), stderr);
            ++failed;
        }
    }
    return failed == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    QStringList args;
    for (int i = 1; i < argc; ++i) {
        args << QString::fromLocal8Bit(argv[i]);
    }
    if (!args.isEmpty() && args.front() == QLatin1String("--icons")) {
        return drawIcons(argc, argv, args);
    }
    const bool background = !args.isEmpty() && args.front() == QLatin1String("--background");
    if (background) {
        args.removeFirst();
    }
    if (args.size() != 1 || args.front().startsWith(QLatin1String("--"))) {
        std::fputs("Usage: tarvik-folder [--background] FOLDER_FILE\n"
                   "Shows a Tarvik dock folder's apps. FOLDER_FILE is the folder's JSON file,\n"
                   "which Tarvik writes when it builds the folder's launcher.\n",
                   stderr);
        return 2;
    }
    const QString file = args.front();
    FolderFileRead read = readFolderFile(file);

    // The folder's launcher says StartupWMClass=<bundle identifier>: the window's class and the
    // Wayland app id tie the popup to the launcher in the dash.
    const QString identity =
        read.folder ? read.folder->bundleIdentifier() : QStringLiteral("tarvik-folder");
    QApplication::setApplicationName(identity);
    QGuiApplication::setDesktopFileName(identity);
    qputenv("RESOURCE_NAME", identity.toUtf8());
    QApplication app(argc, argv);
    // Outside a desktop session Qt looks only in hicolor, which has no generic icons; GNOME's
    // own theme is the one its apps and the dash fall back to.
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));

    FolderPopup popup(tarvikBesideHelper());
    if (!read.folder && background) {
        std::fprintf(stderr, "tarvik-folder: %s\n", qPrintable(read.problem));
        return 1;
    }
    if (!read.folder) {
        // No folder, so no resident helper to ask: say what is wrong with the file.
        showRead(popup, read);
        popup.popUp();
        return app.exec();
    }
    SingleInstance channel(ResidentChannel::name(read.folder->id));
    if (channel.notifyRunning(background ? ResidentChannel::kPing : ResidentChannel::kShow)) {
        return 0;
    }
    if (!background) {
        showRead(popup, read);
        popup.popUp();
        return app.exec();
    }
    if (!channel.listen()) {
        std::fputs("tarvik-folder: another helper holds this folder's socket; not staying.\n",
                   stderr);
        return 1;
    }
    QApplication::setQuitOnLastWindowClosed(false);
    quitOnTerminate(&app);
    QObject::connect(&channel, &SingleInstance::messageReceived, &popup,
                     [&](const QByteArray& message) {
                         if (message == ResidentChannel::kShow) {
                             // Read anew: Tarvik may have changed the folder since.
                             showRead(popup, readFolderFile(file));
                             popup.popUp();
                         }
                     });
    return app.exec();
}
