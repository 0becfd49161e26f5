#pragma once

#include "core/monitor/system_health.h"
#include "core/sys/logind.h"

#include <CLI/CLI.hpp>
#include <functional>

namespace tarvik::cli {

// Exit codes shared by every command.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;   // bad input: an unknown key, a bad value, a wrong argument
inline constexpr int kExitRefused = 3; // the request was understood and declined on purpose

// The chosen command's work, set by its parser callback and run once the Qt application
// object exists.
struct CommandResult {
    std::function<int()> run;
};

// Each command file adds its subcommand to the top-level parser.
void addStatusCommand(CLI::App& app, CommandResult& result);
void addSettingsCommand(CLI::App& app, CommandResult& result);
void addMonitorCommand(CLI::App& app, CommandResult& result);
void addJunkCommand(CLI::App& app, CommandResult& result);
void addCleanCommand(CLI::App& app, CommandResult& result);
void addSizeCommand(CLI::App& app, CommandResult& result);
void addExclusionsCommand(CLI::App& app, CommandResult& result);
void addBrewCommand(CLI::App& app, CommandResult& result);
void addSpeedTestCommand(CLI::App& app, CommandResult& result);
void addProcessCommands(CLI::App& app, CommandResult& result);
void addAgentsCommand(CLI::App& app, CommandResult& result);
void addFilesCommands(CLI::App& app, CommandResult& result);
void addAwakeCommand(CLI::App& app, CommandResult& result);
void addDockCommand(CLI::App& app, CommandResult& result);

// The health issues one sample shows (no CPU history), for the summary.
std::vector<HealthIssue> quickHealthIssues();

// The inhibitor locks Tarvik processes hold now; nothing when logind can't be reached.
std::optional<std::vector<Logind::Inhibitor>> keepAwakeHolders();

// The machine summary, as `tarvik status` prints it.
int printStatus(bool asJson);

// Runs the launch of the Dock folder helpers; always exits 0.
int runLaunchFolders();

} // namespace tarvik::cli
