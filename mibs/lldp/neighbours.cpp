// The LLDP access layer, the neighbours' side: the neighbour cache and the
// remote tables (lldpRemTable, lldpRemManAddrTable, lldpRemUnknownTLVTable,
// lldpRemOrgDefInfoTable).
//
// A neighbour record is 13,912 bytes and a full stack may hear thousands of
// neighbours, so the records are fetched once and kept, per LLDP port, as
// the platform returned them; they are fetched again only when the
// platform's LLDP status hash changes, or when a remote table has not filled
// its rows from the records fetched for that hash (each table is fetched for
// once per change).  Column reads and row checks look records up in the
// cache by (time mark, local port, remote index).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "agent/ifindex.hpp"
#include "mibs/lldp/access.hpp"
#include "mibs/lldp/ipc.hpp"
#include "swplatform/platform.h"
#include "swplatform/records_lldp.hpp"

namespace lldp {
namespace {

namespace nb = swp::lldp_neighbor;

struct Slot {
    uint8_t *records = nullptr;  // as the platform returned them (malloc'ed)
    int count = 0;
};

struct Cache {
    Slot slots[kCacheSlots];
    uint8_t hash[SW_LLDP_HASH_SIZE] = {};
    bool have_hash = false;              // hash is the one the slots were fetched for
    bool valid[kConsumers] = {};         // the consumer's rows are filled from these slots

    void release() {
        for (Slot &s : slots) {
            std::free(s.records);
            s = Slot{};
        }
    }
};

Cache &cache() {
    static Cache c;  // the agent's thread only
    return c;
}

// Keeps a port's records and shows them to the consumer.
template <class Visit>
void keep(Slot &slot, uint8_t *records, int count, int32_t port, Visit &visit) {
    slot.records = records;
    slot.count = records != nullptr ? std::max(count, 0) : 0;
    for (int k = 0; k < slot.count; ++k) visit(port, records + std::size_t(k) * nb::kSize);
}

}  // namespace

int refresh_neighbours(Consumer who, void (*visit_fn)(void *, int32_t, const uint8_t *), void *context) {
    Cache &c = cache();
    auto visit = [&](int32_t port, const uint8_t *record) { visit_fn(context, port, record); };
    const int me = int(who);
    uint8_t now[SW_LLDP_HASH_SIZE] = {};
    cfg_lldp_status_get_hash(now);
    const bool same = c.have_hash && std::memcmp(now, c.hash, sizeof now) == 0;
    if (same && c.valid[me]) return 1;
    c.release();
    if (!same) {
        // New neighbours: every consumer's rows are out of date.
        std::fill(std::begin(c.valid), std::end(c.valid), false);
        c.have_hash = false;
    }
    uint8_t *records = nullptr;
    int count = 0;
    if (cfg_get_lldp_mgmt_neighbors_info(&records, &count) >= 0) keep(c.slots[kMgmtPort], records, count, kMgmtPort, visit);
    for (int unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (!ifindex_unit_present(unit0)) continue;
        for (int port0 = 0, ports = unit_port_count(unit0); port0 < ports; ++port0) {
            records = nullptr;
            count = 0;
            if (cfg_get_lldp_neighbors_info(unit0, port0, &records, &count) < 0) {
                std::free(records);
                return 0;
            }
            const int32_t port = port_to_ifindex(unit0, port0);
            keep(c.slots[port], records, count, port, visit);
        }
    }
    std::memcpy(c.hash, now, sizeof now);
    c.have_hash = true;
    c.valid[me] = true;
    return 1;
}

const uint8_t *find_neighbour(uint32_t time_mark, int32_t port, int32_t remote_index) {
    if (port < 0 || port >= kCacheSlots) return nullptr;
    const Slot &s = cache().slots[port];
    for (int k = 0; k < s.count; ++k) {
        const uint8_t *record = s.records + std::size_t(k) * nb::kSize;
        if (nb::time_mark(record) == time_mark && nb::remote_index(record) == remote_index) return record;
    }
    return nullptr;
}

}  // namespace lldp

