// Desktop entries (.desktop files), which name the processes of installed applications, and
// the cgroup line that tells a Flatpak application's id.
#include "core/monitor/process_naming.h"
#include "fuzz/fuzz_input.h"

using namespace tarvik;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::text(data, size);
    DesktopApplications::parseEntry(text, QStringLiteral("org.example.App"));
    DesktopApplications::flatpakId(text);
    return 0;
}
