#pragma once

#include <string>
#include <sys/mount.h>

namespace tarvik::test {

// A mount made by a test (root only), detached again when the object goes.
struct Mounted {
    std::string at;
    bool ok = false;
    Mounted(const std::string& source, const std::string& target, const char* type,
            unsigned long flags, const char* data = nullptr)
        : at(target) {
        ok = ::mount(source.c_str(), target.c_str(), type, flags, data) == 0;
    }
    // A tmpfs of `size` ("size=64k").
    static Mounted tmpfs(const std::string& target, const char* size) {
        return Mounted("tarvik-test", target, "tmpfs", 0, size);
    }
    ~Mounted() {
        if (ok) {
            ::umount2(at.c_str(), MNT_DETACH);
        }
    }
    Mounted(Mounted&& o) noexcept : at(std::move(o.at)), ok(o.ok) { o.ok = false; }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;
};

} // namespace tarvik::test
