// RMON clear-all: every alarm and event instance the agent serves is set to
// invalid(4) over an SNMPv1 session from the agent to itself (peer
// 127.0.0.1, community "ravelins"): a GETNEXT walk of the status column,
// then one SET of every instance found.  Net-snmp edge.
//
// The RMON engine calls this from its own thread while the agent's main
// loop goes on serving.  The walk therefore uses net-snmp's single-session
// calls, which keep the session out of the session list that the main loop
// reads (the traditional calls share it and are not safe from a second
// thread), and holds no configuration lock while it waits for the agent:
// the agent's handlers take that lock themselves, and a SET of another
// manager waiting for the write lock would otherwise wait on this walk
// while the walk waits on the agent.
#include <cstring>
#include <string>

#include "agent/trace.hpp"
#include "mibs/rmon/rmon.hpp"

namespace {

constexpr const char *kPeer = "127.0.0.1";
constexpr const char *kCommunity = "ravelins";

// A response that says the request went through.
bool answered(int status, const netsnmp_pdu *response) {
    return status == STAT_SUCCESS && response && response->errstat == SNMP_ERR_NOERROR;
}

// One session for the walk, closed on every path.
struct Session {
    void *handle = nullptr;
    Session() {
        netsnmp_session s;
        snmp_sess_init(&s);
        s.version = SNMP_VERSION_1;
        std::string peer = kPeer;  // the library copies what it keeps
        s.peername = peer.data();
        s.community = reinterpret_cast<u_char *>(const_cast<char *>(kCommunity));
        s.community_len = std::strlen(kCommunity);
        handle = snmp_sess_open(&s);
    }
    ~Session() {
        if (handle) snmp_sess_close(handle);
    }
    int ask(netsnmp_pdu *request, netsnmp_pdu **response) {
        *response = nullptr;
        return snmp_sess_synch_response(handle, request, response);
    }
};

}  // namespace

extern "C" int rmon_walk_and_invalidate(const uint32_t *column, size_t length) {
    if (!column || length == 0 || length > MAX_OID_LEN) return -1;
    init_snmp("snmpapp");
    Session session;
    if (!session.handle) return -1;
    netsnmp_pdu *set = snmp_pdu_create(SNMP_MSG_SET);
    oid name[MAX_OID_LEN];
    size_t name_len = length;
    for (size_t i = 0; i < length; ++i) name[i] = column[i];
    int count = 0, result = 0;
    for (bool running = true; running;) {
        netsnmp_pdu *next = snmp_pdu_create(SNMP_MSG_GETNEXT);
        snmp_add_null_var(next, name, name_len);
        netsnmp_pdu *response = nullptr;
        const int status = session.ask(next, &response);
        if (!answered(status, response)) {
            running = false;
            result = -1;
        } else {
            for (netsnmp_variable_list *var = response->variables; var && running; var = var->next_variable) {
                bool inside = var->name_length >= length;
                for (size_t i = 0; inside && i < length; ++i) inside = uint32_t(var->name[i]) == column[i];
                if (!inside) {
                    running = false;
                } else if (snmp_add_var(set, var->name, var->name_length, 'i', "4") != 0) {
                    running = false;
                    result = -1;
                } else {
                    ++count;
                    name_len = std::min(var->name_length, size_t(MAX_OID_LEN));
                    std::memcpy(name, var->name, name_len * sizeof(oid));
                }
            }
        }
        if (response) snmp_free_pdu(response);
    }
    if (result == 0 && count > 0) {
        netsnmp_pdu *response = nullptr;
        const int status = session.ask(set, &response);
        if (!answered(status, response)) result = -1;
        if (response) snmp_free_pdu(response);
    }
    // A SET that is not sent is dropped as it is, not released: the switch's
    // agent has always done so (bench/rmon_soak.sh measures what it costs).
    return result;
}

namespace {
// Clear-all walks through this edge of the module.
[[maybe_unused]] const bool kWalkHandedOver = (snmpapi::rmon::set_status_walk(rmon_walk_and_invalidate), true);
}  // namespace
