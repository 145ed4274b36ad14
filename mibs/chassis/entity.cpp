// ENTITY-MIB: the stack's inventory as inventory tools expect it.
//
// The physical entities form one tree.  Its root is the stack; each present
// unit is a chassis in it; a unit holds its ports, its power supply bays and
// its fans; a port's fitted transceiver is a module in the port, and a bay's
// power supply sits in the bay:
//
//   stack (1)                                 class stack(11)
//     unit u: 1000 u                           chassis(3), position u
//       port p: 1000 u + p                     port(10), position p
//         transceiver: 1000 u + 100 + p        module(9), position 1
//       power supply bay b: 1000 u + 200 + b   container(5), position b
//         power supply: 1000 u + 300 + b       powerSupply(6), position 1
//       fan f: 1000 u + 400 + f                fan(7), position f
//
// The index of an entity is fixed by where it sits, so that it stays the
// same while the hardware comes and goes.  Each port is an alias of its
// interface (entAliasMappingTable) and realises the bridge, the one logical
// entity (entLogicalTable, entLPMappingTable).  Pulling a module or a unit
// takes its entities out at the next request, as in the private tables of
// chassis.cpp.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>

#include "mibs/chassis/units.hpp"
#include "swplatform/records.hpp"
#include "tables/catalogue.hpp"

