// The window as a library of its own, which `tarvik` loads only when the window opens: the
// commands never load Qt Widgets and the rest of the window's libraries.
#include "app/shell/gui_main.h"

extern "C" __attribute__((visibility("default"))) int tarvik_run_window(int argc, char** argv) {
    return tarvik::runGui(argc, argv);
}
