// A real TCP connection over loopback whose receiving end reads nothing at first, then
// everything.
#include "core/sys/tcp_acked.h"

#include <QElapsedTimer>
#include <QThread>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace tarvik::platform;

namespace {

struct Descriptor {
    int fd;
    explicit Descriptor(int f) : fd(f) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (fd >= 0) {
            close(fd);
        }
    }
};

std::int64_t ackedBytes(const TcpPeer& peer) {
    const auto found = ackedTowards({peer});
    return found.size() == 1 ? found.front().bytes : -1;
}

} // namespace

TEST(TcpAcked, CountsOnlyWhatThePeerReceivedNotWhatWaitsToBeSent) {
    Descriptor listener(socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_GE(listener.fd, 0);
    // A small receive window, so that most of what is written waits on the sending side.
    const int small = 4096;
    ASSERT_EQ(setsockopt(listener.fd, SOL_SOCKET, SO_RCVBUF, &small, sizeof small), 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(listener.fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener.fd, 1), 0);
    socklen_t length = sizeof address;
    ASSERT_EQ(getsockname(listener.fd, reinterpret_cast<sockaddr*>(&address), &length), 0);
    const TcpPeer server{QHostAddress::LocalHost, ntohs(address.sin_port)};

    Descriptor client(socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(connect(client.fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    Descriptor peer(accept(listener.fd, nullptr, nullptr));
    ASSERT_GE(peer.fd, 0);
    // Only the client's end is connected to the server's address and port.
    const auto connected = ackedTowards({server});
    ASSERT_EQ(connected.size(), 1u);
    const std::int64_t handshake = connected.front().bytes; // the kernel counts the SYN
    EXPECT_LE(handshake, 1);
    EXPECT_GT(connected.front().socket, 0u);
    EXPECT_TRUE(ackedTowards({{QHostAddress::LocalHost, 1}}).empty());
    EXPECT_TRUE(ackedTowards({}).empty());

    // Written until the send buffer is full: the kernel took it all, the peer only a window.
    const std::vector<char> block(64 * 1024, 'x');
    std::int64_t written = 0;
    for (ssize_t n; (n = send(client.fd, block.data(), block.size(), MSG_DONTWAIT)) > 0;) {
        written += n;
    }
    ASSERT_GT(written, 0);
    const std::int64_t early = ackedBytes(server) - handshake;
    EXPECT_GE(early, 0);
    EXPECT_LT(early, written / 2) << "written " << written;

    // Once the peer has read everything, all of it is acknowledged.
    std::vector<char> sink(256 * 1024);
    for (std::int64_t read = 0; read < written;) {
        const ssize_t n = recv(peer.fd, sink.data(), sink.size(), 0);
        ASSERT_GT(n, 0);
        read += n;
    }
    QElapsedTimer clock;
    clock.start();
    while (ackedBytes(server) < handshake + written && clock.elapsed() < 2000) {
        QThread::msleep(5); // the last acknowledgement may still be on its way
    }
    EXPECT_EQ(ackedBytes(server), handshake + written);
    EXPECT_EQ(ackedTowards({server}).front().socket, connected.front().socket);
}
