#pragma once

namespace tarvik::cli {

// Starts the window; absent in a headless build.
using GuiEntry = int (*)(int argc, char** argv);

// The whole program: a command when one is named, the launch of Dock folder helpers with
// --launch-folders, otherwise the window (or, without a display, the machine summary).
int run(int argc, char** argv, GuiEntry gui);

} // namespace tarvik::cli
