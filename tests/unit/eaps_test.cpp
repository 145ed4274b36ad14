// Ring protection domains: rows from 0, master/transit, the state word from
// the ring status block, and a domain that goes away between requests.
#include "fixture.hpp"
#include "swplatform/records_l2proto.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class EapsTest : public SwitchTest {
protected:
    std::string scenario() const override {
        return R"({"eaps": [{"id": 0, "name": "ring-A", "master": true, "state": 2},
                            {"id": 5, "name": "ring-B", "state": 4}]})";
    }
    static std::string name(int32_t id) { return read_text(get_eapsInfoName, id); }
};

TEST_F(EapsTest, ConfiguredDomainsAreTheRows) {
    EXPECT_EQ(init_index_eapsInfoTable(add_int_row), 1);  // 1: rows were added
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{0, 5}));
    EXPECT_EQ(name(0), "ring-A");
    EXPECT_EQ(get_eapsInfoMode(0), 1);
    EXPECT_EQ(get_eapsInfoMode(5), 2);
    for (int32_t id : {6, -1, 64}) EXPECT_EQ(exists_entry_eapsInfoTable(id), 0) << id;

    // The state is the platform's big-endian word at offset 4 of the entry.
    sw().eaps_set_state(5, 0x01020304);
    EXPECT_EQ(get_eapsInfoState(5), 0x01020304);
    const uint8_t *entry = status_get_eaps() + 5 * swp::eaps_status::kEntrySize;
    EXPECT_EQ(entry[4], 0x01);
    EXPECT_EQ(entry[7], 0x04);

    sw().eaps_delete(0);
    sw().eaps_delete(5);
    rows().clear();
    EXPECT_EQ(init_index_eapsInfoTable(add_int_row), 0);
    EXPECT_TRUE(rows().ints.empty());
}

TEST_F(EapsTest, DeletedDomainReadsEmptyUntilItsRowGoes) {
    sw().eaps_delete(5);
    EXPECT_EQ(name(5), "");
    EXPECT_EQ(get_eapsInfoMode(5), 0);
    EXPECT_EQ(get_eapsInfoState(5), 0);
    // The check answers only; the row is left for the population to drop.
    EXPECT_EQ(exists_entry_eapsInfoTable(5), 0);
    EXPECT_TRUE(rows().removed.empty());
    // A failing platform reads the same as a missing domain.
    sw().fault_set("verify_created_eaps_domain", -1, -1);
    EXPECT_EQ(get_eapsInfoMode(0), 0);
    EXPECT_EQ(name(0), "");
}

}  // namespace
}  // namespace unit
