// LLDP of the simulated switch: the neighbour table and its hash, what is
// refused, the counters, lldpd's JSON in both of its formats, the scenario
// fields, swctl's verbs and damaged neighbour tables.
#include <algorithm>
#include <cstring>
#include <functional>
#include <thread>

#include "raw_state.hpp"
#include "support.hpp"
#include "swplatform/records_lldp.hpp"

namespace {

using simtest::RawState;
using simtest::SwitchTest;
using simtest::TempDir;
using swsim::Switch;
using Neighbour = Switch::LldpNeighbour;
constexpr int kMgmt = Switch::kLldpMgmtUnit;

Neighbour neighbour(const std::string &chassis, const std::string &port) {
    Neighbour n;
    n.chassis_subtype = 7;
    n.chassis_id = chassis;
    n.port_id = port;
    return n;
}

std::string hash() {
    uint8_t h[SW_LLDP_HASH_SIZE] = {};
    EXPECT_EQ(cfg_lldp_status_get_hash(h), 0);
    return std::string(reinterpret_cast<char *>(h), sizeof h);
}

uint32_t counter(int unit0, int port0, swp::lldp_counters::Word w) {
    uint8_t record[SW_LLDP_COUNTERS_SIZE] = {};
    EXPECT_EQ(unit0 == kMgmt ? cfg_get_lldp_mgmt_status_intf_counters(record)
                             : cfg_get_lldp_status_intf_counters(unit0, port0, record),
              0);
    return swp::load_word(record, w);
}

TEST_F(SwitchTest, TheHashMovesWithEveryChangeOfTheNeighboursAndOnlyThen) {
    const std::string at_boot = hash();
    EXPECT_EQ(at_boot.back(), '\0');
    const int32_t a = sw_->lldp_hear(0, 0, neighbour("a", "p1"));
    const std::string heard = hash();
    EXPECT_NE(heard, at_boot);
    // Heard again, the same: no change, same index, same time mark.
    const uint32_t mark = sw_->lldp_neighbours(0, 0).at(0).time_mark;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(sw_->lldp_hear(0, 0, neighbour("a", "p1")), a);
    EXPECT_EQ(hash(), heard);
    EXPECT_EQ(sw_->lldp_neighbours(0, 0).at(0).time_mark, mark);
    // Heard with a new name: updated in place, the time mark moves.
    Neighbour renamed = neighbour("a", "p1");
    renamed.sys_name = "renamed";
    EXPECT_EQ(sw_->lldp_hear(0, 0, renamed), a);
    EXPECT_NE(hash(), heard);
    EXPECT_GT(sw_->lldp_neighbours(0, 0).at(0).time_mark, mark);
    // Each change, on any port, moves it; a refused one does not.
    std::vector<std::string> seen = {at_boot, heard, hash()};
    const int32_t b = sw_->lldp_hear(kMgmt, 0, neighbour("b", "p2"));
    seen.push_back(hash());
    sw_->lldp_change(kMgmt, 0, b, neighbour("b", "p3"));
    seen.push_back(hash());
    EXPECT_THROW(sw_->lldp_remove(0, 0, b), swsim::Error);  // not on that port
    EXPECT_EQ(hash(), seen.back());
    sw_->lldp_remove(0, 0, a);
    seen.push_back(hash());
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(std::unique(seen.begin(), seen.end()), seen.end());
    EXPECT_EQ(b, a + 1);  // remote indexes count on
    // A switch built anew, back at no change, has another hash.
    boot(simtest::kSmallSwitch);
    EXPECT_NE(hash(), at_boot);
}

TEST_F(SwitchTest, NeighboursAreCheckedBeforeTheyAreHeard) {
    struct Case {
        std::function<void(Neighbour &)> damage;
        std::string complaint;
    };
    const Case cases[] = {
        {[](Neighbour &n) { n.chassis_subtype = 8; }, "chassis ID subtype 8 is not 1..7"},
        {[](Neighbour &n) { n.chassis_subtype = 4; }, "a MAC chassis ID (subtype 4) has 6 octets"},
        {[](Neighbour &n) { n.chassis_id.clear(); }, "the chassis ID has 0 octets (1..255)"},
        {[](Neighbour &n) { n.port_id = std::string(256, 'p'); }, "the port ID has 256 octets (1..255)"},
        {[](Neighbour &n) { n.sys_desc = std::string(256, 'd'); }, "the system description has 256 octets (0..255)"},
        {[](Neighbour &n) { n.sys_name = std::string("a\0b", 3); }, "texts hold no zero octet"},
        {[](Neighbour &n) { n.has_mgmt = true, n.mgmt_addr = std::string(32, '\1'); },
         "the management address has 32 octets (1..31)"},
        {[](Neighbour &n) { n.unknown_tlv_type = 8; }, "unknown TLV type 8 is not 9..127"},
        {[](Neighbour &n) { n.unknown_tlv_info = "x"; }, "the unknown TLV's information has 1 octets (0..0)"},
        {[](Neighbour &n) { n.rx_interval_s = 0; }, "the neighbour's interval 0 is not 1..3600"},
    };
    for (const Case &c : cases) {
        Neighbour n = neighbour("c", "p");
        c.damage(n);
        EXPECT_EQ(simtest::complaint([&] { sw_->lldp_hear(0, 0, n); }), c.complaint);
    }
    EXPECT_EQ(simtest::complaint([&] { sw_->lldp_hear(0, 8, neighbour("c", "p")); }), "no port 1/9");
    EXPECT_EQ(simtest::complaint([&] { sw_->lldp_change(kMgmt, 0, 7, neighbour("c", "p")); }),
              "the management port has no neighbour 7");
    const int32_t one = sw_->lldp_hear(0, 0, neighbour("c", "p"));
    const int32_t two = sw_->lldp_hear(0, 0, neighbour("c", "q"));
    EXPECT_EQ(simtest::complaint([&] { sw_->lldp_change(0, 0, two, neighbour("c", "p")); }),
              "neighbour " + std::to_string(one) + " of port 1/1 has these chassis and port IDs already");
    EXPECT_EQ(sw_->lldp_neighbours(0, 0).size(), 2u);  // nothing refused was heard
}

TEST_F(SwitchTest, AFullTableDropsTheNextNeighbour) {
    for (int i = 0; i < swsim::layout::kLldpNeighbours; ++i) sw_->lldp_hear(i % 2, i / 2 % 8, neighbour(std::to_string(i), "p"));
    EXPECT_EQ(simtest::complaint([&] { sw_->lldp_hear(kMgmt, 0, neighbour("one more", "p")); }),
              "the neighbour table is full (2048 neighbours): dropped");
    uint8_t stats[SW_LLDP_GLOBAL_STATS_SIZE];
    ASSERT_EQ(cfg_get_lldp_global_stats_info(stats), 0);
    EXPECT_EQ(swp::load_word(stats, swp::lldp_global_stats::kDrops), 1u);
    EXPECT_EQ(swp::load_word(stats, swp::lldp_global_stats::kInserts), 2048u);
    // Room again after one goes.
    sw_->lldp_remove(1, 7, 0);
    EXPECT_NO_THROW(sw_->lldp_hear(kMgmt, 0, neighbour("one more", "p")));
}

TEST_F(SwitchTest, FramesReceivedCountOnWithEachNeighboursInterval) {
    namespace w = swp::lldp_counters;
    Neighbour fast = neighbour("fast", "p");
    fast.rx_interval_s = 1;
    fast.unknown_tlv_type = 127;
    fast.unknown_tlv_info = "abc";
    sw_->lldp_hear(0, 2, fast);
    sw_->lldp_hear(0, 2, neighbour("slow", "p"));
    EXPECT_EQ(counter(0, 2, w::kRxFramesTotal), 2u);  // the frames they were heard by
    EXPECT_EQ(counter(0, 2, w::kRxTlvsUnrecognized), 1u);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_EQ(counter(0, 2, w::kRxFramesTotal), 3u);
    EXPECT_EQ(counter(0, 2, w::kRxTlvsUnrecognized), 2u);
    // What a neighbour that goes had sent stays counted; ageing counts.
    sw_->lldp_remove(0, 2, 0, true);
    EXPECT_EQ(counter(0, 2, w::kRxFramesTotal), 3u);
    EXPECT_EQ(counter(0, 2, w::kRxAgeouts), 2u);
    EXPECT_EQ(counter(0, 3, w::kRxFramesTotal), 0u);
    EXPECT_EQ(counter(kMgmt, 0, w::kTxFramesTotal), 0u);  // 30 s to the first
    // The platform refuses what LLDP has no room for.
    EXPECT_EQ(cfg_set_lldp_msgTxInterval(4), -1);
    EXPECT_EQ(cfg_set_lldp_port_adminStatus(0, 0, 5), -1);
    EXPECT_EQ(cfg_set_lldp_port_sysCapEnable(0, 0, 2), -1);
    EXPECT_EQ(cfg_get_lldp_status_intf_counters(0, 8, nullptr), -1);
    uint8_t *records = nullptr;
    int count = 0;
    EXPECT_EQ(cfg_get_lldp_neighbors_info(2, 0, &records, &count), -1);  // no unit 3
    EXPECT_EQ(cfg_get_lldp_neighbors_info(0, 3, &records, &count), 0);
    EXPECT_EQ(records, nullptr);
    EXPECT_EQ(count, 0);
}

// ---- lldpd's JSON ------------------------------------------------------------------------------

// lldpcli -f json: lists of one dropped, interfaces and chassis keyed by name.
const char *kJson = R"({"lldp":{"interface":[
 {"vethA":{"via":"LLDP","rid":"2","chassis":{"nodeB":{"id":{"type":"local","value":"node-b-chassis"},
   "descr":"Node B, a test peer","mgmt-ip":"192.0.2.2","mgmt-iface":"5",
   "capability":[{"type":"Bridge","enabled":false},{"type":"Router","enabled":true}]}},
   "port":{"id":{"type":"ifname","value":"vethB"},"descr":"vethB","ttl":"120"},
   "unknown-tlvs":{"unknown-tlv":{"oui":"33,44,55","subtype":"44","len":"3","value":"45,46,47"}}}},
 {"eth1":{"chassis":{"id":{"type":"mac","value":"52:54:00:12:34:56"},"mgmt-ip":["fe80::1","2001:db8::1"]},
   "port":{"id":{"type":"mac","value":"52:54:00:12:34:57"},"ttl":"20"}}}]}})";
