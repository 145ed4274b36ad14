// The TFTP client of the simulated switch (see tftp.hpp).
#include "tftp.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace swsim::tftp {
namespace {

enum : uint16_t { kRrq = 1, kWrq = 2, kData = 3, kAck = 4, kError = 5 };
constexpr std::size_t kBlock = 512;

class Socket {
public:
    Socket() : fd_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~Socket() {
        if (fd_ >= 0) ::close(fd_);
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    int fd() const { return fd_; }

private:
    int fd_;
};

using Packet = std::vector<uint8_t>;

void put16(Packet &p, uint16_t v) {
    p.push_back(uint8_t(v >> 8));
    p.push_back(uint8_t(v));
}
uint16_t get16(const uint8_t *p) { return uint16_t(p[0] << 8 | p[1]); }

// RRQ/WRQ: opcode, file name, 0, "octet", 0.  Built as text first (GCC 12 at
// -O3 warns falsely on a range insert into a two-byte vector).
Packet request(uint16_t op, const std::string &name) {
    std::string body{char(op >> 8), char(op & 0xff)};
    body += name;
    body.push_back('\0');
    body += "octet";
    body.push_back('\0');
    return Packet(body.begin(), body.end());
}

// One exchange: sends `out` to `to` and waits for a packet from the server
// that `accept` takes (the first answer fixes the server's transfer port).
// Returns "" or the failure.
template <class Accept>
std::string exchange(const Socket &s, sockaddr_in &to, bool &bound, const Packet &out, Accept accept) {
    for (int attempt = 0; attempt <= kRetries; ++attempt) {
        if (::sendto(s.fd(), out.data(), out.size(), 0, reinterpret_cast<const sockaddr *>(&to), sizeof to) < 0)
            return std::string("cannot send: ") + std::strerror(errno);
        for (;;) {
            pollfd p{s.fd(), POLLIN, 0};
            const int ready = ::poll(&p, 1, kTimeoutMs);
            if (ready < 0 && errno == EINTR) continue;
            if (ready <= 0) break;  // timed out: send again
            uint8_t buf[4 + kBlock + 4];
            sockaddr_in from{};
            socklen_t len = sizeof from;
            const ssize_t n = ::recvfrom(s.fd(), buf, sizeof buf, 0, reinterpret_cast<sockaddr *>(&from), &len);
            if (n < 4 || from.sin_addr.s_addr != to.sin_addr.s_addr) continue;
            if (bound && from.sin_port != to.sin_port) continue;  // not our transfer
            if (get16(buf) == kError)
                return "the server refused: " + std::string(reinterpret_cast<char *>(buf + 4),
                                                            strnlen(reinterpret_cast<char *>(buf + 4), std::size_t(n) - 4));
            if (!accept(buf, std::size_t(n))) continue;
            if (!bound) {
                to.sin_port = from.sin_port;
                bound = true;
            }
            return {};
        }
    }
    return "no answer from the server";
}

sockaddr_in address(uint32_t addr, uint16_t port) {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(addr);
    to.sin_port = htons(port);
    return to;
}

}  // namespace

std::string get(uint32_t addr, uint16_t port, const std::string &name, std::size_t max, std::vector<uint8_t> &out) {
    Socket s;
    if (s.fd() < 0) return std::string("no socket: ") + std::strerror(errno);
    sockaddr_in to = address(addr, port);
    bool bound = false;
    out.clear();
    Packet send = request(kRrq, name);
    for (uint16_t block = 1;; ++block) {
        std::size_t got = 0;
        const std::string err = exchange(s, to, bound, send, [&](const uint8_t *p, std::size_t n) {
            if (get16(p) != kData || get16(p + 2) != block) return false;
            got = n - 4;
            if (out.size() + got <= max) out.insert(out.end(), p + 4, p + n);
            return true;
        });
        if (!err.empty()) return err;
        if (out.size() + (got == kBlock ? 1 : 0) > max) return "the file is larger than the store takes";
        send.clear();
        put16(send, kAck);
        put16(send, block);
        if (got < kBlock) {
            ::sendto(s.fd(), send.data(), send.size(), 0, reinterpret_cast<const sockaddr *>(&to), sizeof to);
            return {};
        }
    }
}

std::string put(uint32_t addr, uint16_t port, const std::string &name, const std::vector<uint8_t> &data) {
    Socket s;
    if (s.fd() < 0) return std::string("no socket: ") + std::strerror(errno);
    sockaddr_in to = address(addr, port);
    bool bound = false;
    Packet send = request(kWrq, name);
    for (uint16_t block = 0;; ++block) {
        const std::string err = exchange(s, to, bound, send, [&](const uint8_t *p, std::size_t) {
            return get16(p) == kAck && get16(p + 2) == block;
        });
        if (!err.empty()) return err;
        // The data packet just acknowledged was the last when it was short.
        if (block > 0 && send.size() - 4 < kBlock) return {};
        const std::size_t at = std::size_t(block) * kBlock;
        send.clear();
        put16(send, kData);
        put16(send, uint16_t(block + 1));
        const std::size_t n = std::min(kBlock, data.size() - std::min(at, data.size()));
        send.insert(send.end(), data.begin() + std::ptrdiff_t(at), data.begin() + std::ptrdiff_t(at + n));
    }
}

}  // namespace swsim::tftp
