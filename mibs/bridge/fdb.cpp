// The learned address tables (dot1dTpFdbTable by MAC, dot1qTpFdbTable by FDB
// id and MAC) and the filtering database table dot1qFdbTable.
//
// The address table can be large, so it is never kept between requests: a
// table's population fetches a snapshot, and the first column read that
// searches it (or a row check that misses) releases it.  Later reads in the
// same request find it released and answer 0; this is intended.
#include <cstdlib>
#include <cstring>

#include "swplatform/platform.h"
#include "swplatform/records.hpp"
#include "tables/catalogue.hpp"

namespace {

namespace me = swp::mac_entry;

constexpr size_t kMacLen = 6;
// The switch's own reserved address, never shown in dot1dTpFdbTable.
constexpr uint8_t kHiddenMac[kMacLen] = {0x00, 0x10, 0x18, 0xff, 0xff, 0xff};

struct Snapshot {
    int count = 0;
    uint8_t *entries = nullptr;

    const uint8_t *entry(int n) const { return entries + size_t(n) * me::kSize; }

    // Fetches every entry.  On failure the platform leaves count and array
    // as they were, so the previous snapshot stands.
    bool refresh() {
        static constexpr int32_t all[swp::mac_query::kWords] = {};
        int new_count = count;
        uint8_t *new_entries = entries;
        const int result = cfg_get_mac_address_table(&new_count, &new_entries, all);
        if (new_entries != entries) std::free(entries);
        count = new_count;
        entries = new_entries;
        return result >= 0 && count > 0;
    }

    void release() {
        std::free(entries);
        entries = nullptr;
        count = 0;
    }

    // The first entry with this MAC (and FDB id, when fid is not null).
    const uint8_t *find(const uint8_t *mac, size_t len, const uint32_t *fid = nullptr) const {
        if (len != kMacLen || entries == nullptr) return nullptr;
        for (int n = 0; n < count; ++n) {
            const uint8_t *e = entry(n);
            if (std::memcmp(e + me::kMac.offset, mac, kMacLen) == 0 &&
                (fid == nullptr || swp::load_be16(e + me::kFid.offset) == *fid))
                return e;
        }
        return nullptr;
    }
};

Snapshot g_dot1d;  // dot1dTpFdbTable's
Snapshot g_dot1q;  // dot1qTpFdbTable's

int32_t status_of(const me::Entry &e) { return (e.flags & me::kFlagStatic) ? 5 : 3; }  // static : learned

// Searches the snapshot for the index's MAC, answers `value` of the first
// match (0 when none) and releases the snapshot.
template <class Value>
int32_t consume(Snapshot &s, const uint8_t *mac, size_t len, Value &&value) {
    const uint8_t *e = s.find(mac, len);
    const int32_t v = e != nullptr ? value(me::decode(e)) : 0;
    s.release();
    return v;
}

}  // namespace

extern "C" {

// ---- dot1dTpFdbTable --------------------------------------------------------

int init_index_dot1dTpFdbTable(void *(*create)(const uint8_t *, size_t)) {
    if (!g_dot1d.refresh()) return 0;
    for (int n = 0; n < g_dot1d.count; ++n) {
        const uint8_t *mac = g_dot1d.entry(n) + me::kMac.offset;
        if (std::memcmp(mac, kHiddenMac, kMacLen) != 0) create(mac, kMacLen);
    }
    return 0;
}

int exists_entry_dot1dTpFdbTable(const uint8_t *mac, size_t len) {
    if (g_dot1d.find(mac, len) != nullptr) return 1;
    dot1dTpFdbTable_removeEntry(mac, len);
    g_dot1d.release();
    return 0;
}

// Answered from the index alone; the snapshot is released all the same.
const uint8_t *get_dot1dTpFdbAddress(const uint8_t *mac, size_t len, size_t *out_len) {
    static uint8_t address[kMacLen];
    g_dot1d.release();
    *out_len = len < kMacLen ? len : kMacLen;
    if (*out_len > 0) std::memcpy(address, mac, *out_len);
    return address;
}

// Trunk entries read 513 + trunk0, port entries port0 + 1; both then add 64
// per unit (the unit octet is signed).
int32_t get_dot1dTpFdbPort(const uint8_t *mac, size_t len) {
    return consume(g_dot1d, mac, len, [](const me::Entry &e) {
        const uint32_t base = (e.flags & me::kFlagTrunk) ? 513u + e.trunk : e.port + 1u;
        return static_cast<int32_t>(base + static_cast<uint32_t>(64 * e.unit));
    });
}

int32_t get_dot1dTpFdbStatus(const uint8_t *mac, size_t len) { return consume(g_dot1d, mac, len, status_of); }

// ---- dot1qTpFdbTable --------------------------------------------------------

int init_index_dot1qTpFdbTable(void *(*create)(uint32_t, const uint8_t *, size_t)) {
    if (!g_dot1q.refresh()) return 0;
    for (int n = 0; n < g_dot1q.count; ++n) {
        const uint8_t *e = g_dot1q.entry(n);
        create(swp::load_be16(e + me::kFid.offset), e + me::kMac.offset, kMacLen);
    }
    return 0;
}

int exists_entry_dot1qTpFdbTable(uint32_t fid, const uint8_t *mac, size_t len) {
    if (g_dot1q.find(mac, len, &fid) != nullptr) return 1;
    dot1qTpFdbTable_removeEntry(fid, mac, len);
    g_dot1q.release();
    return 0;
}

// The columns look the MAC up alone: the FDB id is not compared and the port
// is read as port0 + 1 without unit or trunk.
int32_t get_dot1qTpFdbPort(uint32_t, const uint8_t *mac, size_t len) {
    return consume(g_dot1q, mac, len, [](const me::Entry &e) { return static_cast<int32_t>(e.port + 1u); });
}

int32_t get_dot1qTpFdbStatus(uint32_t, const uint8_t *mac, size_t len) { return consume(g_dot1q, mac, len, status_of); }

// ---- dot1qFdbTable: the single filtering database, id 1 ---------------------

int init_index_dot1qFdbTable(void *(*create)(uint32_t)) {
    create(1);
    return 0;
}
int exists_entry_dot1qFdbTable(uint32_t fid) { return fid == 1; }

// Entries other than static ones.  The platform's -150 still carries a
// valid count; any other failure counts 0.
uint32_t get_dot1qFdbDynamicCount(uint32_t) {
    static constexpr int32_t dynamic[swp::mac_query::kWords] = {64, -33, 0, 0, 0, 0, 0};
    int count = 0;
    uint8_t *entries = nullptr;
    const int result = cfg_get_mac_address_table(&count, &entries, dynamic);
    std::free(entries);
    if ((result < 0 && result != -150) || count < 0) return 0;
    return static_cast<uint32_t>(count);
}

}  // extern "C"
