#include "snmp_client.hpp"

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <stdexcept>

namespace it {

Oid parse_oid(const std::string &dotted) {
    Oid out;
    std::istringstream in(dotted);
    for (std::string arc; std::getline(in, arc, '.');)
        if (!arc.empty()) out.push_back(uint32_t(std::stoul(arc)));
    return out;
}

std::string to_string(const Oid &oid) {
    std::ostringstream s;
    for (size_t i = 0; i < oid.size(); ++i) s << (i ? "." : "") << oid[i];
    return s.str();
}

Oid child(Oid base, std::initializer_list<uint32_t> tail) {
    base.insert(base.end(), tail.begin(), tail.end());
    return base;
}

bool starts_with(const Oid &oid, const Oid &prefix) {
    return oid.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), oid.begin());
}

std::string describe(const VarBind &vb) {
    std::ostringstream os;
    os << to_string(vb.oid) << " type 0x" << std::hex << int(vb.type) << std::dec << " = ";
    switch (vb.type) {
    case kOctetString:
    case kIpAddress:
        os << '"';
        for (unsigned char c : vb.bytes) {
            if (c >= 32 && c < 127) os << c;
            else os << "\\x" << "0123456789abcdef"[c >> 4] << "0123456789abcdef"[c & 15];
        }
        os << '"';
        break;
    case kObjectId:
        os << to_string(vb.objid);
        break;
    default:
        os << vb.integer;
    }
    return os.str();
}

namespace {

void init_library() {
    static std::once_flag once;
    std::call_once(once, [] {
        // No MIB text, no persistent files, no configuration of this host.
        setenv("MIBS", "", 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, 1);
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES, 1);
        init_snmp("integration_tests");
    });
}

VarBind convert(const netsnmp_variable_list *v) {
    VarBind vb;
    vb.oid.assign(v->name, v->name + v->name_length);
    vb.type = v->type;
    switch (v->type) {
    case ASN_INTEGER:
        vb.integer = *v->val.integer;
        break;
    case ASN_COUNTER:
    case ASN_GAUGE:
    case ASN_TIMETICKS:
        vb.integer = int64_t(uint32_t(*v->val.integer));
        break;
    case ASN_COUNTER64:
        vb.integer = int64_t((uint64_t(v->val.counter64->high) << 32) | v->val.counter64->low);
        break;
    case ASN_OCTET_STR:
    case ASN_IPADDRESS:
        vb.bytes.assign(reinterpret_cast<const char *>(v->val.string), v->val_len);
        break;
    case ASN_OBJECT_ID:
        vb.objid.assign(v->val.objid, v->val.objid + v->val_len / sizeof(oid));
        break;
    default:
        break;
    }
    return vb;
}

}  // namespace

Session::Session(uint16_t port, const std::string &community, int timeout_ms, int retries) {
    init_library();
    netsnmp_session s;
    snmp_sess_init(&s);
    s.version = SNMP_VERSION_2c;
    s.community = reinterpret_cast<u_char *>(const_cast<char *>(community.c_str()));
    s.community_len = community.size();
    open(&s, port, timeout_ms, retries);
}

Session::Session(uint16_t port, const UsmUser &user, int timeout_ms, int retries) {
    init_library();
    netsnmp_session s;
    snmp_sess_init(&s);
    s.version = SNMP_VERSION_3;
    s.securityModel = USM_SEC_MODEL_NUMBER;
    s.securityName = const_cast<char *>(user.name.c_str());
    s.securityNameLen = user.name.size();
    s.securityLevel = user.priv_pass.empty() ? SNMP_SEC_LEVEL_AUTHNOPRIV : SNMP_SEC_LEVEL_AUTHPRIV;
    s.securityAuthProto = usmHMACSHA1AuthProtocol;
    s.securityAuthProtoLen = OID_LENGTH(usmHMACSHA1AuthProtocol);
    // The keys from the pass phrases (RFC 3414's password to key); the
    // library localizes them to the agent's engine when it opens.
    const auto key = [&](const std::string &pass, u_char *out, size_t capacity, size_t *len) {
        *len = capacity;
        if (generate_Ku(s.securityAuthProto, s.securityAuthProtoLen, reinterpret_cast<const u_char *>(pass.data()),
                        pass.size(), out, len) != SNMPERR_SUCCESS)
            throw std::runtime_error("no key from the pass phrase of " + user.name);
    };
    key(user.auth_pass, s.securityAuthKey, sizeof s.securityAuthKey, &s.securityAuthKeyLen);
    if (!user.priv_pass.empty()) {
        s.securityPrivProto = usmAESPrivProtocol;
        s.securityPrivProtoLen = OID_LENGTH(usmAESPrivProtocol);
        key(user.priv_pass, s.securityPrivKey, sizeof s.securityPrivKey, &s.securityPrivKeyLen);
    }
    open(&s, port, timeout_ms, retries);
}

