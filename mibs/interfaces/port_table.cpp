// portTable: each port's (and trunk's) name, type, speed and duplex, flow
// control, advertised capabilities, auto-negotiation, MDI state and trunk
// membership.  Rows are interface indexes; a trunk row is addressed in the
// platform as unit0 0, port0 512 + trunk0.
#include <array>
#include <cstring>

#include "agent/ifindex.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

struct Port {
    int unit0, port0;
    explicit Port(int32_t ifindex) : unit0(ifindex_to_unit0(ifindex)), port0(ifindex_to_port0(ifindex)) {}
};

// Speed/duplex enumeration: 1 auto/unknown, 2..7 = 10/100/1000 half, full;
// 8 = 10 Gbit/s; 9 = link down (status only).
constexpr int32_t kSpeedUnknown = 1, kSpeed10G = 8, kLinkDown = 9;
struct SpeedDuplex {
    int mbps;
    int32_t half, full;
};
constexpr std::array<SpeedDuplex, 3> kSpeedDuplex{{{10, 2, 3}, {100, 4, 5}, {1000, 6, 7}}};

// full_duplex is asked only for the speeds that distinguish duplex.
template <class FullDuplex>
int32_t speed_duplex_value(int mbps, FullDuplex &&full_duplex) {
    for (const auto &s : kSpeedDuplex)
        if (s.mbps == mbps) return full_duplex() ? s.full : s.half;
    return mbps == 10000 ? kSpeed10G : kSpeedUnknown;
}

// portSpeedDpxCfg values 1..8 as platform writes; duplex -1: no duplex call.
struct SpeedWrite {
    int mbps, duplex;
};
constexpr std::array<SpeedWrite, 8> kSpeedWrites{
    {{0, 0}, {10, 0}, {10, 1}, {100, 0}, {100, 1}, {1000, 0}, {1000, 1}, {10000, -1}}};

// Pause state (bit 0 receive, bit 1 transmit, as the platform's configured
// pause) in the configuration column's and in the status column's numbering.
constexpr int32_t kPauseCfg[4] = {2, 6, 5, 4};
constexpr int32_t kPauseStatus[4] = {6, 5, 4, 3};
int pause_code(int pause) { return pause >= 0 && pause <= 3 ? pause : 0; }

// Platform type code -> portType; unlisted codes read 1.
constexpr std::array<std::array<int32_t, 2>, 6> kPortTypes{{{5, 2}, {7, 6}, {10, 8}, {11, 11}, {12, 3}, {14, 12}}};

// Capability bit i of portCapabilities and the platform mask it stands for.
// Bits 7..9 are exclusive on read: both 0x800 and 0x400 read bit 7 only.
constexpr uint32_t kCapMasks[10] = {0x1, 0x2, 0x4, 0x8, 0x10, 0x20, 0x200, 0xc00, 0x800, 0x400};
constexpr size_t kCapOctets = 2;

bool cap_bit(const uint8_t *bits, size_t len, int i) {
    return size_t(i / 8) < len && (bits[i / 8] & (0x80 >> (i % 8))) != 0;
}

}  // namespace

