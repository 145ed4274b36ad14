// The vocabulary shared by the catalogues, the accessors and the handlers:
// value types of MIB objects, index types of tables, and the C signatures
// that every get_/set_ accessor and row function has.  No net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>

namespace snmpapi {

// The most sub-identifiers an object identifier may have on the wire.
inline constexpr size_t kMaxOidSubids = 128;

// Value types of MIB objects, as the catalogues name them.
enum class Type : uint8_t {
    INTEGER,
    COUNTER,    // Counter32
    GAUGE,      // Gauge32 / Unsigned32
    TIMETICKS,
    IPADDRESS,  // host-order 32-bit address word
    OCTET_STR,  // also BITS, MacAddress, PortList, DisplayString
    OBJECT_ID,  // 32-bit sub-identifiers, length in bytes
    COUNTER64,
    PER_OBJECT, // the platform's answer carries its own type
};

// Index types of tables.
enum class IndexKind : uint8_t {
    IDX_INTEGER,
    IDX_GAUGE,
    IDX_TIMETICKS,
    IDX_IPADDRESS,
    IDX_OCTET_STR,         // length-prefixed in the OID
    IDX_IMPLIED_OCTET_STR, // last index, no length prefix
};

constexpr bool is_string_index(IndexKind k) {
    return k == IndexKind::IDX_OCTET_STR || k == IndexKind::IDX_IMPLIED_OCTET_STR;
}

// ---- C signatures ----------------------------------------------------------
//
// A row's index values become C parameters: INTEGER -> int32_t;
// Gauge32, TimeTicks, IpAddress -> uint32_t; an octet string -> a pointer and
// a length.  Accessors take the index parameters first, then:
//   getter of INTEGER            int32_t  get_x(idx...)
//   getter of a 32-bit unsigned  uint32_t get_x(idx...)
//   getter of Counter64          uint64_t get_x(idx...)
//   getter of an octet string    const uint8_t  *get_x(idx..., size_t *len)
//   getter of an OID             const uint32_t *get_x(idx..., size_t *len_bytes)
//   setter                       int set_x(idx..., value) or (idx..., bytes, len);
//                                an OID: (idx..., subids, len_bytes)

template <class... T>
struct TypeList {};

template <class... L>
struct Concat;
template <>
struct Concat<> {
    using type = TypeList<>;
};
template <class... A>
struct Concat<TypeList<A...>> {
    using type = TypeList<A...>;
};
template <class... A, class... B, class... Rest>
struct Concat<TypeList<A...>, TypeList<B...>, Rest...> {
    using type = typename Concat<TypeList<A..., B...>, Rest...>::type;
};

template <IndexKind K>
struct IndexParams {
    using type = TypeList<uint32_t>;
};
template <>
struct IndexParams<IndexKind::IDX_INTEGER> {
    using type = TypeList<int32_t>;
};
template <>
struct IndexParams<IndexKind::IDX_OCTET_STR> {
    using type = TypeList<const uint8_t *, size_t>;
};
template <>
struct IndexParams<IndexKind::IDX_IMPLIED_OCTET_STR> {
    using type = TypeList<const uint8_t *, size_t>;
};

// The index types of one table.
template <IndexKind... K>
struct Keys {
    static constexpr std::size_t count = sizeof...(K);
    static constexpr IndexKind kinds[] = {K...};
    using params = typename Concat<typename IndexParams<K>::type...>::type;
};
// Scalars: no index.
using NoKeys = Keys<>;

template <class R, class Params, class... Extra>
struct FnOf;
template <class R, class... P, class... Extra>
struct FnOf<R, TypeList<P...>, Extra...> {
    using type = R(P..., Extra...);
};

template <Type T>
struct ValueOf {
    using word = uint32_t;
};
template <>
struct ValueOf<Type::INTEGER> {
    using word = int32_t;
};

template <class K, Type T>
struct GetterOf {
    using type = typename FnOf<typename ValueOf<T>::word, typename K::params>::type;
};
template <class K>
struct GetterOf<K, Type::COUNTER64> {
    using type = typename FnOf<uint64_t, typename K::params>::type;
};
template <class K>
struct GetterOf<K, Type::OCTET_STR> {
    using type = typename FnOf<const uint8_t *, typename K::params, size_t *>::type;
};
template <class K>
struct GetterOf<K, Type::OBJECT_ID> {
    using type = typename FnOf<const uint32_t *, typename K::params, size_t *>::type;
};

template <class K, Type T>
struct SetterOf {
    using type = typename FnOf<int, typename K::params, typename ValueOf<T>::word>::type;
};
template <class K>
struct SetterOf<K, Type::OCTET_STR> {
    using type = typename FnOf<int, typename K::params, const uint8_t *, size_t>::type;
};
template <class K>
struct SetterOf<K, Type::OBJECT_ID> {
    using type = typename FnOf<int, typename K::params, const uint32_t *, size_t>::type;
};

template <class K, Type T>
using GetFn = typename GetterOf<K, T>::type;
template <class K, Type T>
using SetFn = typename SetterOf<K, T>::type;

// Row functions of a table.
template <class K>
using CreateEntryFn = typename FnOf<void *, typename K::params>::type;
template <class K>
using RemoveEntryFn = typename FnOf<void, typename K::params>::type;
template <class K>
using ExistsEntryFn = typename FnOf<int, typename K::params>::type;
template <class K>
using InitIndexFn = int(CreateEntryFn<K> *);

}  // namespace snmpapi
