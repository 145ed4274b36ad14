// The LLDP access layer against the simulated switch: the neighbour record
// read at its fixed offsets, the neighbour cache's fetch rule seen in the
// call journal, identifiers by subtype, the TLV-enable write, the
// management address and its OID, the port rows and the management port's
// own calls.
#include <unistd.h>

#include <cstring>
#include <functional>
#include <tuple>

#include "agent/ifindex.hpp"
#include "fixture.hpp"
#include "mibs/lldp/ipc.hpp"
#include "swplatform/records_lldp.hpp"

namespace unit {
namespace {

using Calls = std::vector<std::string>;
using Neighbour = swsim::Switch::LldpNeighbour;
namespace nb = swp::lldp_neighbor;
constexpr int32_t kMgmt = 1024;

// Remote rows a population added, as "port.index" (time marks vary) or
// "port.index.subtype.octets" for addresses, "port.index.type" for TLVs.
std::vector<std::string> &added() {
    static std::vector<std::string> rows;
    return rows;
}
struct Added {
    uint32_t tm;
    int32_t port, idx;
};
std::vector<Added> &added_keys() {
    static std::vector<Added> keys;
    return keys;
}
void *add_remote(uint32_t tm, int32_t port, int32_t idx) {
    added().push_back(std::to_string(port) + "." + std::to_string(idx));
    added_keys().push_back({tm, port, idx});
    return &added();
}
void *add_man_addr(uint32_t, int32_t port, int32_t idx, int32_t subtype, const uint8_t *a, size_t n) {
    added().push_back(std::to_string(port) + "." + std::to_string(idx) + "." + std::to_string(subtype) + "." +
                      text(a, n));
    return &added();
}
void *add_addr_row(int32_t subtype, const uint8_t *a, size_t n) {
    rows().keys.push_back(std::to_string(subtype) + "." + mac_text(a, n));
    return &rows();
}
void *add_unknown_tlv(uint32_t, int32_t port, int32_t idx, int32_t type) {
    added().push_back(std::to_string(port) + "." + std::to_string(idx) + "." + std::to_string(type));
    return &added();
}

Neighbour neighbour(int chassis_subtype, const std::string &chassis, int port_subtype, const std::string &port) {
    Neighbour n;
    n.chassis_subtype = chassis_subtype;
    n.chassis_id = chassis;
    n.port_subtype = port_subtype;
    n.port_id = port;
    return n;
}

class LldpTest : public SwitchTest {
protected:
    // Two units of 8 ports; neighbours on 1/2 (MAC chassis, a management
    // address), 2/3 (a local chassis ID "AB", an unknown TLV) and the
    // management port (a MAC port ID).
    std::string scenario() const override {
        return R"({"units": [{"ports": 8, "sfp_ports": 0}, {"ports": 8, "sfp_ports": 0}],
          "lldp": {"system_description": "lab switch",
                   "capabilities": {"supported": ["bridge", "router", "station"], "enabled": ["router"]},
                   "neighbours": [
            {"port": "1/2", "chassis_id": "00:1b:21:aa:00:01", "port_id": "Gi0/1", "system_name": "core",
             "port_description": "uplink", "system_description": "core router",
             "management_address": "192.0.2.1", "management_interface": 7,
             "capabilities": {"supported": ["bridge", "router"], "enabled": ["router"]}},
            {"port": "2/3", "chassis_id": "AB", "chassis_subtype": 7, "port_id": "eth0",
             "unknown_tlv": {"type": 100, "info": "0a0b0c"}},
            {"port": "mgmt", "chassis_id": "00:1b:21:aa:00:02", "port_id": "00:1b:21:aa:00:03", "port_subtype": 3}]}})";
    }
    void SetUp() override {
        SwitchTest::SetUp();
        added().clear();
        added_keys().clear();
    }
    // The row of the first neighbour of a port, after the refresh a request
    // starts with.
    Added row_on(int unit0, int port0) {
        init_ipc_index_lldpRemTable(add_remote);
        const auto heard = sw().lldp_neighbours(unit0, port0);
        if (heard.empty()) {
            ADD_FAILURE() << "no neighbour on " << unit0 << "/" << port0;
            return {};
        }
        const int32_t port = unit0 == swsim::Switch::kLldpMgmtUnit ? kMgmt : unit0 * 64 + port0 + 1;
        return {heard[0].time_mark, port, heard[0].remote_index};
    }
    static constexpr int32_t kPort12 = 2, kPort23 = 64 + 3;
};

