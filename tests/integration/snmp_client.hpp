// A small SNMPv2c manager over net-snmp's single-session API, for talking to
// the agent under test: GET, GETNEXT, GETBULK, SET and a bulk walk, each
// answering the response's error status and its (OID, type, value) list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace it {

using Oid = std::vector<uint32_t>;

Oid parse_oid(const std::string &dotted);  // "1.3.6.1.2.1.1.5.0"
std::string to_string(const Oid &oid);
Oid child(Oid base, std::initializer_list<uint32_t> tail);  // base.tail...
bool starts_with(const Oid &oid, const Oid &prefix);

// ASN.1 / SNMP value tags as they travel (the net-snmp constants).
enum Type : uint8_t {
    kInteger = 0x02,
    kOctetString = 0x04,
    kNull = 0x05,
    kObjectId = 0x06,
    kIpAddress = 0x40,
    kCounter32 = 0x41,
    kGauge32 = 0x42,
    kTimeTicks = 0x43,
    kOpaque = 0x44,
    kCounter64 = 0x46,
    kNoSuchObject = 0x80,
    kNoSuchInstance = 0x81,
    kEndOfMibView = 0x82,
};

// SNMP error statuses the tests look for.
enum ErrorStatus : long {
    kNoError = 0,
    kTooBig = 1,
    kGenErr = 5,
    kNoAccess = 6,
    kWrongType = 7,
    kWrongLength = 8,
    kWrongValue = 10,
    kNoCreation = 11,
    kNotWritable = 17,
    kAuthorizationError = 16,
    kInconsistentName = 18,
};

struct VarBind {
    Oid oid;
    uint8_t type = kNull;
    int64_t integer = 0;  // INTEGER, Counter32, Gauge32, TimeTicks, Counter64
    std::string bytes;    // OCTET STRING, IpAddress
    Oid objid;            // OBJECT IDENTIFIER

    bool is_exception() const { return type == kNoSuchObject || type == kNoSuchInstance || type == kEndOfMibView; }
};
std::string describe(const VarBind &vb);

struct Response {
    bool answered = false;  // false: timeout or transport error
    long error_status = 0;
    long error_index = 0;
    std::vector<VarBind> varbinds;
};

// A value to write, of any type: integer for INTEGER, Counter32, Gauge32,
// TimeTicks and Counter64; bytes for OCTET STRING, IpAddress and Opaque
// (any length); objid for OBJECT IDENTIFIER; nothing for NULL.
struct SetValue {
    Oid oid;
    uint8_t type;
    int64_t integer = 0;
    std::string bytes;
    Oid objid;

    static SetValue integer32(Oid oid, int64_t value) { return {std::move(oid), kInteger, value, {}, {}}; }
    static SetValue octets(Oid oid, std::string value) { return {std::move(oid), kOctetString, 0, std::move(value), {}}; }
    // An IpAddress from its four octets.
    static SetValue address(Oid oid, std::string octets) { return {std::move(oid), kIpAddress, 0, std::move(octets), {}}; }
};

// An SNMPv3 user of the User-based Security Model: SHA authentication, and
// AES privacy unless priv_pass is empty (then authNoPriv).
struct UsmUser {
    std::string name, auth_pass, priv_pass;
};

class Session {
public:
    // timeout_ms per try; retries after the first try.
    Session(uint16_t port, const std::string &community, int timeout_ms = 2000, int retries = 2);
    Session(uint16_t port, const UsmUser &user, int timeout_ms = 2000, int retries = 2);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    Response get(const std::vector<Oid> &oids);
    Response get_next(const std::vector<Oid> &oids);
    Response get_bulk(const std::vector<Oid> &oids, int non_repeaters, int max_repetitions);
    Response set(const std::vector<SetValue> &values);

    // Every object of the subtree, by GETBULK (25 repetitions).  The walk
    // stops at the subtree's end, at endOfMibView, at an error, or at an
    // OID that does not increase (kept as the last element, so that the
    // caller sees it), or after limit objects.
    std::vector<VarBind> walk(const Oid &root, int max_repetitions = 25, size_t limit = SIZE_MAX);

private:
    void *handle_ = nullptr;
    void open(void *session, uint16_t port, int timeout_ms, int retries);
    Response exchange(int command, const std::vector<Oid> &oids, int non_repeaters, int max_repetitions);
    Response send(void *pdu);
};

}  // namespace it
