// Ethernet statistics and transceiver diagnostics through a real snmpd over
// scenarios/default.json: the statistics table's rows and sparse columns, and
// a transceiver pulled and plugged in again under the running agent.
#include "fixture.hpp"

namespace it {
namespace {

class PortStats : public AgentTest<PortStats> {};

const Oid kDot3StatsEntry = parse_oid("1.3.6.1.2.1.10.7.2.1");
const Oid kTransceiverEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.28.1.1");

Oid cell(const Oid &entry, uint32_t number, uint32_t index) { return child(entry, {number, index}); }

// 1/20 is down (nothing moves its counters); 1/25 and 1/26 carry optics with
// diagnostics.
const uint32_t kDown = port_index(0, 19), kOptic = port_index(0, 24), kOptic2 = port_index(0, 25);

TEST_F(PortStats, Dot3StatsTableWalksItsSparseColumns) {
    const Oid fcs = child(kDot3StatsEntry, {3});
    const std::vector<VarBind> walk = reader().walk(fcs);
    EXPECT_EQ(row_indexes(walk, fcs), expected_port_rows(sw()));
    for (const VarBind &vb : walk) EXPECT_EQ(vb.type, kCounter32) << describe(vb);

    // A counter above 2^32 reads its low 32 bits (FCS errors, statistic 43).
    sw().set_counter(0, 19, 43, (uint64_t(5) << 32) + 7);
    EXPECT_EQ(must_get(cell(kDot3StatsEntry, 3, kDown)).integer, 7);

    // A walk of the whole table steps over the column numbers the MIB does
    // not use (12, 14, 15) and reaches the last column.
    std::vector<uint32_t> columns;
    const size_t at = kDot3StatsEntry.size();
    for (const VarBind &vb : reader().walk(kDot3StatsEntry))
        if (columns.empty() || columns.back() != vb.oid[at]) columns.push_back(vb.oid[at]);
    EXPECT_EQ(columns, (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 16, 17, 18, 19, 20, 21}));

    // The tables the switch does not keep are served without rows.
    for (const char *table : {"1.3.6.1.2.1.10.7.5", "1.3.6.1.2.1.10.7.9", "1.3.6.1.2.1.10.7.10", "1.3.6.1.2.1.10.7.11"})
        EXPECT_TRUE(reader().walk(parse_oid(table)).empty()) << table;
}

// Rows come and go with the switch: the very first request after a change
// sees it, a GET as well as a walk.
TEST_F(PortStats, PulledTransceiverIsGoneAtTheNextRequest) {
    const Oid temperature = child(kTransceiverEntry, {2});
    ASSERT_EQ(must_get(cell(kTransceiverEntry, 2, kOptic)).bytes, "38C");

    sw().set_transceiver(0, 24, false);
    Response r = reader().get({cell(kTransceiverEntry, 2, kOptic)});
    ASSERT_TRUE(r.answered);
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].type, kNoSuchInstance) << describe(r.varbinds[0]);
    EXPECT_EQ(row_indexes(reader().walk(temperature), temperature), std::vector<uint32_t>{kOptic2});

    // Plugged in again (with the optics' default readings).
    sw().set_transceiver(0, 24, true);
    EXPECT_EQ(must_get(cell(kTransceiverEntry, 2, kOptic)).bytes, "35C");
    EXPECT_EQ(row_indexes(reader().walk(temperature), temperature), (std::vector<uint32_t>{kOptic, kOptic2}));
}

}  // namespace
}  // namespace it