// ---- the neighbour record ------------------------------------------------------------------------

// Bytes placed at the record's fixed offsets are what the readers return.
TEST(LldpRecord, FieldsAreReadBigEndianAtTheirOffsets) {
    std::vector<uint8_t> r(nb::kSize, 0);
    auto put = [&](std::size_t at, std::initializer_list<uint8_t> bytes) { std::copy(bytes.begin(), bytes.end(), r.begin() + long(at)); };
    put(0, {0x01, 0x02, 0x03, 0x04});     // time mark
    put(4, {0xff, 0xff, 0xff, 0xfe});     // remote index -2
    put(8, {0x00, 0x07});                 // chassis subtype
    put(265, {200});                      // chassis ID length
    put(266, {0x01, 0x05});               // port subtype 261
    put(523, {255});                      // port ID length
    put(1292, {0x00, 0x94});              // capabilities supported
    put(1294, {0x80, 0x10});              // capabilities enabled
    put(1309, {6});                       // management address family
    put(1341, {200});                     // address length beyond the field
    put(1342, {3});                       // interface numbering
    put(1343, {1});                       // address present
    put(1344, {0x00, 0x01, 0x00, 0x02});  // interface number
    put(4061, {120});                     // unknown TLV type
    put(4062, {0x01, 0xff});              // info length 511
    const uint8_t *p = r.data();
    const std::tuple<const char *, uint64_t, uint64_t> cases[] = {
        {"time mark", nb::time_mark(p), 0x01020304},
        {"remote index", uint64_t(int64_t(nb::remote_index(p))), uint64_t(int64_t(-2))},
        {"chassis subtype", nb::chassis_subtype(p), 7},
        {"chassis ID length", nb::chassis_id_len(p), 200},
        {"port subtype", nb::port_subtype(p), 261},
        {"port ID length", nb::port_id_len(p), 255},
        {"capabilities", nb::caps_supported(p), 0x94},
        {"enabled", nb::caps_enabled(p), 0x8010},
        {"address family", nb::mgmt_subtype(p), 6},
        {"address length held to its field", nb::mgmt_addr_len(p), 31},
        {"interface numbering", nb::mgmt_if_subtype(p), 3},
        {"address present", nb::mgmt_present(p), 1},
        {"interface number", uint64_t(nb::mgmt_if_id(p)), 0x10002},
        {"unknown TLV type", nb::unknown_tlv_type(p), 120},
        {"unknown TLV length", nb::unknown_tlv_len(p), 511},
    };
    for (const auto &[what, got, want] : cases) EXPECT_EQ(got, want) << what;
    put(1343, {2});  // only 1 says present
    EXPECT_FALSE(nb::mgmt_present(p));
}

// What the simulated platform hands over sits at the fixed offsets too.
TEST_F(LldpTest, PlatformRecordsCarryTheNeighbourAtTheFixedOffsets) {
    uint8_t *records = nullptr;
    int count = -1;
    ASSERT_EQ(cfg_get_lldp_neighbors_info(0, 1, &records, &count), 0);
    ASSERT_EQ(count, 1);
    const uint8_t *p = records;
    const Neighbour n = sw().lldp_neighbours(0, 1).at(0);
    EXPECT_EQ(swp::load_be32(p + 0), n.time_mark);
    EXPECT_EQ(int32_t(swp::load_be32(p + 4)), n.remote_index);
    EXPECT_EQ(swp::load_be16(p + 8), 4);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(p + 10), 6), std::string("\x00\x1b\x21\xaa\x00\x01", 6));
    EXPECT_EQ(p[265], 6);
    EXPECT_EQ(swp::load_be16(p + 266), 5);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(p + 268)), "Gi0/1");
    EXPECT_EQ(p[523], 5);
    EXPECT_EQ(p[1309], 1);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(p + 1310), 4), std::string("\xc0\x00\x02\x01", 4));
    EXPECT_EQ(p[1341], 4);
    EXPECT_EQ(p[1343], 1);
    EXPECT_EQ(swp::load_be32(p + 1344), 7u);
    EXPECT_EQ(p[4061], 0);
    std::free(records);
}

