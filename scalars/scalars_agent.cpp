// Scalar registration and the common scalar handler.
//
// Every scalar served by this build is registered by init_scalars, in
// catalogue order, with its own exported handle_<scalar>; each of those is a
// thin wrapper over one handler that calls the scalar's get_/set_ accessor
// under the configuration lock.

#include <algorithm>
#include <string>
#include <vector>

#include "agent/config_lock.hpp"
#include "agent/trace.hpp"
#include "agent/varbind.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/records.hpp"
#include "tables/descriptors.hpp"

namespace snmpapi {
namespace {

constexpr const char *kToken = "scalars";

// The scalar handler shape shared by every COMMON scalar.
int common_scalar_handler(const ScalarDesc &s, const char *fn, netsnmp_agent_request_info *reqinfo,
                          netsnmp_request_info *requests) {
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        switch (reqinfo->mode) {
        case MODE_GET: {
            config_read_lock();
            const Value v = s.get(KeyView{});
            SA_TRACE_AT(fn, "scalars", kToken, "get de %s\n", s.name);
            // The answer goes into the first varbind of the list handed over.
            store_value(requests->requestvb, v);
            config_unlock();
            break;
        }
        case MODE_SET_RESERVE1:
            if (const int error = set_value_error(r->requestvb, s.type, s.range))
                netsnmp_set_request_error(reqinfo, r, error);
            break;
        case MODE_SET_RESERVE2:
        case MODE_SET_COMMIT:
        case MODE_SET_FREE:
        case MODE_SET_UNDO:
            break;  // written once, in ACTION; there is no undo
        case MODE_SET_ACTION: {
            config_write_lock();
            SetValue v = received_value(r->requestvb);
            // A string's length is taken from the first varbind of the list.
            v.len = requests->requestvb->val_len;
            if (s.set && s.set(KeyView{}, v) < 0) netsnmp_set_request_error(reqinfo, r, SNMP_ERR_GENERR);
            config_unlock();
            break;
        }
        default:
            snmp_log(LOG_ERR, "unknown mode (%d) in %s\n", reqinfo->mode, fn);
            return SNMP_ERR_GENERR;
        }
    }
    return SNMP_ERR_NOERROR;
}

// swChassisModel: GET only, and without the lock.
int chassis_model_handler(const ScalarDesc &s, const char *fn, netsnmp_agent_request_info *reqinfo,
                          netsnmp_request_info *requests) {
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        if (reqinfo->mode != MODE_GET) {
            snmp_log(LOG_ERR, "unknown mode (%d) in %s\n", reqinfo->mode, fn);
            return SNMP_ERR_GENERR;
        }
        store_value(r->requestvb, s.get(KeyView{}));
    }
    return SNMP_ERR_NOERROR;
}

}  // namespace

int scalar_handler(const ScalarDesc &s, const char *fn, netsnmp_agent_request_info *reqinfo,
                   netsnmp_request_info *requests) {
    switch (s.handler) {
    case ScalarHandler::COMMON: return common_scalar_handler(s, fn, reqinfo, requests);
    case ScalarHandler::CHASSIS: return chassis_model_handler(s, fn, reqinfo, requests);
    case ScalarHandler::OSPF:
    case ScalarHandler::RIP: break;  // handle_ospfGeneralGroup, handle_rip2GlobalRouteChanges
    }
    return SNMP_ERR_GENERR;
}

namespace {

// An answer of the platform's query record into a varbind: integers travel
// in it as big-endian words, object identifiers as big-endian 32-bit
// sub-identifiers, everything else as its octets.
void store_answer(netsnmp_variable_list *var, const uint8_t *record) {
    namespace q = swp::query_record;
    const uint8_t type = q::answer_type(record);
    const uint8_t *value = q::answer_value(record);
    const size_t len = std::min<size_t>(q::answer_value_len(record), q::kAnswerValue.size);
    switch (type) {
    case ASN_INTEGER:
    case ASN_COUNTER:
    case ASN_GAUGE:
    case ASN_TIMETICKS:
        if (len == 4) {
            const uint32_t word = swp::load_be32(value);
            snmp_set_var_typed_value(var, type, &word, sizeof word);
        }
        return;
    case ASN_OBJECT_ID: {
        std::vector<oid> subids(std::min(len / 4, kMaxOidSubids));
        for (size_t i = 0; i < subids.size(); ++i) subids[i] = swp::load_be32(value + 4 * i);
        snmp_set_var_typed_value(var, type, subids.data(), subids.size() * sizeof(oid));
        return;
    }
    default:
        snmp_set_var_typed_value(var, type, value, len);
        return;
    }
}

}  // namespace