// lldpcli -f json0: every list kept, names inside.
const char *kJson0 = R"({"lldp":[{"interface":[{"name":"vethA","via":"LLDP","rid":"2",
 "chassis":[{"id":[{"type":"local","value":"node-b-chassis"}],"name":[{"value":"nodeB"}],
   "descr":[{"value":"Node B, a test peer"}],"mgmt-ip":[{"value":"192.0.2.2"}],"mgmt-iface":[{"value":"5"}],
   "capability":[{"type":"Bridge","enabled":false},{"type":"Router","enabled":true}]}],
 "port":[{"id":[{"type":"ifname","value":"vethB"}],"descr":[{"value":"vethB"}],"ttl":[{"value":"120"}]}],
 "unknown-tlvs":[{"unknown-tlv":[{"oui":"33,44,55","subtype":"44","len":"3","value":"45,46,47"}]}]}]}]})";

void expect_node_b(const Neighbour &n) {
    EXPECT_EQ(n.chassis_subtype, 7);
    EXPECT_EQ(n.chassis_id, "node-b-chassis");
    EXPECT_EQ(n.port_subtype, 5);
    EXPECT_EQ(n.port_id, "vethB");
    EXPECT_EQ(n.port_desc, "vethB");
    EXPECT_EQ(n.sys_name, "nodeB");
    EXPECT_EQ(n.sys_desc, "Node B, a test peer");
    EXPECT_EQ(n.caps_supported, 0x14);  // bridge, router
    EXPECT_EQ(n.caps_enabled, 0x10);
    EXPECT_TRUE(n.has_mgmt);
    EXPECT_EQ(n.mgmt_subtype, 1);
    EXPECT_EQ(n.mgmt_addr, std::string("\xc0\x00\x02\x02", 4));
    EXPECT_EQ(n.mgmt_if_subtype, 2);
    EXPECT_EQ(n.mgmt_if_id, 5);
    EXPECT_EQ(n.unknown_tlv_type, 127);
    EXPECT_EQ(n.unknown_tlv_info, "\x33\x44\x55\x2c\x45\x46\x47");
    EXPECT_EQ(n.rx_interval_s, 30);
}

