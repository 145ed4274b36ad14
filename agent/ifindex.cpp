// Interface index conversions, population, row existence, and the names and
// descriptions that the interfaces group shows.
#include "agent/ifindex.hpp"

#include <cstdio>
#include <cstring>

#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"

namespace {

constexpr int32_t kTrunkFirst = 513, kTrunkLast = 640;
constexpr int32_t kVlanFirst = 1001, kVlanLast = 5094;
// The name and description texts test the trunk range one lower (512 .. 639)
// than the conversions do; both ranges are kept as they are.
constexpr int32_t kTextTrunkFirst = 512, kTextTrunkLast = 639;

bool trunk_in_use(int trunk0) { return cfg_check_trunk(trunk0) != 0 && cfg_is_trunk_empty(trunk0) == 0; }

// Calls add(ifindex) for every existing port (and trunk) in population order.
template <class Add>
void for_each_ifindex(bool with_trunks, Add &&add) {
    ifindex_for_each_port([&add](int unit0, int port0) { add(port_to_ifindex(unit0, port0)); });
    if (!with_trunks) return;
    for (int trunk0 = 0; trunk0 < SW_MAX_TRUNKS; ++trunk0)
        if (trunk_in_use(trunk0)) add(trunk_to_ifindex(trunk0));
}

// snprintf into a bounded text buffer; an over-long text is cut at the bound.
template <size_t N, class... Args>
void format_text(char (&buf)[N], const char *format, Args... args) {
    if (std::snprintf(buf, N, format, args...) < 0) buf[0] = '\0';
}

const uint8_t *text_result(const char *buf, size_t *len) {
    *len = std::strlen(buf);
    return reinterpret_cast<const uint8_t *>(buf);
}

}  // namespace

extern "C" {

int ifindex_is_trunk(int32_t i) { return i >= kTrunkFirst && i <= kTrunkLast; }
int ifindex_is_vlan(int32_t i) { return i >= kVlanFirst && i <= kVlanLast; }
int32_t ifindex_to_unit0(int32_t i) { return ifindex_is_trunk(i) ? 0 : index_minus(i, 1) >> 6; }
int32_t ifindex_to_port0(int32_t i) { return ifindex_is_trunk(i) ? i - 1 : index_minus(i, 1) % SW_PORTS_PER_UNIT; }
int32_t ifindex_to_trunk0(int32_t i) { return index_minus(i, kTrunkFirst); }
int32_t port_to_ifindex(int32_t unit0, int32_t port0) { return unit0 * SW_PORTS_PER_UNIT + port0 + 1; }
int32_t trunk_to_ifindex(int32_t trunk0) { return trunk0 + kTrunkFirst; }

const uint8_t *get_ifName(int32_t i, size_t *len) {
    static char name[20];
    if (i >= kTextTrunkFirst && i <= kTextTrunkLast)
        format_text(name, "port-ch-%d", i == kTextTrunkFirst ? i : i - 512);
    else if (ifindex_is_vlan(i))
        format_text(name, "vlan-%d", i - 1000);
    else
        format_text(name, "eth-%d/%d", ifindex_to_unit0(i) + 1, ifindex_to_port0(i) + 1);
    return text_result(name, len);
}

const uint8_t *get_ifDescr(int32_t i, size_t *len) {
    static char descr[50];
    if (i >= kTextTrunkFirst && i <= kTextTrunkLast) {
        // The zeros are a fixed prefix, not a field width.
        const int id = i == kTextTrunkFirst ? i : i - 512;
        format_text(descr, id <= 9 ? "Trunk Port ID 000%d" : "Trunk Port ID 00%d", id);
    } else {
        const int unit0 = ifindex_to_unit0(i), port0 = ifindex_to_port0(i);
        const int tid = cfg_get_port_tid(unit0, port0);
        if (tid != -1)
            format_text(descr, "Trunk Member port on Trunk ID %d", tid + 1);
        else
            format_text(descr, "Ethernet Port on unit %d, port:%d", unit0 + 1, port0 + 1);
    }
    return text_result(descr, len);
}

int32_t get_ifNumber(void) {
    int32_t n = 0;
    for_each_ifindex(true, [&n](int32_t) { ++n; });
    return n;
}

}  // extern "C"

bool ifindex_unit_present(int unit0) {
    const sw_status_t *st = get_status();
    return st != nullptr && unit0 >= 0 && unit0 < SW_MAX_UNITS && st->units[unit0].present != 0;
}

int ifindex_populate(void *(*create)(int32_t), bool with_trunks) {
    for_each_ifindex(with_trunks, [create](int32_t i) { create(i); });
    return 0;
}

int ifindex_row_exists(int32_t i, void (*remove)(int32_t)) {
    bool exists;
    if (ifindex_is_trunk(i)) {
        exists = trunk_in_use(ifindex_to_trunk0(i));
    } else if (ifindex_is_vlan(i)) {
        return 1;
    } else {
        const int32_t unit0 = index_minus(i, 1) >> 6;
        if (unit0 < 0 || unit0 >= SW_MAX_UNITS) return 0;
        exists = ifindex_unit_present(unit0);
    }
    if (!exists) remove(i);
    return exists ? 1 : 0;
}

uint32_t port_stat_low32(int unit0, int port0, int stat) {
    uint64_t value = 0;
    bcmd_snmp_stat_get(unit0, port0, stat, &value);
    return static_cast<uint32_t>(value);
}

uint32_t ifindex_stat_low32(int32_t i, int stat) {
    return ifindex_is_vlan(i) ? 0 : port_stat_low32(ifindex_to_unit0(i), ifindex_to_port0(i), stat);
}
