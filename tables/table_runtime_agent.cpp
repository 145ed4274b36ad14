// The generic table: registration on the table-data helper, the row store and
// the request handler shared by every catalogued table.
//
// Rows hold only their index values.  Before the agent serves a request from
// a table, the table's population runs again under the read lock, adding rows
// for objects that have appeared; a row whose object has gone is removed when
// a GET meets it.  Column values are read and written live through the
// accessors, each call under the configuration lock.
//
// The refresh is a handler of its own at the top of the registration's
// chain, above the table and table-data helpers: those pick the row a
// request addresses (and the row after it, for GETNEXT), so a row must be in
// the store before they run for an object that has just appeared to be
// served by the request that first asks for it.  It runs once per request
// PDU: net-snmp calls a table's chain once per repetition of a GETBULK, and
// repeating the population between repetitions of one PDU would find the
// same switch.

#include "tables/table_runtime.hpp"

#include <algorithm>
#include <cstring>

#include "agent/config_lock.hpp"
#include "agent/varbind.hpp"
#include "tables/variants.hpp"

namespace snmpapi {
namespace {

int table_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *,
                  netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    return static_cast<TableRuntime *>(handler->myvoid)->handle(reqinfo, requests);
}

int refresh_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                    netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    auto *table = static_cast<TableRuntime *>(handler->myvoid);
    table->refresh_once(reqinfo);
    if (reqinfo->mode == MODE_GETNEXT || reqinfo->mode == MODE_GETBULK) table->steer_past_last_column(reginfo, requests);
    return netsnmp_call_next_handler(handler, reginfo, reqinfo, requests);
}

u_char index_asn_type(IndexKind kind) {
    switch (kind) {
    case IndexKind::IDX_INTEGER: return ASN_INTEGER;
    case IndexKind::IDX_GAUGE: return ASN_GAUGE;
    case IndexKind::IDX_TIMETICKS: return ASN_TIMETICKS;
    case IndexKind::IDX_IPADDRESS: return ASN_IPADDRESS;
    case IndexKind::IDX_OCTET_STR: return ASN_OCTET_STR;
    case IndexKind::IDX_IMPLIED_OCTET_STR: return ASN_PRIV_IMPLIED_OCTET_STR;
    }
    return ASN_NULL;
}

// Adds the index varbinds of a row, one per index, from its key.
bool add_index_varbinds(netsnmp_table_row *row, const TableDesc &desc, KeyView key) {
    key_codec::Reader r(key);
    for (size_t i = 0; i < desc.index_count; ++i) {
        const IndexKind kind = desc.index_kinds[i];
        const u_char type = index_asn_type(kind);
        if (is_string_index(kind)) {
            auto [p, n] = r.string(kind == IndexKind::IDX_IMPLIED_OCTET_STR);
            snmp_varlist_add_variable(&row->indexes, nullptr, 0, type, p, n);
        } else if (kind == IndexKind::IDX_IPADDRESS) {
            // net-snmp builds an address index from a host-order word, first
            // octet most significant (while it parses one into octets).
            uint32_t v = 0;
            for (int i = 0; i < 4; ++i) v = v << 8 | (r.next() & 0xff);
            snmp_varlist_add_variable(&row->indexes, nullptr, 0, type, &v, sizeof(v));
        } else {
            uint32_t v = r.next();
            snmp_varlist_add_variable(&row->indexes, nullptr, 0, type, &v, sizeof(v));
        }
    }
    return r.ok() && r.remaining() == 0;
}

}  // namespace

void TableRuntime::bind() {
    if (desc_) return;
    desc_ = find_table(name_);
    if (!desc_) return;
    rebuild_ = is_one_of(name_, kRebuiltTables);
    trace_columns_ = !is_one_of(name_, kQuietTables);
    columns_.assign(desc_->highest_column + 1, nullptr);
    for (const ColumnDesc &c : all_columns())
        if (std::strcmp(c.table, name_) == 0 && c.number < columns_.size()) columns_[c.number] = &c;
    last_column_ = desc_->lowest_column;
    for (unsigned n = desc_->lowest_column; n < columns_.size(); ++n)
        if (columns_[n]) last_column_ = n;
}