namespace {

using namespace snmpapi::chassis;

enum class Kind { stack, chassis, port, transceiver, bay, psu, fan };

// IANA-ENTITY-MIB physical classes.
constexpr int32_t kClassContainer = 5, kClassPowerSupply = 6, kClassFan = 7, kClassModule = 9, kClassPort = 10;
constexpr int32_t kClassChassis = 3, kClassStack = 11;

constexpr int32_t kStackIndex = 1;
constexpr int32_t kUnitBlock = 1000;
// Offsets within a unit's block; positions count from 1.
constexpr int32_t kPortBase = 0, kTransceiverBase = 100, kBayBase = 200, kPsuBase = 300, kFanBase = 400;

struct Entity {
    Kind kind;
    uint32_t unit0 = 0;
    int32_t n = 0;  // port, bay or fan number
};

int32_t index_of(const Entity &e) {
    const int32_t block = (static_cast<int32_t>(e.unit0) + 1) * kUnitBlock;
    switch (e.kind) {
    case Kind::stack: return kStackIndex;
    case Kind::chassis: return block;
    case Kind::port: return block + kPortBase + e.n;
    case Kind::transceiver: return block + kTransceiverBase + e.n;
    case Kind::bay: return block + kBayBase + e.n;
    case Kind::psu: return block + kPsuBase + e.n;
    case Kind::fan: return block + kFanBase + e.n;
    }
    return 0;
}

// The entity an index names by its place (whether it is there now is
// exists()'s business), or nothing.
std::optional<Entity> decode(int32_t index) {
    if (index == kStackIndex) return Entity{Kind::stack};
    if (index < kUnitBlock || index >= (SW_MAX_UNITS + 1) * kUnitBlock) return std::nullopt;
    const uint32_t unit0 = static_cast<uint32_t>(index / kUnitBlock - 1);
    const int32_t k = index % kUnitBlock;
    struct Range {
        Kind kind;
        int32_t base, most;
    };
    static constexpr Range kRanges[] = {{Kind::port, kPortBase, SW_PORTS_PER_UNIT},
                                        {Kind::transceiver, kTransceiverBase, SW_PORTS_PER_UNIT},
                                        {Kind::bay, kBayBase, SW_MAX_PSUS},
                                        {Kind::psu, kPsuBase, SW_MAX_PSUS},
                                        {Kind::fan, kFanBase, SW_MAX_FANS}};
    if (k == 0) return Entity{Kind::chassis, unit0, 0};
    for (const Range &r : kRanges)
        if (k > r.base && k <= r.base + r.most) return Entity{r.kind, unit0, k - r.base};
    return std::nullopt;
}

sw_chassis_info_t chassis_info() {
    sw_chassis_info_t info{};
    if (cfg_chassis_get_info(&info) < 0) info = sw_chassis_info_t{};
    return info;
}
int32_t bays(const sw_chassis_info_t &info) { return static_cast<int32_t>(info.psu_bays < SW_MAX_PSUS ? info.psu_bays : SW_MAX_PSUS); }
int32_t fans(const sw_chassis_info_t &info) { return static_cast<int32_t>(info.fans < SW_MAX_FANS ? info.fans : SW_MAX_FANS); }

int32_t ifindex_of(const Entity &e) { return port_to_ifindex(static_cast<int32_t>(e.unit0), e.n - 1); }

bool transceiver_fitted(const Entity &port) {
    const sw_unit_status_t *u = unit_record(port.unit0);
    return u != nullptr && port.n >= 1 && port.n <= SW_PORTS_PER_UNIT && u->ports[port.n - 1].sfp_present != 0;
}

// The module in a bay or fan position, if the platform reports one.
bool module_fitted(int (*call)(int, int, sw_module_status_t *), const Entity &e) {
    sw_module_status_t m{};
    return call(static_cast<int>(e.unit0), e.n - 1, &m) == 0 && m.state != SW_MODULE_ABSENT;
}

// Whether the entity is in the switch now.
bool exists(const Entity &e, const sw_chassis_info_t &info) {
    if (e.kind == Kind::stack) return true;
    if (!unit_present(e.unit0)) return false;
    switch (e.kind) {
    case Kind::chassis: return true;
    case Kind::port: return e.n <= unit_port_count(static_cast<int>(e.unit0));
    case Kind::transceiver: return e.n <= unit_port_count(static_cast<int>(e.unit0)) && transceiver_fitted(e);
    case Kind::bay: return e.n <= bays(info);
    case Kind::psu: return e.n <= bays(info) && module_fitted(cfg_chassis_get_psu, e);
    case Kind::fan: return e.n <= fans(info) && module_fitted(cfg_chassis_get_fan, e);
    default: return false;
    }
}

std::optional<Entity> parent_of(const Entity &e) {
    switch (e.kind) {
    case Kind::stack: return std::nullopt;
    case Kind::chassis: return Entity{Kind::stack};
    case Kind::transceiver: return Entity{Kind::port, e.unit0, e.n};
    case Kind::psu: return Entity{Kind::bay, e.unit0, e.n};
    default: return Entity{Kind::chassis, e.unit0, 0};
    }
}

// Calls visit(child) for each child of e that is there now, in index order.
template <class Visit>
void for_each_child(const Entity &e, const sw_chassis_info_t &info, Visit &&visit) {
    auto each = [&](Kind kind, int32_t n) {
        for (int32_t i = 1; i <= n; ++i) {
            const Entity child{kind, e.unit0, i};
            if (exists(child, info)) visit(child);
        }
    };
    switch (e.kind) {
    case Kind::stack:
        for (uint32_t unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0)
            if (unit_present(unit0)) visit(Entity{Kind::chassis, unit0, 0});
        break;
    case Kind::chassis:
        each(Kind::port, unit_port_count(static_cast<int>(e.unit0)));
        each(Kind::bay, bays(info));
        each(Kind::fan, fans(info));
        break;
    case Kind::port:
        if (exists(Entity{Kind::transceiver, e.unit0, e.n}, info)) visit(Entity{Kind::transceiver, e.unit0, e.n});
        break;
    case Kind::bay:
        if (exists(Entity{Kind::psu, e.unit0, e.n}, info)) visit(Entity{Kind::psu, e.unit0, e.n});
        break;
    default: break;
    }
}

// Calls visit(entity) for every entity there now, in index order.
template <class Visit>
void for_each_entity(Visit &&visit) {
    const sw_chassis_info_t info = chassis_info();
    visit(Entity{Kind::stack});
    for (uint32_t unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (!unit_present(unit0)) continue;
        const int32_t ports = unit_port_count(static_cast<int>(unit0));
        for (Kind kind : {Kind::chassis, Kind::port, Kind::transceiver, Kind::bay, Kind::psu, Kind::fan}) {
            const int32_t n = kind == Kind::chassis                              ? 1
                              : kind == Kind::port || kind == Kind::transceiver ? ports
                              : kind == Kind::fan                               ? fans(info)
                                                                                : bays(info);
            for (int32_t i = 1; i <= n; ++i) {
                const Entity e{kind, unit0, kind == Kind::chassis ? 0 : i};
                if (exists(e, info)) visit(e);
            }
        }
    }
}

// The entity of a row, when it is there now; a stale row is removed.
std::optional<Entity> present_entity(int32_t index) {
    const std::optional<Entity> e = decode(index);
    if (e && exists(*e, chassis_info())) return e;
    return std::nullopt;
}

// The entity of a row for a getter; an index that names none reads as the
// stack's, with zero values where the stack has none.
Entity row_entity(int32_t index) { return decode(index).value_or(Entity{Kind::stack}); }

template <size_t N>
const uint8_t *text(char (&buf)[N], size_t *len, const char *fmt, ...) __attribute__((format(printf, 3, 4)));
template <size_t N>
const uint8_t *text(char (&buf)[N], size_t *len, const char *fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    if (std::vsnprintf(buf, N, fmt, ap) < 0) buf[0] = '\0';
    va_end(ap);
    *len = std::strlen(buf);
    return reinterpret_cast<const uint8_t *>(buf);
}

// A platform model text, never read past its field.
template <size_t N>
std::string model_text(const char (&field)[N]) {
    return std::string(field, strnlen(field, N));
}

std::string module_model(int (*call)(int, int, sw_module_status_t *), const Entity &e) {
    sw_module_status_t m{};
    return call(static_cast<int>(e.unit0), e.n - 1, &m) == 0 ? model_text(m.model) : std::string();
}

std::string port_text(const uint8_t *(*get)(int32_t, size_t *), const Entity &e) {
    size_t len = 0;
    const uint8_t *p = get(ifindex_of(e), &len);
    return p != nullptr ? std::string(reinterpret_cast<const char *>(p), len) : std::string();
}

const char *transceiver_kind(const Entity &e) {
    switch (cfg_get_port_type_vx7300(static_cast<int>(e.unit0), e.n - 1)) {
    case SW_PORT_TYPE_10GX: return "SFP+ transceiver";
    case SW_PORT_TYPE_1000X: return "SFP transceiver";
    default: return "transceiver";
    }
}

constexpr uint32_t kZeroDotZero[] = {0, 0};
constexpr uint32_t kIfIndexColumn[] = {1, 3, 6, 1, 2, 1, 2, 2, 1, 1};
constexpr uint32_t kDot1dBridge[] = {1, 3, 6, 1, 2, 1, 17};
constexpr uint32_t kSnmpUdpDomain[] = {1, 3, 6, 1, 6, 1, 1};

const uint32_t *fixed_oid(const uint32_t *oid, size_t n, size_t *len) {
    *len = n * sizeof(uint32_t);
    return oid;
}

constexpr int32_t kBridge = 1;  // the one logical entity

// Whether a port entity is there now.
bool port_entity(int32_t index) {
    const std::optional<Entity> e = present_entity(index);
    return e && e->kind == Kind::port;
}
template <class Visit>
void for_each_port_entity(Visit &&visit) {
    for_each_entity([&](const Entity &e) {
        if (e.kind == Kind::port) visit(index_of(e));
    });
}

}  // namespace

