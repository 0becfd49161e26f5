#pragma once

#include <QHostAddress>
#include <cstdint>
#include <vector>

namespace tarvik::platform {

// The far end of a TCP connection.
struct TcpPeer {
    QHostAddress address;
    quint16 port = 0;
};

// One of this process's TCP connections and how much of what it sent the peer has acknowledged.
struct TcpAcked {
    std::uint64_t socket = 0; // the socket's inode: tells connections apart while they are open
    std::int64_t bytes = 0;   // the kernel's tcpi_bytes_acked
};

// This process's TCP connections to any of `peers`, each read from the kernel at once, so that
// nothing still queued in a send buffer or in flight counts. Connections that close meanwhile
// are left out.
std::vector<TcpAcked> ackedTowards(const std::vector<TcpPeer>& peers);

} // namespace tarvik::platform
