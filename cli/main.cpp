#include "cli/command_line.h"

#ifdef TARVIK_WITH_GUI
#include "cli/output.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

namespace {

// The window lives in a library beside this program (a build tree) or in its library folder
// (an installation), and is loaded only to open it: the commands start faster and smaller
// without Qt Widgets, Gui, Svg and Charts.
int openWindow(int argc, char** argv) {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path here = error ? std::filesystem::path(".") : self.parent_path();
    std::string why;
    for (const auto& candidate :
         {here / "tarvik-window.so", here / TARVIK_WINDOW_DIR / "tarvik-window.so"}) {
        void* module = ::dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) {
            const char* e = ::dlerror();
            if (why.empty() || std::filesystem::exists(candidate)) {
                why = e != nullptr ? e : candidate.string();
            }
            continue;
        }
        using Entry = int (*)(int, char**);
        if (auto* run = reinterpret_cast<Entry>(::dlsym(module, "tarvik_run_window"))) {
            return run(argc, argv);
        }
        why = candidate.string() + " is not Tarvik's window";
    }
    tarvik::cli::printError(
        QStringLiteral("Couldn't open the window: %1. The commands work without it (tarvik "
                       "--help).")
            .arg(QString::fromStdString(why)));
    return 1;
}

} // namespace
#endif

int main(int argc, char** argv) {
#ifdef TARVIK_WITH_GUI
    return tarvik::cli::run(argc, argv, &openWindow);
#else
    return tarvik::cli::run(argc, argv, nullptr);
#endif
}