TEST_F(SwitchTest, LldpdNeighboursInBothFormatsLandOnTheirPorts) {
    EXPECT_EQ(sw_->lldp_import(kJson, {{"vethA", 0, 2}, {"eth1", 1, 3}}), 2);
    ASSERT_EQ(sw_->lldp_neighbours(0, 2).size(), 1u);
    expect_node_b(sw_->lldp_neighbours(0, 2)[0]);
    const Neighbour mac = sw_->lldp_neighbours(1, 3).at(0);
    EXPECT_EQ(mac.chassis_subtype, 4);
    EXPECT_EQ(mac.chassis_id, std::string("\x52\x54\x00\x12\x34\x56", 6));
    EXPECT_EQ(mac.port_subtype, 3);
    EXPECT_EQ(mac.sys_name, "");
    EXPECT_EQ(mac.mgmt_subtype, 2);  // the first IPv6 address, none IPv4
    EXPECT_EQ(mac.mgmt_addr.size(), 16u);
    EXPECT_EQ(mac.mgmt_if_subtype, 1);  // no interface given
    EXPECT_EQ(mac.rx_interval_s, 5);

    // json0 onto the management port, every interface there.
    EXPECT_EQ(sw_->lldp_import(kJson0, {{"", kMgmt, 0}}), 1);
    expect_node_b(sw_->lldp_neighbours(kMgmt, 0).at(0));
    // The same again: heard again, nothing new.
    EXPECT_EQ(sw_->lldp_import(kJson0, {{"", kMgmt, 0}}), 1);
    EXPECT_EQ(sw_->lldp_neighbours(kMgmt, 0).size(), 1u);
    // lldpd seeing nobody.
    EXPECT_EQ(sw_->lldp_import(R"({"lldp": {}})", {{"", 0, 0}}), 0);
}