extern "C" {

// ---- entPhysicalTable ------------------------------------------------------------------

int init_index_entPhysicalTable(void *(*create)(int32_t)) {
    for_each_entity([&](const Entity &e) { create(index_of(e)); });
    return 0;
}
int exists_entry_entPhysicalTable(int32_t index) {
    if (present_entity(index)) return 1;
    entPhysicalTable_removeEntry(index);
    return 0;
}

const uint8_t *get_entPhysicalDescr(int32_t index, size_t *len) {
    static char buf[256];
    const Entity e = row_entity(index);
    switch (e.kind) {
    case Kind::stack: {
        const char *name = cfg_equip_get_name_vx7300(get_status());
        return text(buf, len, "%s switch stack", name != nullptr ? name : "");
    }
    case Kind::chassis: {
        const sw_unit_status_t *u = unit_record(e.unit0);
        return text(buf, len, "%s switch", u != nullptr ? model_text(u->model).c_str() : "");
    }
    case Kind::port: return text(buf, len, "%s", port_text(get_ifDescr, e).c_str());
    case Kind::transceiver: return text(buf, len, "%s", transceiver_kind(e));
    case Kind::bay: return text(buf, len, "Power supply bay");
    case Kind::psu: return text(buf, len, "%s power supply", module_model(cfg_chassis_get_psu, e).c_str());
    case Kind::fan: return text(buf, len, "%s fan", module_model(cfg_chassis_get_fan, e).c_str());
    }
    return text(buf, len, "%s", "");
}

// The stack and its units are the equipment sysObjectID names; no other
// part has a registration of its own.
const uint32_t *get_entPhysicalVendorType(int32_t index, size_t *len) {
    const Kind kind = row_entity(index).kind;
    if (kind == Kind::stack || kind == Kind::chassis) {
        size_t bytes = 0;
        const uint32_t *oid = cfg_equip_get_int_oid(&bytes);
        if (oid != nullptr && bytes >= 2 * sizeof(uint32_t)) {
            *len = bytes;
            return oid;
        }
    }
    return fixed_oid(kZeroDotZero, 2, len);
}

int32_t get_entPhysicalContainedIn(int32_t index) {
    const std::optional<Entity> parent = parent_of(row_entity(index));
    return parent ? index_of(*parent) : 0;
}

int32_t get_entPhysicalClass(int32_t index) {
    switch (row_entity(index).kind) {
    case Kind::stack: return kClassStack;
    case Kind::chassis: return kClassChassis;
    case Kind::port: return kClassPort;
    case Kind::transceiver: return kClassModule;
    case Kind::bay: return kClassContainer;
    case Kind::psu: return kClassPowerSupply;
    case Kind::fan: return kClassFan;
    }
    return 0;
}

// Positions as labelled on the front panel; what sits in a port or a bay
// is its only child, at 1; the stack has no parent (-1).
int32_t get_entPhysicalParentRelPos(int32_t index) {
    const Entity e = row_entity(index);
    switch (e.kind) {
    case Kind::stack: return -1;
    case Kind::chassis: return static_cast<int32_t>(e.unit0) + 1;
    case Kind::transceiver:
    case Kind::psu: return 1;
    default: return e.n;
    }
}

const uint8_t *get_entPhysicalName(int32_t index, size_t *len) {
    static char buf[256];
    const Entity e = row_entity(index);
    const unsigned unit = e.unit0 + 1;
    switch (e.kind) {
    case Kind::stack: return text(buf, len, "stack");
    case Kind::chassis: return text(buf, len, "unit %u", unit);
    case Kind::port: return text(buf, len, "%s", port_text(get_ifName, e).c_str());
    case Kind::transceiver: return text(buf, len, "%s transceiver", port_text(get_ifName, e).c_str());
    case Kind::bay: return text(buf, len, "power supply bay %u/%d", unit, int(e.n));
    case Kind::psu: return text(buf, len, "power supply %u/%d", unit, int(e.n));
    case Kind::fan: return text(buf, len, "fan %u/%d", unit, int(e.n));
    }
    return text(buf, len, "%s", "");
}

// ---- entPhysicalContainsTable: (parent, child) -----------------------------------------------

int init_index_entPhysicalContainsTable(void *(*create)(int32_t, int32_t)) {
    const sw_chassis_info_t info = chassis_info();
    for_each_entity([&](const Entity &parent) {
        const int32_t p = index_of(parent);
        for_each_child(parent, info, [&](const Entity &child) { create(p, index_of(child)); });
    });
    return 0;
}
int exists_entry_entPhysicalContainsTable(int32_t parent, int32_t child) {
    const std::optional<Entity> c = present_entity(child);
    const std::optional<Entity> p = c ? parent_of(*c) : std::nullopt;
    if (p && index_of(*p) == parent) return 1;
    entPhysicalContainsTable_removeEntry(parent, child);
    return 0;
}
int32_t get_entPhysicalChildIndex(int32_t, int32_t child) { return child; }

// ---- ports: aliases and the bridge -------------------------------------------------------------

// (port entity, 0): the port is its interface for every logical entity.
int init_index_entAliasMappingTable(void *(*create)(int32_t, int32_t)) {
    for_each_port_entity([&](int32_t port) { create(port, 0); });
    return 0;
}
int exists_entry_entAliasMappingTable(int32_t physical, int32_t logical) {
    if (logical == 0 && port_entity(physical)) return 1;
    entAliasMappingTable_removeEntry(physical, logical);
    return 0;
}
// ifIndex.<the port's interface index>
const uint32_t *get_entAliasMappingIdentifier(int32_t physical, int32_t, size_t *len) {
    static uint32_t oid[std::size(kIfIndexColumn) + 1];
    std::copy(std::begin(kIfIndexColumn), std::end(kIfIndexColumn), oid);
    const Entity e = row_entity(physical);
    oid[std::size(kIfIndexColumn)] = e.kind == Kind::port ? static_cast<uint32_t>(ifindex_of(e)) : 0;
    *len = sizeof oid;
    return oid;
}

// (bridge, port entity): the ports realise the bridge.
int init_index_entLPMappingTable(void *(*create)(int32_t, int32_t)) {
    for_each_port_entity([&](int32_t port) { create(kBridge, port); });
    return 0;
}
int exists_entry_entLPMappingTable(int32_t logical, int32_t physical) {
    if (logical == kBridge && port_entity(physical)) return 1;
    entLPMappingTable_removeEntry(logical, physical);
    return 0;
}
int32_t get_entLPPhysicalIndex(int32_t, int32_t physical) { return physical; }

// ---- entLogicalTable: the bridge ------------------------------------------------------------------

int init_index_entLogicalTable(void *(*create)(int32_t)) {
    create(kBridge);
    return 0;
}
int exists_entry_entLogicalTable(int32_t) { return 1; }

const uint8_t *get_entLogicalDescr(int32_t, size_t *len) {
    static char buf[] = "Bridge of the switch stack";
    *len = std::strlen(buf);
    return reinterpret_cast<const uint8_t *>(buf);
}
const uint32_t *get_entLogicalType(int32_t, size_t *len) {
    return fixed_oid(kDot1dBridge, std::size(kDot1dBridge), len);
}
// Communities are not handed out through this table.
const uint8_t *get_entLogicalCommunity(int32_t, size_t *len) {
    *len = 0;
    return nullptr;
}
// The agent's UDP address: four octets of IPv4 address and two of port,
// network order.
const uint8_t *get_entLogicalTAddress(int32_t, size_t *len) {
    static uint8_t address[6];
    const sw_chassis_info_t info = chassis_info();
    swp::store_be32(address, info.agent_address);
    swp::store_be16(address + 4, static_cast<uint16_t>(info.agent_port));
    *len = sizeof address;
    return address;
}
const uint32_t *get_entLogicalTDomain(int32_t, size_t *len) {
    return fixed_oid(kSnmpUdpDomain, std::size(kSnmpUdpDomain), len);
}

}  // extern "C"
