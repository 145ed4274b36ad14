// Fault injection and the call journal.
#include <set>
#include <thread>

#include "support.hpp"

namespace {

using simtest::SwitchTest;

TEST_F(SwitchTest, FaultsFireOnceNTimesOrUntilCleared) {
    int speed = -99;
    sw_->fault_set("cfg_get_port_speed", -7, 2);
    EXPECT_EQ(cfg_get_port_speed(0, 0, &speed), -7);
    EXPECT_EQ(cfg_get_port_speed(0, 0, &speed), -7);
    EXPECT_EQ(speed, -99) << "a failed call leaves its out arguments alone";
    EXPECT_EQ(cfg_get_port_speed(0, 0, &speed), 0);
    EXPECT_EQ(speed, 0);
    EXPECT_TRUE(sw_->faults().empty());

    sw_->fault_set("cfg_set_port_speed", -3, -1);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(cfg_set_port_speed(0, 0, 100), -3);
    ASSERT_EQ(cfg_get_port_speed(0, 0, &speed), 0);
    EXPECT_EQ(speed, 0) << "a failed setter changes nothing";
    ASSERT_EQ(sw_->faults().size(), 1u);
    EXPECT_EQ(sw_->faults()[0].remaining, -1);
    sw_->fault_clear("cfg_set_port_speed");
    EXPECT_EQ(cfg_set_port_speed(0, 0, 100), 0);

    sw_->fault_set("lock_read", -11, 1);
    sw_->fault_set("cfg_vlan_exists", -12, -1);
    EXPECT_EQ(lock_read(cfg_lock_table[0]), -11);
    EXPECT_EQ(lock_free(cfg_lock_table[0]), -1) << "the failed lock_read took nothing";
    EXPECT_EQ(cfg_vlan_exists(1), -12);
    EXPECT_EQ(cfg_vlan_is_active(1), 1) << "other calls are unaffected";
    sw_->fault_clear();
    EXPECT_EQ(cfg_vlan_exists(1), 1);

    // A forced failure of lock_free still frees the lock: the switch's own
    // side can take it for writing afterwards.
    sw_->fault_set("lock_free", -13, 1);
    ASSERT_EQ(lock_read(cfg_lock_table[2]), 0);
    EXPECT_EQ(lock_free(cfg_lock_table[2]), -13);
    sw_->set_hostname("after-a-failed-free");
    EXPECT_EQ(sw_->hostname(), "after-a-failed-free");

    EXPECT_THROW(sw_->fault_set("cfg_no_such_call", -1, 1), swsim::Error);
    EXPECT_THROW(sw_->fault_set("get_status", -1, 1), swsim::Error) << "not an int call";
    EXPECT_THROW(sw_->fault_set("cfg_vlan_exists", 0, 1), swsim::Error);
    EXPECT_THROW(sw_->fault_set("cfg_vlan_exists", -1, 0), swsim::Error);
}

TEST_F(SwitchTest, TheJournalRecordsCallsWithTheirArguments) {
    int speed;
    cfg_get_port_speed(0, 0, &speed);
    EXPECT_TRUE(sw_->journal().empty()) << "off by default";

    sw_->journal_enable(true);
    cfg_set_port_speed(0, 3, 100);
    cfg_get_port_speed(0, 3, &speed);
    cfg_set_hostname("say \"hi\"");
    lock_read(cfg_lock_table[1]);
    lock_free(cfg_lock_table[1]);
    const int32_t query[7] = {64, -33, 0, 0, 0, 0, 0};
    int count;
    uint8_t *entries = nullptr;
    cfg_get_mac_address_table(&count, &entries, query);
    std::free(entries);
    sys_clock_set(1700000000);
    get_status();

    const std::vector<std::pair<std::string, std::string>> expected = {
        {"cfg_set_port_speed", "0,3,100"},
        {"cfg_get_port_speed", "0,3"},
        {"cfg_set_hostname", R"("say \"hi\"")"},
        {"lock_read", "1"},
        {"lock_free", "1"},
        {"cfg_get_mac_address_table", "64,-33,0,0,0,0,0"},
        {"sys_clock_set", "1700000000"},
        {"get_status", ""},
    };
    const auto journal = sw_->journal();
    std::vector<std::pair<std::string, std::string>> seen;
    for (const auto &e : journal) seen.emplace_back(e.call, e.args);
    EXPECT_EQ(seen, expected);
    for (size_t i = 1; i < journal.size(); ++i) EXPECT_EQ(journal[i].seq, journal[i - 1].seq + 1);

    sw_->journal_clear();
    EXPECT_TRUE(sw_->journal().empty());
    sw_->journal_enable(false);
    cfg_vlan_exists(1);
    EXPECT_TRUE(sw_->journal().empty());
}

// Four threads at once: the fault fires exactly its armed number of times and
// every call is journalled whole, once.
TEST_F(SwitchTest, FaultsAndJournalAreExactAcrossThreads) {
    sw_->fault_set("cfg_vlan_exists", -4, 100);
    sw_->journal_enable(true);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &failures] {
            for (int i = 0; i < 250; ++i) failures += cfg_vlan_exists(t * 1000 + i + 1) == -4;
        });
    for (auto &t : threads) t.join();
    EXPECT_EQ(failures, 100);
    auto journal = sw_->journal();
    ASSERT_EQ(journal.size(), 1000u);
    std::set<std::string> args;
    for (const auto &e : journal) {
        EXPECT_EQ(e.call, "cfg_vlan_exists");
        args.insert(e.args);
    }
    EXPECT_EQ(args.size(), 1000u);
}

}  // namespace
