// The chassis through a real snmpd over scenarios/default.json: MAC table
// usage refreshed behind the replies, the inventory tree beside the
// interfaces, hardware changed with swctl showing in both the inventory and
// the private tables at the next request, the serial console, device
// information and load.
#include <cstdlib>
#include <map>
#include <set>

#include "fixture.hpp"

namespace it {
namespace {

class Chassis : public AgentTest<Chassis> {
protected:
    // The (OID suffix -> varbind) of a table's column walk.
    std::map<Oid, VarBind> column(const Oid &entry, uint32_t number) {
        const Oid prefix = child(entry, {number});
        std::map<Oid, VarBind> out;
        for (const VarBind &vb : reader().walk(prefix)) out[Oid(vb.oid.begin() + long(prefix.size()), vb.oid.end())] = vb;
        return out;
    }
};

const Oid kSwitchEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1");
const Oid kMacUsage = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.12.1.2");
const Oid kInfoEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.2.1");
const Oid kPowerStatus = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.4.1.3");
const Oid kFanStatus = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.5.1.3");
const Oid kAlarmStatus = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.6.1.3");
const Oid kAlarmOutStatus = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.16.1.2");
const Oid kPhysicalEntry = parse_oid("1.3.6.1.2.1.47.1.1.1.1");
const Oid kAliasIdentifier = parse_oid("1.3.6.1.2.1.47.1.3.2.1.2");
const Oid kRs232 = parse_oid("1.3.6.1.2.1.10.33");
const Oid kDeviceEntry = parse_oid("1.3.6.1.4.1.99999.2.3.1.10.1");

Oid at(const Oid &column, std::initializer_list<uint32_t> index) { return child(column, index); }

// First in the file: the suite's agent has not read the usage yet.  Unit 1
// is the management processor and has no row; unit 2's first read waits
// for the count and answers 0, the next one answers it.
TEST_F(Chassis, MacUsageAnswersZeroFirstAndTheCountFromTheNextRead) {
    int64_t learned = 0;
    for (const swsim::FdbInfo &e : sw().fdb()) learned += e.unit0 == 1;
    ASSERT_GT(learned, 0);
    EXPECT_EQ(must_get(at(kMacUsage, {2})).integer, 0);
    const VarBind second = must_get(at(kMacUsage, {2}));
    EXPECT_EQ(second.type, kInteger);
    EXPECT_EQ(second.integer, learned);
    EXPECT_EQ(type_of(at(kMacUsage, {1})), kNoSuchInstance);
    EXPECT_EQ(column(child(kSwitchEntry, {12, 1}), 2).size(), 1u);
}

// The inventory is one tree under the stack, each part's parent listed
// before it is needed, and every port of the interfaces table is a port
// entity whose alias is its ifIndex.
TEST_F(Chassis, TheInventoryIsOneTreeWithEveryPort) {
    const auto contained = column(kPhysicalEntry, 4);
    const auto classes = column(kPhysicalEntry, 5);
    ASSERT_FALSE(contained.empty());
    EXPECT_EQ(column(kPhysicalEntry, 2).size(), contained.size());
    EXPECT_EQ(column(kPhysicalEntry, 7).size(), contained.size());
    EXPECT_TRUE(column(kPhysicalEntry, 8).empty()) << "the table ends at entPhysicalName";
    std::set<int64_t> entities;
    for (const auto &[index, vb] : contained) entities.insert(int64_t(index[0]));
    int roots = 0;
    for (const auto &[index, vb] : contained) {
        EXPECT_EQ(vb.type, kInteger);
        if (vb.integer == 0) {
            ++roots;
            EXPECT_EQ(classes.at(index).integer, 11) << "the root is the stack";
        } else {
            EXPECT_TRUE(entities.count(vb.integer)) << index[0] << " in " << vb.integer;
        }
    }
    EXPECT_EQ(roots, 1);
    EXPECT_EQ(reader().walk(child(kPhysicalEntry, {3})).front().type, kObjectId);

    std::vector<uint32_t> ports;
    for (uint32_t i : expected_port_rows(sw()))
        if (i <= 512) ports.push_back(i);
    std::vector<uint32_t> aliased;
    for (const VarBind &vb : reader().walk(kAliasIdentifier)) {
        ASSERT_EQ(vb.type, kObjectId);
        ASSERT_EQ(vb.objid.size(), 11u);
        EXPECT_EQ(Oid(vb.objid.begin(), vb.objid.end() - 1), parse_oid("1.3.6.1.2.1.2.2.1.1"));
        aliased.push_back(vb.objid.back());
        const uint32_t entity = vb.oid[vb.oid.size() - 2];
        EXPECT_EQ(classes.at({entity}).integer, 10) << "a port";
    }
    EXPECT_EQ(aliased, ports);
}

// Hardware taken out or failing shows in both views at the next request.
TEST_F(Chassis, ChangesShowInBothViewsAtTheNextRequest) {
    const Oid psu_class = child(kPhysicalEntry, {5, 2301});  // unit 2's first supply
    ASSERT_EQ(must_get(psu_class).integer, 6);
    ASSERT_EQ(must_get(at(kPowerStatus, {2, 1})).integer, 1);
    ASSERT_EQ(swctl("psu 2/1 pulled"), 0);
    EXPECT_EQ(type_of(psu_class), kNoSuchInstance);
    EXPECT_EQ(must_get(at(kPowerStatus, {2, 1})).integer, 3);
    EXPECT_EQ(must_get(child(kInfoEntry, {10, 2})).integer, 3) << "no working supply left";
    ASSERT_EQ(swctl("psu 2/1 ok"), 0);
    EXPECT_EQ(must_get(psu_class).integer, 6);

    ASSERT_EQ(swctl("fan 1/2 stopped"), 0);
    EXPECT_EQ(must_get(at(kFanStatus, {1, 2})).integer, 2);
    EXPECT_EQ(must_get(child(kInfoEntry, {12, 1})).integer, 2);
    EXPECT_EQ(must_get(at(kAlarmOutStatus, {1})).integer, 2);
    ASSERT_EQ(swctl("fan 1/2 pulled"), 0);
    EXPECT_EQ(type_of(child(kPhysicalEntry, {5, 1402})), kNoSuchInstance);
    ASSERT_EQ(swctl("fan 1/2 ok"), 0);
    EXPECT_EQ(must_get(at(kAlarmOutStatus, {1})).integer, 1);

    ASSERT_EQ(swctl("alarm 2/1 raise"), 0);
    EXPECT_EQ(must_get(at(kAlarmStatus, {2, 1})).integer, 2);
    EXPECT_EQ(must_get(at(kAlarmOutStatus, {2})).integer, 2);
    EXPECT_EQ(must_get(child(kInfoEntry, {19, 2})).integer, 2) << "warning";
    ASSERT_EQ(swctl("alarm 2/1 clear"), 0);
    EXPECT_EQ(must_get(at(kAlarmStatus, {2, 1})).integer, 1);

    ASSERT_EQ(swctl("unit 2 absent"), 0);
    EXPECT_EQ(type_of(child(kPhysicalEntry, {5, 2000})), kNoSuchInstance);
    EXPECT_EQ(type_of(child(kInfoEntry, {2, 2})), kNoSuchInstance);
    EXPECT_EQ(type_of(at(kPowerStatus, {2, 1})), kNoSuchInstance);
    for (const auto &[index, vb] : column(kPhysicalEntry, 4)) EXPECT_LT(index[0], 2000u) << "a part of unit 2 listed";
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.1.0")).integer, 1) << "switchNumber";
    ASSERT_EQ(swctl("unit 2 present"), 0);
    EXPECT_EQ(must_get(child(kPhysicalEntry, {5, 2000})).integer, 3);
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.1.0")).integer, 2);
}

TEST_F(Chassis, TheSerialConsoleHasFixedSettingsAndRefusesWrites) {
    const std::vector<VarBind> walk = reader().walk(kRs232);
    std::vector<std::string> names;
    for (const VarBind &vb : walk) names.push_back(to_string(Oid(vb.oid.begin() + 8, vb.oid.end())));
    EXPECT_EQ(names, (std::vector<std::string>{"1.0", "2.1.1.1", "2.1.2.1", "2.1.3.1", "2.1.4.1", "2.1.5.1", "2.1.6.1",
                                               "2.1.7.1", "2.1.8.1", "3.1.1.1", "3.1.2.1", "3.1.3.1", "3.1.4.1",
                                               "3.1.5.1", "3.1.6.1", "3.1.7.1", "3.1.8.1"}))
        << "one port and one asynchronous port, no signals, nothing synchronous";
    const Oid in_speed = child(kRs232, {2, 1, 5, 1});
    EXPECT_EQ(must_get(in_speed).integer, 9600);
    EXPECT_EQ(set_one(SetValue::integer32(in_speed, 19200)), kGenErr);
    EXPECT_EQ(must_get(in_speed).integer, 9600);
    EXPECT_EQ(set_one(SetValue::integer32(child(kRs232, {3, 1, 2, 1}), 9)), kWrongValue) << "5..8 data bits";
    EXPECT_EQ(set_one(SetValue::integer32(child(kRs232, {2, 1, 2, 1}), 2)), kNotWritable);
    EXPECT_EQ(must_get(child(kRs232, {3, 1, 4, 1})).integer, 2) << "parity as the console has always answered";
}

TEST_F(Chassis, DeviceInformationAndLoad) {
    const auto device = [&](uint32_t column) { return must_get(child(kDeviceEntry, {column, 1, 1})); };
    EXPECT_EQ(device(9).bytes, "2403180930") << "Mon Mar 18 09:30:00 UTC 2024";
    EXPECT_EQ(device(11).integer, 7);
    EXPECT_EQ(device(7).bytes, "730012345");
    EXPECT_EQ(device(5).bytes, "1.4.2");
    EXPECT_EQ(device(3).objid, must_get(parse_oid("1.3.6.1.2.1.1.2.0")).objid);
    EXPECT_EQ(device(4).bytes, "");
    EXPECT_EQ(set_one(SetValue::integer32(child(kDeviceEntry, {8, 1, 1}), 5)), kNoError);
    EXPECT_EQ(device(8).integer, 0);
    EXPECT_EQ(set_one(SetValue::integer32(child(kDeviceEntry, {11, 1, 1}), 5)), kNotWritable);
    ASSERT_EQ(swctl("device --date \"Tue Mar 02 14:05:00 UTC 2021\" --model-word 3"), 0);
    EXPECT_EQ(device(9).bytes, "2103021405");
    EXPECT_EQ(device(11).integer, 2000000254);

    ASSERT_EQ(swctl("load 2 --cpu 66 --mem 44 --steady"), 0);
    const Oid usage = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.26");
    EXPECT_EQ(must_get(child(usage, {1, 1, 2, 2})).integer, 66);
    EXPECT_EQ(must_get(child(usage, {2, 1, 2, 2})).integer, 44);
    EXPECT_EQ(row_indexes(reader().walk(child(usage, {1})), child(usage, {1, 1, 2})), (std::vector<uint32_t>{1, 2}));
    EXPECT_TRUE(reader().walk(child(usage, {3})).empty()) << "no standby processor rows";
    EXPECT_EQ(must_get(child(kSwitchEntry, {10, 0})).type, kInteger);
    EXPECT_EQ(must_get(child(kSwitchEntry, {17, 0})).integer, 7300) << "swChassisModel";
    EXPECT_EQ(must_get(child(kSwitchEntry, {13, 0})).integer, 8) << "swSlotNumber";
    EXPECT_NE(set_one(SetValue::integer32(child(kSwitchEntry, {17, 0}), 1)), kNoError);
}

}  // namespace
}  // namespace it