// ---- the neighbour cache -------------------------------------------------------------------------

TEST_F(LldpTest, UnchangedHashFetchesNoNeighbourAndAChangeFetchesEachPortOncePerTable) {
    const size_t kPorts = 16;
    struct Consumer {
        const char *name;
        std::function<void()> populate;
    };
    const Consumer tables[] = {
        {"lldpRemTable", [] { init_ipc_index_lldpRemTable(add_remote); }},
        {"lldpRemManAddrTable", [] { init_ipc_index_lldpRemManAddrTable(add_man_addr); }},
        {"lldpRemUnknownTLVTable", [] { init_ipc_index_lldpRemUnknownTLVTable(add_unknown_tlv); }},
    };
    auto fetches = [&](const Consumer &c) {
        const auto calls = calls_of(c.populate);
        size_t ports = 0, mgmt = 0, hashes = 0;
        for (const auto &call : calls) {
            ports += call.call == "cfg_get_lldp_neighbors_info";
            mgmt += call.call == "cfg_get_lldp_mgmt_neighbors_info";
            hashes += call.call == "cfg_lldp_status_get_hash";
        }
        EXPECT_EQ(hashes, 1u) << c.name;
        EXPECT_EQ(mgmt == 0, ports == 0) << c.name;
        return ports;
    };
    for (int round = 0; round < 2; ++round) {
        // After a change, every table fetches every port once ...
        for (const Consumer &c : tables) EXPECT_EQ(fetches(c), kPorts) << c.name << " round " << round;
        // ... and then, walked in any order and again, nothing.
        for (int again = 0; again < 2; ++again)
            for (const Consumer &c : tables) EXPECT_EQ(fetches(c), 0u) << c.name;
        sw().lldp_hear(1, 0, neighbour(4, std::string("\x02\0\0\0\0\x09", 6), 5, "p" + std::to_string(round)));
    }
    // A read that fails leaves the cache to be fetched again, hash or not.
    sw().fault_set("cfg_get_lldp_neighbors_info", -1, 1);
    EXPECT_EQ(init_ipc_index_lldpRemTable(add_remote), 0);
    EXPECT_EQ(fetches(tables[0]), kPorts);
    EXPECT_EQ(fetches(tables[0]), 0u);
}

