// Writes through a real snmpd: what a SET changes on the switch, and the
// error statuses of refused SETs.
#include "fixture.hpp"

namespace it {
namespace {

class Sets : public AgentTest<Sets> {};

// A copper port of scenarios/default.json (unit 1 port 3).
constexpr int kUnit0 = 0, kCopperPort0 = 2;
const uint32_t kCopper = port_index(kUnit0, kCopperPort0);

TEST_F(Sets, ScalarsReachTheSwitchOneOrSeveralAtATime) {
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysName, "core-sw-7")), kNoError);
    EXPECT_EQ(sw().system().hostname, "core-sw-7");
    EXPECT_EQ(must_get(oids::kSysName).bytes, "core-sw-7");
    // An empty string is a value like any other.
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysContact, "")), kNoError);
    EXPECT_EQ(sw().system().contact, "");

    Response r = writer().set({SetValue::octets(oids::kSysName, "edge-1"), SetValue::octets(oids::kSysContact, "ops")});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kNoError);
    EXPECT_EQ(sw().system().hostname, "edge-1");
    EXPECT_EQ(sw().system().contact, "ops");
}

TEST_F(Sets, TableColumnsReachThePortAndPlatformRefusalIsGenErr) {
    EXPECT_EQ(set_one(SetValue::octets(oids::port_column(oids::kPortName, kCopper), "printer, room 12")), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).description, "printer, room 12");
    EXPECT_EQ(must_get(oids::port_column(oids::kPortName, kCopper)).bytes, "printer, room 12");

    // fd100 forces 100 Mbit/s; 10 Gbit/s is in range but a copper port
    // cannot run it: the platform refuses and the port keeps its speed.
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kCopper), 5)), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, 100);
    EXPECT_EQ(must_get(oids::port_column(oids::kPortSpeedDpxCfg, kCopper)).integer, 5);
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kCopper), 8)), kGenErr);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, 100);
}

TEST_F(Sets, ValuesOutsideTheRangeAreWrongValueAtTheirIndex) {
    const int speed_before = sw().port(kUnit0, kCopperPort0).config_speed;
    for (const int64_t value : {0, 9}) {
        Response r = writer().set({SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kCopper), value)});
        ASSERT_TRUE(r.answered);
        EXPECT_EQ(r.error_status, kWrongValue) << value;
        EXPECT_EQ(r.error_index, 1);
    }
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, speed_before);

    // The second varbind of a request is the one reported, and the first is
    // not written either.
    Response r = writer().set({SetValue::octets(oids::port_column(oids::kPortName, kCopper), "ok"),
                               SetValue::integer32(oids::port_column(oids::kPortAutonegotiation, kCopper), 3)});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kWrongValue);
    EXPECT_EQ(r.error_index, 2);
    EXPECT_NE(sw().port(kUnit0, kCopperPort0).description, "ok") << "a refused request writes nothing";
}

TEST_F(Sets, ReadOnlyObjectsAreNotWritableAndRefuseTheWholeBatch) {
    EXPECT_EQ(set_one(SetValue::integer32(oids::base_port_column(2, kCopper), int64_t(kCopper))), kNotWritable);
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysDescr, "changed")), kNotWritable);
    EXPECT_EQ(must_get(oids::kSysDescr).bytes, sw().unit(0).model);

    const std::string name_before = sw().port(kUnit0, kCopperPort0).description;
    Response r = writer().set({SetValue::integer32(oids::port_column(oids::kPortType, kCopper), 1),
                               SetValue::octets(oids::port_column(oids::kPortName, kCopper), "must not be written")});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kNotWritable);
    EXPECT_EQ(r.error_index, 1);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).description, name_before);
}

TEST_F(Sets, FailingPlatformCallIsGenErrAndTheAgentGoesOn) {
    const std::string before = sw().system().hostname;
    sw().fault_set("cfg_set_hostname", -1, 1);
    Response r = writer().set({SetValue::octets(oids::kSysName, "never")});
    ASSERT_TRUE(r.answered);
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

TEST_F(Sets, ReadCommunityCannotWrite) {
    const std::string before = sw().system().hostname;
    Response r = reader().set({SetValue::octets(oids::kSysName, "intruder")});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kNoAccess);
    EXPECT_EQ(sw().system().hostname, before);
}

}  // namespace
}  // namespace it
