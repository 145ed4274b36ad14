// Registration of the routing tables that answer GET and GETNEXT themselves,
// and their handler.  Each table is a plain handler over its whole subtree:
// a GET answers the object asked for; a GETNEXT renames the varbind to the
// object that follows and answers it, or leaves it unanswered so that the
// agent goes on to the next registration.  GETBULK reaches the handler as
// GETNEXTs (net-snmp puts its bulk-to-next helper in front of handlers that
// do not take bulk requests).  Every lookup runs under the configuration
// lock.  Net-snmp edge; the lookups are in hand_table.cpp.
#include <string>
#include <vector>

#include "agent/config_lock.hpp"
#include "agent/trace.hpp"
#include "agent/varbind.hpp"
#include "mibs/routing/hand_table.hpp"

namespace snmpapi::routing {
namespace {

void answer_into(netsnmp_variable_list *var, const HandAnswer &a) {
    std::vector<oid> name(a.oid.begin(), a.oid.end());
    snmp_set_var_objid(var, name.data(), name.size());
    store_value(var, a.value);
}

int hand_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *, netsnmp_agent_request_info *reqinfo,
                 netsnmp_request_info *requests) {
    const auto *t = static_cast<const HandTable *>(handler->myvoid);
    const std::string fn = std::string(t->name) + "_handler";
    SA_TRACE_AT(fn.c_str(), __FILE_NAME__, t->name, "%s handler, mode %d\n", t->name, reqinfo->mode);
    if (reqinfo->mode != MODE_GET && reqinfo->mode != MODE_GETNEXT) {
        SA_TRACE_AT(fn.c_str(), __FILE_NAME__, t->name, "Mode %d not supported\n", reqinfo->mode);
        return SNMP_ERR_NOERROR;
    }
    RowData row{};
    std::vector<uint32_t> name;
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        if (r->processed) continue;
        const netsnmp_variable_list *var = r->requestvb;
        name.assign(var->name, var->name + var->name_length);
        config_read_lock();
        const std::optional<HandAnswer> a =
            reqinfo->mode == MODE_GET ? hand_get(*t, name, row) : hand_next(*t, name, row, r->inclusive != 0);
        if (a) answer_into(r->requestvb, *a);
        config_unlock();
        if (!a) SA_TRACE_AT(fn.c_str(), __FILE_NAME__, t->name, "Index not found.\n");
    }
    return SNMP_ERR_NOERROR;
}

void register_table(const char *name) {
    const HandTable *t = find_hand_table(name);
    if (!t) return;
    std::vector<oid> table_oid(t->oid.subids, t->oid.subids + t->oid.len);
    netsnmp_handler_registration *reg =
        netsnmp_create_handler_registration(t->name, hand_handler, table_oid.data(), table_oid.size(), HANDLER_CAN_RONLY);
    if (!reg) return;
    reg->handler->myvoid = const_cast<HandTable *>(t);
    netsnmp_register_handler(reg);
    SA_DEBUG(t->name, "Initializing\n");
}

}  // namespace
}  // namespace snmpapi::routing

using snmpapi::routing::register_table;

extern "C" {

void init_ipCidrRouteTable(void) { register_table("ipCidrRouteTable"); }
void init_inetCidrRouteTable(void) { register_table("inetCidrRouteTable"); }
void init_rip2IfStatTable(void) { register_table("rip2IfStatTable"); }
void init_rip2PeerTable(void) { register_table("rip2PeerTable"); }

void init_rip2Table(void) {
    init_rip2IfStatTable();
    init_rip2PeerTable();
}

// In the order of OSPF-MIB.
void init_ospfTables(void) {
    for (const char *name : {"ospfAreaTable", "ospfStubAreaTable", "ospfLsdbTable", "ospfIfTable", "ospfIfMetricTable",
                             "ospfVirtIfTable", "ospfNbrTable", "ospfVirtNbrTable", "ospfExtLsdbTable",
                             "ospfAreaAggregateTable", "ospfLocalLsdbTable"})
        register_table(name);
}

}  // extern "C"
