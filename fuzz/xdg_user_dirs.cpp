// user-dirs.dirs, the shell-quoted file that names a person's Downloads and other folders.
#include "core/sys/xdg_user_dirs.h"

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tarvik::xdg::parseUserDirs(tarvik::fuzz::text(data, size), QStringLiteral("/home/fuzz"));
    return 0;
}
