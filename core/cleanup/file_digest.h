#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <optional>

namespace tarvik {

using Sha256 = std::array<unsigned char, 32>;

// SHA-256 of a file's first `limit` bytes (all of it when `limit` is negative), read through a
// read-only handle in chunks of at most 1 MiB. None when the file can't be opened or read, is a
// symbolic link, or is not `expectedLength` bytes long when that is given (it changed since it
// was measured). Each thread keeps one digest context: OpenSSL looks a digest up under a lock
// every time one is started by name.
std::optional<Sha256> sha256OfFile(const char* path, std::int64_t limit = -1,
                                   std::optional<std::int64_t> expectedLength = std::nullopt);

QString hexDigest(const Sha256& digest);

} // namespace tarvik