void Session::open(void *session, uint16_t port, int timeout_ms, int retries) {
    auto &s = *static_cast<netsnmp_session *>(session);
    std::string peer = "udp:127.0.0.1:" + std::to_string(port);
    s.peername = peer.data();
    s.timeout = long(timeout_ms) * 1000;
    s.retries = retries;
    handle_ = snmp_sess_open(&s);  // copies what it keeps
    if (!handle_) throw std::runtime_error("snmp_sess_open failed for " + peer);
}

Session::~Session() {
    if (handle_) snmp_sess_close(handle_);
}

Response Session::send(void *p) {
    auto *pdu = static_cast<netsnmp_pdu *>(p);
    netsnmp_pdu *answer = nullptr;
    Response r;
    const int status = snmp_sess_synch_response(handle_, pdu, &answer);
    if (status == STAT_SUCCESS && answer) {
        r.answered = true;
        r.error_status = answer->errstat;
        r.error_index = answer->errindex;
        for (netsnmp_variable_list *v = answer->variables; v; v = v->next_variable) r.varbinds.push_back(convert(v));
    }
    if (answer) snmp_free_pdu(answer);
    return r;
}

Response Session::exchange(int command, const std::vector<Oid> &oids, int non_repeaters, int max_repetitions) {
    netsnmp_pdu *pdu = snmp_pdu_create(command);
    if (command == SNMP_MSG_GETBULK) {
        pdu->non_repeaters = non_repeaters;
        pdu->max_repetitions = max_repetitions;
    }
    for (const Oid &o : oids) {
        std::vector<oid> name(o.begin(), o.end());
        snmp_add_null_var(pdu, name.data(), name.size());
    }
    return send(pdu);
}

Response Session::get(const std::vector<Oid> &oids) { return exchange(SNMP_MSG_GET, oids, 0, 0); }
Response Session::get_next(const std::vector<Oid> &oids) { return exchange(SNMP_MSG_GETNEXT, oids, 0, 0); }
Response Session::get_bulk(const std::vector<Oid> &oids, int non_repeaters, int max_repetitions) {
    return exchange(SNMP_MSG_GETBULK, oids, non_repeaters, max_repetitions);
}

Response Session::set(const std::vector<SetValue> &values) {
    netsnmp_pdu *pdu = snmp_pdu_create(SNMP_MSG_SET);
    for (const SetValue &v : values) {
        std::vector<oid> name(v.oid.begin(), v.oid.end());
        if (v.type == kOctetString || v.type == kIpAddress) {
            snmp_pdu_add_variable(pdu, name.data(), name.size(), v.type, v.bytes.data(), v.bytes.size());
        } else {
            long value = long(v.integer);
            snmp_pdu_add_variable(pdu, name.data(), name.size(), v.type, &value, sizeof value);
        }
    }
    return send(pdu);
}

std::vector<VarBind> Session::walk(const Oid &root, int max_repetitions) {
    std::vector<VarBind> out;
    Oid cursor = root;
    for (;;) {
        Response r = get_bulk({cursor}, 0, max_repetitions);
        if (!r.answered || r.error_status != kNoError || r.varbinds.empty()) return out;
        for (VarBind &vb : r.varbinds) {
            if (vb.type == kEndOfMibView || !starts_with(vb.oid, root)) return out;
            const bool increases = cursor < vb.oid;
            out.push_back(vb);
            if (!increases) return out;
            cursor = vb.oid;
        }
    }
}

}  // namespace it
