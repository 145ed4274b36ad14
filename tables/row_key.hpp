// Row keys and the glue between typed C accessors and the generic handlers.
//
// A row is identified by the index part of its OID: the sub-identifiers that
// SNMP puts after the column number.  RowKey holds them; the codec turns the
// C parameters of a row function into a key and a key back into C arguments,
// following the index types of the table.  The thunks let one generic handler
// call every typed get_/set_ accessor.  No net-snmp here.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <tuple>
#include <vector>

#include "agent/mib_types.hpp"

namespace snmpapi {

using KeyView = std::span<const uint32_t>;
using RowKey = std::vector<uint32_t>;

// Orders keys the way SNMP orders OIDs; usable with any mix of RowKey and
// KeyView so that lookups need no allocation.
struct KeyLess {
    using is_transparent = void;
    template <class A, class B>
    bool operator()(const A &a, const B &b) const {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
    }
};

// A value answered by a getter: a 32-bit word, a 64-bit counter, or bytes
// (octet strings; object identifiers as 32-bit sub-identifiers, len in bytes).
struct Value {
    Type type = Type::INTEGER;
    uint32_t word = 0;
    uint64_t counter64 = 0;
    const void *bytes = nullptr;
    size_t len = 0;
};

// A value received by a SET: the 32-bit word the protocol carries, or bytes.
struct SetValue {
    uint32_t word = 0;
    const uint8_t *bytes = nullptr;
    size_t len = 0;
    // An OID value as 32-bit sub-identifiers (the protocol's width).
    uint32_t subids[kMaxOidSubids] = {};
    size_t subid_count = 0;
};

// Accepted range of an integer on SET, compared unsigned after subtracting
// the lower bound, so that a negative value is always out of range.  For an
// octet string the same bounds are its accepted length (the MIB's SIZE).
struct Range {
    bool checked = false;
    int64_t lo = 0;
    int64_t hi = 0;
    constexpr bool accepts(uint32_t v) const {
        return !checked || uint32_t(v - uint32_t(lo)) <= uint32_t(hi - lo);
    }
};

namespace key_codec {

// Longest octet string an index may carry.
inline constexpr size_t kMaxStringIndex = 255;

// A key of integer and address indexes only, built on the stack: it has the
// same words as the RowKey of the same indexes.
template <size_t N>
struct FixedKey {
    uint32_t words[N ? N : 1];
    size_t size = 0;
    void clear() { size = 0; }
    void push_back(uint32_t w) { words[size++] = w; }
    KeyView view() const { return KeyView(words, size); }
};

// Words of a key whose indexes are all of fixed width; 0 if one is a string.
template <IndexKind... K>
constexpr size_t fixed_key_words() {
    if constexpr (((is_string_index(K)) || ...)) {
        return 0;
    } else {
        return ((K == IndexKind::IDX_IPADDRESS ? size_t(4) : size_t(1)) + ... + size_t(0));
    }
}

// Appends one index value to a key.
template <class Out>
inline void put(Out &out, IndexKind kind, uint32_t v) {
    if (kind == IndexKind::IDX_IPADDRESS) {
        for (int shift = 24; shift >= 0; shift -= 8) out.push_back((v >> shift) & 0xff);
    } else {
        out.push_back(v);
    }
}
template <class Out>
inline void put(Out &out, IndexKind kind, const uint8_t *p, size_t n) {
    if (kind != IndexKind::IDX_IMPLIED_OCTET_STR) out.push_back(uint32_t(n));
    for (size_t i = 0; i < n; ++i) out.push_back(p ? p[i] : 0);
}

template <IndexKind... K>
struct Encoder;
template <>
struct Encoder<> {
    template <class Out>
    static void run(Out &) {}
};
template <IndexKind First, IndexKind... Rest>
struct Encoder<First, Rest...> {
    template <class Out, class... More>
    static void run(Out &out, const uint8_t *p, size_t n, More... more)
        requires(is_string_index(First))
    {
        put(out, First, p, n);
        Encoder<Rest...>::run(out, more...);
    }
    template <class Out, class V, class... More>
    static void run(Out &out, V v, More... more)
        requires(!is_string_index(First))
    {
        put(out, First, uint32_t(v));
        Encoder<Rest...>::run(out, more...);
    }
};

// Reads a key back; string indexes are copied into storage that lives as long
// as the reader, so that accessors get a plain pointer and length.
class Reader {
public:
    explicit Reader(KeyView key) : key_(key) {}
    bool ok() const { return ok_; }
    size_t remaining() const { return key_.size() - pos_; }
    uint32_t next() {
        if (pos_ >= key_.size()) {
            ok_ = false;
            return 0;
        }
        return key_[pos_++];
    }
    std::tuple<const uint8_t *, size_t> string(bool implied) {
        size_t n = implied ? remaining() : next();
        if (n > kMaxStringIndex || n > remaining() || strings_ >= 2) {
            ok_ = false;
            n = 0;
        }
        uint8_t *dst = buf_[strings_ < 2 ? strings_++ : 1];
        for (size_t i = 0; i < n; ++i) dst[i] = uint8_t(next());
        return {dst, n};
    }

private:
    KeyView key_;
    size_t pos_ = 0;
    bool ok_ = true;
    unsigned strings_ = 0;
    uint8_t buf_[2][kMaxStringIndex + 1] = {};
};

template <IndexKind K>
auto take(Reader &r) {
    if constexpr (K == IndexKind::IDX_INTEGER) {
        return std::tuple<int32_t>(int32_t(r.next()));
    } else if constexpr (K == IndexKind::IDX_IPADDRESS) {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = v << 8 | (r.next() & 0xff);
        return std::tuple<uint32_t>(v);
    } else if constexpr (is_string_index(K)) {
        return r.string(K == IndexKind::IDX_IMPLIED_OCTET_STR);
    } else {
        return std::tuple<uint32_t>(r.next());
    }
}

template <class Key>
struct Decoder;
template <IndexKind... K>
struct Decoder<Keys<K...>> {
    // The C arguments of the key, in order (braced initialisation keeps the
    // reads left to right).
    static auto run(Reader &r) {
        std::tuple<decltype(take<K>(r))...> parts{take<K>(r)...};
        return std::apply([](auto &...p) { return std::tuple_cat(p...); }, parts);
    }
};

}  // namespace key_codec

// Words of the keys of Key when all its indexes are of fixed width, else 0.
template <class Key>
inline constexpr size_t fixed_words_of =
    []<IndexKind... K>(Keys<K...>) { return key_codec::fixed_key_words<K...>(); }(Key{});

// Builds the key of a row from the C parameters of a row function.
template <class Key, class Out, class... Args>
void encode_key(Out &out, Args... args) {
    out.clear();
    [&]<IndexKind... K>(Keys<K...>) { key_codec::Encoder<K...>::run(out, args...); }(Key{});
}

// ---- Thunks: typed accessors seen through one signature ---------------------

using GetThunk = Value (*)(KeyView);
using SetThunk = int (*)(KeyView, const SetValue &);
using ExistsThunk = int (*)(KeyView);

template <class Key, Type T, auto Fn>
Value get_thunk(KeyView key) {
    key_codec::Reader r(key);
    auto args = key_codec::Decoder<Key>::run(r);
    Value v;
    v.type = T;
    if (!r.ok()) return v;
    if constexpr (T == Type::OCTET_STR || T == Type::OBJECT_ID) {
        size_t len = 0;
        v.bytes = std::apply([&](auto... a) { return Fn(a..., &len); }, args);
        v.len = v.bytes ? len : 0;
    } else if constexpr (T == Type::COUNTER64) {
        v.counter64 = std::apply(Fn, args);
    } else {
        v.word = uint32_t(std::apply(Fn, args));
    }
    return v;
}

template <class Key, Type T, auto Fn>
int set_thunk(KeyView key, const SetValue &value) {
    key_codec::Reader r(key);
    auto args = key_codec::Decoder<Key>::run(r);
    if (!r.ok()) return -1;
    if constexpr (T == Type::OCTET_STR) {
        return std::apply([&](auto... a) { return Fn(a..., value.bytes, value.len); }, args);
    } else if constexpr (T == Type::OBJECT_ID) {
        return std::apply([&](auto... a) { return Fn(a..., value.subids, value.subid_count * 4); }, args);
    } else {
        using Word = typename ValueOf<T>::word;
        return std::apply([&](auto... a) { return Fn(a..., Word(value.word)); }, args);
    }
}

template <class Key, auto Fn>
int exists_thunk(KeyView key) {
    key_codec::Reader r(key);
    auto args = key_codec::Decoder<Key>::run(r);
    return r.ok() ? std::apply(Fn, args) : 0;
}

}  // namespace snmpapi
