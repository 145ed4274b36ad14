// The index of a routing table row in an OID, both ways.
//
// A row is known to the platform by key words (addresses as host-order
// words, prefix lengths, interface indexes, LSA types...), compared in order
// as unsigned numbers; in the OID it is the encoding that its MIB gives each
// index object: an IpAddress as four octets, a mask as four octets of the
// mask, an InetAddress as its type, length and octets, a policy OID with its
// length, a fixed-size octet string as its octets.  The encodings keep the
// key order (a longer mask is a larger number; a next hop of "unknown" type
// comes before every IPv4 one), so a table read in key order is read in OID
// order, and the rows that follow any OID a manager sends are the rows at or
// after one key (Bound): the first component that does not match a valid
// value decides whether the rest of the key starts from its smallest or
// lies after its largest value.  No net-snmp here.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace snmpapi::routing {

// One index object, as its OID sub-identifiers encode it.
enum class Part : uint8_t {
    U32,            // INTEGER, Unsigned32: one sub-identifier, one key word
    IPV4,           // IpAddress: four octets, one key word
    MASK_AS_PREFIX, // IpAddress of a contiguous mask: key word is its prefix length
    ZERO,           // a constant 0 (ipCidrRouteTos): no key word
    INET_IPV4,      // InetAddressType ipv4(1) then a 4-octet InetAddress: one key word
    NO_POLICY,      // the OBJECT IDENTIFIER 0.0 with its length (2.0.0): no key word
    INET_NEXT_HOP,  // type and InetAddress of a next hop: unknown(0) with no octets
                    // for key word 0, else ipv4(1) with 4 octets
    OCTETS2,        // a fixed-size octet string of 2 octets: one 16-bit key word
};

inline constexpr bool has_word(Part p) { return p != Part::ZERO && p != Part::NO_POLICY; }

// Rows at (FROM) or after (AFTER) key `words`.
struct Bound {
    std::vector<uint32_t> words;
    bool after = false;
};

// The rows that follow the index sub-identifiers `suffix` (a GETNEXT on
// them), or none when no valid index can follow.
std::optional<Bound> bound_after(std::span<const Part> index, std::span<const uint32_t> suffix);

// The key of `suffix` when it is exactly the encoding of a valid index.
std::optional<std::vector<uint32_t>> exact_key(std::span<const Part> index, std::span<const uint32_t> suffix);

// Appends the encoding of key `words` to `oid`.
void encode_index(std::span<const Part> index, const uint32_t *words, std::vector<uint32_t> &oid);

// Number of key words of an index.
std::size_t key_words(std::span<const Part> index);

}  // namespace snmpapi::routing
