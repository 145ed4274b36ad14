// The inventory (ENTITY-MIB) and the private chassis tables over the same
// simulated hardware: one containment tree that reaches every port, the
// classes, positions and names of its parts, modules and units that come
// and go, and the status summaries of the units.
#include <map>
#include <set>

#include "agent/ifindex.hpp"
#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

constexpr int32_t kStack = 1;
int32_t chassis(int unit) { return unit * 1000; }
int32_t port(int unit, int p) { return unit * 1000 + p; }
int32_t transceiver(int unit, int p) { return unit * 1000 + 100 + p; }
int32_t bay(int unit, int b) { return unit * 1000 + 200 + b; }
int32_t psu(int unit, int b) { return unit * 1000 + 300 + b; }
int32_t fan(int unit, int f) { return unit * 1000 + 400 + f; }

std::vector<int32_t> entities() {
    rows().clear();
    init_index_entPhysicalTable(add_int_row);
    return rows().ints;
}

class InventoryTest : public SwitchTest {
protected:
    // Two units of 6 ports (5 and 6 cages, 1/5 and 2/6 fitted); unit 2's
    // second bay empty; unit 1 has both supplies.
    std::string scenario() const override {
        return R"({"units": [{"ports": 6, "sfp_ports": 2}, {"ports": 6, "sfp_ports": 2}],
                   "ports": [{"select": ["1/5", "2/6"], "sfp": true}],
                   "chassis": {"psu_bays": 2, "fans": 2, "alarm_inputs": 2, "alarm_outputs": 2,
                               "units": [{"unit": 1, "psus": ["ok", "ok"], "psu_model": "PSU-300DC"},
                                         {"unit": 2, "psus": ["ok", "absent"]}]}})";
    }
};

// Every entity's parent is an entity, the chain ends at the stack, the
// contains table is the same tree, and each port of the interfaces table
// is one port entity that names its interface.
TEST_F(InventoryTest, OneTreeReachesEveryPortThroughItsUnit) {
    const std::vector<int32_t> all = entities();
    const std::set<int32_t> known(all.begin(), all.end());
    ASSERT_EQ(known.size(), all.size());
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end())) << "rows come in index order";
    std::set<std::string> contains;
    for (int32_t e : all) {
        const int32_t parent = get_entPhysicalContainedIn(e);
        if (e == kStack) {
            EXPECT_EQ(parent, 0);
            continue;
        }
        EXPECT_TRUE(known.count(parent)) << e << " is in " << parent;
        contains.insert(std::to_string(parent) + "." + std::to_string(e));
        int hops = 0;
        for (int32_t at = e; at != kStack && hops < 5; at = get_entPhysicalContainedIn(at)) ++hops;
        EXPECT_LT(hops, 5) << e << " does not reach the stack";
    }
    rows().clear();
    init_index_entPhysicalContainsTable(add_pair_row<int32_t>);
    EXPECT_EQ(std::set<std::string>(rows().keys.begin(), rows().keys.end()), contains);
    EXPECT_EQ(rows().keys.size(), contains.size());
    EXPECT_TRUE(std::is_sorted(rows().keys.begin(), rows().keys.end(), [](const std::string &a, const std::string &b) {
        return std::stoi(a) != std::stoi(b) ? std::stoi(a) < std::stoi(b) : std::stoi(a.substr(a.find('.') + 1)) < std::stoi(b.substr(b.find('.') + 1));
    }));

    rows().clear();
    ifindex_populate(add_int_row, false);
    const std::vector<int32_t> ifindexes = rows().ints;
    rows().clear();
    init_index_entAliasMappingTable(add_pair_row<int32_t>);
    ASSERT_EQ(rows().keys.size(), ifindexes.size());
    for (size_t i = 0; i < ifindexes.size(); ++i) {
        const int32_t e = std::stoi(rows().keys[i]);
        EXPECT_EQ(rows().keys[i], std::to_string(e) + ".0");
        EXPECT_EQ(get_entPhysicalClass(e), 10);
        size_t len = 0;
        const uint32_t *alias = get_entAliasMappingIdentifier(e, 0, &len);
        ASSERT_EQ(len, 11 * sizeof(uint32_t));
        EXPECT_EQ(std::vector<uint32_t>(alias, alias + 11),
                  (std::vector<uint32_t>{1, 3, 6, 1, 2, 1, 2, 2, 1, 1, uint32_t(ifindexes[i])}));
        EXPECT_EQ(read_text(get_entPhysicalName, e), read_text(get_ifName, ifindexes[i]));
        EXPECT_EQ(read_text(get_entPhysicalDescr, e), read_text(get_ifDescr, ifindexes[i]));
        EXPECT_EQ(get_entPhysicalClass(get_entPhysicalContainedIn(e)), 3) << "a port sits in its unit";
    }
}

