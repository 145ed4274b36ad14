// Helpers of the fuzz suite: the seed and the amount of work, a picture of
// the objects the agent serves (from the catalogues and one walk), random
// requests over them, the checks every response must pass, and SNMP
// messages encoded by hand and damaged on purpose.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue.hpp"
#include "snmp_client.hpp"

namespace fz {

using it::Oid;
using Rng = std::mt19937_64;

// SWITCH_FUZZ_SEED when set, else a fresh one; printed once.
uint64_t seed();
// A generator of its own for each test, from the seed and the test's name,
// so that one test replays alone (--gtest_filter) as in the whole run.
Rng rng_for(std::string_view test_name);
// n scaled by SWITCH_FUZZ_SCALE (default 1), at least 1.
size_t scaled(size_t n);

// One served table: its catalogue lines and the index part of the rows a
// walk found before the test changed anything.
struct Table {
    const it::CatalogueObject *desc;
    std::vector<const it::CatalogueColumn *> columns;
    std::vector<it::IndexKind> kinds;
    Oid entry;
    std::vector<Oid> rows;

    Oid instance(const it::CatalogueColumn &c, const Oid &row) const;
    // Rows of extreme index values (0, 2^31, 2^32 - 1, empty and long
    // strings, malformed lengths), built on the first real row.
    std::vector<Oid> boundary_rows() const;
};

struct Model {
    std::vector<Table> tables;
    std::vector<const it::CatalogueObject *> scalars;  // served

    // Walks the first column of every served table, at most rows_per_table rows.
    static Model read(it::Session &s, size_t rows_per_table);
    // The type a served object's instance answers with (0: unknown or set
    // by the platform).
    uint8_t type_of(const Oid &instance) const;
};

// A request and the PDU fields it was sent with, to check its response.
struct Request {
    enum Kind { kGet, kGetNext, kGetBulk, kSet } kind;
    std::vector<it::SetValue> varbinds;  // SET values; other kinds: only the OIDs
    int non_repeaters = 0, max_repetitions = 0;

    std::vector<Oid> oids() const;
    std::string describe() const;
    it::Response send(it::Session &reader, it::Session &writer) const;
};

// What is wrong with a response to the request ("" when nothing): error
// status and index out of bounds, varbinds missing or not in order, values
// whose type is not the catalogue's.
std::string check(const Request &request, const it::Response &response, const Model &model);

// A random multi-varbind request on a few rows of a table: two or more
// columns of each row, addressed directly (GET, SET) or from the row before
// (GETNEXT, GETBULK), so that each row is met by several varbinds at once.
Request rows_request(const Table &table, size_t first, size_t count, Rng &rng);

// A random request on two to four scalars, often the same one twice.
Request scalars_request(const Model &model, Rng &rng);

// A value of the given type; lengths and ranges valid for the type.
it::SetValue sample_value(const Oid &oid, uint8_t type, Rng &rng);
// Every type a varbind can carry in a SET.
inline constexpr uint8_t kSetTypes[] = {it::kInteger,   it::kOctetString, it::kNull,    it::kObjectId,
                                        it::kIpAddress, it::kCounter32,   it::kGauge32, it::kTimeTicks,
                                        it::kOpaque,    it::kCounter64};

// ---- raw messages -----------------------------------------------------------
// A v1 (version 0) or v2c (1) message; pdu_tag 0xa0 GET, 0xa1 GETNEXT,
// 0xa3 SET, 0xa5 GETBULK; a and b are error status and index, or
// non-repeaters and max-repetitions.
std::string encode_message(int version, std::string_view community, uint8_t pdu_tag, int64_t request_id, int64_t a,
                           int64_t b, const std::vector<it::SetValue> &varbinds);
// A valid message of random kind over the model's objects.
std::string random_message(const Model &model, Rng &rng);
// The message damaged: bits flipped, cut short, lengths rewritten, bytes
// inserted or removed, parts repeated or replaced by random BER.
std::string mutate(std::string message, Rng &rng);
// Whether the bytes are one BER element whose nested lengths all add up.
bool well_formed_ber(std::string_view bytes);
std::string hex(std::string_view bytes);

}  // namespace fz
