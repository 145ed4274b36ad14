// One table served on the table-data helper: its registration, its row store
// and its request handler.  Every catalogued table is an instance of this
// class; the per-table exported functions are thin wrappers over it
// (tables_agent.cpp).  Net-snmp edge.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "agent/trace.hpp"
#include "tables/descriptors.hpp"
#include "tables/row_key.hpp"

namespace snmpapi {

// The data of a table-data row: the row's index values and nothing else.
struct RowEntry {
    RowKey key;
};

class TableRuntime {
public:
    using Refresh = void (*)();

    // `refresh` runs the table's population with its createEntry function.
    TableRuntime(const char *name, Refresh refresh)
        : name_(name),
          handler_name_(std::string(name) + "_handler"),
          refresh_name_(std::string(name) + "_refresh"),
          retired_name_(std::string(name) + "_retired"),
          refresh_(refresh) {}
    TableRuntime(const TableRuntime &) = delete;
    TableRuntime &operator=(const TableRuntime &) = delete;

    // Registers the table with the agent and fills its first rows.
    void init();

    // Row store: add (returns the row, new or existing), remove, find.
    // Populations run before every request and ask for every row in a fixed
    // order: index order, or for tables indexed by (port, queue) and the
    // like, one column of the index after the other.  The row found next is
    // then the one a fixed step after the last one found, so that step is
    // looked at first, inline.
    void *create(KeyView key) {
        if (netsnmp_table_row *row = find(key)) return row;
        return add(key);
    }
    // Removing a row while a request is served leaves it out of the store at
    // once, but frees it only when the request PDU ends (see retire()).
    void remove(KeyView key);
    netsnmp_table_row *find(KeyView key) {
        const size_t at = last_ + step_;
        if (at < rows_.size() && rows_[at].is(key)) [[likely]] {
            last_ = at;
            return rows_[at].row;
        }
        return search(key);
    }
    size_t row_count() const { return rows_.size(); }

    // The same from the C parameters of the table's row functions; keys of
    // integer indexes are built on the stack.
    template <class Key, class... Args>
    void *create_from(Args... args) {
        if constexpr (constexpr size_t n = fixed_words_of<Key>; n > 0) {
            key_codec::FixedKey<n> key;
            encode_key<Key>(key, args...);
            return create(key.view());
        } else {
            encode_key<Key>(scratch_, args...);
            return create(scratch_);
        }
    }
    template <class Key, class... Args>
    void remove_from(Args... args) {
        encode_key<Key>(scratch_, args...);
        remove(scratch_);
    }

    // Runs the population unless it has run for this request PDU already.
    void refresh_once(netsnmp_agent_request_info *reqinfo);
    // Sends GETNEXT requests past the last catalogued column out of the table.
    void steer_past_last_column(netsnmp_handler_registration *reginfo, netsnmp_request_info *requests);

    // The request handler, one call per request batch.
    int handle(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);

    const char *name() const { return name_; }
    const TableDesc *desc() const { return desc_; }

private:
    void bind();  // finds the catalogue entry and the columns
    const ColumnDesc *column(unsigned number) const;
    netsnmp_column_info *valid_columns() const;
    void handle_get(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
    void handle_reserve1(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
    void handle_action(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
    bool key_from_indexes(const netsnmp_variable_list *indexes, RowKey &key) const;
    void retire(netsnmp_table_row *row, RowEntry *entry);

    const char *name_;
    std::string handler_name_;  // "<table>_handler", for trace lines
    std::string refresh_name_;  // "<table>_refresh": the refresh handler and its mark
    std::string retired_name_;  // "<table>_retired": the request's hold on removed rows
    Refresh refresh_;
    const TableDesc *desc_ = nullptr;
    bool rebuild_ = false;         // the refresh rebuilds every row (tables/variants.hpp)
    bool trace_columns_ = true;    // per-column trace messages
    void clear_rows();
    std::vector<const ColumnDesc *> columns_;  // by column number
    unsigned last_column_ = 0;                  // the highest catalogued one
    netsnmp_table_data *data_ = nullptr;
    // The rows in index order.  Populations visit rows in index order, so
    // the row asked for next is usually the one after the last one found:
    // looking there first makes a population of n existing rows cost O(n);
    // other lookups are binary searches.
    // A row's first two index words and its key length sit beside it, so
    // that the common check (a key of one or two words, the row a step after
    // the last one) reads no other memory.
    struct Row {
        uint32_t first;
        uint32_t second;
        uint32_t size;
        netsnmp_table_row *row;
        const RowKey *key;  // the row entry's key
        bool is(KeyView k) const {
            if (size != k.size()) return false;
            if (size == 0) return true;
            if (first != k[0]) return false;
            if (size == 1) return true;
            return second == k[1] && std::equal(k.begin() + 2, k.end(), key->begin() + 2);
        }
    };
    std::vector<Row> rows_;
    size_t last_ = 0;  // position of the row found or added last
    size_t step_ = 1;  // from the row found before it, when that was ahead
    size_t position(KeyView key) const;  // where the key is or would go
    netsnmp_table_row *search(KeyView key);  // find, by binary search
    void *add(KeyView key);                  // a new row, known to be absent
    RowKey scratch_;  // key buffer of the row functions (agent thread only)
    // The request being served.  The table-data helper hands one row to every
    // varbind of a request that names it (two columns of the row, or a
    // GETBULK across the table), so a row that the check of one varbind
    // removes must stay readable for the varbinds after it: it leaves the
    // store at once and is freed with the request's data when the agent is
    // done with the PDU.
    netsnmp_agent_request_info *serving_ = nullptr;
    struct Retired {
        netsnmp_table_row *row;
        RowEntry *entry;
    };
};

}  // namespace snmpapi