TEST_F(InventoryTest, PartsHaveTheirClassPositionAndName) {
    struct Case {
        int32_t index, klass, parent, position;
        const char *name, *descr;
    };
    const Case cases[] = {
        {kStack, 11, 0, -1, "stack", "VX7300 switch stack"},
        {chassis(1), 3, kStack, 1, "unit 1", "VX7300-6 switch"},
        {chassis(2), 3, kStack, 2, "unit 2", "VX7300-6 switch"},
        {port(1, 5), 10, chassis(1), 5, "eth-1/5", nullptr},  // ifName
        {transceiver(1, 5), 9, port(1, 5), 1, "eth-1/5 transceiver", "SFP+ transceiver"},
        {bay(1, 2), 5, chassis(1), 2, "power supply bay 1/2", "Power supply bay"},
        {psu(1, 2), 6, bay(1, 2), 1, "power supply 1/2", "PSU-300DC power supply"},
        {psu(2, 1), 6, bay(2, 1), 1, "power supply 2/1", "PSU-150AC power supply"},
        {fan(2, 2), 7, chassis(2), 2, "fan 2/2", "FAN-40 fan"},
    };
    const std::vector<int32_t> all = entities();
    for (const Case &c : cases) {
        SCOPED_TRACE(c.index);
        EXPECT_EQ(std::count(all.begin(), all.end(), c.index), 1);
        EXPECT_EQ(exists_entry_entPhysicalTable(c.index), 1);
        EXPECT_EQ(get_entPhysicalClass(c.index), c.klass);
        EXPECT_EQ(get_entPhysicalContainedIn(c.index), c.parent);
        EXPECT_EQ(get_entPhysicalParentRelPos(c.index), c.position);
        EXPECT_EQ(read_text(get_entPhysicalName, c.index), c.name);
        if (c.descr) {
            EXPECT_EQ(read_text(get_entPhysicalDescr, c.index), c.descr);
        }
    }
    for (int32_t absent : {psu(2, 2), transceiver(1, 6), transceiver(1, 1), fan(1, 3), port(1, 7), chassis(3), 999, 0, -5})
        EXPECT_EQ(std::count(all.begin(), all.end(), absent), 0) << absent;
    // Units are the equipment; other parts have no registration.
    size_t len = 0, sys_len = 0;
    const uint32_t *unit_type = get_entPhysicalVendorType(chassis(1), &len);
    const uint32_t *equipment = get_sysObjectID(&sys_len);
    EXPECT_EQ(std::vector<uint32_t>(unit_type, unit_type + len / 4), std::vector<uint32_t>(equipment, equipment + sys_len / 4));
    const uint32_t *fan_type = get_entPhysicalVendorType(fan(1, 1), &len);
    EXPECT_EQ(std::vector<uint32_t>(fan_type, fan_type + len / 4), (std::vector<uint32_t>{0, 0}));
}

