// Management services through a real snmpd over scenarios/default.json:
// settings written by a manager and seen by the switch, the refusals the
// agent answers, the filter and server tables, and trap destinations added
// through SNMP that receive the switch's notifications in Debian's
// snmptrapd.
#include <chrono>
#include <cstdlib>
#include <thread>

#include "fixture.hpp"
#include "trap_daemon.hpp"

namespace it {
namespace {

class Services : public AgentTest<Services> {};

const Oid kSwitch = parse_oid("1.3.6.1.4.1.99999.3.5.201.1");
Oid scalar(std::initializer_list<uint32_t> at) {
    Oid o = child(kSwitch, at);
    o.push_back(0);
    return o;
}
const Oid kIpAddressMode = scalar({10, 1}), kGateway = scalar({10, 2}), kPrimaryDns = scalar({10, 3});
const Oid kHttpState = scalar({10, 5}), kHttpPort = scalar({10, 6}), kHttpsPort = scalar({10, 8});
const Oid kTelnetState = scalar({10, 9});
const Oid kSshTimeout = scalar({17, 2, 4}), kRsaKey = scalar({17, 2, 6}), kDsaKey = scalar({17, 2, 7});
const Oid kKeyGen = scalar({17, 2, 8});
const Oid kRemoteLogStatus = scalar({19, 6, 1}), kFacility = scalar({19, 6, 3});
const Oid kSntpStatus = scalar({20, 1, 1});
const Oid kSnmpFilterEntry = child(kSwitch, {17, 3, 1, 1});
const Oid kLogServerEntry = child(kSwitch, {19, 6, 4, 1});
const Oid kSntpServerEntry = child(kSwitch, {20, 1, 3, 1});
const Oid kTrapDestEntry = child(kSwitch, {14, 1, 1});

std::string octets(std::initializer_list<int> bytes) {
    std::string s;
    for (int b : bytes) s.push_back(char(b));
    return s;
}
// column.a.b.c.d(.m.m.m.m)
Oid row(const Oid &entry, uint32_t column, std::initializer_list<uint32_t> index) {
    Oid o = child(entry, {column});
    o.insert(o.end(), index);
    return o;
}

TEST_F(Services, ScalarsAreTheSwitchsAndRefusalsAreClear) {
    // The scenario's settings read back with their types.
    VarBind gw = must_get(kGateway);
    EXPECT_EQ(gw.type, kIpAddress);
    EXPECT_EQ(gw.bytes, octets({192, 0, 2, 1}));
    EXPECT_EQ(must_get(kPrimaryDns).bytes, octets({192, 0, 2, 53}));
    EXPECT_EQ(must_get(kHttpPort).integer, 80);
    EXPECT_EQ(must_get(kRsaKey).bytes.rfind("ssh-rsa ", 0), 0u);
    EXPECT_GT(must_get(kDsaKey).bytes.size(), 255u);

    // Written by a manager, seen by the switch.
    EXPECT_EQ(set_one(SetValue::address(kGateway, octets({198, 51, 100, 1}))), kNoError);
    EXPECT_EQ(sw().services().gateway, 0xc6336401u);
    EXPECT_EQ(set_one(SetValue::integer32(kHttpPort, 8080)), kNoError);
    EXPECT_EQ(sw().services().http_port, 8080);
    EXPECT_EQ(set_one(SetValue::integer32(kIpAddressMode, 2)), kNoError);
    EXPECT_TRUE(sw().services().dhcp);
    EXPECT_EQ(set_one(SetValue::integer32(kTelnetState, 2)), kNoError);
    EXPECT_FALSE(sw().services().telnet);
    EXPECT_EQ(set_one(SetValue::integer32(kSntpStatus, 1)), kNoError);
    EXPECT_TRUE(sw().services().sntp);
    EXPECT_EQ(set_one(SetValue::integer32(kRemoteLogStatus, 2)), kNoError);
    EXPECT_EQ(must_get(kRemoteLogStatus).integer, 1) << "2 switches it on; it reads 1";
    const std::string rsa = must_get(kRsaKey).bytes;
    EXPECT_EQ(set_one(SetValue::integer32(kKeyGen, 2)), kNoError);
    EXPECT_NE(must_get(kRsaKey).bytes, rsa);
    EXPECT_EQ(must_get(kKeyGen).integer, 1);

    // Refusals: the catalogue's ranges (wrongValue), the value's type
    // (wrongType), the switch's own checks (genErr); none of them changes
    // anything.
    const struct {
        SetValue value;
        long status;
    } refused[] = {
        {SetValue::integer32(kHttpState, 3), kWrongValue},
        {SetValue::integer32(kSshTimeout, 121), kWrongValue},
        {SetValue::integer32(kFacility, 24), kWrongValue},
        {SetValue::integer32(kGateway, 5), kWrongType},
        {SetValue::address(kGateway, octets({239, 0, 0, 1})), kGenErr},
        {SetValue::integer32(kHttpPort, 443), kGenErr},  // the HTTPS port
        {SetValue::integer32(kHttpsPort, 8080), kGenErr},
    };
    for (const auto &r : refused) EXPECT_EQ(set_one(r.value), r.status) << to_string(r.value.oid);
    const swsim::Switch::ServicesInfo s = sw().services();
    EXPECT_EQ(s.gateway, 0xc6336401u);
    EXPECT_EQ(s.http_port, 8080);
    EXPECT_EQ(s.https_port, 443);
    EXPECT_EQ(s.ssh_timeout, 120);
}

TEST_F(Services, FiltersAndServersAreRowsOfTheirTables) {
    // The scenario's SNMP filters.
    const Oid status_column = child(kSnmpFilterEntry, {3});
    std::vector<VarBind> walk = reader().walk(status_column);
    ASSERT_EQ(walk.size(), 2u);
    EXPECT_EQ(walk[0].oid, row(kSnmpFilterEntry, 3, {127, 0, 0, 0, 255, 0, 0, 0}));
    EXPECT_EQ(walk[1].oid, row(kSnmpFilterEntry, 3, {192, 0, 2, 0, 255, 255, 255, 0}));

    // A network added and removed through its status.
    const Oid net = row(kSnmpFilterEntry, 3, {10, 20, 0, 0, 255, 255, 0, 0});
    EXPECT_EQ(set_one(SetValue::integer32(net, 1)), kNoError);
    EXPECT_EQ(sw().services().filters[2].back(), "10.20.0.0/16");
    EXPECT_EQ(must_get(net).integer, 1);
    EXPECT_EQ(set_one(SetValue::integer32(net, 2)), kNoError);
    EXPECT_EQ(sw().services().filters[2].size(), 2u);
    EXPECT_TRUE(reader().get({net}).varbinds.at(0).is_exception()) << "the row went with the filter";
    // A mask that is not contiguous, and a status that is neither.
    EXPECT_EQ(set_one(SetValue::integer32(row(kSnmpFilterEntry, 3, {10, 0, 0, 0, 255, 0, 255, 0}), 1)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(net, 3)), kGenErr);
    EXPECT_EQ(sw().services().filters[2].size(), 2u);

    // Remote log servers: the IPv6 one never shows.
    ASSERT_EQ(swctl("mgmt add log_server 2001:db8::77"), 0);
    walk = reader().walk(child(kLogServerEntry, {2}));
    ASSERT_EQ(walk.size(), 1u);
    EXPECT_EQ(walk[0].oid, row(kLogServerEntry, 2, {192, 0, 2, 50}));
    const VarBind ip = must_get(row(kLogServerEntry, 1, {192, 0, 2, 50}));
    EXPECT_EQ(ip.type, kIpAddress);
    EXPECT_EQ(ip.bytes, octets({192, 0, 2, 50}));

    // SNTP servers: added through a row that did not exist.
    EXPECT_EQ(set_one(SetValue::integer32(row(kSntpServerEntry, 2, {192, 0, 2, 124}), 1)), kNoError);
    walk = reader().walk(child(kSntpServerEntry, {1}));
    ASSERT_EQ(walk.size(), 2u);
    EXPECT_EQ(walk[1].bytes, octets({192, 0, 2, 124}));
    EXPECT_EQ(set_one(SetValue::integer32(row(kSntpServerEntry, 2, {192, 0, 2, 125}), 1)), kNoError);
    EXPECT_EQ(set_one(SetValue::integer32(row(kSntpServerEntry, 2, {192, 0, 2, 126}), 1)), kGenErr) << "three at most";
}

TEST_F(Services, TrapDestinationsAddedThroughSnmpReceiveTheSwitchsNotifications) {
    TrapDaemon receiver;
    sw().set_trap_port(receiver.port());
    const Oid status = row(kTrapDestEntry, 3, {127, 0, 0, 1});
    const Oid community = row(kTrapDestEntry, 2, {127, 0, 0, 1});
    const Oid version = row(kTrapDestEntry, 4, {127, 0, 0, 1});

    // A new destination: SNMPv1, empty community.
    ASSERT_EQ(set_one(SetValue::integer32(status, 1)), kNoError);
    EXPECT_EQ(must_get(version).integer, 1);
    EXPECT_EQ(must_get(community).bytes, "");
    ASSERT_EQ(swctl("link 1/3 down"), 0);  // ifIndex 3
    std::string line = receiver.wait_for({"v1 ", "generic=2", ".1.3.6.1.2.1.2.2.1.1.3 = INTEGER: 3"});
    EXPECT_NE(line, "") << "no linkDown";
    EXPECT_NE(line.find("enterprise=.1.3.6.1.4.1.99999.1.1 "), std::string::npos) << line;
    EXPECT_NE(line.find(".1.3.6.1.2.1.2.2.1.8.3 = INTEGER: 2"), std::string::npos) << line;

    // Its community and version through SNMP: SNMPv2c linkUp.
    ASSERT_EQ(set_one(SetValue::octets(community, "noc")), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(version, 2)), kNoError);
    EXPECT_EQ(set_one(SetValue::integer32(version, 3)), kGenErr);
    EXPECT_EQ(set_one(SetValue::octets(community, std::string(33, 'c'))), kWrongLength);
    ASSERT_EQ(swctl("link 1/3 up"), 0);
    line = receiver.wait_for({"v2 community=noc", ".1.3.6.1.6.3.1.1.4.1.0 = OID: .1.3.6.1.6.3.1.1.5.4"});
    EXPECT_NE(line, "") << "no linkUp";
    EXPECT_NE(line.find(".1.3.6.1.2.1.2.2.1.8.3 = INTEGER: 1"), std::string::npos) << line;

    // A refused login to one of the switch's services.
    ASSERT_EQ(swctl("login-fail ssh 192.0.2.66 2>/dev/null"), 0);
    EXPECT_NE(receiver.wait_for({"v2 community=noc", "OID: .1.3.6.1.6.3.1.1.5.5"}), "") << "no authenticationFailure";

    // Removed through SNMP: nothing more arrives.
    ASSERT_EQ(set_one(SetValue::integer32(status, 2)), kNoError);
    EXPECT_TRUE(reader().get({status}).varbinds.at(0).is_exception());
    const size_t before = receiver.notifications().size();
    ASSERT_EQ(swctl("link 1/3 down"), 0);
    ASSERT_EQ(swctl("link 1/3 up"), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(receiver.notifications().size(), before);
    EXPECT_TRUE(sw().traps().destinations.empty());
}

}  // namespace
}  // namespace it