TEST_F(SwitchTest, ImportRefusesWhatItCannotPlaceAndHearsNothingThen) {
    const std::pair<std::string, std::string> cases[] = {
        {"not json", "not JSON: "},
        {R"({"neighbors": []})", "no \"lldp\" object: not what lldpcli -f json prints"},
        {R"({"lldp":{"interface":{"vethZ":{"chassis":{"id":{"type":"mac","value":"x"}},"port":{}}}}})",
         "interface vethZ: chassis id: 'x' is not a MAC address"},
        {R"({"lldp":{"interface":{"vethZ":{"chassis":{"id":{"type":"odd","value":"x"}}}}}})",
         "interface vethZ: chassis id: lldpd's identifier kind 'odd' is not known"},
    };
    for (const auto &[text, complaint] : cases) {
        const std::string got = simtest::complaint([&] { sw_->lldp_import(text, {{"", 0, 0}}); });
        EXPECT_EQ(got.substr(0, complaint.size()), complaint);
    }
    // eth1 is mapped nowhere: vethA is not heard either.
    EXPECT_EQ(simtest::complaint([&] { sw_->lldp_import(kJson, {{"vethA", 0, 2}}); }),
              "lldpd's interface eth1 is mapped to no port");
    EXPECT_TRUE(sw_->lldp_neighbours(0, 2).empty());
}