TEST_F(LldpTest, RowsFollowTheNeighboursAndVanishedOnesAreRemoved) {
    const Neighbour core = sw().lldp_neighbours(0, 1).at(0);
    init_ipc_index_lldpRemTable(add_remote);
    init_ipc_index_lldpRemManAddrTable(add_man_addr);
    init_ipc_index_lldpRemUnknownTLVTable(add_unknown_tlv);
    // Every neighbour a remote row, the management port's at 1024; only
    // the one with an address an address row; every one an unknown TLV
    // row, keyed by its TLV's type (0 without one).
    const int32_t mgmt_idx = sw().lldp_neighbours(swsim::Switch::kLldpMgmtUnit, 0).at(0).remote_index;
    const int32_t tlv_idx = sw().lldp_neighbours(1, 2).at(0).remote_index;
    const std::string c = std::to_string(core.remote_index), m = std::to_string(mgmt_idx), t = std::to_string(tlv_idx);
    EXPECT_EQ(added(), (Calls{"1024." + m, "2." + c, "67." + t,                        // remote
                              "2." + c + ".1." + std::string("\xc0\x00\x02\x01", 4),  // address
                              "1024." + m + ".0", "2." + c + ".0", "67." + t + ".100"}));

    // The neighbour on 1/2 goes: its rows are checked away, the others stay.
    const Added row = row_on(0, 1);
    sw().lldp_remove(0, 1, core.remote_index);
    init_ipc_index_lldpRemTable(add_remote);
    EXPECT_EQ(exists_ipc_entry_lldpRemTable(row.tm, row.port, row.idx), 0);
    EXPECT_EQ(exists_ipc_entry_lldpRemManAddrTable(row.tm, row.port, row.idx, 1, bytes("\xc0\x00\x02\x01"), 4), 0);
    EXPECT_EQ(exists_ipc_entry_lldpRemUnknownTLVTable(row.tm, row.port, row.idx, 0), 0);
    const std::string key = std::to_string(row.tm) + ".2." + c;
    EXPECT_EQ(rows().removed, (Calls{"lldpRemTable " + key, "lldpRemManAddrTable " + key + ".1.c0000201",
                                     "lldpRemUnknownTLVTable " + key + ".0"}));
    const Added other = row_on(1, 2);
    EXPECT_EQ(exists_ipc_entry_lldpRemTable(other.tm, other.port, other.idx), 1);
    EXPECT_EQ(exists_ipc_entry_lldpRemUnknownTLVTable(other.tm, other.port, other.idx, 100), 1);
    // A row of another type, time mark or port is no neighbour's.
    EXPECT_EQ(exists_ipc_entry_lldpRemUnknownTLVTable(other.tm, other.port, other.idx, 101), 0);
    EXPECT_EQ(exists_ipc_entry_lldpRemTable(other.tm + 1, other.port, other.idx), 0);
    EXPECT_EQ(exists_ipc_entry_lldpRemTable(other.tm, kPort12, other.idx), 0);

    // A change moves the time mark: the row under the old one goes.
    usleep(20'000);  // a time mark counts hundredths of a second
    sw().lldp_change(1, 2, other.idx, neighbour(7, "AB", 5, "eth1"));
    EXPECT_EQ(exists_ipc_entry_lldpRemTable(other.tm, other.port, other.idx), 1);  // the cache is per request
    const Added changed = row_on(1, 2);
    EXPECT_NE(changed.tm, other.tm);
    EXPECT_EQ(exists_ipc_entry_lldpRemTable(other.tm, other.port, other.idx), 0);
    EXPECT_EQ(read_text(get_ipc_lldpRemPortId, changed.tm, changed.port, changed.idx), "eth1");
}

// ---- remote values -------------------------------------------------------------------------------

TEST_F(LldpTest, IdentifiersReadByTheirSubtypes) {
    struct Case {
        int chassis_subtype;
        std::string chassis;
        int port_subtype;
        std::string port;
        std::string chassis_text;  // lldpRemChassisId
    };
    const Case cases[] = {
        {4, std::string("\x00\x1b\x21\xaa\x00\x09", 6), 5, "Gi0/9", "00:1b:21:aa:00:09"},
        {7, "AB", 5, "x", "4142"},                       // local: octets in hexadecimal
        {5, std::string("\x01\xc0\x00\x02\x07", 5), 7, "port-7", "01c0000207"},  // network address
        {6, "eth0", 3, std::string("\x00\x1b\x21\x00\x00\x01", 6), "65746830"},
    };
    for (const Case &k : cases) {
        SCOPED_TRACE(k.chassis_text);
        sw().lldp_remove(0, 4, 0);
        sw().lldp_hear(0, 4, neighbour(k.chassis_subtype, k.chassis, k.port_subtype, k.port));
        const Added r = row_on(0, 4);
        EXPECT_EQ(get_ipc_lldpRemChassisIdSubtype(r.tm, r.port, r.idx), k.chassis_subtype);
        EXPECT_EQ(read_text(get_ipc_lldpRemChassisId, r.tm, r.port, r.idx), k.chassis_text);
        EXPECT_EQ(get_ipc_lldpRemPortIdSubtype(r.tm, r.port, r.idx), k.port_subtype);
        EXPECT_EQ(read_text(get_ipc_lldpRemPortId, r.tm, r.port, r.idx), k.port);  // octets, as long as said
    }
}

TEST_F(LldpTest, RemoteTextsCapabilitiesAndAddressesOfTheCachedRecord) {
    const Added r = row_on(0, 1);
    EXPECT_EQ(read_text(get_ipc_lldpRemSysName, r.tm, r.port, r.idx), "core");
    EXPECT_EQ(read_text(get_ipc_lldpRemPortDesc, r.tm, r.port, r.idx), "uplink");
    EXPECT_EQ(read_text(get_ipc_lldpRemSysDesc, r.tm, r.port, r.idx), "core router");
    // bridge (2) and router (4) as BITS: 0x20 | 0x08; router alone 0x08.
    EXPECT_EQ(read_octets(get_ipc_lldpRemSysCapSupported, r.tm, r.port, r.idx), (std::vector<uint8_t>{0x28}));
    EXPECT_EQ(read_octets(get_ipc_lldpRemSysCapEnabled, r.tm, r.port, r.idx), (std::vector<uint8_t>{0x08}));
    const uint8_t *a = bytes("\xc0\x00\x02\x01");
    EXPECT_EQ(get_ipc_lldpRemManAddrIfSubtype(r.tm, r.port, r.idx, 1, a, 4), 2);
    EXPECT_EQ(get_ipc_lldpRemManAddrIfId(r.tm, r.port, r.idx, 1, a, 4), 7);
    EXPECT_EQ(get_ipc_lldpRemManAddrIfId(r.tm, r.port, r.idx, 1, bytes("\xc0\x00\x02\x02"), 4), 0);
    size_t len = 0;
    const uint32_t *oid = get_ipc_lldpRemManAddrOID(r.tm, r.port, r.idx, 1, a, 4, &len);
    EXPECT_EQ(std::vector<uint32_t>(oid, oid + len / 4), (std::vector<uint32_t>{0, 0}));

    const Added t = row_on(1, 2);
    EXPECT_EQ(read_octets(get_ipc_lldpRemUnknownTLVInfo, t.tm, t.port, t.idx, 100), (std::vector<uint8_t>{10, 11, 12}));
    EXPECT_EQ(read_text(get_ipc_lldpRemUnknownTLVInfo, t.tm, t.port, t.idx, 99), "");
    // No neighbour: no value, nothing read from the platform.
    EXPECT_TRUE(calls_of([&] { EXPECT_EQ(read_text(get_ipc_lldpRemSysName, r.tm, r.port, r.idx + 100), ""); }).empty());
    EXPECT_EQ(get_ipc_lldpRemChassisIdSubtype(r.tm, r.port, r.idx + 100), 0);
}

// ---- the switch's side ---------------------------------------------------------------------------

TEST_F(LldpTest, WritingTlvsTxEnableMapsSevenBitsAndAlwaysTurnsPortDescriptionOff) {
    struct Case {
        std::string octets;
        int sys_name, sys_desc, sys_cap;  // the port description is written 0 each time
        uint8_t reads;
    };
    const Case cases[] = {
        {"\xf0", 1, 1, 1, 0x70}, {"\x80", 0, 0, 0, 0x00}, {"\x50", 1, 0, 1, 0x50},
        {"\x20\xff", 0, 1, 0, 0x20}, {"", 0, 0, 0, 0x00},
    };
    for (const Case &k : cases) {
        SCOPED_TRACE(int(k.reads));
        for (int32_t port : {3, kMgmt}) {
            const std::string at = port == kMgmt ? "mgmt_" : "";
            const std::string args = port == kMgmt ? "" : "0,2,";
            const Calls calls = call_texts([&] {
                EXPECT_EQ(set_ipc_lldpPortConfigTLVsTxEnable(port, bytes(k.octets.c_str()), k.octets.size()), 0);
            });
            EXPECT_EQ(calls, (Calls{"cfg_set_lldp_" + at + "port_portDescEnable(" + args + "0)",
                                    "cfg_set_lldp_" + at + "port_sysNameEnable(" + args + std::to_string(k.sys_name) + ")",
                                    "cfg_set_lldp_" + at + "port_sysDescEnable(" + args + std::to_string(k.sys_desc) + ")",
                                    "cfg_set_lldp_" + at + "port_sysCapEnable(" + args + std::to_string(k.sys_cap) + ")"}));
            EXPECT_EQ(read_octets(get_ipc_lldpPortConfigTLVsTxEnable, port), (std::vector<uint8_t>{k.reads}));
        }
    }
    // The first failing write stops the sequence and is the result.
    sw().fault_set("cfg_set_lldp_port_sysNameEnable", -7, 1);
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_ipc_lldpPortConfigTLVsTxEnable(3, bytes("\xf0"), 1), -7); }).size(), 2u);
}