const ColumnDesc *TableRuntime::column(unsigned number) const {
    return number < columns_.size() ? columns_[number] : nullptr;
}

// The catalogued columns, so that a walk steps over the column numbers that
// the MIB leaves unused (dot3StatsTable has no column 12) instead of leaving
// the table there.  Tables are never unregistered: the list lives on.
netsnmp_column_info *TableRuntime::valid_columns() const {
    std::vector<unsigned> numbers;
    for (unsigned n = desc_->lowest_column; n < columns_.size(); ++n)
        if (columns_[n]) numbers.push_back(n);
    if (numbers.empty() || numbers.size() > 127) return nullptr;  // list_count is a char
    auto *info = SNMP_MALLOC_TYPEDEF(netsnmp_column_info);
    auto *list = static_cast<unsigned *>(calloc(numbers.size(), sizeof(unsigned)));
    if (!info || !list) {
        free(info);
        free(list);
        return nullptr;
    }
    std::copy(numbers.begin(), numbers.end(), list);
    info->isRange = 0;
    info->list_count = char(numbers.size());
    info->details.list = list;
    return info;
}

void TableRuntime::init() {
    bind();
    if (!desc_) return;
    std::vector<oid> table_oid(desc_->oid.subids, desc_->oid.subids + desc_->oid.len);
    netsnmp_handler_registration *reg = netsnmp_create_handler_registration(
        name_, table_handler, table_oid.data(), table_oid.size(),
        desc_->writable ? HANDLER_CAN_RWRITE : HANDLER_CAN_RONLY);
    if (reg) reg->handler->myvoid = this;

    auto *info = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    for (size_t i = 0; i < desc_->index_count; ++i)
        netsnmp_table_helper_add_indexes(info, index_asn_type(desc_->index_kinds[i]), 0);
    if (info) {
        info->min_column = desc_->lowest_column;
        info->max_column = desc_->highest_column;
        info->valid_columns = valid_columns();
    }
    data_ = netsnmp_create_table_data(name_);
    if (netsnmp_register_table_data(reg, data_, info) == MIB_REGISTERED_OK) {
        netsnmp_mib_handler *refresh = netsnmp_create_handler(refresh_name_.c_str(), refresh_handler);
        if (refresh) {
            refresh->myvoid = this;
            netsnmp_inject_handler(reg, refresh);
        }
    }
    SA_DEBUG(name_, "Initializing\n");
    refresh_();
}

// A table registered with more columns than it has (genDvInfDeviceTable:
// 1 .. 20, eleven of them catalogued) has no column left to walk into after
// its last one, and the table helper then starts the table again at its
// first column instead of leaving it.  A walk that has passed the last
// column is sent beyond the registered ones, which the table helper hands
// on to the next subtree.
void TableRuntime::steer_past_last_column(netsnmp_handler_registration *reginfo, netsnmp_request_info *requests) {
    if (!desc_ || last_column_ == desc_->highest_column) return;
    const size_t column_at = reginfo->rootoid_len + 1;
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        netsnmp_variable_list *var = r->requestvb;
        if (r->processed || var->name_length <= column_at || var->name[column_at - 1] != 1 ||
            var->name[column_at] <= last_column_ || var->name[column_at] > desc_->highest_column ||
            snmp_oid_ncompare(var->name, var->name_length, reginfo->rootoid, reginfo->rootoid_len,
                              reginfo->rootoid_len) != 0)
            continue;
        oid beyond[MAX_OID_LEN];
        std::copy(reginfo->rootoid, reginfo->rootoid + reginfo->rootoid_len, beyond);
        beyond[column_at - 1] = 1;
        beyond[column_at] = desc_->highest_column + 1;
        snmp_set_var_objid(var, beyond, column_at + 1);
    }
}

void TableRuntime::refresh_once(netsnmp_agent_request_info *reqinfo) {
    // The mark lives in the request's own data and goes with it.
    if (reqinfo && netsnmp_agent_get_list_data(reqinfo, refresh_name_.c_str())) return;
    config_read_lock();
    if (rebuild_ && data_ && netsnmp_table_data_num_rows(data_) > 0) clear_rows();
    refresh_();
    config_unlock();
    if (reqinfo)
        netsnmp_agent_add_list_data(reqinfo, netsnmp_create_data_list(refresh_name_.c_str(), this, nullptr));
}

