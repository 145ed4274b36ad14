// Moving values between accessors and varbinds: the one place that knows how
// each MIB type travels in net-snmp.  Net-snmp edge.
#pragma once

#include "agent/trace.hpp"
#include "tables/row_key.hpp"

namespace snmpapi {

u_char asn_type(Type type);

// Stores a getter's answer in a varbind with the object's type.
void store_value(netsnmp_variable_list *var, const Value &value);

// The value a SET carries: the 32-bit word of an integer-like value (the
// protocol's 32 bits, whatever the host's long is), or the bytes of a string.
SetValue received_value(const netsnmp_variable_list *var);

// The error status that a SET value of an object of `type` earns in the
// first SET phase, before anything is written, or SNMP_ERR_NOERROR:
// wrongType when the value's ASN.1 type is not the object's, wrongLength
// when its length cannot be right (an IpAddress of other than 4 octets, an
// OID beyond 128 sub-identifiers, an octet string outside the object's
// SIZE), wrongValue when an integer lies outside the accepted range.
int set_value_error(const netsnmp_variable_list *var, Type type, const Range &range);

}  // namespace snmpapi
