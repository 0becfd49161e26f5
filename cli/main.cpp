#include "cli/command_line.h"

#ifdef TARVIK_WITH_GUI
#include "app/shell/gui_main.h"
#endif

int main(int argc, char** argv) {
#ifdef TARVIK_WITH_GUI
    return tarvik::cli::run(argc, argv, &tarvik::runGui);
#else
    return tarvik::cli::run(argc, argv, nullptr);
#endif
}
