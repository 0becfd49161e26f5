// A fixed one-way delay for the shaped-link benchmark. The kernel here has no netem, so the
// benchmark sends each packet it wants delayed to an NFQUEUE (iptables -j NFQUEUE) and this
// program holds it there for the configured time, then accepts it.
//
// It copies next to nothing: it asks for one byte of each packet (enough for the kernel to
// report the length) and takes GSO super-packets whole (NFQA_CFG_F_GSO), so the kernel does not
// segment them for it. The delay is the same for every packet, so packets come due in the order
// they arrived; the ones due are released with one batch verdict ("accept every id up to N"),
// whatever their number. That keeps the cost to one receive per wake-up plus one send per
// release, well under what a 1 Gbit/s link of 1,500-byte packets asks for.
//
// usage: tarvik_bench_delay_line --queue N --delay-us MICROSECONDS [--realtime]
// It prints "ready" once bound to the queue and, when stopped (SIGTERM, SIGINT), accepts what
// it still holds and prints what it did as one line of JSON.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <endian.h>
#include <libmnl/libmnl.h>
#include <libnetfilter_queue/libnetfilter_queue.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nfnetlink.h>
#include <linux/netfilter/nfnetlink_queue.h>
#include <poll.h>
#include <sched.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <vector>

namespace {

volatile std::sig_atomic_t stopRequested = 0;

void onStop(int) {
    stopRequested = 1;
}

std::int64_t nowNs() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return std::int64_t{t.tv_sec} * 1'000'000'000 + t.tv_nsec;
}

[[noreturn]] void die(const char* what) {
    std::fprintf(stderr, "delay line: %s: %s\n", what, std::strerror(errno));
    std::exit(1);
}

struct Held {
    std::uint32_t id;
    std::int64_t dueNs;
};

struct Stats {
    std::uint64_t packets = 0;
    std::uint64_t gsoPackets = 0;
    std::uint64_t bytes = 0;
    std::uint64_t releases = 0;
    std::uint64_t overruns = 0; // ENOBUFS: the kernel could not hand us packets, and dropped them
    std::size_t maxHeld = 0;
    std::int64_t maxLateNs = 0;  // how long after its due time a packet was released, at worst
    std::int64_t maxEarlyNs = 0; // and how long before it
    std::int64_t sumLateNs = 0;
};

class DelayLine {
public:
    DelayLine(std::uint32_t queue, std::int64_t delayNs) : queue_(queue), delayNs_(delayNs) {
        socket_ = mnl_socket_open(NETLINK_NETFILTER);
        if (socket_ == nullptr) {
            die("netlink socket");
        }
        if (mnl_socket_bind(socket_, 0, MNL_SOCKET_AUTOPID) < 0) {
            die("netlink bind");
        }
        portId_ = mnl_socket_get_portid(socket_);
        // Room for a few hundred thousand queued-packet messages: at 1 Gbit/s a burst of
        // packets must never find the socket full (the kernel would drop them).
        const int bufferBytes = 64 * 1024 * 1024;
        setsockopt(mnl_socket_get_fd(socket_), SOL_SOCKET, SO_RCVBUFFORCE, &bufferBytes,
                   sizeof bufferBytes);
        buffer_.resize(1024 * 1024);

        nlmsghdr* bind = nfq_nlmsg_put(buffer_.data(), NFQNL_MSG_CONFIG, queue_);
        nfq_nlmsg_cfg_put_cmd(bind, AF_INET, NFQNL_CFG_CMD_BIND);
        request(bind, "bind the queue");

        nlmsghdr* params = nfq_nlmsg_put(buffer_.data(), NFQNL_MSG_CONFIG, queue_);
        // One byte of each packet, the least that makes the kernel report its length.
        nfq_nlmsg_cfg_put_params(params, NFQNL_COPY_PACKET, 1);
        mnl_attr_put_u32(params, NFQA_CFG_FLAGS, htobe32(NFQA_CFG_F_GSO));
        mnl_attr_put_u32(params, NFQA_CFG_MASK, htobe32(NFQA_CFG_F_GSO));
        nfq_nlmsg_cfg_put_qmaxlen(params, 1'000'000);
        request(params, "configure the queue");
    }

