// A trap destination for tests: a UDP socket on a loopback address that
// receives the switch's notifications, and a BER reader that takes them
// apart into version, community and PDU fields.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace simtest {

using Oid = std::vector<uint32_t>;

// One TLV of a BER encoding; constructed types carry their children.
struct Tlv {
    uint8_t tag = 0;
    std::vector<uint8_t> content;
    std::vector<Tlv> children;

    int64_t integer() const {
        int64_t v = content.empty() || !(content[0] & 0x80) ? 0 : -1;
        for (uint8_t b : content) v = int64_t(uint64_t(v) << 8 | b);
        return v;
    }
    std::string text() const { return std::string(content.begin(), content.end()); }
    Oid oid() const {
        Oid out;
        uint64_t v = 0;
        for (std::size_t i = 0; i < content.size(); ++i) {
            v = v << 7 | (content[i] & 0x7f);
            if (content[i] & 0x80) continue;
            if (out.empty()) {
                const uint32_t first = v < 80 ? uint32_t(v / 40) : 2;
                out.push_back(first);
                out.push_back(uint32_t(v - 40 * first));
            } else {
                out.push_back(uint32_t(v));
            }
            v = 0;
        }
        return out;
    }
    const Tlv &at(std::size_t i) const {
        if (i >= children.size()) throw std::runtime_error("BER: no element " + std::to_string(i));
        return children[i];
    }
};

// Reads one TLV at p (advancing it); throws on anything malformed.
inline Tlv read_tlv(const uint8_t *&p, const uint8_t *end) {
    auto need = [&](std::size_t n) {
        if (std::size_t(end - p) < n) throw std::runtime_error("BER: truncated");
    };
    need(2);
    Tlv t;
    t.tag = *p++;
    std::size_t len = *p++;
    if (len & 0x80) {
        const std::size_t k = len & 0x7f;
        if (k == 0 || k > 4) throw std::runtime_error("BER: bad length");
        need(k);
        len = 0;
        for (std::size_t i = 0; i < k; ++i) len = len << 8 | *p++;
    }
    need(len);
    t.content.assign(p, p + len);
    if (t.tag & 0x20) {
        const uint8_t *q = p, *stop = p + len;
        while (q < stop) t.children.push_back(read_tlv(q, stop));
    }
    p += len;
    return t;
}

// A notification as it arrived.
struct Trap {
    int64_t version = -1;  // 0 SNMPv1, 1 SNMPv2c
    std::string community;
    uint8_t pdu_type = 0;
    // SNMPv1
    Oid enterprise;
    std::string agent_addr;
    int64_t generic = -1, specific = -1, timestamp = -1;
    // SNMPv2c: sysUpTime and snmpTrapOID, taken out of the variables
    int64_t request_id = 0, uptime = -1;
    Oid trap_oid;
    // The variables (SNMPv2c: those after snmpTrapOID.0)
    std::vector<std::pair<Oid, Tlv>> variables;
};

inline Trap parse_trap(const std::vector<uint8_t> &datagram) {
    const uint8_t *p = datagram.data();
    const Tlv msg = read_tlv(p, datagram.data() + datagram.size());
    if (p != datagram.data() + datagram.size()) throw std::runtime_error("BER: bytes after the message");
    Trap t;
    t.version = msg.at(0).integer();
    t.community = msg.at(1).text();
    const Tlv &pdu = msg.at(2);
    t.pdu_type = pdu.tag;
    std::size_t vars_at = 3;
    if (pdu.tag == 0xa4) {
        t.enterprise = pdu.at(0).oid();
        t.agent_addr = pdu.at(1).text();
        t.generic = pdu.at(2).integer();
        t.specific = pdu.at(3).integer();
        t.timestamp = pdu.at(4).integer();
        vars_at = 5;
    } else {
        t.request_id = pdu.at(0).integer();
    }
    for (const Tlv &vb : pdu.at(vars_at).children) t.variables.emplace_back(vb.at(0).oid(), vb.at(1));
    if (pdu.tag == 0xa7) {
        if (t.variables.size() < 2) throw std::runtime_error("SNMPv2 trap without sysUpTime and snmpTrapOID");
        t.uptime = t.variables[0].second.integer();
        t.trap_oid = t.variables[1].second.oid();
        t.variables.erase(t.variables.begin(), t.variables.begin() + 2);
    }
    return t;
}

// A UDP socket on a loopback address, port chosen by the system (or the
// one given).
class TrapReceiver {
public:
    explicit TrapReceiver(const std::string &address = "127.0.0.1", uint16_t port = 0) : address_(address) {
        fd_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(port);
        inet_pton(AF_INET, address.c_str(), &a.sin_addr);
        if (fd_ < 0 || ::bind(fd_, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0)
            throw std::runtime_error("cannot bind a receiver on " + address);
        socklen_t len = sizeof a;
        ::getsockname(fd_, reinterpret_cast<sockaddr *>(&a), &len);
        port_ = ntohs(a.sin_port);
    }
    ~TrapReceiver() {
        if (fd_ >= 0) ::close(fd_);
    }
    TrapReceiver(const TrapReceiver &) = delete;
    TrapReceiver &operator=(const TrapReceiver &) = delete;

    uint16_t port() const { return port_; }
    const std::string &address() const { return address_; }

    // The next datagram, or nothing within timeout_ms.
    std::optional<std::vector<uint8_t>> next(int timeout_ms = 2000) {
        pollfd p{fd_, POLLIN, 0};
        if (::poll(&p, 1, timeout_ms) != 1) return std::nullopt;
        std::vector<uint8_t> buf(65536);
        const ssize_t n = ::recv(fd_, buf.data(), buf.size(), 0);
        if (n < 0) return std::nullopt;
        buf.resize(std::size_t(n));
        return buf;
    }
    std::optional<Trap> next_trap(int timeout_ms = 2000) {
        auto d = next(timeout_ms);
        if (!d) return std::nullopt;
        return parse_trap(*d);
    }
    // Every datagram that arrives within timeout_ms of the last one.
    std::vector<Trap> drain(int timeout_ms = 200) {
        std::vector<Trap> out;
        while (auto t = next_trap(timeout_ms)) out.push_back(*t);
        return out;
    }

private:
    std::string address_;
    int fd_ = -1;
    uint16_t port_ = 0;
};

}  // namespace simtest