extern "C" {

int init_index_portTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_portTable(int32_t i) { return ifindex_row_exists(i, portTable_removeEntry); }

const uint8_t *get_portName(int32_t i, size_t *len) {
    static char name[SW_TEXT_SIZE];
    const Port p(i);
    name[0] = '\0';
    cfg_get_port_description(p.unit0, p.port0, name, sizeof name);
    name[sizeof name - 1] = '\0';
    *len = std::strlen(name);
    return reinterpret_cast<const uint8_t *>(name);
}
int set_portName(int32_t i, const uint8_t *bytes, size_t len) {
    const Port p(i);
    return cfg_set_port_description(p.unit0, p.port0, received_text(bytes, len).c_str());
}

int32_t get_portType(int32_t i) {
    const Port p(i);
    const int code = cfg_get_port_type_vx7300(p.unit0, p.port0);
    for (const auto &t : kPortTypes)
        if (t[0] == code) return t[1];
    return 1;
}

// Auto-negotiation on reads 1 whatever speed is configured.
int32_t get_portSpeedDpxCfg(int32_t i) {
    const Port p(i);
    int on = 0, mbps = 0;
    if (cfg_get_port_autoneg(p.unit0, p.port0, &on) == 0 && on != 0) return kSpeedUnknown;
    cfg_get_port_speed(p.unit0, p.port0, &mbps);
    return speed_duplex_value(mbps, [&p] {
        int full = 0;
        cfg_get_port_duplex(p.unit0, p.port0, &full);
        return full != 0;
    });
}
// Speed 0 requests auto-negotiation; the result is the sum of the platform's.
int set_portSpeedDpxCfg(int32_t i, int32_t value) {
    if (value < 1 || value > static_cast<int32_t>(kSpeedWrites.size())) return -1;
    const Port p(i);
    const SpeedWrite w = kSpeedWrites[value - 1];
    int result = cfg_set_port_speed(p.unit0, p.port0, w.mbps);
    if (w.duplex >= 0) result += cfg_set_port_duplex(p.unit0, p.port0, w.duplex);
    return result;
}

int32_t get_portFlowCtrlCfg(int32_t i) {
    const Port p(i);
    int pause = 0;
    cfg_get_port_pause(p.unit0, p.port0, &pause);
    return kPauseCfg[pause_code(pause)];
}
// Flow control is not configurable through this column: writes are accepted
// and ignored.
int set_portFlowCtrlCfg(int32_t, int32_t) { return 0; }

const uint8_t *get_portCapabilities(int32_t i, size_t *len) {
    static uint8_t bits[kCapOctets];
    std::memset(bits, 0, sizeof bits);
    const Port p(i);
    uint32_t mask = 0;
    cfg_get_port_capabilities(p.unit0, p.port0, &mask);
    auto set_bit = [](int b) { bits[b / 8] |= uint8_t(0x80 >> (b % 8)); };
    for (int b = 0; b <= 6; ++b)
        if (mask & kCapMasks[b]) set_bit(b);
    for (int b = 7; b <= 9; ++b)
        if ((mask & kCapMasks[b]) == kCapMasks[b]) {
            set_bit(b);
            break;
        }
    *len = sizeof bits;
    return bits;
}
int set_portCapabilities(int32_t i, const uint8_t *bits, size_t len) {
    uint32_t mask = 0;
    for (int b = 0; b < 10; ++b)
        if (bits != nullptr && cap_bit(bits, len, b)) mask |= kCapMasks[b];
    const Port p(i);
    return cfg_set_port_capabilities(p.unit0, p.port0, mask);
}

int32_t get_portAutonegotiation(int32_t i) {
    const Port p(i);
    int on = 0;
    cfg_get_port_autoneg(p.unit0, p.port0, &on);
    return on != 0 ? 1 : 2;
}
// 2 (disabled) writes 0; any other value is handed on as it is.
int set_portAutonegotiation(int32_t i, int32_t value) {
    const Port p(i);
    return cfg_set_port_autoneg(p.unit0, p.port0, value == 2 ? 0 : value);
}

int32_t get_portSpeedDpxStatus(int32_t i) {
    const Port p(i);
    sw_port_info_t info{};
    if (bcmd_get_port_info(p.unit0, p.port0, &info) < 0) return kSpeedUnknown;
    if (info.link == 0) return kLinkDown;
    return speed_duplex_value(static_cast<int>(info.speed), [&info] { return info.duplex == 1; });
}

// Link up: the negotiated pause; link down: the configured one.
int32_t get_portFlowCtrlStatus(int32_t i) {
    const Port p(i);
    sw_port_info_t info{};
    if (bcmd_get_port_info(p.unit0, p.port0, &info) < 0) return 1;
    if (info.link != 0) return kPauseStatus[(info.rx_pause != 0 ? 1 : 0) | (info.tx_pause != 0 ? 2 : 0)];
    int pause = 0;
    cfg_get_port_pause(p.unit0, p.port0, &pause);
    return kPauseStatus[pause_code(pause)];
}

int32_t get_portMdiStatus(int32_t i) {
    const Port p(i);
    int mdix = 0;
    cfg_get_port_mdix(p.unit0, p.port0, &mdix);
    return mdix == 2 || mdix == 3 ? mdix : 1;
}

// A trunk row (512 .. 639, as the interface texts count) reads its own trunk
// ID; a port reads its trunk's ID, 0 when it is in none.
int32_t get_portTrunkIndex(int32_t i) {
    if (i >= 512 && i <= 639) return i - 512;
    const Port p(i);
    const int tid = cfg_get_port_tid(p.unit0, p.port0);
    return tid >= 0 ? tid + 1 : 0;
}

}  // extern "C"