// Every row goes, at once: no request holds one while the refresh runs.
void TableRuntime::clear_rows() {
    for (const Row &r : rows_) {
        netsnmp_table_data_remove_row(data_, r.row);
        auto *entry = static_cast<RowEntry *>(r.row->data);
        netsnmp_table_data_delete_row(r.row);
        delete entry;
    }
    rows_.clear();
    last_ = 0;
    step_ = 1;
}

size_t TableRuntime::position(KeyView key) const {
    return std::lower_bound(rows_.begin(), rows_.end(), key,
                            [](const Row &r, KeyView k) { return KeyLess{}(*r.key, k); }) -
           rows_.begin();
}

netsnmp_table_row *TableRuntime::search(KeyView key) {
    const size_t at = position(key);
    if (at == rows_.size() || !rows_[at].is(key)) return nullptr;
    step_ = at > last_ ? at - last_ : 1;
    last_ = at;
    return rows_[at].row;
}

void *TableRuntime::add(KeyView key) {
    if (!data_) return nullptr;
    auto *entry = new RowEntry{RowKey(key.begin(), key.end())};
    if (rebuild_)
        SA_DEBUG(name_, "Adding row\n");
    else
        SA_DEBUG(name_, "Adding row.\n");
    netsnmp_table_row *row = netsnmp_create_table_data_row();
    if (!row) {
        delete entry;
        return nullptr;
    }
    row->data = entry;
    if (!add_index_varbinds(row, *desc_, key) || netsnmp_table_data_add_row(data_, row) != SNMPERR_SUCCESS) {
        netsnmp_table_data_delete_row(row);
        delete entry;
        return nullptr;
    }
    last_ = position(key);
    rows_.insert(rows_.begin() + last_, Row{key.size() > 0 ? key[0] : 0, key.size() > 1 ? key[1] : 0,
                                            uint32_t(key.size()), row, &entry->key});
    return row;
}

void TableRuntime::remove(KeyView key) {
    const size_t at = position(key);
    if (at == rows_.size() || !rows_[at].is(key)) return;
    SA_DEBUG(name_, "Removing row\n");
    netsnmp_table_row *row = rows_[at].row;
    rows_.erase(rows_.begin() + at);
    last_ = at > 0 ? at - 1 : 0;
    netsnmp_table_data_remove_row(data_, row);
    auto *entry = static_cast<RowEntry *>(row->data);
    if (serving_) {
        retire(row, entry);
        return;
    }
    netsnmp_table_data_delete_row(row);
    delete entry;
}

// Keeps a removed row alive until the request being served is freed: the
// request's data holds the rows its varbinds may still point at.
void TableRuntime::retire(netsnmp_table_row *row, RowEntry *entry) {
    using Held = std::vector<Retired>;
    auto *held = static_cast<Held *>(netsnmp_agent_get_list_data(serving_, retired_name_.c_str()));
    if (!held) {
        held = new Held;
        netsnmp_data_list *node = netsnmp_create_data_list(retired_name_.c_str(), held, [](void *p) {
            auto *rows = static_cast<Held *>(p);
            for (const Retired &r : *rows) {
                netsnmp_table_data_delete_row(r.row);
                delete r.entry;
            }
            delete rows;
        });
        if (!node) {  // out of memory: a leaked row is safer than one freed under the request
            delete held;
            return;
        }
        netsnmp_agent_add_list_data(serving_, node);
    }
    held->push_back({row, entry});
}

bool TableRuntime::key_from_indexes(const netsnmp_variable_list *var, RowKey &key) const {
    key.clear();
    for (size_t i = 0; i < desc_->index_count; ++i, var = var->next_variable) {
        if (!var) return false;
        const IndexKind kind = desc_->index_kinds[i];
        if (is_string_index(kind)) {
            key_codec::put(key, kind, var->val.string, var->val.string ? var->val_len : 0);
        } else {
            key_codec::put(key, kind, received_value(var).word);
        }
    }
    return true;
}