// What the control tool takes out goes at the next request, from both
// views; the row of a part that is back comes with the next population.
TEST_F(InventoryTest, PulledModulesAndRemovedUnitsLeaveBothViews) {
    sw().set_module(swsim::Switch::kPsu, 0, 1, SW_MODULE_ABSENT);
    rows().clear();
    EXPECT_EQ(exists_entry_entPhysicalTable(psu(1, 2)), 0);
    EXPECT_EQ(exists_entry_entPhysicalContainsTable(bay(1, 2), psu(1, 2)), 0);
    EXPECT_EQ(exists_entry_entPhysicalTable(bay(1, 2)), 1) << "the empty bay stays";
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"entPhysicalTable " + std::to_string(psu(1, 2)),
                                                        "entPhysicalContainsTable " + std::to_string(bay(1, 2)) + "." +
                                                            std::to_string(psu(1, 2))}));
    EXPECT_EQ(get_swIndivPowerStatus(1, 2), 3) << "absent";
    EXPECT_EQ(get_swInfoPowerSupplies(1), 1);

    sw().set_transceiver(0, 4, false);
    EXPECT_EQ(exists_entry_entPhysicalTable(transceiver(1, 5)), 0);
    sw().set_module(swsim::Switch::kFan, 1, 0, SW_MODULE_ABSENT);
    EXPECT_EQ(exists_entry_entPhysicalTable(fan(2, 1)), 0);
    EXPECT_EQ(exists_entry_entPhysicalContainsTable(chassis(1), fan(2, 1)), 0) << "not its parent anyway";

    sw().set_unit_present(1, false);
    rows().clear();
    for (int32_t e : {chassis(2), port(2, 1), bay(2, 1), psu(2, 1), transceiver(2, 6)})
        EXPECT_EQ(exists_entry_entPhysicalTable(e), 0) << e;
    EXPECT_EQ(exists_entry_entAliasMappingTable(port(2, 1), 0), 0);
    EXPECT_EQ(exists_entry_entLPMappingTable(1, port(2, 1)), 0);
    EXPECT_EQ(exists_entry_switchInfoTable(2), 0);
    EXPECT_EQ(exists_entry_switchIndivFanTable(2, 1), 0);
    EXPECT_EQ(rows().removed.size(), 9u);
    for (int32_t e : entities()) EXPECT_LT(e, chassis(2)) << "nothing of unit 2 is listed";

    sw().set_unit_present(1, true);
    sw().set_module(swsim::Switch::kPsu, 0, 1, SW_MODULE_OK);
    const std::vector<int32_t> back = entities();
    for (int32_t e : {chassis(2), psu(1, 2), port(2, 6)})
        EXPECT_EQ(std::count(back.begin(), back.end(), e), 1) << e;
}

TEST_F(InventoryTest, TheBridgeIsTheOneLogicalEntity) {
    EXPECT_EQ(init_index_entLogicalTable(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1}));
    EXPECT_EQ(read_text(get_entLogicalDescr, 1), "Bridge of the switch stack");
    size_t len = 0;
    const uint32_t *type = get_entLogicalType(1, &len);
    EXPECT_EQ(std::vector<uint32_t>(type, type + len / 4), (std::vector<uint32_t>{1, 3, 6, 1, 2, 1, 17}));
    const uint32_t *domain = get_entLogicalTDomain(1, &len);
    EXPECT_EQ(std::vector<uint32_t>(domain, domain + len / 4), (std::vector<uint32_t>{1, 3, 6, 1, 6, 1, 1}));
    EXPECT_EQ(read_octets(get_entLogicalTAddress, 1), (std::vector<uint8_t>{192, 0, 2, 10, 0, 161}));
    EXPECT_EQ(read_text(get_entLogicalCommunity, 1), "");
    rows().clear();
    init_index_entLPMappingTable(add_pair_row<int32_t>);
    ASSERT_EQ(rows().keys.size(), 12u);
    EXPECT_EQ(rows().keys.front(), "1." + std::to_string(port(1, 1)));
    EXPECT_EQ(rows().keys.back(), "1." + std::to_string(port(2, 6)));
    EXPECT_EQ(get_entLPPhysicalIndex(1, port(2, 3)), port(2, 3));
    EXPECT_EQ(exists_entry_entLPMappingTable(2, port(1, 1)), 0) << "no second logical entity";
}

// ---- the private chassis tables ---------------------------------------------------------

