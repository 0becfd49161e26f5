#include "cli/command_line.h"

#include "cli/commands.h"
#include "cli/output.h"
#include "dock/dock_folders.h"
#include "dock/folder_link.h"

#include <QCoreApplication>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace tarvik::cli {
namespace {

bool hasDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* v = std::getenv(name);
        if (v != nullptr && *v != '\0') {
            return true;
        }
    }
    return false;
}

void nameApplication() {
    QCoreApplication::setOrganizationName(QStringLiteral("Tarvik"));
    QCoreApplication::setApplicationName(QStringLiteral("Tarvik"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TARVIK_VERSION));
}

int runHeadless(int argc, char** argv, const std::function<int()>& work) {
    QCoreApplication app(argc, argv);
    nameApplication();
    return work();
}

// Qt's own window options ("-platform offscreen", "-style Fusion") pass through to the window;
// a bare word that follows no option is a mistyped command, and "--" options are ours alone.
std::optional<std::string> strayArgument(const std::vector<std::string>& extras) {
    for (std::size_t i = 0; i < extras.size(); ++i) {
        const bool qtOption = extras[i].starts_with('-') && !extras[i].starts_with("--");
        const bool afterQtOption =
            i > 0 && extras[i - 1].starts_with('-') && !extras[i - 1].starts_with("--");
        if (!qtOption && !afterQtOption) {
            return extras[i];
        }
    }
    return std::nullopt;
}

// A link from a folder's helper: the window takes it (and hands it to a Tarvik already running);
// without a window a remove link is carried out here and an open link can only be refused.
int runLink(int argc, char** argv, GuiEntry gui, const QString& text) {
    const std::optional<FolderLink> link = FolderLink::parse(text);
    if (!link) {
        printError(QStringLiteral("\"%1\" is not a Tarvik link. Folder links look like "
                                  "tarvik://folder/<id> or tarvik://folder/<id>/remove?app=<app>.")
                       .arg(text));
        return kExitUsage;
    }
    if (gui != nullptr && hasDisplay()) {
        return gui(argc, argv);
    }
    return runHeadless(argc, argv, [&link] {
        if (link->kind == FolderLink::Kind::Open) {
            printError(QStringLiteral("Tarvik's window isn't available here, so the folder can't "
                                      "be shown. Open Tarvik on a desktop to see it."));
            return kExitFailed;
        }
        const auto removal = DockFolders().applyRemoval(*link);
        if (!removal.removed) {
            printError(removal.message);
            return kExitFailed;
        }
        printLine(removal.message);
        return kExitOk;
    });
}

} // namespace

int run(int argc, char** argv, GuiEntry gui) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--launch-folders") == 0) {
            return runHeadless(argc, argv, runLaunchFolders);
        }
        if (const QString arg = QString::fromLocal8Bit(argv[i]); FolderLink::isMeantAsLink(arg)) {
            return runLink(argc, argv, gui, arg);
        }
    }

    CLI::App app{"Tarvik keeps this Linux machine in good order: junk, large and duplicate files, "
                 "live readings, processes, Homebrew, speed tests, agent usage and more.\n"
                 "Without a command it opens the window (or prints `status` when there is no "
                 "display).",
                 "tarvik"};
    app.set_version_flag("--version", std::string("tarvik ") + TARVIK_VERSION);
    bool loginItem = false;
    bool launchFolders = false;
    app.add_flag("--login-item", loginItem, "Started from the login autostart entry");
    app.add_flag("--launch-folders", launchFolders, "Start the Dock folder helpers and exit");
    auto* guiCmd = app.add_subcommand("gui", "Open the window");
    guiCmd->allow_extras();

    CommandResult result;
    addStatusCommand(app, result);
    addSettingsCommand(app, result);
    addMonitorCommand(app, result);
    addJunkCommand(app, result);
    addCleanCommand(app, result);
    addSizeCommand(app, result);
    addExclusionsCommand(app, result);
    addBrewCommand(app, result);
    addSpeedTestCommand(app, result);
    addProcessCommands(app, result);
    addAgentsCommand(app, result);
    addFilesCommands(app, result);
    addAwakeCommand(app, result);
    addDockCommand(app, result);
    // Only the window takes extra arguments (Qt's own options); commands stay strict, so this
    // comes after they are added.
    app.allow_extras();

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        printError(QString::fromStdString(e.what()));
        printError(QStringLiteral("Run `tarvik --help` to see the commands."));
        return kExitUsage;
    }

    if (result.run) {
        return runHeadless(argc, argv, result.run);
    }
    if (const auto stray =
            strayArgument(guiCmd->parsed() ? guiCmd->remaining() : app.remaining())) {
        printError(QStringLiteral("\"%1\" is not a tarvik command or option. Run `tarvik --help` "
                                  "to see them.")
                       .arg(QString::fromStdString(*stray)));
        return kExitUsage;
    }

    if (gui != nullptr && hasDisplay()) {
        return gui(argc, argv);
    }
    if (guiCmd->parsed()) {
        printError(gui == nullptr ? QStringLiteral("This tarvik was built without the window; "
                                                   "use its commands (tarvik --help).")
                                  : QStringLiteral("There is no display to open the window on."));
        return kExitFailed;
    }
    printError(QStringLiteral("No display was found, so here is the machine summary. Run "
                              "`tarvik --help` to see every command."));
    return runHeadless(argc, argv, [] { return printStatus(false); });
}

} // namespace tarvik::cli
