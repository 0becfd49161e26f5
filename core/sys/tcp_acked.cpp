#include "core/sys/tcp_acked.h"

#include <charconv>
#include <cstddef>
#include <cstring>
#include <dirent.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace tarvik::platform {
namespace {

bool connectedTo(int fd, const std::vector<TcpPeer>& peers) {
    int protocol = 0;
    socklen_t length = sizeof protocol;
    if (getsockopt(fd, SOL_SOCKET, SO_PROTOCOL, &protocol, &length) != 0 ||
        protocol != IPPROTO_TCP) {
        return false; // not a socket, or not TCP
    }
    sockaddr_storage address{};
    length = sizeof address;
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return false; // not connected
    }
    quint16 port = 0;
    if (address.ss_family == AF_INET) {
        port = ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
    } else if (address.ss_family == AF_INET6) {
        port = ntohs(reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port);
    } else {
        return false;
    }
    const QHostAddress host(reinterpret_cast<const sockaddr*>(&address));
    for (const TcpPeer& peer : peers) {
        // An IPv6 socket may reach an IPv4 server through a mapped address.
        if (peer.port == port && host.isEqual(peer.address, QHostAddress::ConvertV4MappedToIPv4)) {
            return true;
        }
    }
    return false;
}

} // namespace

std::vector<TcpAcked> ackedTowards(const std::vector<TcpPeer>& peers) {
    std::vector<TcpAcked> found;
    if (peers.empty()) {
        return found;
    }
    DIR* fds = opendir("/proc/self/fd");
    if (fds == nullptr) {
        return found;
    }
    while (const dirent* entry = readdir(fds)) {
        int fd = -1;
        const char* end = entry->d_name + std::strlen(entry->d_name);
        if (std::from_chars(entry->d_name, end, fd).ptr != end || fd == dirfd(fds)) {
            continue; // "." and "..", and the listing's own descriptor
        }
        // Another thread may close or reuse the descriptor meanwhile: each call checks again.
        if (!connectedTo(fd, peers)) {
            continue;
        }
        struct stat status {};
        tcp_info info{};
        socklen_t length = sizeof info;
        if (fstat(fd, &status) == 0 && getsockopt(fd, IPPROTO_TCP, TCP_INFO, &info, &length) == 0 &&
            length >= offsetof(tcp_info, tcpi_bytes_acked) + sizeof info.tcpi_bytes_acked) {
            found.push_back({status.st_ino, static_cast<std::int64_t>(info.tcpi_bytes_acked)});
        }
    }
    closedir(fds);
    return found;
}

} // namespace tarvik::platform