// ---- scenario, swctl and damage -------------------------------------------------------------

TEST_F(TempDir, ScenarioNeighboursAndSettings) {
    swsim::create_state_from_json(state_, R"({"units": [{"ports": 4}],
      "lldp": {"tx_interval": 60, "management_address": "mac",
               "ports": [{"select": "1/2", "admin": "disabled", "notifications": true, "tlvs": ["sys_name"]},
                         {"select": "mgmt", "admin": "tx_only"}],
               "neighbours": [{"generate": 3, "ports": ["1/1", "mgmt"]},
                              {"port": "1/4", "chassis_id": "00:1b:21:aa:00:01", "port_id": "x",
                               "management_address": "2001:db8::7"}]}})");
    Switch sw(state_);
    ASSERT_EQ(sw.lldp_neighbours(0, 0).size(), 3u);
    EXPECT_EQ(sw.lldp_neighbours(kMgmt, 0).size(), 3u);
    EXPECT_TRUE(sw.lldp_neighbours(0, 0)[0].has_mgmt);
    EXPECT_FALSE(sw.lldp_neighbours(0, 0)[1].has_mgmt);
    EXPECT_EQ(sw.lldp_neighbours(0, 0)[2].unknown_tlv_type, 100);
    const Neighbour given = sw.lldp_neighbours(0, 3).at(0);
    EXPECT_EQ(given.chassis_subtype, 4);
    EXPECT_EQ(given.mgmt_subtype, 2);

    setenv("SWSIM_STATE", state_.c_str(), 1);
    ASSERT_EQ(swsim::platform_reopen(), 0);
    EXPECT_EQ(cfg_get_lldp_msgTxInterval(), 60);
    uint8_t intf[SW_LLDP_INTF_SIZE];
    ASSERT_EQ(cfg_get_lldp_intf_info(0, 1, intf), 0);
    EXPECT_EQ(intf[swp::lldp_intf::kAdminStatus.offset], SW_LLDP_DISABLED);
    EXPECT_EQ(intf[swp::lldp_intf::kNotify.offset], 1);
    EXPECT_EQ(swp::load_be32(intf + swp::lldp_intf::kTlvs.offset), SW_LLDP_TLV_SYS_NAME);
    ASSERT_EQ(cfg_get_lldp_intf_mgmt_info(intf), 0);
    EXPECT_EQ(intf[swp::lldp_intf::kAdminStatus.offset], SW_LLDP_TX_ONLY);
    uint8_t global[SW_LLDP_GLOBAL_SIZE];
    ASSERT_EQ(cfg_get_lldp_global_info(global), 0);
    EXPECT_EQ(global[swp::lldp_global::kMgmtIsMac.offset], 1);

    const std::pair<const char *, const char *> refused[] = {
        {R"({"lldp": {"tx_interval": 4}})", "lldp.tx_interval: must be 5..32768"},
        {R"({"lldp": {"ports": [{"select": "T1"}]}})", "lldp.ports[0].select: "},
        {R"({"lldp": {"ports": [{"select": "1/1", "admin": "on"}]}})",
         "lldp.ports[0].admin: must be tx_only, rx_only, tx_and_rx or disabled"},
        {R"({"lldp": {"neighbours": [{"port": "1/1", "chassis_id": "a"}]}})", "lldp.neighbours[0]: needs a chassis_id and a port_id"},
        {R"({"lldp": {"neighbours": [{"port": "1/1", "chassis_id": "a", "port_id": "b", "unknown_tlv": {"type": 5}}]}})",
         "lldp.neighbours[0].unknown_tlv.type: must be 9..127"},
        {R"({"lldp": {"management_oid": [3, 1]}})", "lldp.management_oid: an OID starts with 0, 1 or 2"},
        {R"({"lldp": {"neighbours": [{"generate": 65, "ports": "all"}]}})", "lldp.neighbours[0].generate: must be 1..64"},
    };
    for (const auto &[json, complaint] : refused) {
        const std::string got = simtest::complaint([&] { swsim::create_state_from_json(state_, json); });
        EXPECT_EQ(got.substr(0, std::string("<inline>: ").size() + std::strlen(complaint)),
                  std::string("<inline>: ") + complaint)
            << json;
    }
}

