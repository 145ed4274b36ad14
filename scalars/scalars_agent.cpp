// Scalar registration and the common scalar handler.
//
// Every scalar served by this build is registered by init_scalars, in
// catalogue order, with its own exported handle_<scalar>; each of those is a
// thin wrapper over one handler that calls the scalar's get_/set_ accessor
// under the configuration lock.

#include <string>
#include <vector>

#include "agent/config_lock.hpp"
#include "agent/trace.hpp"
#include "agent/varbind.hpp"
#include "scalars/catalogue.hpp"
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
    case ScalarHandler::RIP: break;
    }
    return SNMP_ERR_GENERR;
}

}  // namespace snmpapi

// ---- The exported handlers, one per served scalar ---------------------------

#define SA_HANDLER_ON(name)                                                                       \
    extern "C" int handle_##name(netsnmp_mib_handler *, netsnmp_handler_registration *,          \
                                 netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) { \
        static const snmpapi::ScalarDesc *desc = snmpapi::find_scalar(#name);                     \
        return snmpapi::scalar_handler(*desc, __func__, reqinfo, requests);                                 \
    }
#define SA_HANDLER_LATER(name)
#define SCALAR(name, access, type, range, handler, state, ...) SA_HANDLER_##state(name)
#include "scalars/catalogue.def"
#undef SCALAR

namespace {

#define SA_REGISTRATION_ON(name) {#name, &handle_##name},
#define SA_REGISTRATION_LATER(name)
#define SCALAR(name, access, type, range, handler, state, ...) SA_REGISTRATION_##state(name)
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
