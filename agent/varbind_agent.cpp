#include "agent/varbind.hpp"

#include <algorithm>
#include <vector>

#include "swplatform/records.hpp"

namespace snmpapi {

u_char asn_type(Type type) {
    switch (type) {
    case Type::INTEGER: return ASN_INTEGER;
    case Type::COUNTER: return ASN_COUNTER;
    case Type::GAUGE: return ASN_GAUGE;
    case Type::TIMETICKS: return ASN_TIMETICKS;
    case Type::IPADDRESS: return ASN_IPADDRESS;
    case Type::OCTET_STR: return ASN_OCTET_STR;
    case Type::OBJECT_ID: return ASN_OBJECT_ID;
    case Type::COUNTER64: return ASN_COUNTER64;
    case Type::PER_OBJECT: break;
    }
    return ASN_NULL;
}

void store_value(netsnmp_variable_list *var, const Value &value) {
    const u_char type = asn_type(value.type);
    switch (value.type) {
    case Type::OCTET_STR:
        snmp_set_var_typed_value(var, type, value.bytes, value.len);
        return;
    case Type::OBJECT_ID: {
        // Accessors give 32-bit sub-identifiers; net-snmp's oid may be wider.
        // No more travel than the protocol carries.
        const size_t n = std::min(value.len / 4, kMaxOidSubids);
        std::vector<oid> subids(n);
        const auto *src = static_cast<const uint32_t *>(value.bytes);
        for (size_t i = 0; i < n; ++i) subids[i] = src[i];
        snmp_set_var_typed_value(var, type, subids.data(), n * sizeof(oid));
        return;
    }
    case Type::COUNTER64: {
        struct counter64 c;
        c.high = static_cast<u_long>(value.counter64 >> 32);
        c.low = static_cast<u_long>(value.counter64 & 0xffffffffu);
        snmp_set_var_typed_value(var, type, &c, sizeof(c));
        return;
    }
    case Type::IPADDRESS: {
        // The address travels as four octets in network order.
        uint8_t octets[4];
        swp::store_be32(octets, value.word);
        snmp_set_var_typed_value(var, type, octets, sizeof(octets));
        return;
    }
    default: {
        uint32_t word = value.word;
        snmp_set_var_typed_value(var, type, &word, sizeof(word));
        return;
    }
    }
}

int set_value_error(const netsnmp_variable_list *var, Type type, const Range &range) {
    constexpr size_t kMaxOidLength = 128;  // sub-identifiers the protocol carries
    if (type == Type::PER_OBJECT) return SNMP_ERR_NOERROR;  // the platform knows the object's type
    if (var->type != asn_type(type)) return SNMP_ERR_WRONGTYPE;
    switch (type) {
    case Type::OCTET_STR:
        return range.accepts(uint32_t(var->val_len)) ? SNMP_ERR_NOERROR : SNMP_ERR_WRONGLENGTH;
    case Type::IPADDRESS:
        return var->val_len == 4 ? SNMP_ERR_NOERROR : SNMP_ERR_WRONGLENGTH;
    case Type::OBJECT_ID:
        return var->val_len / sizeof(oid) <= kMaxOidLength ? SNMP_ERR_NOERROR : SNMP_ERR_WRONGLENGTH;
    case Type::COUNTER64:
        return SNMP_ERR_NOERROR;
    default:
        return range.accepts(received_value(var).word) ? SNMP_ERR_NOERROR : SNMP_ERR_WRONGVALUE;
    }
}

SetValue received_value(const netsnmp_variable_list *var) {
    static const uint8_t kEmpty[1] = {0};
    SetValue v;
    v.bytes = var->val.string ? var->val.string : kEmpty;
    v.len = var->val.string ? var->val_len : 0;
    if (var->type == ASN_IPADDRESS && var->val.string && var->val_len >= 4) {
        v.word = swp::load_be32(var->val.string);
    } else if (var->type == ASN_OBJECT_ID && var->val.objid) {
        // net-snmp's oid may be wider than the protocol's 32 bits.
        v.subid_count = std::min(var->val_len / sizeof(oid), kMaxOidSubids);
        for (size_t i = 0; i < v.subid_count; ++i) v.subids[i] = uint32_t(var->val.objid[i]);
    } else if (var->val.integer) {
        v.word = static_cast<uint32_t>(*var->val.integer);
    }
    return v;
}

}  // namespace snmpapi
