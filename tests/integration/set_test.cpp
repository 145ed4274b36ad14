// Writes through a real snmpd: what a SET changes on the switch, and the
// error statuses of refused SETs.
#include "fixture.hpp"

namespace it {
namespace {

class Sets : public AgentTest<Sets> {};

// A copper port of scenarios/default.json (unit 1 port 3).
constexpr int kUnit0 = 0, kCopperPort0 = 2;
const uint32_t kCopper = port_index(kUnit0, kCopperPort0);
const Oid kCopperName = oids::port_column(oids::kPortName, kCopper);
const Oid kCopperSpeed = oids::port_column(oids::kPortSpeedDpxCfg, kCopper);
const Oid kVlan300Status = parse_oid("1.3.6.1.2.1.17.7.1.4.3.1.5.300");  // dot1qVlanStaticRowStatus

TEST_F(Sets, ScalarsAndColumnsReachTheSwitchOneOrSeveralAtATime) {
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysName, "core-sw-7")), kNoError);
    EXPECT_EQ(sw().system().hostname, "core-sw-7");
    Response r = writer().set({SetValue::octets(oids::kSysName, "edge-1"), SetValue::octets(oids::kSysContact, "")});
    EXPECT_EQ(r.error_status, kNoError);
    EXPECT_EQ(sw().system().hostname, "edge-1");
    EXPECT_EQ(sw().system().contact, "");

    EXPECT_EQ(set_one(SetValue::octets(kCopperName, "printer, room 12")), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).description, "printer, room 12");
    // fd100 forces 100 Mbit/s.
    EXPECT_EQ(set_one(SetValue::integer32(kCopperSpeed, 5)), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, 100);
}

// Each refused request answers its status at the varbind at fault and
// writes nothing, not even the request's valid varbinds.
TEST_F(Sets, RefusedRequestsAnswerTheirStatusAndWriteNothing) {
    const struct {
        const char *what;
        std::vector<SetValue> values;
        long status, index;
    } cases[] = {
        {"speed below the range", {SetValue::integer32(kCopperSpeed, 0)}, kWrongValue, 1},
        {"speed above the range", {SetValue::integer32(kCopperSpeed, 9)}, kWrongValue, 1},
        {"10 Gbit/s on copper: the platform refuses", {SetValue::integer32(kCopperSpeed, 8)}, kGenErr, 1},
        {"second varbind out of range",
         {SetValue::octets(kCopperName, "ok"),
          SetValue::integer32(oids::port_column(oids::kPortAutonegotiation, kCopper), 3)},
         kWrongValue, 2},
        {"read-only column", {SetValue::integer32(oids::base_port_column(2, kCopper), kCopper)}, kNotWritable, 1},
        {"read-only scalar", {SetValue::octets(oids::kSysDescr, "changed")}, kNotWritable, 1},
        {"read-only column first",
         {SetValue::integer32(oids::port_column(oids::kPortType, kCopper), 1), SetValue::octets(kCopperName, "no")},
         kNotWritable, 1},
        {"an integer for a name", {SetValue::integer32(oids::kSysName, 0x41424344)}, kWrongType, 1},
        {"a name beyond its SIZE", {SetValue::octets(kCopperName, std::string(256, 'n'))}, kWrongLength, 1},
        {"octets for a row status",
         {SetValue::octets(kCopperName, "ok"), SetValue::octets(kVlan300Status, "\x04")}, kWrongType, 2},
    };
    const std::string name = sw().port(kUnit0, kCopperPort0).description;
    const int speed = sw().port(kUnit0, kCopperPort0).config_speed;
    const std::string descr = must_get(oids::kSysDescr).bytes;
    const std::string hostname = sw().system().hostname;
    ASSERT_FALSE(sw().vlan(300).exists);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Response r = writer().set(c.values);
        ASSERT_TRUE(r.answered);
        EXPECT_EQ(r.error_status, c.status);
        EXPECT_EQ(r.error_index, c.index);
        EXPECT_EQ(sw().port(kUnit0, kCopperPort0).description, name);
        EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, speed);
        EXPECT_EQ(must_get(oids::kSysDescr).bytes, descr);
        EXPECT_EQ(sw().system().hostname, hostname);
        EXPECT_FALSE(sw().vlan(300).exists);
    }

    EXPECT_EQ(reader().set({SetValue::octets(oids::kSysName, "intruder")}).error_status, kNoAccess);
    EXPECT_EQ(sw().system().hostname, hostname);
}

TEST_F(Sets, FailingPlatformCallIsGenErrAndTheAgentGoesOn) {
    const std::string before = sw().system().hostname;
    sw().fault_set("cfg_set_hostname", -1, 1);
    Response r = writer().set({SetValue::octets(oids::kSysName, "never")});
    EXPECT_EQ(r.error_status, kGenErr);
    EXPECT_EQ(r.error_index, 1);
    EXPECT_EQ(sw().system().hostname, before);

    // The configuration lock was freed: reads and writes go on, in the
    // agent and from the switch's side.
    EXPECT_EQ(must_get(oids::kSysName).bytes, before);
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysName, "after-fault")), kNoError);
    EXPECT_EQ(must_get(oids::kSysName).bytes, "after-fault");
    sw().set_hostname("from-the-switch");
    EXPECT_EQ(must_get(oids::kSysName).bytes, "from-the-switch");
}

}  // namespace
}  // namespace it