TEST_F(LldpTest, PortSettingsReachTheUserOrTheManagementPortCall) {
    const std::tuple<int32_t, std::string> ports[] = {{3, "cfg_set_lldp_port_adminStatus(0,2,2)"},
                                                      {kMgmt, "cfg_set_lldp_mgmt_port_adminStatus(2)"},
                                                      {640, "cfg_set_lldp_port_adminStatus(0,639,2)"},
                                                      {600, "cfg_set_lldp_port_adminStatus(0,599,2)"}};
    for (const auto &[port, call] : ports) EXPECT_EQ(call_texts([&] { set_ipc_lldpPortConfigAdminStatus(port, 2); }), Calls{call});
    for (int32_t port : {3, kMgmt}) {
        EXPECT_EQ(get_ipc_lldpPortConfigAdminStatus(port), 2);
        EXPECT_EQ(get_ipc_lldpPortConfigNotificationEnable(port), 2);
        EXPECT_EQ(set_ipc_lldpPortConfigNotificationEnable(port, 1), 0);
        EXPECT_EQ(get_ipc_lldpPortConfigNotificationEnable(port), 1);
        // Anything but true(1) writes 0.
        EXPECT_EQ(calls_of([&] { set_ipc_lldpPortConfigNotificationEnable(port, 7); }).at(0).args.back(), '0');
        EXPECT_EQ(get_ipc_lldpPortConfigNotificationEnable(port), 2);
    }
    // The platform's refusal is the result; a record it cannot read reads 0.
    EXPECT_LT(set_ipc_lldpPortConfigAdminStatus(3, 9), 0);
    EXPECT_LT(set_ipc_lldpPortConfigAdminStatus(640, 3), 0);
    sw().fault_set("cfg_get_lldp_intf_info", -1, -1);
    EXPECT_EQ(get_ipc_lldpPortConfigAdminStatus(3), 0);
    EXPECT_EQ(get_ipc_lldpPortConfigNotificationEnable(3), 0);
    EXPECT_EQ(read_text(get_ipc_lldpLocPortId, 3), "");
    EXPECT_EQ(get_ipc_lldpPortConfigAdminStatus(kMgmt), 2);
}