int TableRuntime::handle(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    bind();
    if (!desc_) return SNMP_ERR_NOERROR;
    SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "%s handler, mode %d\n", name_, reqinfo->mode);
    serving_ = reqinfo;
    switch (reqinfo->mode) {
    case MODE_GET: handle_get(reqinfo, requests); break;
    case MODE_SET_RESERVE1: handle_reserve1(reqinfo, requests); break;
    case MODE_SET_ACTION: handle_action(reqinfo, requests); break;
    default: break;  // RESERVE2, COMMIT, FREE, UNDO: the value was written once, in ACTION
    }
    serving_ = nullptr;
    return SNMP_ERR_NOERROR;
}

void TableRuntime::handle_get(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    // GETNEXT and GETBULK reach here as GETs on the row the helper picked.
    const netsnmp_pdu *pdu = reqinfo->asp ? reqinfo->asp->pdu : nullptr;
    const bool walking = pdu && (pdu->command == SNMP_MSG_GETNEXT || pdu->command == SNMP_MSG_GETBULK);
    RowKey key;
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        auto *entry = static_cast<RowEntry *>(netsnmp_extract_table_row_data(r));
        netsnmp_table_request_info *info = netsnmp_extract_table_info(r);
        if (!info) {
            SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "table_info not found.\n");
            continue;
        }
        if (!entry) {
            SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Index not found.\n");
            continue;
        }
        key = entry->key;
        if (!desc_->exists(key)) {
            SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Index not found.\n");
            // The row was stale and is gone now.  A walk goes on with the row
            // after it rather than leaving the table.
            if (walking) r->requestvb->type = ASN_PRIV_RETRY;
            continue;
        }
        SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Get for row %d\n", info->colnum);
        config_read_lock();
        if (const ColumnDesc *col = column(info->colnum)) {
            if (trace_columns_)
                SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Get for %s, row %d\n", col->name, info->colnum);
            store_value(r->requestvb, col->get(key));
        } else {
            SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Column %d not found\n", info->colnum);
            // The helper stepped into a column number the MIB leaves unused;
            // asked again from there, the table helper moves on to the next
            // catalogued column.
            if (walking) r->requestvb->type = ASN_PRIV_RETRY;
        }
        config_unlock();
    }
}

void TableRuntime::handle_reserve1(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    if (!desc_->writable) {
        netsnmp_table_request_info *info = netsnmp_extract_table_info(requests);
        SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Set reserve 1 for row %d\n", info ? int(info->colnum) : 0);
        netsnmp_set_request_error(reqinfo, requests, SNMP_ERR_NOTWRITABLE);
        return;
    }
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        netsnmp_table_request_info *info = netsnmp_extract_table_info(r);
        const unsigned colnum = info ? info->colnum : 0;
        SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Set reserve 1 for row %d\n", colnum);
        const ColumnDesc *col = column(colnum);
        if (!col || !col->set) {
            // A read-only column ends the check of the whole batch.
            netsnmp_set_request_error(reqinfo, r, SNMP_ERR_NOTWRITABLE);
            return;
        }
        if (const int error = set_value_error(r->requestvb, col->type, col->range))
            netsnmp_set_request_error(reqinfo, r, error);
    }
}

void TableRuntime::handle_action(netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    RowKey key;
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        auto *entry = static_cast<RowEntry *>(netsnmp_extract_table_row_data(r));
        netsnmp_table_request_info *info = netsnmp_extract_table_info(r);
        if (!info) continue;
        // A SET may address an object that the table has not listed yet: the
        // index then comes from the request itself.
        if (entry)
            key = entry->key;
        else if (!key_from_indexes(info->indexes, key))
            continue;
        SA_TRACE_AT(handler_name_.c_str(), __FILE_NAME__, name_, "Set action for row %d\n", info->colnum);
        const ColumnDesc *col = column(info->colnum);
        config_write_lock();
        if (col && col->set && col->set(key, received_value(r->requestvb)) < 0)
            netsnmp_set_request_error(reqinfo, r, SNMP_ERR_GENERR);
        config_unlock();
    }
}

}  // namespace snmpapi
