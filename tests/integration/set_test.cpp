// Writes through a real snmpd: what a SET changes on the switch, and the
// error statuses of refused SETs.
#include "fixture.hpp"

namespace it {
namespace {

class Sets : public AgentTest<Sets> {};

// A copper port and a 10G port of scenarios/default.json (unit 1 ports 3 and 25).
constexpr int kUnit0 = 0, kCopperPort0 = 2, kFiberPort0 = 24;
const uint32_t kCopper = port_index(kUnit0, kCopperPort0);
const uint32_t kFiber = port_index(kUnit0, kFiberPort0);

TEST_F(Sets, SystemScalarsReachTheSwitch) {
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysName, "core-sw-7")), kNoError);
    EXPECT_EQ(sw().system().hostname, "core-sw-7");
    EXPECT_EQ(must_get(oids::kSysName).bytes, "core-sw-7");

    EXPECT_EQ(set_one(SetValue::octets(oids::kSysLocation, "Hall 2, rack 14")), kNoError);
    EXPECT_EQ(sw().system().location, "Hall 2, rack 14");

    // An empty string is a value like any other.
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysContact, "")), kNoError);
    EXPECT_EQ(sw().system().contact, "");
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysContact, "noc@example.net")), kNoError);
    EXPECT_EQ(must_get(oids::kSysContact).bytes, "noc@example.net");

    // Several scalars in one request.
    Response r = writer().set({SetValue::octets(oids::kSysName, "edge-1"), SetValue::octets(oids::kSysContact, "ops")});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kNoError);
    EXPECT_EQ(sw().system().hostname, "edge-1");
    EXPECT_EQ(sw().system().contact, "ops");
}

TEST_F(Sets, ConfigurationHashFollowsTheConfiguration) {
    const std::string before = must_get(oids::kSwHashConfig).bytes;
    EXPECT_EQ(must_get(oids::kSwHashConfig).bytes, before) << "stable while nothing changes";
    ASSERT_EQ(set_one(SetValue::octets(oids::kSysLocation, sw().system().location + " (moved)")), kNoError);
    EXPECT_NE(must_get(oids::kSwHashConfig).bytes, before);
}

TEST_F(Sets, PortConfigurationReachesThePort) {
    EXPECT_EQ(set_one(SetValue::octets(oids::port_column(oids::kPortName, kCopper), "printer, room 12")), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).description, "printer, room 12");
    EXPECT_EQ(must_get(oids::port_column(oids::kPortName, kCopper)).bytes, "printer, room 12");

    // fd100 forces 100 Mbit/s; auto negotiates again.
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kCopper), 5)), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, 100);
    EXPECT_EQ(must_get(oids::port_column(oids::kPortSpeedDpxCfg, kCopper)).integer, 5);
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kCopper), 1)), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, 0);
    EXPECT_EQ(must_get(oids::port_column(oids::kPortSpeedDpxCfg, kCopper)).integer, 1);

    // The top of the range: 10 Gbit/s on a port that has it.
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kFiber), 8)), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kFiberPort0).config_speed, 10000);
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kFiber), 1)), kNoError);

    // A speed the port cannot run is refused by the platform: genErr.
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortSpeedDpxCfg, kCopper), 8)), kGenErr);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, 0);
}

TEST_F(Sets, AgingTimeReachesTheSwitchAndPlatformRefusalIsGenErr) {
    EXPECT_EQ(set_one(SetValue::integer32(oids::kTpAgingTime, 600)), kNoError);
    EXPECT_EQ(sw().system().mac_ageing, 600);
    EXPECT_EQ(must_get(oids::kTpAgingTime).integer, 600);

    // No range check in the agent: the platform refuses 5 seconds.
    EXPECT_EQ(set_one(SetValue::integer32(oids::kTpAgingTime, 5)), kGenErr);
    EXPECT_EQ(sw().system().mac_ageing, 600);
}

TEST_F(Sets, ValuesOutsideTheRangeAreWrongValue) {
    const int speed_before = sw().port(kUnit0, kCopperPort0).config_speed;
    const struct {
        uint32_t column;
        int64_t value;
    } refused[] = {
        {oids::kPortSpeedDpxCfg, 9}, {oids::kPortSpeedDpxCfg, 0}, {oids::kPortSpeedDpxCfg, -1},
        {oids::kPortFlowCtrlCfg, 7}, {oids::kPortFlowCtrlCfg, 0}, {oids::kPortAutonegotiation, 3},
    };
    for (const auto &c : refused) {
        Response r = writer().set({SetValue::integer32(oids::port_column(c.column, kCopper), c.value)});
        ASSERT_TRUE(r.answered);
        EXPECT_EQ(r.error_status, kWrongValue) << "column " << c.column << " value " << c.value;
        EXPECT_EQ(r.error_index, 1);
    }
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).config_speed, speed_before);

    // The second varbind of a request is the one reported.
    Response r = writer().set({SetValue::octets(oids::port_column(oids::kPortName, kCopper), "ok"),
                               SetValue::integer32(oids::port_column(oids::kPortAutonegotiation, kCopper), 3)});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kWrongValue);
    EXPECT_EQ(r.error_index, 2);
    EXPECT_NE(sw().port(kUnit0, kCopperPort0).description, "ok") << "a refused request writes nothing";

    // Every value of the flow-control range is accepted.
    for (int v = 1; v <= 6; ++v)
        EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortFlowCtrlCfg, kCopper), v)), kNoError) << v;
}

TEST_F(Sets, ReadOnlyObjectsAreNotWritable) {
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortType, kCopper), 1)), kNotWritable);
    EXPECT_EQ(set_one(SetValue::integer32(oids::port_column(oids::kPortTrunkIndex, kCopper), 1)), kNotWritable);
    EXPECT_EQ(set_one(SetValue::integer32(oids::base_port_column(2, kCopper), int64_t(kCopper))), kNotWritable);
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysDescr, "changed")), kNotWritable);
    EXPECT_EQ(must_get(oids::kSysDescr).bytes, sw().unit(0).model);
}

TEST_F(Sets, NotWritableFirstInABatchRefusesTheWholeBatch) {
    const std::string name_before = sw().port(kUnit0, kCopperPort0).description;
    Response r = writer().set({SetValue::integer32(oids::port_column(oids::kPortType, kCopper), 1),
                               SetValue::octets(oids::port_column(oids::kPortName, kCopper), "must not be written"),
                               SetValue::integer32(oids::port_column(oids::kPortAutonegotiation, kCopper), 3)});
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
    sw().fault_clear();

    // The configuration lock was freed: reads and writes go on, in the
    // agent and from the switch's side.
    EXPECT_EQ(must_get(oids::kSysName).bytes, before);
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysName, "after-fault")), kNoError);
    EXPECT_EQ(must_get(oids::kSysName).bytes, "after-fault");
    EXPECT_EQ(must_get(oids::port_column(oids::kPortName, kCopper)).type, kOctetString);
    sw().set_hostname("from-the-switch");
    EXPECT_EQ(must_get(oids::kSysName).bytes, "from-the-switch");

    // The same for a table column.
    sw().fault_set("cfg_set_port_description", -1, 1);
    EXPECT_EQ(set_one(SetValue::octets(oids::port_column(oids::kPortName, kCopper), "never")), kGenErr);
    sw().fault_clear();
    EXPECT_EQ(set_one(SetValue::octets(oids::port_column(oids::kPortName, kCopper), "after")), kNoError);
    EXPECT_EQ(sw().port(kUnit0, kCopperPort0).description, "after");
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
