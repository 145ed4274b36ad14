// Filter counters: rows for the filters in use and for the ports each is
// applied on, ingress and egress apart, counts that move with time and
// stop with the filter, and failures read as nothing.
#include <chrono>
#include <thread>

#include "fixture.hpp"
#include "tables/catalogue.hpp"

extern "C" {
#define FILTER_REMOVER(table) \
    void table##_removeEntry(int32_t i) { unit::rows().removed.push_back(#table " " + std::to_string(i)); }
#define FILTER_PAIR_REMOVER(table)                                                                          \
    void table##_removeEntry(int32_t i, int32_t p) {                                                        \
        unit::rows().removed.push_back(#table " " + std::to_string(i) + "." + std::to_string(p));            \
    }
FILTER_REMOVER(filterCounterInfoTable)
FILTER_REMOVER(filterCounterEgressInfoTable)
FILTER_PAIR_REMOVER(filterCounterValueTable)
FILTER_PAIR_REMOVER(filterCounterEgressValueTable)
#undef FILTER_PAIR_REMOVER
#undef FILTER_REMOVER
}

namespace unit {
namespace {

class FilterCountersTest : public SwitchTest {
protected:
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"ports": 28}],
                   "filters": {"ingress": [{"name": "block-telnet", "rule": "deny tcp any any eq 23",
                                            "ports": ["1/2", "2/1"], "pps": 1000, "packet_bytes": 100},
                                           {"name": "quiet", "ports": []}],
                               "egress": [{"name": "no-bcast", "ports": ["1/3"], "pps": 50}]}})";
    }
};

TEST_F(FilterCountersTest, RowsAreTheFiltersAndThePortsTheyAreAppliedOn) {
    const struct {
        const char *table;
        int (*init)(void *(*)(int32_t));
        std::vector<int32_t> rows;
    } infos[] = {{"ingress", init_index_filterCounterInfoTable, {1, 2}},
                 {"egress", init_index_filterCounterEgressInfoTable, {1}}};
    for (const auto &c : infos) {
        rows().clear();
        c.init(add_int_row);
        EXPECT_EQ(rows().ints, c.rows) << c.table;
    }
    const struct {
        const char *table;
        int (*init)(void *(*)(int32_t, int32_t));
        std::vector<std::string> rows;
    } values[] = {{"ingress", init_index_filterCounterValueTable, {"1.2", "1.65"}},
                  {"egress", init_index_filterCounterEgressValueTable, {"1.3"}}};
    for (const auto &c : values) {
        rows().clear();
        c.init(add_pair_row<int32_t>);
        EXPECT_EQ(rows().keys, c.rows) << c.table;
    }
    EXPECT_EQ(read_text(get_filterCounterInfoName, 1), "block-telnet");
    EXPECT_EQ(read_text(get_filterCounterInfoRule, 1), "deny tcp any any eq 23");
    EXPECT_EQ(read_text(get_filterCounterEgressInfoName, 1), "no-bcast");
    // Slots beyond the store and ports the filter is not on are no rows.
    EXPECT_EQ(read_text(get_filterCounterInfoName, 17), "");
    rows().clear();
    EXPECT_EQ(exists_entry_filterCounterValueTable(1, 3), 0);
    EXPECT_EQ(exists_entry_filterCounterValueTable(1, 513), 0);
    EXPECT_EQ(exists_entry_filterCounterEgressValueTable(1, 2), 0);
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"filterCounterValueTable 1.3", "filterCounterValueTable 1.513",
                                                       "filterCounterEgressValueTable 1.2"}));
}

TEST_F(FilterCountersTest, CountsMoveWithTimeAndGoWithTheirFilter) {
    const uint64_t first = get_filterCounterValuePackets(1, 2);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const uint64_t later = get_filterCounterValuePackets(1, 2);
    EXPECT_GT(later, first);
    EXPECT_EQ(get_filterCounterValueOctets(1, 2), get_filterCounterValuePackets(1, 2) * 100);
    EXPECT_EQ(get_filterCounterValuePackets(2, 2), 0u);  // not applied there
    sw().filter_remove(SW_FILTER_INGRESS, 0);
    EXPECT_EQ(get_filterCounterValuePackets(1, 2), 0u);
    rows().clear();
    EXPECT_EQ(exists_entry_filterCounterInfoTable(1), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"filterCounterInfoTable 1"});
    sw().fault_set("bcmd_get_filter_counter", -1, -1);
    EXPECT_EQ(get_filterCounterEgressValuePackets(1, 3), 0u);
}

}  // namespace
}  // namespace unit
