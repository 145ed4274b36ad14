// One table served on the table-data helper: its registration, its row store
// and its request handler.  Every catalogued table is an instance of this
// class; the per-table exported functions are thin wrappers over it
// (tables_agent.cpp).  Net-snmp edge.
#pragma once

#include <map>
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
        : name_(name), handler_name_(std::string(name) + "_handler"), refresh_(refresh) {}
    TableRuntime(const TableRuntime &) = delete;
    TableRuntime &operator=(const TableRuntime &) = delete;

    // Registers the table with the agent and fills its first rows.
    void init();

    // Row store: add (returns the row, new or existing), remove, find.
    void *create(KeyView key);
    void remove(KeyView key);
    netsnmp_table_row *find(KeyView key) const;
    size_t row_count() const { return rows_.size(); }

    template <class Key, class... Args>
    void *create_from(Args... args) {
        thread_local RowKey key;
        encode_key<Key>(key, args...);
        return create(key);
    }
    template <class Key, class... Args>
    void remove_from(Args... args) {
        thread_local RowKey key;
        encode_key<Key>(key, args...);
        remove(key);
    }

    // The request handler, one call per request batch.
    int handle(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);

    const char *name() const { return name_; }
    const TableDesc *desc() const { return desc_; }

private:
    void bind();  // finds the catalogue entry and the columns
    const ColumnDesc *column(unsigned number) const;
    void handle_get(netsnmp_request_info *requests);
    void handle_reserve1(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
    void handle_action(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests);
    bool key_from_indexes(const netsnmp_variable_list *indexes, RowKey &key) const;

    const char *name_;
    std::string handler_name_;  // "<table>_handler", for trace lines
    Refresh refresh_;
    const TableDesc *desc_ = nullptr;
    std::vector<const ColumnDesc *> columns_;  // by column number
    netsnmp_table_data *data_ = nullptr;
    std::map<RowKey, netsnmp_table_row *, KeyLess> rows_;
};

}  // namespace snmpapi
