#include "mibs/routing/index_bound.hpp"

#include <algorithm>

namespace snmpapi::routing {
namespace {

constexpr uint32_t kMax = UINT32_MAX;

// How the sub-identifiers read so far compare with one index object.
enum class Fit : uint8_t {
    EXACT,  // a valid value, read whole
    BELOW,  // below every value from `word` on: rows start at word, the rest from their smallest
    ABOVE,  // above every value up to `word`: rows start after word, the rest at their largest
};
struct Read {
    Fit fit;
    uint32_t word = 0;
};

class Cursor {
public:
    explicit Cursor(std::span<const uint32_t> s) : s_(s) {}
    bool done() const { return pos_ >= s_.size(); }
    uint32_t next() { return s_[pos_++]; }
    bool consumed() const { return pos_ == s_.size(); }

private:
    std::span<const uint32_t> s_;
    std::size_t pos_ = 0;
};

// `octets` sub-identifiers of 0..255, most significant first.
Read read_octets(Cursor &c, int octets) {
    uint32_t v = 0;
    for (int j = 0; j < octets; ++j) {
        const int rest = 8 * (octets - j);
        if (c.done()) return {Fit::BELOW, rest >= 32 ? 0 : v << rest};  // a prefix of longer encodings
        const uint32_t o = c.next();
        if (o > 255) {
            const uint32_t filled = rest >= 32 ? kMax : (v << rest) | ((uint32_t(1) << rest) - 1);
            return {Fit::ABOVE, filled};
        }
        v = v << 8 | o;
    }
    return {Fit::EXACT, v};
}

uint32_t mask_of(uint32_t prefix) { return prefix == 0 ? 0 : kMax << (32 - prefix); }

// The first prefix length whose mask is at least `m` (inclusive) or above it.
std::optional<uint32_t> first_prefix(uint32_t m, bool inclusive) {
    for (uint32_t p = 0; p <= 32; ++p)
        if (inclusive ? mask_of(p) >= m : mask_of(p) > m) return p;
    return std::nullopt;
}

Read read_mask(Cursor &c) {
    const Read r = read_octets(c, 4);
    if (r.fit == Fit::EXACT) {
        if (auto p = first_prefix(r.word, true); p && mask_of(*p) == r.word) return {Fit::EXACT, *p};
        return {Fit::BELOW, *first_prefix(r.word, false)};  // not contiguous: no mask equals it
    }
    if (auto p = first_prefix(r.word, r.fit == Fit::BELOW)) return {Fit::BELOW, *p};
    return {Fit::ABOVE, 32};
}

// A run of constant sub-identifiers.
Read read_constant(Cursor &c, std::initializer_list<uint32_t> expected) {
    for (uint32_t e : expected) {
        if (c.done()) return {Fit::BELOW};
        const uint32_t x = c.next();
        if (x != e) return {x < e ? Fit::BELOW : Fit::ABOVE};
    }
    return {Fit::EXACT};
}

Read read_inet_ipv4(Cursor &c) {
    const Read head = read_constant(c, {1, 4});
    if (head.fit == Fit::BELOW) return {Fit::BELOW, 0};
    if (head.fit == Fit::ABOVE) return {Fit::ABOVE, kMax};
    return read_octets(c, 4);
}

// unknown(0) with no octets is key 0; ipv4(1) with four octets any other.
Read read_next_hop(Cursor &c) {
    if (c.done()) return {Fit::BELOW, 0};
    const uint32_t type = c.next();
    if (type == 0) {
        if (c.done()) return {Fit::BELOW, 0};
        return c.next() == 0 ? Read{Fit::EXACT, 0} : Read{Fit::ABOVE, 0};
    }
    if (type > 1) return {Fit::ABOVE, kMax};
    if (c.done()) return {Fit::BELOW, 1};
    const uint32_t len = c.next();
    if (len != 4) return len < 4 ? Read{Fit::BELOW, 1} : Read{Fit::ABOVE, kMax};
    const Read r = read_octets(c, 4);
    // 0.0.0.0 is never an IPv4 next hop: it is the unknown one.
    if (r.fit != Fit::ABOVE && r.word == 0) return {Fit::BELOW, 1};
    return r;
}

Read read_part(Part p, Cursor &c) {
    switch (p) {
    case Part::U32: return c.done() ? Read{Fit::BELOW, 0} : Read{Fit::EXACT, c.next()};
    case Part::IPV4: return read_octets(c, 4);
    case Part::MASK_AS_PREFIX: return read_mask(c);
    case Part::ZERO: return read_constant(c, {0});
    case Part::INET_IPV4: return read_inet_ipv4(c);
    case Part::NO_POLICY: return read_constant(c, {2, 0, 0});
    case Part::INET_NEXT_HOP: return read_next_hop(c);
    case Part::OCTETS2: return read_octets(c, 2);
    }
    return {Fit::ABOVE, kMax};
}

struct Parsed {
    std::vector<uint32_t> words;
    Fit fit = Fit::EXACT;  // of the first component that was not exact
    bool consumed = false;
};

Parsed parse(std::span<const Part> index, std::span<const uint32_t> suffix) {
    Parsed out;
    Cursor c(suffix);
    std::size_t i = 0;
    for (; i < index.size(); ++i) {
        const Read r = read_part(index[i], c);
        if (has_word(index[i])) out.words.push_back(r.word);
        if (r.fit != Fit::EXACT) {
            out.fit = r.fit;
            ++i;
            break;
        }
    }
    for (; i < index.size(); ++i)
        if (has_word(index[i])) out.words.push_back(out.fit == Fit::ABOVE ? kMax : 0);
    out.consumed = out.fit == Fit::EXACT && c.consumed();
    return out;
}

}  // namespace

std::size_t key_words(std::span<const Part> index) {
    std::size_t n = 0;
    for (Part p : index) n += has_word(p) ? 1 : 0;
    return n;
}

std::optional<Bound> bound_after(std::span<const Part> index, std::span<const uint32_t> suffix) {
    Parsed p = parse(index, suffix);
    Bound b;
    b.after = p.fit != Fit::BELOW;  // an exact index (or longer) is passed: the rows after it
    b.words = std::move(p.words);
    if (b.after && !b.words.empty() && std::all_of(b.words.begin(), b.words.end(), [](uint32_t w) { return w == kMax; }))
        return std::nullopt;  // nothing follows the largest key
    if (b.after && b.words.empty()) return std::nullopt;
    return b;
}

std::optional<std::vector<uint32_t>> exact_key(std::span<const Part> index, std::span<const uint32_t> suffix) {
    Parsed p = parse(index, suffix);
    if (!p.consumed) return std::nullopt;
    return std::move(p.words);
}

void encode_index(std::span<const Part> index, const uint32_t *words, std::vector<uint32_t> &oid) {
    auto octets = [&](uint32_t v, int n) {
        for (int j = n - 1; j >= 0; --j) oid.push_back((v >> (8 * j)) & 0xff);
    };
    for (Part p : index) {
        switch (p) {
        case Part::U32: oid.push_back(*words++); break;
        case Part::IPV4: octets(*words++, 4); break;
        case Part::MASK_AS_PREFIX: octets(mask_of(std::min<uint32_t>(*words++, 32)), 4); break;
        case Part::ZERO: oid.push_back(0); break;
        case Part::INET_IPV4:
            oid.insert(oid.end(), {1, 4});
            octets(*words++, 4);
            break;
        case Part::NO_POLICY: oid.insert(oid.end(), {2, 0, 0}); break;
        case Part::INET_NEXT_HOP: {
            const uint32_t nh = *words++;
            if (nh == 0) {
                oid.insert(oid.end(), {0, 0});
            } else {
                oid.insert(oid.end(), {1, 4});
                octets(nh, 4);
            }
            break;
        }
        case Part::OCTETS2: octets(*words++, 2); break;
        }
    }
}

}  // namespace snmpapi::routing
