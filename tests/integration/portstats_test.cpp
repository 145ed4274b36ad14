// Ethernet statistics, transceiver diagnostics and traffic controls through
// a real snmpd over scenarios/default.json: rows, types and values as a
// manager sees them, a transceiver pulled under the running agent, and SETs
// with their error statuses.
#include <algorithm>

#include "fixture.hpp"

namespace it {
namespace {

class PortStats : public AgentTest<PortStats> {};

const Oid kDot3StatsEntry = parse_oid("1.3.6.1.2.1.10.7.2.1");
const Oid kTransceiverEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.28.1.1");
const Oid kRateLimitEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.16.1.1");
const Oid kStormEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.11.1.1");
const Oid kMirrorDestination = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.8.1.0");
const Oid kMirrorEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.8.2.1");
const Oid kQueueEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.27.1.1");

Oid column(const Oid &entry, uint32_t number) { return child(entry, {number}); }
Oid cell(const Oid &entry, uint32_t number, uint32_t index) { return child(entry, {number, index}); }

// Ports of unit 1 in scenarios/default.json: 1/1 full duplex, 1/7 half
// duplex, 1/20 down; 1/25 and 1/26 carry optics with diagnostics, 2/25
// optics without.
const uint32_t kFull = port_index(0, 0), kHalf = port_index(0, 6), kDown = port_index(0, 19);
const uint32_t kOptic = port_index(0, 24), kOptic2 = port_index(0, 25);

TEST_F(PortStats, Dot3StatsTableHasThePortRowsAndTheirCounters) {
    const Oid fcs = column(kDot3StatsEntry, 3);
    const std::vector<VarBind> walk = reader().walk(fcs);
    EXPECT_EQ(row_indexes(walk, fcs), expected_port_rows(sw()));
    for (const VarBind &vb : walk) EXPECT_EQ(vb.type, kCounter32) << describe(vb);

    // A counter above 2^32 reads its low 32 bits, in the column of its
    // statistic (FCS errors 43, symbol errors 54).
    sw().set_counter(0, 19, 43, (uint64_t(5) << 32) + 7);
    sw().set_counter(0, 19, 54, 123456);
    EXPECT_EQ(must_get(cell(kDot3StatsEntry, 3, kDown)).integer, 7);
    EXPECT_EQ(must_get(cell(kDot3StatsEntry, 18, kDown)).integer, 123456);

    EXPECT_EQ(must_get(cell(kDot3StatsEntry, 19, kFull)).integer, 3);
    EXPECT_EQ(must_get(cell(kDot3StatsEntry, 19, kHalf)).integer, 2);
    EXPECT_EQ(must_get(cell(kDot3StatsEntry, 19, kDown)).integer, 1);
    VarBind chip = must_get(cell(kDot3StatsEntry, 17, kFull));
    EXPECT_EQ(chip.type, kObjectId);
    EXPECT_EQ(chip.objid, (Oid{0, 0}));

    // Collisions count on the half-duplex port only, and they move.
    const int64_t first = must_get(cell(kDot3StatsEntry, 4, kHalf)).integer;
    EXPECT_EQ(must_get(cell(kDot3StatsEntry, 4, kFull)).integer, 0);
    EXPECT_GE(must_get(cell(kDot3StatsEntry, 4, kHalf)).integer, first);

    // A walk of the whole table steps over the column numbers the MIB does
    // not use (12, 14, 15) and reaches the last column.
    std::vector<uint32_t> columns;
    const Oid entry = kDot3StatsEntry;
    for (const VarBind &vb : reader().walk(entry))
        if (columns.empty() || columns.back() != vb.oid[entry.size()]) columns.push_back(vb.oid[entry.size()]);
    EXPECT_EQ(columns, (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 16, 17, 18, 19, 20, 21}));