    void run() {
        // The stop signals are blocked except while waiting, so none slips in unnoticed between
        // the check of stopRequested and the wait.
        sigset_t stops;
        sigemptyset(&stops);
        sigaddset(&stops, SIGTERM);
        sigaddset(&stops, SIGINT);
        sigprocmask(SIG_BLOCK, &stops, &waitMask_);
        const int fd = mnl_socket_get_fd(socket_);
        std::puts("ready");
        std::fflush(stdout);
        while (stopRequested == 0) {
            releaseDue(nowNs());
            timespec wait{};
            timespec* timeout = nullptr;
            std::int64_t wakeAt = 0;
            if (!held_.empty()) {
                // A timed wake-up comes late by tens of microseconds in a VM: ask for it that
                // much earlier (a running average of how late the last ones were).
                wakeAt = held_.front().dueNs - wakeLateNs_;
                const std::int64_t ns = std::max<std::int64_t>(0, wakeAt - nowNs());
                wait.tv_sec = ns / 1'000'000'000;
                wait.tv_nsec = ns % 1'000'000'000;
                timeout = &wait;
            }
            pollfd p{fd, POLLIN, 0};
            const int ready = ppoll(&p, 1, timeout, &waitMask_);
            if (ready < 0 && errno != EINTR) {
                die("poll");
            }
            if (ready == 0) {
                const std::int64_t late = std::clamp<std::int64_t>(nowNs() - wakeAt, 0, 200'000);
                wakeLateNs_ = (wakeLateNs_ * 7 + late) / 8;
            }
            if (ready > 0) {
                receiveAll(fd);
            }
        }
        if (!held_.empty()) {
            verdict(held_.back().id); // let nothing stay stuck behind us
            held_.clear();
        }
        const double meanLateUs =
            stats_.packets == 0 ? 0.0 : double(stats_.sumLateNs) / double(stats_.packets) / 1e3;
        std::printf("{\"queue\": %u, \"delayUs\": %lld, \"packets\": %llu, \"gsoPackets\": %llu, "
                    "\"bytes\": %llu, \"releases\": %llu, \"overruns\": %llu, \"maxHeld\": %zu, "
                    "\"meanLateUs\": %.1f, \"maxLateUs\": %.1f, \"maxEarlyUs\": %.1f}\n",
                    queue_, static_cast<long long>(delayNs_ / 1000),
                    static_cast<unsigned long long>(stats_.packets),
                    static_cast<unsigned long long>(stats_.gsoPackets),
                    static_cast<unsigned long long>(stats_.bytes),
                    static_cast<unsigned long long>(stats_.releases),
                    static_cast<unsigned long long>(stats_.overruns), stats_.maxHeld, meanLateUs,
                    double(stats_.maxLateNs) / 1e3, double(stats_.maxEarlyNs) / 1e3);
        std::fflush(stdout);
    }

    ~DelayLine() { mnl_socket_close(socket_); }
    DelayLine(const DelayLine&) = delete;
    DelayLine& operator=(const DelayLine&) = delete;

private:
    // Sends one configuration message and waits for the kernel's acknowledgement.
    void request(nlmsghdr* message, const char* what) {
        message->nlmsg_flags |= NLM_F_ACK;
        message->nlmsg_seq = ++sequence_;
        if (mnl_socket_sendto(socket_, message, message->nlmsg_len) < 0) {
            die(what);
        }
        const ssize_t n = mnl_socket_recvfrom(socket_, buffer_.data(), buffer_.size());
        if (n < 0 || mnl_cb_run(buffer_.data(), static_cast<std::size_t>(n), sequence_, portId_,
                                nullptr, nullptr) < 0) {
            die(what);
        }
    }

    void receiveAll(int fd) {
        for (;;) {
            const ssize_t n = recv(fd, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
            if (n < 0) {
                if (errno == ENOBUFS) {
                    ++stats_.overruns;
                    continue;
                }
                if (errno == EAGAIN || errno == EINTR) {
                    return;
                }
                die("receive");
            }
            arrivalNs_ = nowNs();
            if (mnl_cb_run(buffer_.data(), static_cast<std::size_t>(n), 0, portId_, &onPacket,
                           this) < 0) {
                die("parse");
            }
        }
    }

    static int onPacket(const nlmsghdr* message, void* self) {
        auto* line = static_cast<DelayLine*>(self);
        nlattr* attr[NFQA_MAX + 1] = {};
        if (nfq_nlmsg_parse(message, attr) < 0 || attr[NFQA_PACKET_HDR] == nullptr) {
            return MNL_CB_OK; // not a queued packet
        }
        const auto* header =
            static_cast<const nfqnl_msg_packet_hdr*>(mnl_attr_get_payload(attr[NFQA_PACKET_HDR]));
        line->held_.push_back({be32toh(header->packet_id), line->arrivalNs_ + line->delayNs_});
        line->stats_.maxHeld = std::max(line->stats_.maxHeld, line->held_.size());
        ++line->stats_.packets;
        if (attr[NFQA_CAP_LEN] != nullptr) {
            line->stats_.bytes += be32toh(mnl_attr_get_u32(attr[NFQA_CAP_LEN]));
        }
        if (attr[NFQA_SKB_INFO] != nullptr &&
            (be32toh(mnl_attr_get_u32(attr[NFQA_SKB_INFO])) & NFQA_SKB_GSO) != 0) {
            ++line->stats_.gsoPackets;
        }
        return MNL_CB_OK;
    }

    // Releases what is due now, or within the next few microseconds (it would be late if it
    // waited for another wake-up).
    void releaseDue(std::int64_t now) {
        constexpr std::int64_t kEarlyNs = 20'000;
        if (held_.empty() || held_.front().dueNs > now + kEarlyNs) {
            return;
        }
        std::uint32_t last = 0;
        while (!held_.empty() && held_.front().dueNs <= now + kEarlyNs) {
            const std::int64_t late = now - held_.front().dueNs;
            stats_.sumLateNs += late;
            stats_.maxLateNs = std::max(stats_.maxLateNs, late);
            stats_.maxEarlyNs = std::max(stats_.maxEarlyNs, -late);
            last = held_.front().id;
            held_.pop_front();
        }
        verdict(last);
        ++stats_.releases;
    }

    // Accepts every held packet whose id is at most `last`.
    void verdict(std::uint32_t last) {
        char out[512];
        nlmsghdr* message = nfq_nlmsg_put(out, NFQNL_MSG_VERDICT_BATCH, queue_);
        nfq_nlmsg_verdict_put(message, static_cast<int>(last), NF_ACCEPT);
        if (mnl_socket_sendto(socket_, message, message->nlmsg_len) < 0) {
            die("verdict");
        }
    }

    std::uint32_t queue_;
    std::int64_t delayNs_;
    mnl_socket* socket_ = nullptr;
    unsigned portId_ = 0;
    unsigned sequence_ = 0;
    std::vector<char> buffer_;
    std::deque<Held> held_;
    std::int64_t arrivalNs_ = 0;
    std::int64_t wakeLateNs_ = 0;
    sigset_t waitMask_{};
    Stats stats_;
};

} // namespace

int main(int argc, char** argv) {
    long queue = -1;
    long long delayUs = -1;
    bool realtime = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "--queue" && i + 1 < argc) {
            queue = std::strtol(argv[++i], nullptr, 10);
        } else if (arg == "--delay-us" && i + 1 < argc) {
            delayUs = std::strtoll(argv[++i], nullptr, 10);
        } else if (arg == "--realtime") {
            realtime = true;
        } else {
            queue = -1;
            break;
        }
    }
    if (queue < 0 || queue > 65535 || delayUs < 0) {
        std::fprintf(stderr, "usage: %s --queue N --delay-us MICROSECONDS [--realtime]\n", argv[0]);
        return 2;
    }
    // Wake-ups on time: no timer slack, and (with --realtime) ahead of the programs under test,
    // so that a busy core does not lengthen the delay.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    if (realtime) {
        sched_param p{};
        p.sched_priority = 10;
        if (sched_setscheduler(0, SCHED_FIFO, &p) != 0) {
            die("real-time priority");
        }
    }
    struct sigaction stop {};
    stop.sa_handler = onStop; // no SA_RESTART: ppoll returns EINTR and the loop ends
    sigaction(SIGTERM, &stop, nullptr);
    sigaction(SIGINT, &stop, nullptr);

    DelayLine line(static_cast<std::uint32_t>(queue), delayUs * 1000);
    line.run();
    return 0;
}
