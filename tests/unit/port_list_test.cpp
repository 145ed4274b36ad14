// Port-list octet strings: the read layout and the seven-bit write walk on one
// unit and on a stack, where the two layouts differ.
#include "agent/port_list.hpp"

#include <array>
#include <set>
#include <tuple>

#include "fixture.hpp"

namespace unit {
namespace {

namespace pl = snmpapi::port_list;
using Port = std::pair<int, int>;
using Visit = std::tuple<int, int, pl::Bit>;

std::vector<Visit> walk(const std::vector<uint8_t> &octets, size_t length) {
    std::vector<Visit> seen;
    EXPECT_EQ(pl::write_walk(octets.data(), length,
                             [&](int u, int p, pl::Bit b) {
                                 seen.emplace_back(u, p, b);
                                 return 0;
                             }),
              0);
    return seen;
}

size_t count(const std::vector<Visit> &seen, pl::Bit bit) {
    size_t n = 0;
    for (const auto &v : seen) n += std::get<2>(v) == bit;
    return n;
}

class PortListSingleUnit : public SwitchTest {
protected:
    std::string scenario() const override { return R"({"units": [{"ports": 28}]})"; }
};

TEST_F(PortListSingleUnit, ReadPacksPortsMostSignificantFirst) {
    std::array<uint8_t, pl::kAreaSize> area;
    area.fill(0xaa);
    size_t length = 7;
    const std::set<Port> members{{0, 0}, {0, 9}, {0, 27}};
    pl::read(area.data(), area.size(), &length, [&](int u, int p) { return members.count({u, p}) != 0; });
    std::array<uint8_t, pl::kAreaSize> expected{0x80, 0x40, 0, 0x10};
    EXPECT_EQ(area, expected);
    EXPECT_EQ(length, 32u);

    // With no unit present the length is left alone; the area is cleared all the same.
    sw().set_unit_present(0, false);
    area.fill(0xff);
    length = 5;
    pl::read(area.data(), 8, &length, [](int, int) { return true; });
    EXPECT_EQ(length, 5u);
    EXPECT_EQ(area[0], 0);
}

TEST_F(PortListSingleUnit, WriteWalkSkipsTheLowBitOfEveryOctet) {
    std::vector<uint8_t> octets(32, 0);
    octets[0] = 0xff;
    octets[1] = 0x01;  // port 15 only: never looked at
    octets[3] = 0x10;  // port 27
    const auto seen = walk(octets, 32);
    // 28 ports less 7, 15 and 23; nothing at or above the port count.
    ASSERT_EQ(seen.size(), 25u);
    std::set<int> set_ports;
    for (const auto &[u, p, b] : seen) {
        EXPECT_EQ(u, 0);
        EXPECT_NE(p % 8, 7) << p;
        EXPECT_LT(p, 28);
        EXPECT_NE(b, pl::Bit::beyond);
        if (b == pl::Bit::set) set_ports.insert(p);
    }
    EXPECT_EQ(set_ports, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 27}));
}

TEST_F(PortListSingleUnit, OctetsBeyondTheLengthAreReportedAndNeverRead) {
    // Only one octet is supplied: a read past it would be caught by the
    // sanitizer build.
    const std::vector<uint8_t> one{0x01};
    const auto seen = walk(one, 1);
    EXPECT_EQ(count(seen, pl::Bit::clear), 7u);   // ports 0 .. 6
    EXPECT_EQ(count(seen, pl::Bit::beyond), 18u); // the rest below 28
    EXPECT_EQ(count(seen, pl::Bit::set), 0u);
    // An empty list removes everything.
    EXPECT_EQ(count(walk({}, 0), pl::Bit::beyond), 25u);

    // A negative visit ends the walk with its value.
    const std::vector<uint8_t> octets(32, 0xfe);
    int visits = 0;
    EXPECT_EQ(pl::write_walk(octets.data(), octets.size(),
                             [&](int, int p, pl::Bit) { return ++visits, p == 3 ? -7 : 1; }),
              -7);
    EXPECT_EQ(visits, 4);
}

class PortListStack : public SwitchTest {
protected:
    // Unit 2 absent; unit 3 has 64 ports.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"ports": 10}, {"present": false, "ports": 24}, {"ports": 64}]})";
    }
};

TEST_F(PortListStack, ReadUsesEightOctetsPerUnitAndReportsThirtyTwo) {
    std::array<uint8_t, pl::kAreaSize> area;
    area.fill(0x55);
    size_t length = 0;
    const std::set<Port> members{{0, 0}, {1, 0}, {1, 9}, {2, 0}, {3, 63}};
    std::set<int> units_asked;
    pl::read(area.data(), area.size(), &length, [&](int u, int p) {
        units_asked.insert(u);
        return members.count({u, p}) != 0;
    });
    EXPECT_EQ(length, 128u);  // highest present unit is the fourth
    EXPECT_EQ(units_asked, (std::set<int>{0, 1, 3}));
    // Unit 1 from octet 8, absent unit 2 left clear, unit 3 port 63 at octet 31;
    // the whole area cleared although no port reports past octet 31.
    std::array<uint8_t, pl::kAreaSize> expected{0x80};
    expected[8] = 0x80;
    expected[9] = 0x40;
    expected[31] = 0x01;
    EXPECT_EQ(area, expected);

    // Only the octets it is told to clear are cleared.
    area.fill(0x55);
    pl::read(area.data(), 16, &length, [](int, int) { return false; });
    EXPECT_EQ(area[15], 0);
    EXPECT_EQ(area[16], 0x55);
}

TEST_F(PortListStack, WriteUsesThirtyTwoOctetsPerUnitAndCountsTheLengthAcrossUnits) {
    // status_get_num_units() counts present units: three, so units 0 .. 2 are
    // walked (unit 2 is absent and has 24 ports; unit 3 is never reached).
    std::vector<uint8_t> octets(pl::kAreaSize, 0);
    octets[8] = 0x80;   // read layout's unit 1: here unit 0 port 64, not a port
    octets[32] = 0x80;  // unit 1 port 0
    octets[33] = 0x40;  // unit 1 port 9 (beyond the length below)
    const auto seen = walk(octets, 33);
    std::set<Port> set_ports;
    std::set<int> units;
    size_t beyond_unit1 = 0;
    for (const auto &[u, p, b] : seen) {
        units.insert(u);
        if (b == pl::Bit::set) set_ports.insert({u, p});
        if (b == pl::Bit::beyond && u == 1) ++beyond_unit1;
        if (u == 0) {
            EXPECT_NE(b, pl::Bit::beyond);
        }
    }
    EXPECT_EQ(units, (std::set<int>{0, 1, 2}));
    EXPECT_EQ(set_ports, (std::set<Port>{{1, 0}}));
    EXPECT_EQ(beyond_unit1, 2u);  // ports 8 and 9 of the 10-port unit (7 is skipped)
}

}  // namespace
}  // namespace unit
