// Stand-ins for the row store of the net-snmp edge: population callbacks that
// record the indexes they are given, and the <table>_removeEntry and
// trunkTable_createEntry functions, which record the rows they touch.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace unit {

struct RowLog {
    std::vector<int32_t> ints;         // single-integer rows added
    std::vector<std::string> keys;     // "a.b", MAC or "fid/MAC" rows added
    std::vector<std::string> removed;  // "<table> <index>", two-part indexes as "a.b"
    std::vector<std::string> created;  // rows a setter added itself: "<table> <index>"
    void clear() { *this = RowLog{}; }
};
RowLog &rows();

std::string mac_text(const uint8_t *mac, size_t len);

void *add_int_row(int32_t index);
void *add_gauge_row(uint32_t index);
void *add_mac_row(const uint8_t *mac, size_t len);
template <class T>  // int32_t or uint32_t: "first.second"
void *add_pair_row(T first, T second) {
    rows().keys.push_back(std::to_string(first) + "." + std::to_string(second));
    return &rows();
}
void *add_fdb_row(uint32_t fid, const uint8_t *mac, size_t len);

}  // namespace unit
