// What the agent should show, read from the module's own catalogues
// (scalars/catalogue.def, tables/catalogue.def, mibs/*/columns.def): every
// scalar, table and column with its OID, whether this build serves it to
// managers, and for the objects its type, writability and accepted range.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "snmp_client.hpp"

namespace it {

// The range a SET is checked against in its first phase: an integer's
// values, or an octet string's length.
struct Range {
    bool bounded = false;
    int64_t lo = 0, hi = 0;
};

// The value tag of a catalogue type; 0 for PER_OBJECT (the platform's
// answer sets it).
constexpr uint8_t catalogue_type(std::string_view t) {
    return t == "INTEGER"     ? kInteger
           : t == "COUNTER"   ? kCounter32
           : t == "GAUGE"     ? kGauge32
           : t == "TIMETICKS" ? kTimeTicks
           : t == "IPADDRESS" ? kIpAddress
           : t == "OCTET_STR" ? kOctetString
           : t == "OBJECT_ID" ? kObjectId
           : t == "COUNTER64" ? kCounter64
                              : 0;
}

enum class IndexKind { kInteger, kGauge, kTimeTicks, kIpAddress, kOctetStr, kImpliedOctetStr };

// "INDEXES(IDX_INTEGER, IDX_OCTET_STR)" as the table catalogue writes it.
inline std::vector<IndexKind> index_kinds(std::string_view text) {
    static constexpr std::pair<std::string_view, IndexKind> kNames[] = {
        {"IDX_INTEGER", IndexKind::kInteger},     {"IDX_GAUGE", IndexKind::kGauge},
        {"IDX_TIMETICKS", IndexKind::kTimeTicks}, {"IDX_IPADDRESS", IndexKind::kIpAddress},
        {"IDX_IMPLIED_OCTET_STR", IndexKind::kImpliedOctetStr}, {"IDX_OCTET_STR", IndexKind::kOctetStr}};
    std::vector<IndexKind> kinds;
    for (size_t at = text.find("IDX_"); at != text.npos; at = text.find("IDX_", at + 1)) {
        for (const auto &[name, kind] : kNames) {
            const std::string_view word = text.substr(at, name.size());
            const char after = at + name.size() < text.size() ? text[at + name.size()] : ')';
            if (word == name && (after == ',' || after == ')' || after == ' ')) {
                kinds.push_back(kind);
                break;
            }
        }
    }
    return kinds;
}

struct CatalogueObject {
    std::string_view name;
    bool table;   // else a scalar
    bool served;  // scalars: state ON; tables: REGISTERED and BUILT
    Oid oid;      // scalars without the instance 0
    // Scalars: the value's type (0: set by the platform), writable, range.
    uint8_t type = 0;
    bool writable = false;
    Range range;
    // Tables: "INDEXES(...)" and the catalogued column numbers.
    std::string_view indexes;
    uint32_t lowest_column = 0, highest_column = 0;
};

struct CatalogueColumn {
    std::string_view table, name;
    uint32_t number;
    uint8_t type;
    bool writable;
    Range range;
};

#define RANGE(lo, hi) Range{true, lo, hi}
#define NO_RANGE Range{}
#define SIZE(lo, hi) Range{true, lo, hi}

inline const std::vector<CatalogueObject> &catalogue() {
    static const std::vector<CatalogueObject> objects = {
#define SCALAR(name, access, type, range, handler, state, ...)                                                  \
    {#name, false, std::string_view(#state) == "ON", Oid{__VA_ARGS__}, catalogue_type(#type),                 \
     std::string_view(#access) == "RW", range, {}, 0, 0},
#include "scalars/catalogue.def"
#undef SCALAR
#define TABLE(name, access, registration, state, indexes, lo, hi, writable, ...)                                \
    {#name, true, std::string_view(#registration) == "REGISTERED" && std::string_view(#state) == "BUILT",      \
     Oid{__VA_ARGS__}, 0, std::string_view(#access) == "RW", Range{}, #indexes, lo, hi},
#include "tables/catalogue.def"
#undef TABLE
#define HAND_TABLE(name, ...) {#name, true, true, Oid{__VA_ARGS__}, 0, false, Range{}, {}, 0, 0},
#include "mibs/routing/hand_tables.def"
#undef HAND_TABLE
    };
    return objects;
}

inline const std::vector<CatalogueColumn> &catalogue_columns() {
    static const std::vector<CatalogueColumn> columns = {
#define COLUMN(table, number, name, type, access, range) \
    {#table, #name, number, catalogue_type(#type), std::string_view(#access) == "RW", range},
#include "tables/columns.def"
#undef COLUMN
    };
    return columns;
}

#undef RANGE
#undef NO_RANGE
#undef SIZE

}  // namespace it