TEST_F(TempDir, SwctlAddsChangesShowsAndRemovesNeighbours) {
    ok("create " SCENARIO_DIR "/default.json");
    auto r = swctl("lldp add 2/5 core-7 0x4142 --chassis-subtype 7 --sys-name core --mgmt 10.1.2.3 --caps bridge,router "
                   "--enabled router --unknown-tlv 100:0a0b");
    ASSERT_EQ(r.code, 0) << r.err;
    const std::string index = r.out.substr(std::string("remote index ").size(), r.out.size() - 14);
    ok("lldp change 2/5 " + index + " --sys-name edge --mgmt none");
    r = swctl("lldp show 2/5");
    EXPECT_NE(r.out.find("7:core-7"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("5:AB"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("edge"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("bridge,router/router 100:0a0b"), std::string::npos) << r.out;
    Switch sw(state_);
    EXPECT_FALSE(sw.lldp_neighbours(1, 4).at(0).has_mgmt);
    EXPECT_EQ(sw.lldp_neighbours(kMgmt, 0).size(), 1u);  // the scenario's
    fails("lldp add 2/5 00:1b:21:aa:00:0 x --chassis-subtype 4", "'00:1b:21:aa:00:0' is not a MAC address (aa:bb:cc:dd:ee:ff)");
    fails("lldp change 2/5 999", "port 2/5 has no neighbour 999");
    fails("lldp remove mgmt 0", "'0' is not a remote index (1..2147483647)");
    fails("lldp add 2/5 a b --unknown-tlv 100", "'100' is not TYPE:HEX");
    ok("lldp remove mgmt all --aged");
    EXPECT_TRUE(sw.lldp_neighbours(kMgmt, 0).empty());
    fails("lldp import /nonexistent.json 1/1", "/nonexistent.json: cannot be read");
}

TEST_F(TempDir, DamagedNeighbourTablesAreRefused) {
    const std::pair<const char *, std::function<void(RawState &)>> damages[] = {
        {"hardware section: LLDP neighbour 1's port is 600 (LLDP ports are 1 .. 513)",
         [](RawState &r) { r.hw().lldp.owner[1] = 600; }},
        {"hardware section: the LLDP neighbour count is 9 (1 held)", [](RawState &r) { r.hw().lldp.count = 9; }},
        {"hardware section: LLDP neighbour 0 has a length beyond its field",
         [](RawState &r) { r.hw().lldp.neighbours[0].unknown_tlv_len = 512; }},
        {"hardware section: LLDP neighbour 0 has a text that runs past its field",
         [](RawState &r) { std::memset(r.hw().lldp.neighbours[0].sys_name, 'x', 256); }},
        {"image section: the LLDP management OID has 200 octets (at most 128)",
         [](RawState &r) { r.cfg().lldp.mgmt_oid_len = 200; }},
    };
    for (const auto &[problem, apply] : damages) {
        swsim::create_state_from_json(state_, R"({"lldp": {"neighbours": [{"port": "1/1", "chassis_id": "a", "port_id": "b"}]}})");
        {
            RawState raw(state_);
            ASSERT_TRUE(raw.ok());
            apply(raw);
        }
        EXPECT_EQ(simtest::complaint([&] { Switch sw(state_); }), state_ + ": damaged " + problem);
    }
}

}  // namespace
