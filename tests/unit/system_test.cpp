// System identity, configuration hash, clock and time-zone scalars.
#include <openssl/evp.h>

#include <cstring>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"

namespace unit {
namespace {

using Getter = const uint8_t *(*)(size_t *);
using Setter = int (*)(const uint8_t *, size_t);

std::string read(Getter get) { return read_text(get); }
int write(Setter set, const std::string &s) { return set(bytes(s.c_str()), s.size()); }

using SystemTest = SwitchTest;

TEST_F(SystemTest, TextScalarsTakeExactlyTheReceivedBytes) {
    const struct {
        Getter get;
        Setter set;
        const char *platform_setter;
    } texts[] = {{get_sysName, set_sysName, "cfg_set_hostname"},
                 {get_sysContact, set_sysContact, "cfg_set_snmpd_sys_contact"},
                 {get_sysLocation, set_sysLocation, "cfg_set_snmpd_sys_location"}};
    for (const auto &t : texts) {
        // Six bytes of a longer, unterminated buffer.
        EXPECT_EQ(t.set(bytes("edge-7XYZ"), 6), 0);
        EXPECT_EQ(read(t.get), "edge-7");
        sw().fault_set(t.platform_setter, -4, 1);
        EXPECT_EQ(write(t.set, "other"), -4);
        EXPECT_EQ(read(t.get), "edge-7");
    }
    EXPECT_EQ(sw().hostname(), "edge-7");
    sw().fault_set("cfg_get_hostname", -1, 1);
    EXPECT_EQ(read(get_sysName), "");
}

TEST_F(SystemTest, FirmwareVersionNumbers) {
    const struct {
        const char *text;
        int32_t major, minor, release;
    } cases[] = {{"3.2.7 build 1142", 3, 2, 7}, {"4.1", 4, 1, 0}, {"12", 12, 0, 0},
                 {"5.x.1", 5, 0, 0},            {"v4.1.2", 0, 0, 0}, {"", 0, 0, 0}};
    for (const auto &c : cases) {
        sw_status_t *st = get_status();
        std::memset(st->fw_version, 0, sizeof st->fw_version);
        std::strcpy(st->fw_version, c.text);
        EXPECT_EQ(get_vxAgInfFwMajorVersionNum(), c.major) << c.text;
        EXPECT_EQ(get_vxAgInfFwMinorVersionNum(), c.minor) << c.text;
        EXPECT_EQ(get_vxAgInfFwReleaseVersionNum(), c.release) << c.text;
    }
}

std::string md5_of_image() {
    uint8_t digest[EVP_MAX_MD_SIZE];
    unsigned n = 0;
    EVP_Digest(cfg_get_cfg(), SW_CFG_IMAGE_SIZE, digest, &n, EVP_md5(), nullptr);
    return std::string(reinterpret_cast<char *>(digest), n);
}

TEST_F(SystemTest, ConfigHashFollowsTheImage) {
    // Not cached: a change of the image changes the hash.
    EXPECT_EQ(read(get_swHashConfig), md5_of_image());
    ASSERT_EQ(cfg_set_hostname("renamed"), 0);
    EXPECT_EQ(read(get_swHashConfig), md5_of_image());
}

TEST_F(SystemTest, CurrentTimeReadsAndWritesTheSwitchClock) {
    // No day check: Feb 30 normalises to Mar 2; the day's zero reads as a space.
    EXPECT_EQ(write(set_sysCurrentTime, "Feb 30 10:00:00 2021"), 0);
    std::string now = read(get_sysCurrentTime);
    EXPECT_EQ(now.substr(0, 13), "Mar  2 10:00:") << now;
    EXPECT_EQ(now.substr(15), " 2021") << now;

    // Years below 1900 are already years since 1900.
    EXPECT_EQ(write(set_sysCurrentTime, "Dec 15 23:59:30 121"), 0);
    now = read(get_sysCurrentTime);
    EXPECT_EQ(now.substr(0, 13), "Dec 15 23:59:") << now;
    EXPECT_EQ(now.substr(15), " 2021") << now;

    // Malformed texts fail without touching the clock.
    for (const char *bad : {"Mar 05 24:00:00 2021", "mar 05 10:00:00 2021", "Mar 05 10:60:00 2021",
                            "Mar 05 10:00:60 2021", "Mar 05 10-00-00 2021", "Mar 05 10:00:", "Mar 05", ""}) {
        EXPECT_EQ(count_calls("sys_clock_set", [&] { EXPECT_EQ(write(set_sysCurrentTime, bad), -1) << bad; }), 0u);
    }
}

TEST_F(SystemTest, TimeZoneOffsetAndName) {
    EXPECT_EQ(read(get_sysTimeZone), " 00:00");
    // A malformed offset changes nothing; only '-' makes an offset negative.
    const struct {
        const char *written;
        int result;
        const char *reads;
    } offsets[] = {{"+05:30", 0, "+05:30"}, {"-03:00", 0, "-03:00"}, {"+ab:cd", -1, "-03:00"}, {"x01:15", 0, "+01:15"}};
    for (const auto &o : offsets) {
        EXPECT_EQ(write(set_sysTimeZone, o.written), o.result) << o.written;
        EXPECT_EQ(read(get_sysTimeZone), o.reads) << o.written;
    }
    EXPECT_EQ(read(get_sysTimeZoneName), "UTC");  // the name is kept

    // Up to 17 bytes are kept whole, a longer name is cut to 16; the offset stays.
    EXPECT_EQ(write(set_sysTimeZoneName, "ABCDEFGHIJKLMNOPQ"), 0);
    EXPECT_EQ(read(get_sysTimeZoneName), "ABCDEFGHIJKLMNOPQ");
    EXPECT_EQ(write(set_sysTimeZoneName, "ABCDEFGHIJKLMNOPQR"), 0);
    EXPECT_EQ(read(get_sysTimeZoneName), "ABCDEFGHIJKLMNOP");
    EXPECT_EQ(read(get_sysTimeZone), "+01:15");
}

}  // namespace
}  // namespace unit