namespace {

namespace nb = swp::lldp_neighbor;
using lldp::Consumer;
using lldp::find_neighbour;

// A text of a record copied to the accessor's own area; no value when the
// neighbour is not cached.
template <std::size_t N>
const uint8_t *record_text(char (&area)[N], const uint8_t *record, swp::Field f, std::size_t *len) {
    if (!record) {
        *len = 0;
        return nullptr;
    }
    *len = std::min(swp::field_text_len(record, f), N - 1);
    std::memcpy(area, record + f.offset, *len);
    return reinterpret_cast<const uint8_t *>(area);
}

const uint8_t *capability_value(uint8_t &area, const uint8_t *record, uint16_t (*bits)(const uint8_t *), std::size_t *len) {
    if (!record) {
        *len = 0;
        return nullptr;
    }
    area = lldp::capability_octet(bits(record));
    *len = 1;
    return &area;
}

// The management address row of a record: it must announce one, and its
// family and octets must be the row's.
const uint8_t *man_addr_record(uint32_t tm, int32_t port, int32_t idx, int32_t subtype, const uint8_t *addr,
                               std::size_t len) {
    const uint8_t *record = find_neighbour(tm, port, idx);
    if (!record || !nb::mgmt_present(record) || nb::mgmt_subtype(record) != subtype || nb::mgmt_addr_len(record) != len)
        return nullptr;
    return len == 0 || (addr && std::memcmp(record + nb::kMgmtAddr.offset, addr, len) == 0) ? record : nullptr;
}

const uint8_t *unknown_tlv_record(uint32_t tm, int32_t port, int32_t idx, int32_t type) {
    const uint8_t *record = find_neighbour(tm, port, idx);
    return record && nb::unknown_tlv_type(record) == type ? record : nullptr;
}

}  // namespace