// The OSPF general group and the RIP globals: every object is asked of the
// platform through the query record, which answers its name, type and value.
int query_record_handler(const char *fn, const char *what, int (*query)(uint8_t *),
                         netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    namespace q = swp::query_record;
    for (netsnmp_request_info *r = requests; r; r = r->next) {
        if (reqinfo->mode != MODE_GET) {
            snmp_log(LOG_ERR, "Unknown SNMP mode (%d) in %s\n", reqinfo->mode, fn);
            return SNMP_ERR_GENERR;
        }
        config_read_lock();
        uint8_t record[q::kSize];
        uint32_t name[q::kRequestSubids] = {};
        const size_t len = std::min<size_t>(r->requestvb->name_length, q::kRequestSubids);
        for (size_t i = 0; i < len; ++i) name[i] = uint32_t(r->requestvb->name[i]);
        q::set_request(record, name, len);
        SA_TRACE_AT(fn, "scalars", kToken, "get %s\n", what);
        query(record);
        // A name the record cannot hold leaves the varbind's own.
        const uint32_t answer_len = q::answer_name_len(record);
        if (answer_len >= 1 && answer_len <= q::kAnswerSubids) {
            std::vector<oid> answer(answer_len);
            for (size_t i = 0; i < answer_len; ++i) answer[i] = q::answer_subid(record, i);
            snmp_set_var_objid(r->requestvb, answer.data(), answer.size());
        }
        if (q::answer_value_len(record) != 0) store_answer(r->requestvb, record);
        config_unlock();
    }
    return SNMP_ERR_NOERROR;
}

}  // namespace snmpapi

extern "C" int handle_ospfGeneralGroup(netsnmp_mib_handler *, netsnmp_handler_registration *,
                                       netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    return snmpapi::query_record_handler(__func__, "ospfGeneralGroup", get_ospfGeneral, reqinfo, requests);
}

extern "C" int handle_rip2GlobalRouteChanges(netsnmp_mib_handler *, netsnmp_handler_registration *,
                                             netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    return snmpapi::query_record_handler(__func__, "rip2Globals", get_rip2Globals, reqinfo, requests);
}

// ---- The exported handlers, one per served scalar ---------------------------
// (the OSPF general group and the RIP globals share theirs)

#define SA_HANDLER_COMMON(name)                                                                   \
    extern "C" int handle_##name(netsnmp_mib_handler *, netsnmp_handler_registration *,          \
                                 netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) { \
        static const snmpapi::ScalarDesc *desc = snmpapi::find_scalar(#name);                     \
        return snmpapi::scalar_handler(*desc, __func__, reqinfo, requests);                                 \
    }
#define SA_HANDLER_CHASSIS SA_HANDLER_COMMON
#define SA_HANDLER_OSPF(name)
#define SA_HANDLER_RIP(name)
#define SA_HANDLER_ON(handler, name) SA_HANDLER_##handler(name)
#define SA_HANDLER_LATER(handler, name)
#define SCALAR(name, access, type, range, handler, state, ...) SA_HANDLER_##state(handler, name)
#include "scalars/catalogue.def"
#undef SCALAR

namespace {

#define SA_REGISTRATION_COMMON(name) {#name, &handle_##name},
#define SA_REGISTRATION_CHASSIS(name) {#name, &handle_##name},
#define SA_REGISTRATION_OSPF(name) {#name, &handle_ospfGeneralGroup},
#define SA_REGISTRATION_RIP(name) {#name, &handle_rip2GlobalRouteChanges},
#define SA_REGISTRATION_ON(handler, name) SA_REGISTRATION_##handler(name)
#define SA_REGISTRATION_LATER(handler, name)
#define SCALAR(name, access, type, range, handler, state, ...) SA_REGISTRATION_##state(handler, name)
constexpr struct {
    const char *name;
    Netsnmp_Node_Handler *handler;
} kServedScalars[] = {
#include "scalars/catalogue.def"
};
#undef SCALAR

}  // namespace

extern "C" void init_scalars(void) {
    SA_TRACE_AT(__func__, "scalars", "scalars", "Initializing\n");
    for (const auto &entry : kServedScalars) {
        const snmpapi::ScalarDesc *s = snmpapi::find_scalar(entry.name);
        std::vector<oid> name(s->oid.subids, s->oid.subids + s->oid.len);
        netsnmp_register_scalar(netsnmp_create_handler_registration(
            s->name, entry.handler, name.data(), name.size(),
            s->writable ? HANDLER_CAN_RWRITE : HANDLER_CAN_RONLY));
    }
}