TEST_F(LldpTest, PortRowsAreTheUserPortsOfKnownUnitsAndTheManagementPort) {
    init_ipc_index_lldpLocPortTable(add_int_row);
    std::vector<int32_t> want;
    for (int32_t i = 1; i <= 8; ++i) want.push_back(i);
    for (int32_t i = 65; i <= 72; ++i) want.push_back(i);
    want.push_back(kMgmt);
    EXPECT_EQ(rows().ints, want);

    // A unit taken out stays known: its rows stay, as the management port's.
    sw().set_unit_present(1, false);
    rows().clear();
    init_ipc_index_lldpStatsRxPortTable(add_int_row);
    EXPECT_EQ(rows().ints.size(), 9u);
    const std::tuple<int32_t, int> checks[] = {{65, 1}, {kMgmt, 1}, {9, 0}, {1023, 0}, {600, 0}, {-5, 0}, {INT32_MIN, 0}};
    for (const auto &[index, exists] : checks) EXPECT_EQ(exists_ipc_entry_lldpStatsTxPortTable(index), exists) << index;
    EXPECT_EQ(rows().removed, (Calls{"lldpStatsTxPortTable 9", "lldpStatsTxPortTable 1023", "lldpStatsTxPortTable 600",
                                     "lldpStatsTxPortTable -5", "lldpStatsTxPortTable " + std::to_string(INT32_MIN)}));
}

