// The trap service: destinations kept by the platform calls, notifications
// received as real datagrams and read back field by field in both versions,
// link changes from outside, the callbacks an agent registers, destinations
// that cannot be reached, and the swctl verbs.
#include "raw_state.hpp"
#include "support.hpp"
#include "trap_receiver.hpp"

namespace {

using simtest::Oid;
using simtest::RawState;
using simtest::SwitchTest;
using simtest::TempDir;
using simtest::Trap;
using simtest::TrapReceiver;

const Oid kEquipment = {1, 3, 6, 1, 4, 1, 99999, 1, 1};  // the scenario's sysObjectID
const Oid kSnmpTraps = {1, 3, 6, 1, 6, 3, 1, 1, 5};
Oid with(Oid base, std::initializer_list<uint32_t> tail) {
    base.insert(base.end(), tail);
    return base;
}
Oid if_column(uint32_t column, uint32_t ifindex) { return {1, 3, 6, 1, 2, 1, 2, 2, 1, column, ifindex}; }

// A variable as (OID, integer) for comparisons.
std::vector<std::pair<Oid, int64_t>> integers(const Trap &t) {
    std::vector<std::pair<Oid, int64_t>> out;
    for (const auto &[oid, value] : t.variables) out.emplace_back(oid, value.integer());
    return out;
}

// Two destinations on loopback, one per version, sharing the switch's trap
// port.
class TrapTest : public SwitchTest {
protected:
    void SetUp() override {
        SwitchTest::SetUp();
        v1_ = std::make_unique<TrapReceiver>("127.0.0.1");
        v2_ = std::make_unique<TrapReceiver>("127.0.0.2", v1_->port());
        sw_->set_trap_port(v1_->port());
        sw_->trap_add("127.0.0.1", "old-nms", SW_TRAP_V1);
        sw_->trap_add("127.0.0.2", "nms", SW_TRAP_V2C);
    }
    void TearDown() override {
        register_trap(nullptr, nullptr);
        SwitchTest::TearDown();
    }
    // The one notification each destination got.
    std::pair<Trap, Trap> both() {
        auto a = v1_->next_trap(), b = v2_->next_trap();
        if (!a || !b) throw std::runtime_error("a destination got nothing");
        return {*a, *b};
    }
    std::unique_ptr<TrapReceiver> v1_, v2_;
};

TEST_F(SwitchTest, DestinationsAreKeptAndRefusedByThePlatformCalls) {
    ASSERT_EQ(cfg_add_snmp_trap_host("192.0.2.10", "", SW_TRAP_V1), 0);
    ASSERT_EQ(cfg_add_snmp_trap_host("2001:db8::7", "six", SW_TRAP_V2C), 0);
    // Refusals: each leaves the table as it was.
    const std::string long_community(SW_TRAP_COMMUNITY_SIZE, 'c');
    struct Refused {
        const char *addr;
        const char *community;
        int version;
    } const refused[] = {
        {"192.0.2.10", "x", 1},     // listed already
        {"192.0.2.256", "x", 1},    // not an address
        {"", "x", 1},               {nullptr, "x", 1},
        {"192.0.2.11", nullptr, 1}, {"192.0.2.11", long_community.c_str(), 1},
        {"192.0.2.11", "x", 0},     {"192.0.2.11", "x", 3},
    };
    for (const Refused &r : refused)
        EXPECT_EQ(cfg_add_snmp_trap_host(r.addr, r.community, r.version), -1) << (r.addr ? r.addr : "NULL");
    ASSERT_EQ(sw_->traps().destinations.size(), 2u);

    // Slots in order; a free slot reads as no address and prints empty.
    char text[46];
    sw_ip_addr_t addr;
    ASSERT_EQ(cfg_get_snmp_trap_host(0, &addr), 0);
    ASSERT_EQ(ip_addr_to_str(&addr, text, sizeof text), 0);
    EXPECT_STREQ(text, "192.0.2.10");
    ASSERT_EQ(cfg_get_snmp_trap_host(1, &addr), 0);
    ASSERT_EQ(ip_addr_to_str(&addr, text, sizeof text), 0);
    EXPECT_STREQ(text, "2001:db8::7");
    EXPECT_EQ(ip_addr_to_str(&addr, text, 11), -1) << "the buffer is too small";
    ASSERT_EQ(cfg_get_snmp_trap_host(4, &addr), 0);
    EXPECT_EQ(addr.family, SW_ADDR_NONE);
    ASSERT_EQ(ip_addr_to_str(&addr, text, sizeof text), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(cfg_get_snmp_trap_host(5, &addr), -1);
    EXPECT_EQ(cfg_get_snmp_trap_host(-1, &addr), -1);
    addr.family = 5;
    EXPECT_EQ(ip_addr_to_str(&addr, text, sizeof text), -1);

    // Community and version by address text.
    EXPECT_STREQ(cfg_get_snmp_trap_host_community("192.0.2.10"), "");
    EXPECT_EQ(cfg_set_snmp_trap_host_community("192.0.2.10", "ops"), 0);
    EXPECT_STREQ(cfg_get_snmp_trap_host_community("192.0.2.10"), "ops");
    EXPECT_EQ(cfg_set_snmp_trap_host_community("192.0.2.10", long_community.c_str()), -1);
    EXPECT_EQ(cfg_get_snmp_trap_host_community("192.0.2.99"), nullptr);
    EXPECT_EQ(cfg_set_snmp_trap_host_community("192.0.2.99", "x"), -1);
    EXPECT_EQ(cfg_get_snmp_trap_host_version("192.0.2.10"), SW_TRAP_V1);
    EXPECT_EQ(cfg_set_snmp_trap_host_version("192.0.2.10", 2), 0);
    EXPECT_EQ(cfg_get_snmp_trap_host_version("192.0.2.10"), SW_TRAP_V2C);
    EXPECT_EQ(cfg_set_snmp_trap_host_version("192.0.2.10", 3), -1);
    EXPECT_EQ(cfg_get_snmp_trap_host_version("192.0.2.10"), SW_TRAP_V2C);
    EXPECT_EQ(cfg_get_snmp_trap_host_version("192.0.2.99"), -1);
    EXPECT_EQ(cfg_set_snmp_trap_host_version("192.0.2.99", 1), -1);

    // Five at most; a deleted slot is reused.
    for (const char *a : {"192.0.2.1", "192.0.2.2", "192.0.2.3"}) ASSERT_EQ(cfg_add_snmp_trap_host(a, "p", 2), 0);
    EXPECT_EQ(cfg_add_snmp_trap_host("192.0.2.4", "p", 2), -1);
    EXPECT_EQ(cfg_del_snmp_trap_host("192.0.2.99"), -1);
    EXPECT_EQ(cfg_del_snmp_trap_host("2001:db8:0::7"), 0) << "the address, not its spelling";
    EXPECT_EQ(cfg_add_snmp_trap_host("192.0.2.4", "p", 2), 0);
    ASSERT_EQ(cfg_get_snmp_trap_host(1, &addr), 0);
    ASSERT_EQ(ip_addr_to_str(&addr, text, sizeof text), 0);
    EXPECT_STREQ(text, "192.0.2.4");
}

TEST_F(TrapTest, LinkChangesFromOutsideSendLinkDownAndLinkUpInEitherVersion) {
    const uint32_t before = uptime_cs();
    sw_->set_link(0, 0, false);  // port 1/1, ifIndex 1
    auto [v1, v2] = both();
    // SNMPv1: the generic trap, the switch's sysObjectID as enterprise.
    EXPECT_EQ(v1.version, 0);
    EXPECT_EQ(v1.community, "old-nms");
    EXPECT_EQ(v1.pdu_type, 0xa4);
    EXPECT_EQ(v1.enterprise, kEquipment);
    EXPECT_EQ(v1.generic, 2);
    EXPECT_EQ(v1.specific, 0);
    EXPECT_EQ(v1.agent_addr.size(), 4u);
    EXPECT_GE(v1.timestamp, before);
    EXPECT_LE(v1.timestamp, uptime_cs());
    // SNMPv2c: sysUpTime, snmpTrapOID, then the same variables.
    EXPECT_EQ(v2.version, 1);
    EXPECT_EQ(v2.community, "nms");
    EXPECT_EQ(v2.pdu_type, 0xa7);
    EXPECT_EQ(v2.trap_oid, with(kSnmpTraps, {3}));
    EXPECT_GE(v2.uptime, before);
    const std::vector<std::pair<Oid, int64_t>> down = {
        {if_column(1, 1), 1}, {if_column(7, 1), 1}, {if_column(8, 1), 2}};
    EXPECT_EQ(integers(v1), down);
    EXPECT_EQ(integers(v2), down);

    sw_->set_link(0, 0, true);
    std::tie(v1, v2) = both();
    EXPECT_EQ(v1.generic, 3);
    EXPECT_EQ(v2.trap_oid, with(kSnmpTraps, {4}));
    EXPECT_EQ(integers(v2).back(), std::make_pair(if_column(8, 1), int64_t(1)));
    EXPECT_NE(v2.request_id, 0);

    // A port taken down by the operator: admin and oper status both down.
    sw_->set_port_admin(1, 2, false);  // 2/3, ifIndex 67
    std::tie(v1, v2) = both();
    EXPECT_EQ(integers(v2), (std::vector<std::pair<Oid, int64_t>>{
                                {if_column(1, 67), 67}, {if_column(7, 67), 2}, {if_column(8, 67), 2}}));

    // Nothing else was sent; a change that moves no link sends nothing.
    sw_->set_hostname("quiet");
    EXPECT_TRUE(v1_->drain().empty());
    EXPECT_TRUE(v2_->drain().empty());
    EXPECT_EQ(sw_->traps().notifications, 3u);
    EXPECT_EQ(sw_->traps().destinations[0].sent, 3u);
    EXPECT_EQ(sw_->traps().destinations[1].sent, 3u);
}

TEST_F(TrapTest, ATrunkGoesDownWithItsLastMemberAndSwitchedOffInterfacesStayQuiet) {
    // Trunk 1 = 1/5 + 1/6: the first member down takes only the port down.
    sw_->set_link(0, 4, false);
    auto traps = v2_->drain();
    ASSERT_EQ(traps.size(), 1u);
    EXPECT_EQ(integers(traps[0])[0].second, 5);
    sw_->set_link(0, 5, false);
    traps = v2_->drain();
    ASSERT_EQ(traps.size(), 2u);
    EXPECT_EQ(integers(traps[0])[0].second, 6);
    EXPECT_EQ(integers(traps[1])[0].second, 513);
    EXPECT_EQ(traps[1].trap_oid, with(kSnmpTraps, {3}));

    // Notifications switched off for the trunk: its member sends, it does not.
    ASSERT_EQ(cfg_set_trap_enable_port(0, 512, 0), 0);
    sw_->set_link(0, 4, true);
    traps = v2_->drain();
    ASSERT_EQ(traps.size(), 1u);
    EXPECT_EQ(integers(traps[0])[0].second, 5);

    // A unit leaving the stack takes its ports away: they are no longer
    // interfaces and notify nothing (nor when they come back), but trunk 2,
    // whose member 2/5 was up, goes down and up with them.
    sw_->set_unit_present(1, false);
    sw_->set_unit_present(1, true);
    traps = v2_->drain();
    ASSERT_EQ(traps.size(), 2u);
    EXPECT_EQ(integers(traps[0]), (std::vector<std::pair<Oid, int64_t>>{
                                      {if_column(1, 514), 514}, {if_column(7, 514), 1}, {if_column(8, 514), 2}}));
    EXPECT_EQ(traps[1].trap_oid, with(kSnmpTraps, {4}));
    EXPECT_EQ(integers(traps[1])[0].second, 514);
}

TEST_F(TrapTest, AuthenticationFailureGoesThroughTheRegisteredCallback) {
    static std::vector<std::pair<int, std::string>> seen;
    seen.clear();
    // Without a callback the platform sends it itself.
    sw_->report_login_failure(SW_SERVICE_SSH, "198.51.100.7");
    auto [v1, v2] = both();
    EXPECT_EQ(v1.generic, 4);
    EXPECT_EQ(v1.enterprise, kEquipment);
    EXPECT_TRUE(v1.variables.empty());
    EXPECT_EQ(v2.trap_oid, with(kSnmpTraps, {5}));
    EXPECT_TRUE(v2.variables.empty());

    // A registered callback is given the event, and sends only if it
    // forwards it.
    ASSERT_EQ(register_trap([](int service, const char *peer) { seen.emplace_back(service, peer ? peer : "NULL"); },
                            nullptr),
              0);
    sw_->report_login_failure(SW_SERVICE_WEB, "");
    sw_->report_login_failure(SW_SERVICE_TELNET, "203.0.113.9");
    EXPECT_EQ(seen, (std::vector<std::pair<int, std::string>>{{SW_SERVICE_WEB, ""}, {SW_SERVICE_TELNET, "203.0.113.9"}}));
    EXPECT_TRUE(v2_->drain().empty());
    ASSERT_EQ(register_trap([](int service, const char *peer) { send_trap_snmp_authentication_fail(service, peer); },
                            nullptr),
              0);
    sw_->report_login_failure(SW_SERVICE_CONSOLE, "");
    EXPECT_EQ(v2_->drain().size(), 1u);
    EXPECT_EQ(v1_->drain().size(), 1u);

    EXPECT_EQ(simtest::complaint([&] { sw_->report_login_failure(9, ""); }),
              "service 9 (1 web, 2 telnet, 3 ssh, 4 console)");
}

TEST_F(TrapTest, RmonAlarmsCarryTheAlarmsVariables) {
    const Oid in_octets_3 = {1, 3, 6, 1, 2, 1, 2, 2, 1, 10, 3};
    struct Case {
        int rising;
        int32_t value, threshold;
        uint32_t trap, threshold_column;
    } const cases[] = {{1, 5000, 4000, 1, 7}, {0, -20, -5, 2, 8}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.rising);
        ASSERT_EQ(send_trap_rmon_alarm(17, c.rising, in_octets_3.data(), in_octets_3.size(), SW_RMON_DELTA, c.value,
                                       c.threshold),
                  2);
        auto [v1, v2] = both();
        EXPECT_EQ(v1.enterprise, (Oid{1, 3, 6, 1, 2, 1, 16}));
        EXPECT_EQ(v1.generic, 6);
        EXPECT_EQ(v1.specific, c.trap);
        EXPECT_EQ(v2.trap_oid, (Oid{1, 3, 6, 1, 2, 1, 16, 0, c.trap}));
        for (const Trap &t : {v1, v2}) {
            ASSERT_EQ(t.variables.size(), 5u);
            const Oid alarm = {1, 3, 6, 1, 2, 1, 16, 3, 1, 1};
            EXPECT_EQ(t.variables[0].first, with(alarm, {1, 17}));
            EXPECT_EQ(t.variables[0].second.integer(), 17);
            EXPECT_EQ(t.variables[1].first, with(alarm, {3, 17}));
            EXPECT_EQ(t.variables[1].second.tag, 0x06);
            EXPECT_EQ(t.variables[1].second.oid(), in_octets_3);
            EXPECT_EQ(t.variables[2].second.integer(), SW_RMON_DELTA);
            EXPECT_EQ(t.variables[3].first, with(alarm, {5, 17}));
            EXPECT_EQ(t.variables[3].second.integer(), c.value);
            EXPECT_EQ(t.variables[4].first, with(alarm, {c.threshold_column, 17}));
            EXPECT_EQ(t.variables[4].second.integer(), c.threshold);
        }
    }
    // The OID of the sampled object is needed, of 128 sub-identifiers at most.
    const std::vector<uint32_t> long_oid(129, 1);
    EXPECT_EQ(send_trap_rmon_alarm(1, 1, nullptr, 3, 1, 0, 0), -1);
    EXPECT_EQ(send_trap_rmon_alarm(1, 1, long_oid.data(), 0, 1, 0, 0), -1);
    EXPECT_EQ(send_trap_rmon_alarm(1, 1, long_oid.data(), 129, 1, 0, 0), -1);
    EXPECT_EQ(send_trap_rmon_alarm(1, 1, long_oid.data(), 128, 1, 0, 0), 2);
    // Large sub-identifiers and values survive the encoding.
    const Oid wide = {2, 999, 4294967295u, 0, 128};
    ASSERT_EQ(send_trap_rmon_alarm(INT32_MAX, 1, wide.data(), wide.size(), 1, INT32_MIN, INT32_MAX), 2);
    v1_->drain(100);
    auto t = v2_->drain(100);
    ASSERT_EQ(t.size(), 2u);
    EXPECT_EQ(t[1].variables[1].second.oid(), wide);
    EXPECT_EQ(t[1].variables[3].second.integer(), INT32_MIN);
    EXPECT_EQ(t[1].variables[0].first.back(), uint32_t(INT32_MAX));

    // Through a control handle: the registered callback, or sent at once.
    static int forwarded = 0;
    ASSERT_EQ(register_trap(nullptr, [](int32_t, int, const uint32_t *, size_t, int32_t, int32_t, int32_t) { ++forwarded; }), 0);
    swsim::Switch::RmonAlarmNotice notice;
    notice.variable = in_octets_3;
    sw_->report_rmon_alarm(notice);
    EXPECT_EQ(forwarded, 1);
    EXPECT_TRUE(v2_->drain(100).empty());
    notice.variable.clear();
    EXPECT_EQ(simtest::complaint([&] { sw_->report_rmon_alarm(notice); }),
              "an alarm's variable is an OID of 1..128 sub-identifiers");
}

TEST_F(TrapTest, DestinationsThatCannotBeReachedCostNothingButTheirOwnDatagram) {
    // A simulated switch keeps to loopback unless allowed beyond it: the
    // datagram for a destination elsewhere is withheld.
    sw_->trap_add("192.0.2.1", "x", SW_TRAP_V1);
    sw_->report_login_failure(SW_SERVICE_WEB, "");
    EXPECT_EQ(v1_->drain().size(), 1u);
    EXPECT_EQ(v2_->drain().size(), 1u);
    EXPECT_EQ(sw_->traps().withheld, 1u);
    EXPECT_EQ(sw_->traps().destinations[2].sent, 0u);
    sw_->trap_remove("192.0.2.1");

    // Allowed beyond it: the broadcast address is refused by the network
    // (no SO_BROADCAST), an address nobody listens on answers nothing; the
    // other destinations still get theirs, nothing waits.  (Nothing leaves
    // this machine.)
    sw_->set_trap_beyond_loopback(true);
    sw_->trap_add("255.255.255.255", "x", SW_TRAP_V2C);
    sw_->trap_add("127.0.0.3", "x", SW_TRAP_V1);
    sw_->trap_add("::1", "six", SW_TRAP_V2C);
    const uint64_t failed = sw_->traps().failed;
    for (int i = 0; i < 3; ++i) sw_->report_login_failure(SW_SERVICE_SSH, "");
    EXPECT_EQ(v1_->drain().size(), 3u);
    EXPECT_EQ(v2_->drain().size(), 3u);
    const auto t = sw_->traps();
    ASSERT_EQ(t.destinations.size(), 5u);
    EXPECT_EQ(t.destinations[2].sent, 0u);
    EXPECT_EQ(t.destinations[3].sent, 3u);
    // The IPv6 one went out unless this machine has no IPv6.
    EXPECT_EQ(t.failed - failed, 3u + (3u - t.destinations[4].sent));
    EXPECT_EQ(t.withheld, 1u);

    // A fault armed on the call: its result, and nothing sent.
    sw_->fault_set("send_trap_snmp_authentication_fail", -5, 1);
    EXPECT_EQ(send_trap_snmp_authentication_fail(SW_SERVICE_WEB, nullptr), -5);
    EXPECT_TRUE(v2_->drain(100).empty());
}

TEST_F(TrapTest, DamagedDestinationsAreRefusedWhenTheFileIsOpened) {
    {
        RawState raw(state_);
        ASSERT_TRUE(raw.ok());
        raw.cfg().traps.dests[3].addr.family = 9;
    }
    EXPECT_NE(swsim::platform_reopen(), 0);
    {
        RawState raw(state_);
        raw.cfg().traps.dests[3].addr.family = SW_ADDR_NONE;
        raw.cfg().traps.dests[0].version = 7;
    }
    EXPECT_NE(swsim::platform_reopen(), 0);
    {
        RawState raw(state_);
        raw.cfg().traps.dests[0].version = SW_TRAP_V1;
        std::memset(raw.cfg().traps.dests[4].community, 'x', SW_TRAP_COMMUNITY_SIZE);
    }
    EXPECT_NE(swsim::platform_reopen(), 0);
    {
        RawState raw(state_);
        raw.cfg().traps.dests[4].community[0] = '\0';
    }
    EXPECT_EQ(swsim::platform_reopen(), 0);
}

TEST_F(TrapTest, SwctlManagesDestinationsAndRaisesEvents) {
    ok("trap add 127.0.0.3 --community ring --version 1");
    ok("trap remove 127.0.0.2");
    fails("trap add 127.0.0.3", "trap destination 127.0.0.3 exists already");
    fails("trap add 300.1.1.1", "'300.1.1.1' is not an IPv4 or IPv6 address");
    fails("trap add 10.9.9.9 --community 123456789012345678901234567890123",
          "community '123456789012345678901234567890123' is longer than 32 characters");
    fails("trap remove 10.9.9.9", "no trap destination 10.9.9.9");
    fails("trap port 0", "UDP port 0 (1..65535)");
    ok("trap reach any");
    EXPECT_TRUE(sw_->traps().beyond_loopback);
    ok("trap reach loopback");
    EXPECT_FALSE(sw_->traps().beyond_loopback);
    const auto t = sw_->traps();
    ASSERT_EQ(t.destinations.size(), 2u);
    EXPECT_EQ(t.destinations[1].address, "127.0.0.3");
    EXPECT_EQ(t.destinations[1].community, "ring");
    EXPECT_EQ(t.destinations[1].version, SW_TRAP_V1);

    // swctl's link change is notified from swctl's own process.
    ok("link 1/2 down");
    auto trap = v1_->next_trap();
    ASSERT_TRUE(trap);
    EXPECT_EQ(trap->generic, 2);
    EXPECT_EQ(integers(*trap)[0].second, 2);

    const auto login = swctl("login-fail telnet 192.0.2.44");
    EXPECT_EQ(login.code, 0) << login.err;
    EXPECT_NE(login.err.find("login to telnet refused from 192.0.2.44"), std::string::npos) << login.err;
    trap = v1_->next_trap();
    ASSERT_TRUE(trap);
    EXPECT_EQ(trap->generic, 4);

    ok("trap rmon-alarm 4 falling 1.3.6.1.2.1.2.2.1.10.3 --value 10 --threshold 20 --delta");
    trap = v1_->next_trap();
    ASSERT_TRUE(trap);
    EXPECT_EQ(trap->specific, 2);
    EXPECT_EQ(trap->variables.at(1).second.oid(), (Oid{1, 3, 6, 1, 2, 1, 2, 2, 1, 10, 3}));
    fails("trap rmon-alarm 4 falling 1.3..6", "'1.3..6' is not an OID (numbers and dots, e.g. 1.3.6.1.2.1.2.2.1.10.1)");

    const auto shown = swctl("show services");
    EXPECT_EQ(shown.code, 0);
    EXPECT_NE(shown.out.find("127.0.0.1"), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find("ring"), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find("trap port   " + std::to_string(v1_->port())), std::string::npos) << shown.out;
}

TEST_F(TempDir, ScenarioTrapDestinations) {
    swsim::create_state_from_json(state_, R"({"traps": {"port": 1162, "beyond_loopback": true, "destinations": [
        {"address": "192.0.2.5"}, {"address": "2001:db8::1", "community": "c6", "version": 1}]}})");
    swsim::Switch sw(state_);
    const auto t = sw.traps();
    EXPECT_EQ(t.port, 1162);
    EXPECT_TRUE(t.beyond_loopback);
    ASSERT_EQ(t.destinations.size(), 2u);
    EXPECT_EQ(t.destinations[0].community, "public");
    EXPECT_EQ(t.destinations[0].version, SW_TRAP_V2C);
    EXPECT_EQ(t.destinations[1].address, "2001:db8::1");
    EXPECT_EQ(t.destinations[1].version, SW_TRAP_V1);

    EXPECT_EQ(simtest::complaint([&] {
                  swsim::create_state_from_json(state_, R"({"traps": {"destinations": [{"address": "x"}]}})", "s.json");
              }),
              "s.json: traps.destinations[0]: 'x' is not an IPv4 or IPv6 address");
    EXPECT_EQ(simtest::complaint([&] {
                  swsim::create_state_from_json(state_, R"({"traps": {"port": 0}})", "s.json");
              }),
              "s.json: traps.port: must be 1..65535");
    // A switch without the field sends to nobody, on port 162, and keeps to
    // loopback.
    swsim::create_state_from_json(state_, "{}");
    EXPECT_EQ(swsim::Switch(state_).traps().port, 162);
    EXPECT_FALSE(swsim::Switch(state_).traps().beyond_loopback);
    EXPECT_TRUE(swsim::Switch(state_).traps().destinations.empty());
}

}  // namespace
