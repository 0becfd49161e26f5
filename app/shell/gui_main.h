#pragma once

namespace tarvik {

// Opens the window (or starts silently in the tray, as the start-up sequence decides).
int runGui(int argc, char** argv);

} // namespace tarvik