TEST_F(LldpTest, LocalSystemAndPortValues) {
    char host[256] = {};
    gethostname(host, sizeof host);
    EXPECT_EQ(read_text(get_ipc_lldpLocSysName), host);
    EXPECT_EQ(get_ipc_lldpLocChassisIdSubtype(), 4);
    EXPECT_EQ(read_text(get_ipc_lldpLocChassisId), "02:00:5e:10:00:00");  // unit 1's MAC
    EXPECT_EQ(read_text(get_ipc_lldpLocSysDesc), "lab switch");
    // bridge, router, station: 0x20 | 0x08; station (bit 7) has no place.
    EXPECT_EQ(read_octets(get_ipc_lldpLocSysCapSupported), (std::vector<uint8_t>{0x28}));
    EXPECT_EQ(read_octets(get_ipc_lldpLocSysCapEnabled), (std::vector<uint8_t>{0x08}));
    EXPECT_EQ(get_ipc_lldpLocPortIdSubtype(3), 5);
    EXPECT_EQ(read_text(get_ipc_lldpLocPortId, 66), "2/2");
    EXPECT_EQ(read_text(get_ipc_lldpLocPortId, kMgmt), "mgmt");
    EXPECT_EQ(read_text(get_ipc_lldpLocPortDesc, 66), read_text(get_ifDescr, 66));
    EXPECT_EQ(read_text(get_ipc_lldpLocPortDesc, kMgmt), "Management port");
    // The switch's record unreadable: no chassis ID.
    sw().fault_set("cfg_get_lldp_global_info", -1, 1);
    EXPECT_EQ(read_text(get_ipc_lldpLocChassisId), "");
}