extern "C" {

// ---- lldpRemTable ---------------------------------------------------------------------------------------

int init_ipc_index_lldpRemTable(void *(*create)(uint32_t, int32_t, int32_t)) {
    return lldp::refresh_neighbours(Consumer::kRemote, [create](int32_t port, const uint8_t *record) {
        create(nb::time_mark(record), port, nb::remote_index(record));
    });
}
int exists_ipc_entry_lldpRemTable(uint32_t tm, int32_t port, int32_t idx) {
    if (find_neighbour(tm, port, idx)) return 1;
    lldpRemTable_removeEntry(tm, port, idx);
    return 0;
}

int32_t get_ipc_lldpRemChassisIdSubtype(uint32_t tm, int32_t port, int32_t idx) {
    const uint8_t *record = find_neighbour(tm, port, idx);
    return record ? nb::chassis_subtype(record) : 0;
}

// A MAC chassis ID (subtype 4) in colon form; any other as lowercase
// hexadecimal, two digits an octet.
const uint8_t *get_ipc_lldpRemChassisId(uint32_t tm, int32_t port, int32_t idx, size_t *len) {
    static char area[2 * nb::kChassisId.size + 1];
    const uint8_t *record = find_neighbour(tm, port, idx);
    if (!record) {
        *len = 0;
        return nullptr;
    }
    const uint8_t *id = record + nb::kChassisId.offset;
    const std::size_t n = nb::chassis_id_len(record);
    std::size_t text = 0;
    if (nb::chassis_subtype(record) == 4)
        text = lldp::format_mac(id, area);
    else
        for (std::size_t k = 0; k < n; ++k) text += std::size_t(std::snprintf(area + text, 3, "%02x", id[k]));
    *len = std::min<std::size_t>(text, 255);
    return reinterpret_cast<const uint8_t *>(area);
}

int32_t get_ipc_lldpRemPortIdSubtype(uint32_t tm, int32_t port, int32_t idx) {
    const uint8_t *record = find_neighbour(tm, port, idx);
    return record ? nb::port_subtype(record) : 0;
}

// As many octets as the record's port ID length says.
const uint8_t *get_ipc_lldpRemPortId(uint32_t tm, int32_t port, int32_t idx, size_t *len) {
    static uint8_t area[nb::kPortId.size];
    const uint8_t *record = find_neighbour(tm, port, idx);
    if (!record) {
        *len = 0;
        return nullptr;
    }
    *len = nb::port_id_len(record);
    std::memcpy(area, record + nb::kPortId.offset, *len);
    return area;
}

const uint8_t *get_ipc_lldpRemPortDesc(uint32_t tm, int32_t port, int32_t idx, size_t *len) {
    static char area[nb::kPortDesc.size];
    return record_text(area, find_neighbour(tm, port, idx), nb::kPortDesc, len);
}
const uint8_t *get_ipc_lldpRemSysName(uint32_t tm, int32_t port, int32_t idx, size_t *len) {
    static char area[nb::kSysName.size];
    return record_text(area, find_neighbour(tm, port, idx), nb::kSysName, len);
}
const uint8_t *get_ipc_lldpRemSysDesc(uint32_t tm, int32_t port, int32_t idx, size_t *len) {
    static char area[nb::kSysDesc.size];
    return record_text(area, find_neighbour(tm, port, idx), nb::kSysDesc, len);
}
const uint8_t *get_ipc_lldpRemSysCapSupported(uint32_t tm, int32_t port, int32_t idx, size_t *len) {
    static uint8_t area;
    return capability_value(area, find_neighbour(tm, port, idx), nb::caps_supported, len);
}
const uint8_t *get_ipc_lldpRemSysCapEnabled(uint32_t tm, int32_t port, int32_t idx, size_t *len) {
    static uint8_t area;
    return capability_value(area, find_neighbour(tm, port, idx), nb::caps_enabled, len);
}

// ---- lldpRemManAddrTable: neighbours that announce a management address ---------------------------

int init_ipc_index_lldpRemManAddrTable(void *(*create)(uint32_t, int32_t, int32_t, int32_t, const uint8_t *, size_t)) {
    return lldp::refresh_neighbours(Consumer::kManAddr, [create](int32_t port, const uint8_t *record) {
        if (nb::mgmt_present(record))
            create(nb::time_mark(record), port, nb::remote_index(record), nb::mgmt_subtype(record),
                   record + nb::kMgmtAddr.offset, nb::mgmt_addr_len(record));
    });
}
int exists_ipc_entry_lldpRemManAddrTable(uint32_t tm, int32_t port, int32_t idx, int32_t subtype, const uint8_t *addr,
                                         size_t len) {
    if (man_addr_record(tm, port, idx, subtype, addr, len)) return 1;
    lldpRemManAddrTable_removeEntry(tm, port, idx, subtype, addr, len);
    return 0;
}
int32_t get_ipc_lldpRemManAddrIfSubtype(uint32_t tm, int32_t port, int32_t idx, int32_t subtype, const uint8_t *addr,
                                        size_t len) {
    const uint8_t *record = man_addr_record(tm, port, idx, subtype, addr, len);
    return record ? nb::mgmt_if_subtype(record) : 0;
}
int32_t get_ipc_lldpRemManAddrIfId(uint32_t tm, int32_t port, int32_t idx, int32_t subtype, const uint8_t *addr,
                                   size_t len) {
    const uint8_t *record = man_addr_record(tm, port, idx, subtype, addr, len);
    return record ? nb::mgmt_if_id(record) : 0;
}
// The switch keeps no OID of a neighbour's address.
const uint32_t *get_ipc_lldpRemManAddrOID(uint32_t, int32_t, int32_t, int32_t, const uint8_t *, size_t, size_t *len) {
    return lldp::zero_dot_zero(len);
}

// ---- lldpRemUnknownTLVTable: a row for every neighbour, by its unknown TLV's type ------------------

int init_ipc_index_lldpRemUnknownTLVTable(void *(*create)(uint32_t, int32_t, int32_t, int32_t)) {
    return lldp::refresh_neighbours(Consumer::kUnknownTlv, [create](int32_t port, const uint8_t *record) {
        create(nb::time_mark(record), port, nb::remote_index(record), nb::unknown_tlv_type(record));
    });
}
int exists_ipc_entry_lldpRemUnknownTLVTable(uint32_t tm, int32_t port, int32_t idx, int32_t type) {
    if (unknown_tlv_record(tm, port, idx, type)) return 1;
    lldpRemUnknownTLVTable_removeEntry(tm, port, idx, type);
    return 0;
}
const uint8_t *get_ipc_lldpRemUnknownTLVInfo(uint32_t tm, int32_t port, int32_t idx, int32_t type, size_t *len) {
    static uint8_t area[nb::kUnknownTlvInfo.size];
    const uint8_t *record = unknown_tlv_record(tm, port, idx, type);
    if (!record) {
        *len = 0;
        return nullptr;
    }
    *len = nb::unknown_tlv_len(record);
    std::memcpy(area, record + nb::kUnknownTlvInfo.offset, *len);
    return area;
}

// ---- lldpRemOrgDefInfoTable: not kept, never listed ---------------------------------------------------

int init_ipc_index_lldpRemOrgDefInfoTable(void *(*)(uint32_t, int32_t, int32_t, const uint8_t *, size_t, int32_t,
                                                    int32_t)) {
    return 0;
}
int exists_ipc_entry_lldpRemOrgDefInfoTable(uint32_t, int32_t, int32_t, const uint8_t *, size_t, int32_t, int32_t) {
    return 1;
}
const uint8_t *get_ipc_lldpRemOrgDefInfo(uint32_t, int32_t, int32_t, const uint8_t *, size_t, int32_t, int32_t,
                                         size_t *len) {
    *len = 0;
    return nullptr;
}

}  // extern "C"
