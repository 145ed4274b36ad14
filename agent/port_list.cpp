// Port-list octet strings: the read layout (8 octets per unit) and the
// seven-bit write walk (32 octets per unit).
#include "agent/port_list.hpp"

#include "agent/ifindex.hpp"

#include <algorithm>
#include <cstring>

namespace snmpapi::port_list::detail {

namespace {
constexpr int kReadPorts = static_cast<int>(kReadOctetsPerUnit * 8);  // ports 0 .. 63 are readable
constexpr int kWrittenBits = 7;  // bits 0x80 .. 0x02; 0x01 is never looked at

uint8_t port_mask(int port0) { return static_cast<uint8_t>(0x80u >> (port0 % 8)); }
}  // namespace

void read(uint8_t *area, size_t clear, size_t *length, HasPortFn has_port, void *ctx) {
    std::memset(area, 0, std::min(clear, kAreaSize));
    const sw_status_t *status = get_status();
    for (int unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (status == nullptr || status->units[unit0].present == 0) continue;
        *length = kOctetsPerUnit * static_cast<size_t>(unit0 + 1);
        uint8_t *unit_octets = area + kReadOctetsPerUnit * static_cast<size_t>(unit0);
        for (int port0 = 0; port0 < unit_port_count(unit0); ++port0) {
            if (port0 >= kReadPorts) break;
            if (has_port(ctx, unit0, port0)) unit_octets[port0 / 8] |= port_mask(port0);
        }
    }
}

int write_walk(const uint8_t *octets, size_t length, VisitFn visit, void *ctx) {
    size_t remaining = length;
    const int units = stack_unit_count();
    for (int unit0 = 0; unit0 < units && unit0 < SW_MAX_UNITS; ++unit0) {
        const uint8_t *unit_octets = octets + kOctetsPerUnit * static_cast<size_t>(unit0);
        for (int k = 0; k < static_cast<int>(kOctetsPerUnit); ++k) {
            const bool within = remaining > 0;
            if (within) --remaining;
            const int ports = unit_port_count(unit0);
            for (int b = 0; b < kWrittenBits; ++b) {
                const int port0 = 8 * k + b;
                if (port0 >= ports) break;
                const Bit bit = !within ? Bit::beyond : (unit_octets[k] & port_mask(port0)) ? Bit::set : Bit::clear;
                if (const int rc = visit(ctx, unit0, port0, bit); rc < 0) return rc;
            }
        }
    }
    return 0;
}

}  // namespace snmpapi::port_list::detail