TEST_F(InventoryTest, UnitSummariesFollowTheirModules) {
    using S = swsim::Switch;
    struct Case {
        const char *what;
        int psu1, psu2, fan1;  // SW_MODULE_* of unit 1's bays and first fan
        bool alarm;
        int32_t power, fans, alarms, oper, supplies;
    };
    const Case cases[] = {
        {"all well", SW_MODULE_OK, SW_MODULE_OK, SW_MODULE_OK, false, 1, 1, 1, 1, 2},
        {"one supply pulled", SW_MODULE_OK, SW_MODULE_ABSENT, SW_MODULE_OK, false, 1, 1, 1, 1, 1},
        {"one supply failed", SW_MODULE_FAILED, SW_MODULE_OK, SW_MODULE_OK, false, 2, 1, 1, 2, 2},
        {"no supply works", SW_MODULE_FAILED, SW_MODULE_ABSENT, SW_MODULE_OK, false, 3, 1, 1, 3, 1},
        {"a fan stopped", SW_MODULE_OK, SW_MODULE_OK, SW_MODULE_FAILED, false, 1, 2, 1, 2, 2},
        {"a fan pulled", SW_MODULE_OK, SW_MODULE_OK, SW_MODULE_ABSENT, false, 1, 2, 1, 2, 2},
        {"an alarm raised", SW_MODULE_OK, SW_MODULE_OK, SW_MODULE_OK, true, 1, 1, 2, 2, 2},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        sw().set_module(S::kPsu, 0, 0, c.psu1);
        sw().set_module(S::kPsu, 0, 1, c.psu2);
        sw().set_module(S::kFan, 0, 0, c.fan1);
        sw().set_alarm_input(0, 1, c.alarm);
        EXPECT_EQ(get_swInfoPowerStatus(1), c.power);
        EXPECT_EQ(get_swInfoFanStatus(1), c.fans);
        EXPECT_EQ(get_swInfoAlarmStatus(1), c.alarms);
        EXPECT_EQ(get_swInfoOperStatus(1), c.oper);
        EXPECT_EQ(get_swInfoPowerSupplies(1), c.supplies);
        EXPECT_EQ(get_swIndivPowerStatus(1, 1), c.psu1 == SW_MODULE_OK ? 1 : c.psu1 == SW_MODULE_FAILED ? 2 : 3);
        EXPECT_EQ(get_swIndivFanStatus(1, 1), c.fan1 == SW_MODULE_OK ? 1 : c.fan1 == SW_MODULE_FAILED ? 2 : 3);
        EXPECT_EQ(get_swIndivAlarmStatus(1, 2), c.alarm ? 2 : 1);
        // Output 1 follows failed modules, output 2 raised alarms.
        EXPECT_EQ(get_swIndivAlarmOutStatus(1), c.psu1 == SW_MODULE_FAILED || c.fan1 == SW_MODULE_FAILED ? 2 : 1);
        EXPECT_EQ(get_swIndivAlarmOutStatus(2), c.alarm ? 2 : 1);
        EXPECT_EQ(get_swInfoOperStatus(2), 1) << "unit 2 is untouched";
    }
    sw().set_alarm_output(1, true);
    EXPECT_EQ(get_swIndivAlarmOutStatus(2), 2) << "forced";
    EXPECT_EQ(get_swIndivAlarmOutStatus(3), 1) << "no third output";
}

TEST_F(InventoryTest, UnitIdentityAndLoad) {
    sw().set_load(1, swsim::Switch::Load{64, 32, 0, 0});
    sw().set_temperature(1, 50);
    sw().set_module(swsim::Switch::kFan, 1, 1, SW_MODULE_FAILED);
    EXPECT_EQ(read_text(get_swInfoUnitModel, 2), "VX7300-6");
    EXPECT_EQ(read_text(get_swInfoSerialNumber, 2), "SIM73001002");
    EXPECT_EQ(read_text(get_swInfoHardwareVersion, 2), "B1");
    EXPECT_EQ(read_text(get_swInfoFirmwareVersion, 2), "3.2.7 build 1142");
    uint8_t mac[6];
    ASSERT_EQ(cfg_get_unit_mac(1, mac), 0);
    EXPECT_EQ(read_octets(get_swInfoMacAddress, 2), std::vector<uint8_t>(mac, mac + 6));
    EXPECT_EQ(get_swInfoPortNumber(2), 6);
    EXPECT_EQ(get_swInfoCpuUsage(2), 64);
    EXPECT_EQ(get_swInfoMemUsage(2), 32);
    EXPECT_EQ(get_swInfoTemperature(2), 54) << "a stopped fan warms the unit";
    EXPECT_EQ(get_swInfoFans(2), 2);
    EXPECT_EQ(get_swInfoAlarmInputs(2), 2);
    EXPECT_EQ(get_swInfoRole(1), 1);
    EXPECT_EQ(get_swInfoRole(2), 3);
    EXPECT_EQ(get_switchNumber(), 2);
    EXPECT_EQ(get_swSlotNumber(), 8);
    EXPECT_EQ(get_swChassisModel(), 7300);
    sw().fault_set("cfg_chassis_get_info", -1, -1);
    EXPECT_EQ(get_swChassisModel(), 0);
    EXPECT_EQ(init_index_switchIndivPowerTable(add_pair_row<int32_t>), 0);
    EXPECT_TRUE(rows().keys.empty()) << "no shape, no bays";
}

