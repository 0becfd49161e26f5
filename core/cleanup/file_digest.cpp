#include "core/cleanup/file_digest.h"

#include "core/sys/file_calls.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <openssl/evp.h>
#include <unistd.h>

namespace tarvik {
namespace {

// Well under the 1 MiB the reads may take: many threads hash at once, each with its buffer.
constexpr std::size_t kChunk = 256 * 1024;

const EVP_MD* sha256Method() {
    static const EVP_MD* md = [] {
        const EVP_MD* fetched = EVP_MD_fetch(nullptr, "SHA256", nullptr);
        return fetched != nullptr ? fetched : EVP_sha256();
    }();
    return md;
}

struct ContextFree {
    void operator()(EVP_MD_CTX* c) const { EVP_MD_CTX_free(c); }
};

// Reads up to `want` bytes, as many calls as it takes; -1 on a read error.
ssize_t readFully(int fd, char* into, std::size_t want) {
    std::size_t got = 0;
    while (got < want) {
        const ssize_t n = sys::read(fd, into + got, want - got);
        if (n < 0) {
            return -1;
        }
        if (n == 0) {
            break;
        }
        got += static_cast<std::size_t>(n);
    }
    return static_cast<ssize_t>(got);
}

} // namespace

std::optional<Sha256> sha256OfFile(const char* path, std::int64_t limit,
                                   std::optional<std::int64_t> expectedLength) {
    thread_local std::unique_ptr<EVP_MD_CTX, ContextFree> context(EVP_MD_CTX_new());
    // Not zeroed: a buffer only ever read into, so the pages a short file never reaches stay
    // untouched and cost no memory.
    thread_local std::unique_ptr<char[]> buffer(new char[kChunk]);
    EVP_MD_CTX* ctx = context.get();
    if (ctx == nullptr || EVP_DigestInit_ex(ctx, sha256Method(), nullptr) != 1) {
        return std::nullopt;
    }
    const int fd = sys::open(path, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        return std::nullopt;
    }
    // With a known length the last read is exactly what is left, and a limited hash needs no
    // read past it to find the end.
    const std::int64_t wanted = limit >= 0 && expectedLength ? std::min(limit, *expectedLength)
                                : limit >= 0                 ? limit
                                : expectedLength             ? *expectedLength
                                                             : -1;
    if (wanted < 0 || wanted > static_cast<std::int64_t>(kChunk)) {
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    bool ok = true;
    std::int64_t total = 0;
    while (ok && (wanted < 0 || total < wanted)) {
        const std::size_t want =
            wanted < 0 ? kChunk
                       : static_cast<std::size_t>(std::min<std::int64_t>(kChunk, wanted - total));
        const ssize_t n = readFully(fd, buffer.get(), want);
        ok = n >= 0 && EVP_DigestUpdate(ctx, buffer.get(), static_cast<std::size_t>(n)) == 1;
        total += n;
        if (n < static_cast<ssize_t>(want)) {
            break; // the end of the file
        }
    }
    // The whole file: one more byte would mean it grew since it was measured.
    if (ok && limit < 0 && expectedLength && total == *expectedLength) {
        char extra = 0;
        ok = sys::read(fd, &extra, 1) == 0;
    }
    sys::close(fd);
    if (!ok || (wanted >= 0 && expectedLength && total != wanted)) {
        return std::nullopt;
    }
    Sha256 digest{};
    unsigned length = 0;
    if (EVP_DigestFinal_ex(ctx, digest.data(), &length) != 1 || length != digest.size()) {
        return std::nullopt;
    }
    return digest;
}

QString hexDigest(const Sha256& digest) {
    static constexpr char kHex[] = "0123456789abcdef";
    QString out(static_cast<qsizetype>(digest.size() * 2), Qt::Uninitialized);
    QChar* p = out.data();
    for (const unsigned char b : digest) {
        *p++ = QLatin1Char(kHex[b >> 4]);
        *p++ = QLatin1Char(kHex[b & 15]);
    }
    return out;
}

} // namespace tarvik
