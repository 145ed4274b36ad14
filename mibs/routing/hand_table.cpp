#include "mibs/routing/hand_table.hpp"

#include <algorithm>
#include <cstring>

namespace snmpapi::routing {
namespace {

// The row's key words and OID under table `t`, column `c`.
HandAnswer answer(const HandTable &t, const HandColumn &c, const RowData &row, const uint32_t *key) {
    HandAnswer a;
    a.oid.assign(t.oid.subids, t.oid.subids + t.oid.len);
    a.oid.push_back(1);
    a.oid.push_back(c.number);
    encode_index(t.index, key, a.oid);
    a.value = c.get(row);
    return a;
}

bool starts_with(std::span<const uint32_t> name, const Oid &prefix) {
    return name.size() >= prefix.len && std::equal(prefix.subids, prefix.subids + prefix.len, name.begin());
}

}  // namespace

Value null_oid_value() {
    static const uint32_t kZeroDotZero[] = {0, 0};
    Value v;
    v.type = Type::OBJECT_ID;
    v.bytes = kZeroDotZero;
    v.len = sizeof kZeroDotZero;
    return v;
}

const HandTable *find_hand_table(const char *name) {
    for (const HandTable &t : hand_tables())
        if (std::strcmp(t.name, name) == 0) return &t;
    return nullptr;
}

std::optional<HandAnswer> hand_get(const HandTable &t, std::span<const uint32_t> name, RowData &row) {
    // table . 1 . column . index
    if (!starts_with(name, t.oid) || name.size() < t.oid.len + 2 || name[t.oid.len] != 1) return std::nullopt;
    const uint32_t number = name[t.oid.len + 1];
    const auto col = std::find_if(t.columns.begin(), t.columns.end(), [&](const HandColumn &c) { return c.number == number; });
    if (col == t.columns.end()) return std::nullopt;
    const auto key = exact_key(t.index, name.subspan(t.oid.len + 2));
    if (!key) return std::nullopt;
    uint32_t row_key[kMaxKeyWords] = {};
    if (!t.find(SW_FIND_EXACT, key->data(), row, row_key)) return std::nullopt;
    return answer(t, *col, row, row_key);
}

std::optional<HandAnswer> hand_next(const HandTable &t, std::span<const uint32_t> name, RowData &row, bool inclusive) {
    if (inclusive)
        if (auto a = hand_get(t, name, row)) return a;
    const std::size_t words = key_words(t.index);
    const std::vector<uint32_t> first(words, 0);
    auto col = t.columns.begin();
    std::optional<Bound> from = Bound{first, false};
    if (starts_with(name, t.oid)) {
        const std::span<const uint32_t> rest = name.subspan(t.oid.len);
        if (!rest.empty() && rest[0] > 1) return std::nullopt;  // past the entry
        if (rest.size() >= 2 && rest[0] == 1) {
            col = std::find_if(t.columns.begin(), t.columns.end(), [&](const HandColumn &c) { return c.number >= rest[1]; });
            // Within the column asked for, the rows after the index asked for.
            if (col != t.columns.end() && col->number == rest[1]) from = bound_after(t.index, rest.subspan(2));
        }
    } else if (!std::lexicographical_compare(name.begin(), name.end(), t.oid.subids, t.oid.subids + t.oid.len)) {
        return std::nullopt;  // after the table
    }
    uint32_t row_key[kMaxKeyWords] = {};
    bool first_known = false, first_exists = false;
    RowData first_row{};
    uint32_t first_key[kMaxKeyWords] = {};
    for (; col != t.columns.end(); ++col, from = Bound{first, false}) {
        if (!from) continue;  // nothing follows in this column
        if (from->after || from->words != first) {
            if (t.find(from->after ? SW_FIND_AFTER : SW_FIND_FROM, from->words.data(), row, row_key))
                return answer(t, *col, row, row_key);
            continue;
        }
        // The first row, which is the same for every column.
        if (!first_known) {
            first_known = true;
            first_exists = t.find(SW_FIND_FROM, first.data(), first_row, first_key);
        }
        if (!first_exists) return std::nullopt;  // an empty table
        row = first_row;
        return answer(t, *col, row, first_key);
    }
    return std::nullopt;
}

}  // namespace snmpapi::routing