TEST_F(InventoryTest, PositionRowsFollowTheShapeAndTheUnits) {
    struct Table {
        int (*init)(void *(*)(int32_t, int32_t));
        int (*exists)(int32_t, int32_t);
        int32_t (*unit)(int32_t, int32_t);
        int32_t (*index)(int32_t, int32_t);
    };
    const Table tables[] = {
        {init_index_switchIndivPowerTable, exists_entry_switchIndivPowerTable, get_swIndivPowerUnit, get_swIndivPowerIndex},
        {init_index_switchIndivFanTable, exists_entry_switchIndivFanTable, get_swIndivFanUnit, get_swIndivFanIndex},
        {init_index_switchIndivAlarmTable, exists_entry_switchIndivAlarmTable, get_swIndivAlarmUnit, get_swIndivAlarmIndex},
    };
    for (const Table &t : tables) {
        rows().clear();
        EXPECT_EQ(t.init(add_pair_row<int32_t>), 0);
        EXPECT_EQ(rows().keys, (std::vector<std::string>{"1.1", "1.2", "2.1", "2.2"}));
        EXPECT_EQ(t.unit(2, 1), 2);
        EXPECT_EQ(t.index(2, 1), 1);
        EXPECT_EQ(t.exists(2, 2), 1);
        EXPECT_EQ(t.exists(2, 3), 0);
        EXPECT_EQ(t.exists(9, 1), 0);
        EXPECT_EQ(rows().removed.size(), 1u) << "the position beyond the unit's, not the unit beyond the stack";
    }
    rows().clear();
    init_index_switchIndivAlarmOutTable(add_int_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 2}));
    EXPECT_EQ(exists_entry_switchIndivAlarmOutTable(3), 0);
    EXPECT_EQ(exists_entry_switchIndivAlarmOutTable(0), 0);
}

// The first present management processor runs the stack; when it leaves,
// the standby one takes over, in both tables.
TEST_F(InventoryTest, TheStandbyProcessorTakesOver) {
    boot(R"({"units": [{"ports": 4, "mpu": true}, {"ports": 4}, {"ports": 4, "mpu": true}],
             "chassis": {"units": [{"unit": 3, "cpu": 12, "mem": 34, "cpu_swing": 0, "mem_swing": 0}]}})");
    EXPECT_EQ(init_index_switchMpuTable(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 3}));
    EXPECT_EQ(get_swMpuUnit(3), 3);
    EXPECT_EQ(get_swMpuRole(1), 1);
    EXPECT_EQ(get_swMpuRole(3), 2);
    EXPECT_EQ(get_swInfoRole(3), 2);
    EXPECT_EQ(get_swMpuCpuUsage(3), 12);
    EXPECT_EQ(get_swMpuMemUsage(3), 34);
    EXPECT_EQ(get_cpuStandbyUsageValue(1), 12) << "the standby processor's load";
    EXPECT_EQ(exists_entry_switchMpuTable(2), 0) << "not a management processor";

    sw().set_unit_present(0, false);
    EXPECT_EQ(exists_entry_switchMpuTable(1), 0);
    EXPECT_EQ(get_swMpuRole(3), 1);
    EXPECT_EQ(get_swInfoRole(3), 1);
    EXPECT_EQ(get_cpuStandbyUsageValue(1), 0) << "no standby left";
}

}  // namespace
}  // namespace unit
