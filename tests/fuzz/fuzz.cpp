#include "fuzz.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <mutex>
#include <sstream>

namespace fz {

using namespace it;

uint64_t seed() {
    static const uint64_t value = [] {
        const char *env = std::getenv("SWITCH_FUZZ_SEED");
        const uint64_t s = env && *env ? std::strtoull(env, nullptr, 10)
                                       : (uint64_t(std::random_device{}()) << 32) ^ std::random_device{}();
        std::printf("fuzz seed %llu (replay: SWITCH_FUZZ_SEED=%llu)\n", (unsigned long long)s, (unsigned long long)s);
        std::fflush(stdout);
        return s;
    }();
    return value;
}

Rng rng_for(std::string_view test_name) {
    uint64_t h = 1469598103934665603ull;  // FNV-1a
    for (unsigned char c : test_name) h = (h ^ c) * 1099511628211ull;
    std::seed_seq seq{uint32_t(seed()), uint32_t(seed() >> 32), uint32_t(h), uint32_t(h >> 32)};
    return Rng(seq);
}

size_t scaled(size_t n) {
    const char *env = std::getenv("SWITCH_FUZZ_SCALE");
    const double scale = env && *env ? std::strtod(env, nullptr) : 1.0;
    return std::max<size_t>(1, size_t(double(n) * scale));
}

namespace {

template <class T>
T pick(const std::vector<T> &v, Rng &rng) {
    return v[std::uniform_int_distribution<size_t>(0, v.size() - 1)(rng)];
}
int64_t between(int64_t lo, int64_t hi, Rng &rng) { return std::uniform_int_distribution<int64_t>(lo, hi)(rng); }
bool chance(double p, Rng &rng) { return std::bernoulli_distribution(p)(rng); }

std::string random_bytes(size_t n, Rng &rng) {
    std::string s(n, '\0');
    for (char &c : s) c = char(between(0, 255, rng));
    return s;
}

Oid concat(Oid a, const Oid &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The index parts of a row: one sub-identifier per number, four per
// address, length and octets per string, the rest for an implied string.
std::vector<Oid> split_row(const Oid &row, const std::vector<IndexKind> &kinds) {
    std::vector<Oid> parts;
    size_t at = 0;
    for (IndexKind k : kinds) {
        size_t n = 1;
        if (k == IndexKind::kIpAddress) n = 4;
        if (k == IndexKind::kOctetStr) n = at < row.size() ? 1 + row[at] : 1;
        if (k == IndexKind::kImpliedOctetStr) n = row.size() - std::min(at, row.size());
        n = std::min(n, row.size() - std::min(at, row.size()));
        parts.emplace_back(row.begin() + long(at), row.begin() + long(at + n));
        at += n;
    }
    return parts;
}

std::vector<Oid> boundary_parts(IndexKind k) {
    switch (k) {
    case IndexKind::kInteger: return {{0}, {1}, {2147483647}, {2147483648u}, {4294967295u}};
    case IndexKind::kGauge:
    case IndexKind::kTimeTicks: return {{0}, {2147483648u}, {4294967295u}};
    case IndexKind::kIpAddress: return {{0, 0, 0, 0}, {255, 255, 255, 255}, {1, 2, 3, 256}};
    case IndexKind::kOctetStr: return {{0}, {1, 0}, {6, 255, 255, 255, 255, 255, 255}, {1, 256}, {200, 1}};
    case IndexKind::kImpliedOctetStr: return {{}, {0}, {256}, Oid(120, 65)};
    }
    return {};
}

Oid plain_part(IndexKind k) {
    switch (k) {
    case IndexKind::kIpAddress: return {127, 0, 0, 1};
    case IndexKind::kOctetStr: return {1, 65};
    case IndexKind::kImpliedOctetStr: return {65};
    case IndexKind::kTimeTicks: return {0};
    default: return {1};
    }
}

}  // namespace

Oid Table::instance(const CatalogueColumn &c, const Oid &row) const { return concat(child(entry, {c.number}), row); }

std::vector<Oid> Table::boundary_rows() const {
    std::vector<Oid> base;
    if (!rows.empty()) base = split_row(rows.front(), kinds);
    for (size_t i = base.size(); i < kinds.size(); ++i) base.push_back(plain_part(kinds[i]));
    const auto join = [](const std::vector<Oid> &parts) {
        Oid row;
        for (const Oid &p : parts) row = concat(row, p);
        return row;
    };
    std::vector<Oid> out;
    std::vector<Oid> highest = base;
    for (size_t i = 0; i < kinds.size(); ++i) {
        const std::vector<Oid> edges = boundary_parts(kinds[i]);
        for (const Oid &edge : edges) {
            std::vector<Oid> parts = base;
            parts[i] = edge;
            out.push_back(join(parts));
        }
        highest[i] = edges[edges.size() / 2];
    }
    out.push_back(join(highest));
    const Oid first = join(base);
    if (first.size() > 1) out.push_back(Oid(first.begin(), first.end() - 1));  // an index cut short
    out.push_back(child(first, {0}));                                          // one sub-identifier too many
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

Model Model::read(Session &s, size_t rows_per_table) {
    Model m;
    for (const CatalogueObject &o : catalogue()) {
        if (!o.served) continue;
        if (!o.table) {
            m.scalars.push_back(&o);
            continue;
        }
        Table t{&o, {}, index_kinds(o.indexes), child(o.oid, {1}), {}};
        for (const CatalogueColumn &c : catalogue_columns())
            if (c.table == o.name) t.columns.push_back(&c);
        if (t.columns.empty()) continue;
        std::sort(t.columns.begin(), t.columns.end(), [](auto *a, auto *b) { return a->number < b->number; });
        const Oid first = child(t.entry, {t.columns.front()->number});
        for (const VarBind &vb : s.walk(first, 25, rows_per_table))
            if (starts_with(vb.oid, first) && vb.oid.size() > first.size())
                t.rows.emplace_back(vb.oid.begin() + long(first.size()), vb.oid.end());
        m.tables.push_back(std::move(t));
    }
    return m;
}

uint8_t Model::type_of(const Oid &oid) const {
    if (!oid.empty() && oid.back() == 0)
        for (const CatalogueObject *s : scalars)
            if (oid.size() == s->oid.size() + 1 && starts_with(oid, s->oid)) return s->type;
    for (const Table &t : tables) {
        if (oid.size() <= t.entry.size() + 1 || !starts_with(oid, t.entry)) continue;
        for (const CatalogueColumn *c : t.columns)
            if (c->number == oid[t.entry.size()]) return c->type;
    }
    return 0;
}

std::vector<Oid> Request::oids() const {
    std::vector<Oid> out;
    for (const SetValue &v : varbinds) out.push_back(v.oid);
    return out;
}

std::string Request::describe() const {
    static const char *const kNames[] = {"GET", "GETNEXT", "GETBULK", "SET"};
    std::ostringstream os;
    os << kNames[kind];
    if (kind == kGetBulk) os << " non-repeaters " << non_repeaters << " max-repetitions " << max_repetitions;
    for (const SetValue &v : varbinds) {
        if (kind != kSet) {
            os << ' ' << to_string(v.oid);
            continue;
        }
        VarBind shown{v.oid, v.type, v.integer, v.bytes, v.objid};
        std::string text = it::describe(shown);
        if (text.size() > 120) text = text.substr(0, 120) + "...";
        os << "\n  " << text;
    }
    return os.str();
}

Response Request::send(Session &reader, Session &writer) const {
    switch (kind) {
    case kGet: return reader.get(oids());
    case kGetNext: return reader.get_next(oids());
    case kGetBulk: return reader.get_bulk(oids(), non_repeaters, max_repetitions);
    case kSet: return writer.set(varbinds);
    }
    return {};
}

std::string check(const Request &q, const Response &r, const Model &model) {
    const size_t n = q.varbinds.size();
    std::ostringstream why;
    if (!r.answered) return "no answer";
    if (r.error_status < 0 || r.error_status > 18) return "error status " + std::to_string(r.error_status);
    if (r.error_status != kNoError) {
        const long lowest = r.error_status == kTooBig ? 0 : 1;
        if (r.error_index < lowest || r.error_index > long(n))
            why << "error status " << r.error_status << " at index " << r.error_index << " of " << n << " varbinds";
        else if (r.varbinds.size() != n)
            why << "error response with " << r.varbinds.size() << " varbinds for " << n;
        return why.str();
    }
    const std::vector<Oid> asked = q.oids();
    size_t limit = n;
    const size_t fixed = q.kind == Request::kGetBulk ? size_t(std::clamp<long>(q.non_repeaters, 0, long(n))) : n;
    if (q.kind == Request::kGetBulk) limit = fixed + (n - fixed) * size_t(std::max(q.max_repetitions, 0));
    if (q.kind == Request::kGetBulk ? r.varbinds.size() > limit || r.varbinds.size() < std::min(fixed, limit)
                                    : r.varbinds.size() != n)
        return std::to_string(r.varbinds.size()) + " varbinds in the response, " + std::to_string(limit) + " expected";
    for (size_t i = 0; i < r.varbinds.size(); ++i) {
        const VarBind &vb = r.varbinds[i];
        // The name a varbind answers: the requested one, or after it.
        const size_t repeating = n - fixed;
        const Oid &before = i < fixed ? asked[i] : i < n ? asked[i] : r.varbinds[i - repeating].oid;
        const bool exact = q.kind == Request::kGet || q.kind == Request::kSet;
        if (exact ? vb.oid != before : !(vb.oid > before || (vb.type == kEndOfMibView && vb.oid == before)))
            why << "varbind " << i + 1 << " names " << to_string(vb.oid) << " after " << to_string(before) << "; ";
        if (vb.is_exception()) continue;
        const uint8_t expected = model.type_of(vb.oid);
        if (expected != 0 && vb.type != expected && q.kind != Request::kSet)
            why << describe(vb) << ": the catalogue's type is 0x" << std::hex << int(expected) << std::dec << "; ";
        if (vb.type == kIpAddress && vb.bytes.size() != 4) why << describe(vb) << ": not 4 octets; ";
    }
    return why.str();
}

SetValue sample_value(const Oid &oid, uint8_t type, Rng &rng) {
    SetValue v{oid, type, 0, {}, {}};
    switch (type) {
    case kInteger: v.integer = chance(0.5, rng) ? between(-2, 10, rng) : between(INT32_MIN, INT32_MAX, rng); break;
    case kCounter32:
    case kGauge32:
    case kTimeTicks: v.integer = chance(0.5, rng) ? between(0, 10, rng) : between(0, UINT32_MAX, rng); break;
    case kCounter64: v.integer = int64_t(rng()); break;
    case kOctetString:
    case kOpaque: v.bytes = random_bytes(size_t(between(0, 12, rng)), rng); break;
    case kIpAddress: v.bytes = random_bytes(4, rng); break;
    case kObjectId: v.objid = {1, 3, 6, 1, 4, 1, uint32_t(between(0, UINT32_MAX, rng))}; break;
    default: break;
    }
    return v;
}

Request rows_request(const Table &t, size_t first, size_t count, Rng &rng) {
    std::vector<const CatalogueColumn *> writable;
    for (const CatalogueColumn *c : t.columns)
        if (c->writable) writable.push_back(c);
    const int kind = int(between(0, writable.empty() ? 2 : 3, rng));
    Request q{Request::Kind(kind), {}, 0, 0};
    const std::vector<const CatalogueColumn *> &pool = q.kind == Request::kSet ? writable : t.columns;
    // snmptable's request: every column, from the row before, in one GETBULK.
    const bool whole_rows = q.kind == Request::kGetBulk && chance(0.3, rng);
    std::vector<const CatalogueColumn *> columns = pool;
    std::shuffle(columns.begin(), columns.end(), rng);
    if (!whole_rows) {
        columns.resize(std::min<size_t>(columns.size(), size_t(between(2, 4, rng))));
        while (columns.size() < 2) columns.push_back(columns.front());  // one column, asked twice
    }
    const size_t end = std::min(first + count, t.rows.size());
    for (size_t i = first; i < end && !(whole_rows && i > first); ++i) {
        const bool from_before = q.kind == Request::kGetNext || q.kind == Request::kGetBulk;
        const Oid row = !from_before ? t.rows[i] : i > 0 ? t.rows[i - 1] : Oid{};
        for (const CatalogueColumn *c : columns) {
            const Oid oid = t.instance(*c, row);
            if (q.kind != Request::kSet) {
                q.varbinds.push_back({oid, kNull, 0, {}, {}});
                continue;
            }
            SetValue v = sample_value(oid, c->type, rng);
            if (c->range.bounded) v.integer = between(c->range.lo, c->range.hi, rng);
            q.varbinds.push_back(v);
        }
    }
    if (q.kind == Request::kGetBulk) {
        const long n = long(q.varbinds.size());
        q.non_repeaters = whole_rows ? 0 : int(between(0, n, rng));
        q.max_repetitions = whole_rows ? int(std::max<size_t>(count, 2)) : int(between(1, 4, rng));
    }
    return q;
}

Request scalars_request(const Model &model, Rng &rng) {
    std::vector<const CatalogueObject *> writable;
    for (const CatalogueObject *s : model.scalars)
        if (s->writable && s->type != 0) writable.push_back(s);
    const int kind = int(between(0, writable.empty() ? 2 : 3, rng));
    const std::vector<const CatalogueObject *> &pool = kind == Request::kSet ? writable : model.scalars;
    Request q{Request::Kind(kind), {}, 0, 0};
    for (int64_t n = between(2, 4, rng); n > 0 && !pool.empty(); --n) {
        const CatalogueObject *s = q.varbinds.empty() || chance(0.5, rng)
                                       ? pick(pool, rng)
                                       : *std::find_if(pool.begin(), pool.end(), [&](auto *o) {
                                             return starts_with(q.varbinds.back().oid, o->oid);
                                         });
        const Oid oid = q.kind == Request::kGet || q.kind == Request::kSet ? child(s->oid, {0}) : s->oid;
        SetValue v = sample_value(oid, q.kind == Request::kSet ? s->type : uint8_t(kNull), rng);
        if (s->range.bounded) v.integer = between(s->range.lo, s->range.hi, rng);
        if (v.type == kOctetString) v.bytes.resize(size_t(between(0, 300, rng)), 'x');
        q.varbinds.push_back(v);
    }
    if (q.kind == Request::kGetBulk) {
        q.non_repeaters = int(between(0, long(q.varbinds.size()), rng));
        q.max_repetitions = int(between(1, 4, rng));
    }
    return q;
}

// ---- raw messages -----------------------------------------------------------

namespace {

std::string length_octets(size_t n) {
    if (n < 0x80) return std::string(1, char(n));
    std::string digits;
    for (; n; n >>= 8) digits.insert(digits.begin(), char(n & 0xff));
    return char(0x80 | digits.size()) + digits;
}

std::string tlv(uint8_t tag, std::string_view body) {
    return char(tag) + length_octets(body.size()) + std::string(body);
}

std::string ber_signed(uint8_t tag, int64_t v) {
    std::string out;
    for (int i = 7; i >= 0; --i) out += char((uint64_t(v) >> (8 * i)) & 0xff);
    while (out.size() > 1 && ((out[0] == 0 && !(out[1] & 0x80)) || (out[0] == char(0xff) && (out[1] & 0x80))))
        out.erase(0, 1);
    return tlv(tag, out);
}

std::string ber_unsigned(uint8_t tag, uint64_t v) {
    std::string out;
    for (int i = 7; i >= 0; --i) out += char((v >> (8 * i)) & 0xff);
    while (out.size() > 1 && out[0] == 0) out.erase(0, 1);
    if (out[0] & 0x80) out.insert(out.begin(), '\0');
    return tlv(tag, out);
}

std::string ber_oid_body(const Oid &oid) {
    std::string out;
    const auto put = [&](uint64_t v) {
        std::string digits(1, char(v & 0x7f));
        for (v >>= 7; v; v >>= 7) digits.insert(digits.begin(), char(0x80 | (v & 0x7f)));
        out += digits;
    };
    if (oid.size() < 2) {
        put(oid.empty() ? 0 : oid[0] * 40ull);
        return out;
    }
    put(uint64_t(std::min<uint32_t>(oid[0], 2)) * 40 + oid[1]);
    for (size_t i = 2; i < oid.size(); ++i) put(oid[i]);
    return out;
}

std::string ber_value(const SetValue &v) {
    switch (v.type) {
    case kInteger: return ber_signed(kInteger, v.integer);
    case kCounter32:
    case kGauge32:
    case kTimeTicks:
    case kCounter64: return ber_unsigned(v.type, uint64_t(v.integer));
    case kObjectId: return tlv(kObjectId, ber_oid_body(v.objid));
    case kNull: return tlv(kNull, "");
    default: return tlv(v.type, v.bytes);
    }
}

// One element at `at`: where its length octets and its contents lie.
struct Element {
    size_t tag_at, length_at, content_at, content_length;
};

bool parse_element(std::string_view b, size_t at, Element &e) {
    if (at + 2 > b.size() || (uint8_t(b[at]) & 0x1f) == 0x1f) return false;
    e.tag_at = at;
    e.length_at = at + 1;
    size_t len = uint8_t(b[at + 1]), p = at + 2;
    if (len & 0x80) {
        const size_t octets = len & 0x7f;
        if (octets == 0 || octets > 4 || p + octets > b.size()) return false;
        len = 0;
        for (size_t i = 0; i < octets; ++i) len = len << 8 | uint8_t(b[p++]);
    }
    if (len > b.size() - p) return false;
    e.content_at = p;
    e.content_length = len;
    return true;
}

// Every element of a message, outermost first; false when malformed.
bool elements(std::string_view b, size_t at, size_t end, std::vector<Element> &out) {
    while (at < end) {
        Element e;
        if (!parse_element(b.substr(0, end), at, e)) return false;
        out.push_back(e);
        const bool constructed = uint8_t(b[at]) & 0x20;
        if (constructed && !elements(b, e.content_at, e.content_at + e.content_length, out)) return false;
        at = e.content_at + e.content_length;
    }
    return at == end;
}

std::string random_ber(Rng &rng, int depth) {
    static const uint8_t kTags[] = {0x02, 0x04, 0x05, 0x06, 0x30, 0x40, 0x41, 0x42, 0x43, 0x44, 0x46,
                                    0x80, 0x81, 0x82, 0xa0, 0xa1, 0xa2, 0xa3, 0xa5, 0xa7, 0xa8, 0x1f};
    const uint8_t tag = kTags[between(0, std::size(kTags) - 1, rng)];
    std::string body;
    if ((tag & 0x20) && depth < 4)
        for (int64_t i = between(0, 4, rng); i > 0; --i) body += random_ber(rng, depth + 1);
    else
        body = random_bytes(size_t(between(0, 9, rng)), rng);
    return tlv(tag, body);
}

}  // namespace

std::string encode_message(int version, std::string_view community, uint8_t pdu_tag, int64_t request_id, int64_t a,
                           int64_t b, const std::vector<SetValue> &varbinds) {
    std::string list;
    for (const SetValue &v : varbinds)
        list += tlv(0x30, tlv(kObjectId, ber_oid_body(v.oid)) + (pdu_tag == 0xa3 ? ber_value(v) : tlv(kNull, "")));
    const std::string pdu =
        ber_signed(kInteger, request_id) + ber_signed(kInteger, a) + ber_signed(kInteger, b) + tlv(0x30, list);
    return tlv(0x30, ber_signed(kInteger, version) + tlv(kOctetString, community) + tlv(pdu_tag, pdu));
}

std::string random_message(const Model &model, Rng &rng) {
    static const uint8_t kPdus[] = {0xa0, 0xa1, 0xa3, 0xa5};
    const uint8_t pdu = kPdus[between(0, 3, rng)];
    std::vector<SetValue> varbinds;
    for (int64_t i = between(1, 6, rng); i > 0; --i) {
        Oid oid;
        uint8_t type = 0;
        const int which = int(between(0, 9, rng));
        if (which < 6 && !model.tables.empty()) {
            const Table &t = model.tables[size_t(between(0, long(model.tables.size()) - 1, rng))];
            const CatalogueColumn *c = t.columns[size_t(between(0, long(t.columns.size()) - 1, rng))];
            oid = t.instance(*c, t.rows.empty() ? Oid{1} : t.rows[size_t(between(0, long(t.rows.size()) - 1, rng))]);
            type = c->type;
        } else if (which < 8 && !model.scalars.empty()) {
            const CatalogueObject *s = model.scalars[size_t(between(0, long(model.scalars.size()) - 1, rng))];
            oid = child(s->oid, {0});
            type = s->type;
        } else {  // names at the edges of what an OID can be
            static const std::vector<Oid> kOdd = {{},
                                                  {1},
                                                  {2, 999},
                                                  Oid(128, 1),
                                                  Oid(129, 1),
                                                  Oid(300, 4294967295u),
                                                  {1, 3, 6, 1, 4294967295u, 4294967295u}};
            oid = pick(kOdd, rng);
        }
        if (type == 0 || chance(0.3, rng)) type = kSetTypes[between(0, std::size(kSetTypes) - 1, rng)];
        varbinds.push_back(sample_value(oid, type, rng));
    }
    static const std::vector<int64_t> kCounts = {0, 1, 2, 5, -1, 10, 100, INT32_MAX, int64_t(INT32_MAX) + 1, INT32_MIN};
    const bool bulk = pdu == 0xa5;
    const int64_t a = bulk ? pick(kCounts, rng) : chance(0.9, rng) ? 0 : pick(kCounts, rng);
    const int64_t b = bulk               ? (chance(0.8, rng) ? between(0, 20, rng) : pick(kCounts, rng))
                      : chance(0.9, rng) ? 0
                                         : pick(kCounts, rng);
    static const std::vector<std::string> kCommunities = {"public", "private", "", "publi", "private\0x"};
    const std::string community =
        chance(0.9, rng) ? (chance(0.5, rng) ? "public" : "private") : pick(kCommunities, rng);
    const int version = chance(0.95, rng) ? int(between(0, 1, rng)) : int(pick(kCounts, rng));
    return encode_message(version, community, pdu, between(INT32_MIN, INT32_MAX, rng), a, b, varbinds);
}

std::string mutate(std::string m, Rng &rng) {
    // Mostly one damage, so that many messages still parse far enough to
    // reach the agent's handlers.
    for (int64_t round = chance(0.6, rng) ? 1 : between(2, 3, rng); round > 0 && !m.empty(); --round) {
        const size_t at = size_t(between(0, long(m.size()) - 1, rng));
        switch (between(0, 8, rng)) {
        case 0:  // bit flips
            for (int64_t i = between(1, 4, rng); i > 0; --i)
                m[size_t(between(0, long(m.size()) - 1, rng))] ^= char(1 << between(0, 7, rng));
            break;
        case 1: {  // an octet of some element's contents set to a value that means something in BER
            static const std::vector<uint8_t> kOctets = {0x00, 0x01, 0x7f, 0x80, 0x81, 0x82, 0x84, 0x89, 0xff};
            std::vector<Element> found;
            elements(m, 0, m.size(), found);
            const Element e = found.empty() ? Element{at, at, at, 1} : pick(found, rng);
            if (e.content_length > 0)
                m[e.content_at + size_t(between(0, long(e.content_length) - 1, rng))] = char(pick(kOctets, rng));
            break;
        }
        case 2: m.resize(at); break;  // cut short
        case 3: {                     // a length rewritten
            std::vector<Element> found;
            elements(m, 0, m.size(), found);  // as far as it parses
            if (found.empty()) break;
            const Element e = pick(found, rng);
            const size_t real = e.content_length;
            const std::vector<std::string> kLengths = {length_octets(0),
                                                       length_octets(real + 1),
                                                       length_octets(real ? real - 1 : 0),
                                                       std::string("\x7f", 1),
                                                       std::string("\x80", 1),
                                                       std::string("\x81\xff", 2),
                                                       std::string("\x82\xff\xff", 3),
                                                       std::string("\x84\x7f\xff\xff\xff", 5),
                                                       std::string("\x84\xff\xff\xff\xff", 5),
                                                       std::string("\x89\x00\x00\x00\x00\x00\x00\x00\x00\x01", 10),
                                                       std::string("\x82\x00", 2) + char(real & 0xff),
                                                       length_octets(real + 1000)};
            m.replace(e.length_at, e.content_at - e.length_at, pick(kLengths, rng));
            break;
        }
        case 4: m.insert(at, random_bytes(size_t(between(1, 8, rng)), rng)); break;
        case 5: m.erase(at, size_t(between(1, 8, rng))); break;
        case 6: {  // a part repeated
            const size_t n = size_t(between(1, long(m.size() - at), rng));
            m.insert(at, m.substr(at, n));
            break;
        }
        case 7: m.replace(at, size_t(between(0, long(m.size() - at), rng)), random_ber(rng, 0)); break;
        default: {  // the whole varbind list replaced by random elements
            std::vector<Element> found;
            elements(m, 0, m.size(), found);
            std::string list;
            for (int64_t i = between(1, 5, rng); i > 0; --i) list += random_ber(rng, 1);
            if (found.size() > 7) m.replace(found[7].tag_at, m.size() - found[7].tag_at, tlv(0x30, list));
            break;
        }
        }
    }
    return m;
}

bool well_formed_ber(std::string_view bytes) {
    std::vector<Element> found;
    Element top;
    return parse_element(bytes, 0, top) && top.content_at + top.content_length == bytes.size() &&
           elements(bytes, 0, bytes.size(), found);
}

std::string hex(std::string_view bytes) {
    std::string out;
    for (unsigned char c : bytes) {
        out += "0123456789abcdef"[c >> 4];
        out += "0123456789abcdef"[c & 15];
    }
    return out;
}

}  // namespace fz