    // The tables the switch does not keep answer nothing.
    for (const char *table : {"1.3.6.1.2.1.10.7.5", "1.3.6.1.2.1.10.7.9", "1.3.6.1.2.1.10.7.10", "1.3.6.1.2.1.10.7.11"})
        EXPECT_TRUE(reader().walk(parse_oid(table)).empty()) << table;
}

TEST_F(PortStats, TransceiverTableShowsTheFittedOptics) {
    const Oid temperature = column(kTransceiverEntry, 2);
    EXPECT_EQ(row_indexes(reader().walk(temperature), temperature), (std::vector<uint32_t>{kOptic, kOptic2}));

    // 1/26: 44 C, 3.27 V, 7.9 mA, 0.48 mW out, 0.05 mW in.
    const std::pair<uint32_t, std::string> texts[] = {
        {2, "44C"}, {3, "3.2V"}, {4, "-13.0dBm"}, {5, "-3.2dBm"}, {6, "7.9mA"}};
    for (const auto &[col, text] : texts) {
        VarBind vb = must_get(cell(kTransceiverEntry, col, kOptic2));
        EXPECT_EQ(vb.type, kOctetString) << col;
        EXPECT_EQ(vb.bytes, text) << col;
    }
    const std::pair<uint32_t, int64_t> values[] = {{7, 44}, {8, 32}, {9, -130}, {10, -31}, {11, 79}};
    for (const auto &[col, value] : values) {
        VarBind vb = must_get(cell(kTransceiverEntry, col, kOptic2));
        EXPECT_EQ(vb.type, kInteger) << col;
        EXPECT_EQ(vb.integer, value) << col;
    }
}

TEST_F(PortStats, PulledTransceiverIsGoneAtTheNextRequest) {
    const Oid temperature = column(kTransceiverEntry, 2);
    ASSERT_EQ(must_get(cell(kTransceiverEntry, 2, kOptic)).bytes, "38C");

    sw().set_transceiver(0, 24, false);
    Response r = reader().get({cell(kTransceiverEntry, 2, kOptic)});
    ASSERT_TRUE(r.answered);
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].type, kNoSuchInstance) << describe(r.varbinds[0]);
    EXPECT_EQ(row_indexes(reader().walk(temperature), temperature), std::vector<uint32_t>{kOptic2});

    // Plugged in again (with the optics' default readings): the row is back
    // for the very next request, a GET of it as well as a walk.
    sw().set_transceiver(0, 24, true);
    EXPECT_EQ(must_get(cell(kTransceiverEntry, 2, kOptic)).bytes, "35C");
    EXPECT_EQ(row_indexes(reader().walk(temperature), temperature), (std::vector<uint32_t>{kOptic, kOptic2}));
}

TEST_F(PortStats, TrafficControlsAreWrittenAndRefused) {
    const uint32_t port = port_index(0, 1);
    // Enabling sets the fixed pair; the manager's own rate goes afterwards.
    EXPECT_EQ(set_one(SetValue::integer32(cell(kRateLimitEntry, 6, port), 1)), kNoError);
    EXPECT_EQ(set_one(SetValue::integer32(cell(kRateLimitEntry, 3, port), 1)), kNoError);
    EXPECT_EQ(sw().traffic(0, 1).rate_kbps[swsim::Switch::kEgress], 1000000u);
    EXPECT_EQ(sw().traffic(0, 1).burst_kb[swsim::Switch::kEgress], 4096u);
    EXPECT_EQ(set_one(SetValue::integer32(cell(kRateLimitEntry, 6, port), 64000)), kNoError);
    EXPECT_EQ(must_get(cell(kRateLimitEntry, 6, port)).integer, 64000);
    EXPECT_EQ(must_get(cell(kRateLimitEntry, 3, port)).integer, 1);

    // Out of range: wrongValue, and nothing changes.
    EXPECT_EQ(set_one(SetValue::integer32(cell(kRateLimitEntry, 6, port), 10000001)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::integer32(cell(kRateLimitEntry, 7, port), 0)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::integer32(cell(kMirrorEntry, 2, port), 5)), kWrongValue);
    EXPECT_EQ(sw().traffic(0, 1).rate_kbps[swsim::Switch::kEgress], 64000u);

    // Storm control: any value but enabled switches it off.
    EXPECT_EQ(set_one(SetValue::integer32(cell(kStormEntry, 2, port), 1)), kNoError);
    EXPECT_TRUE(sw().traffic(0, 1).storm_control);
    EXPECT_EQ(set_one(SetValue::integer32(cell(kStormEntry, 2, port), 3)), kNoError);
    EXPECT_FALSE(sw().traffic(0, 1).storm_control);
    EXPECT_EQ(must_get(cell(kStormEntry, 2, port)).integer, 2);

    // Mirroring: the destination reads as an interface index; a trunk or a
    // mirrored port cannot be one (genErr), and the destination stays.
    EXPECT_EQ(must_get(kMirrorDestination).integer, int64_t(port_index(0, 21)));
    EXPECT_EQ(set_one(SetValue::integer32(kMirrorDestination, 69)), kNoError);
    EXPECT_EQ(sw().mirror_to(), std::make_pair(1, 4));
    EXPECT_EQ(set_one(SetValue::integer32(kMirrorDestination, 513)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(kMirrorDestination, port_index(0, 6))), kGenErr);
    EXPECT_EQ(must_get(kMirrorDestination).integer, 69);
    EXPECT_EQ(must_get(cell(kMirrorEntry, 2, port_index(0, 6))).integer, 3);
    EXPECT_EQ(set_one(SetValue::integer32(cell(kMirrorEntry, 2, port_index(0, 6)), 4)), kNoError);
    EXPECT_EQ(sw().traffic(0, 6).mirror, SW_MIRROR_NONE);

    // Queue counters: eight rows per port and trunk, 64-bit, read-only.
    const Oid sent = column(kQueueEntry, 4);
    const std::vector<VarBind> queues = reader().walk(sent);
    EXPECT_EQ(queues.size(), 8 * expected_port_rows(sw()).size());
    for (const VarBind &vb : queues) EXPECT_EQ(vb.type, kCounter64) << describe(vb);
    EXPECT_EQ(set_one(SetValue::integer32(cell(kQueueEntry, 3, port), 1)), kNotWritable);
}

}  // namespace
}  // namespace it