TEST_F(LldpTest, CountersAndRemoteTableStatistics) {
    // The neighbour on 1/2 has sent the frame it was heard by.
    EXPECT_GE(get_ipc_lldpStatsRxPortFramesTotal(kPort12), 1u);
    EXPECT_EQ(get_ipc_lldpStatsRxPortFramesTotal(3), 0u);
    EXPECT_GE(get_ipc_lldpStatsRxPortTLVsUnrecognizedTotal(kPort23), 1u);
    EXPECT_EQ(get_ipc_lldpStatsRxPortTLVsUnrecognizedTotal(kPort12), 0u);
    EXPECT_EQ(get_ipc_lldpStatsRemTablesInserts(), 3u);
    const uint32_t rx = get_ipc_lldpStatsRxPortFramesTotal(kPort12);
    sw().set_uptime_cs(12'345);  // the switch has been up a while: the change has a time mark
    sw().lldp_remove(0, 1, 0, true);
    EXPECT_EQ(get_ipc_lldpStatsRxPortAgeoutsTotal(kPort12), 1u);
    EXPECT_GE(get_ipc_lldpStatsRxPortFramesTotal(kPort12), rx);  // what it received stays counted
    EXPECT_EQ(get_ipc_lldpStatsRemTablesDeletes(), 1u);
    EXPECT_EQ(get_ipc_lldpStatsRemTablesAgeouts(), 1u);
    EXPECT_GE(get_ipc_lldpStatsRemTablesLastChangeTime(), 12'345u);
    // Unreadable: 0.
    sw().fault_set("cfg_get_lldp_global_stats_info", -1, 1);
    EXPECT_EQ(get_ipc_lldpStatsRemTablesInserts(), 0u);
    sw().fault_set("cfg_get_lldp_mgmt_status_intf_counters", -1, 1);
    EXPECT_TRUE(call_texts([] { EXPECT_EQ(get_ipc_lldpStatsTxPortFramesTotal(kMgmt), 0u); }) ==
                Calls{"cfg_get_lldp_mgmt_status_intf_counters()"});
    // The timers pass through.
    EXPECT_EQ(get_ipc_lldpMessageTxInterval(), 30);
    EXPECT_EQ(set_ipc_lldpMessageTxInterval(60), 0);
    EXPECT_EQ(get_ipc_lldpMessageTxInterval(), 60);
    EXPECT_LT(set_ipc_lldpMessageTxHoldMultiplier(11), 0);
    EXPECT_EQ(get_ipc_lldpMessageTxHoldMultiplier(), 4);
}

// ---- the management address ----------------------------------------------------------------------

class LldpManAddrTest : public LldpTest {
protected:
    std::string scenario() const override { return scenario_; }
    std::string scenario_ = R"({"lldp": {"management_address": "192.0.2.44", "management_interface": 1005}})";
    std::vector<uint32_t> oid(int32_t subtype, const char *addr, size_t len) {
        size_t n = 0;
        const uint32_t *p = get_ipc_lldpLocManAddrOID(subtype, bytes(addr), len, &n);
        return std::vector<uint32_t>(p, p + n / 4);
    }
};

TEST_F(LldpManAddrTest, OneRowOfTheIpv4AddressOrTheMac) {
    init_ipc_index_lldpLocManAddrTable(add_addr_row);
    EXPECT_EQ(get_ipc_lldpLocManAddrLen(1, bytes("\xc0\x00\x02\x2c"), 4), 4);
    EXPECT_EQ(get_ipc_lldpLocManAddrIfSubtype(1, bytes("\xc0\x00\x02\x2c"), 4), 2);
    EXPECT_EQ(get_ipc_lldpLocManAddrIfId(1, bytes("\xc0\x00\x02\x2c"), 4), 1005);
    EXPECT_EQ(exists_ipc_entry_lldpLocManAddrTable(1, bytes("\xc0\x00\x02\x2c"), 4), 1);
    EXPECT_EQ(exists_ipc_entry_lldpLocManAddrTable(1, bytes("\xc0\x00\x02\x2d"), 4), 0);
    EXPECT_EQ(exists_ipc_entry_lldpLocManAddrTable(6, bytes("\xc0\x00\x02\x2c"), 4), 0);
    EXPECT_EQ(get_ipc_lldpLocManAddrLen(1, bytes("\xc0\x00\x02"), 3), 0);
    EXPECT_EQ(rows().removed, (Calls{"lldpLocManAddrTable 1.c000022d", "lldpLocManAddrTable 6.c000022c"}));
    // The default OID: ifIndex, 1.3.6.1.2.1.2.2.1.1.
    EXPECT_EQ(oid(1, "\xc0\x00\x02\x2c", 4), (std::vector<uint32_t>{1, 3, 6, 1, 2, 1, 2, 2, 1, 1}));
    EXPECT_EQ(oid(6, "\xc0\x00\x02\x2c", 4), (std::vector<uint32_t>{0, 0}));

    scenario_ = R"({"lldp": {"management_address": "mac"}})";
    boot(scenario_);
    rows().clear();
    init_ipc_index_lldpLocManAddrTable(add_addr_row);
    EXPECT_EQ(rows().keys, (Calls{"6.02:00:5e:10:00:00"}));
    EXPECT_EQ(get_ipc_lldpLocManAddrLen(6, bytes("\x02\x00\x5e\x10\x00\x00"), 6), 6);
}

// Each BER octet is one sub-identifier: 99999 (three octets) reads as three.
TEST_F(LldpManAddrTest, OidOctetsAreNeverJoined) {
    scenario_ = R"({"lldp": {"management_oid": [1, 3, 6, 1, 4, 1, 99999, 7]}})";
    boot(scenario_);
    const char *a = "\xc0\x00\x02\x0a";
    EXPECT_EQ(oid(1, a, 4), (std::vector<uint32_t>{1, 3, 6, 1, 4, 1, 0x86, 0x8d, 0x1f, 7}));
    scenario_ = R"({"lldp": {"management_oid": [2, 999]}})";
    boot(scenario_);
    // 2 × 40 + 999 = 1079: octets 0x88 0x37, read as 0x88 / 40, 0x88 % 40, 0x37.
    EXPECT_EQ(oid(1, a, 4), (std::vector<uint32_t>{3, 16, 0x37}));
}

}  // namespace
}  // namespace unit
