// System identity, configuration hash, clock and time-zone scalars.
#include <openssl/evp.h>

#include <cstring>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"

namespace unit {
namespace {

using Getter = const uint8_t *(*)(size_t *);
using Setter = int (*)(const uint8_t *, size_t);

std::string read(Getter get) {
    size_t len = 999;
    const uint8_t *p = get(&len);
    return text(p, len);
}
int write(Setter set, const std::string &s) { return set(bytes(s.c_str()), s.size()); }

class SystemTest : public SwitchTest {};

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
    EVP_MD_CTX *ctx = EVP_MD_CTX_new();
    EVP_DigestInit_ex(ctx, EVP_md5(), nullptr);
    const uint8_t *image = cfg_get_cfg();
    constexpr size_t kChunk = 1 << 20;
    for (size_t at = 0; at < SW_CFG_IMAGE_SIZE; at += kChunk)
        EVP_DigestUpdate(ctx, image + at, std::min(kChunk, size_t(SW_CFG_IMAGE_SIZE) - at));
    uint8_t digest[EVP_MAX_MD_SIZE];
    unsigned n = 0;
    EVP_DigestFinal_ex(ctx, digest, &n);
    EVP_MD_CTX_free(ctx);
    return std::string(reinterpret_cast<char *>(digest), n);
}

TEST_F(SystemTest, ConfigHashFollowsTheImage) {
    const std::string before = read(get_swHashConfig);
    EXPECT_EQ(before.size(), 16u);
    EXPECT_EQ(before, md5_of_image());
    ASSERT_EQ(cfg_set_hostname("renamed"), 0);
    const std::string after = read(get_swHashConfig);
    EXPECT_NE(after, before);
    EXPECT_EQ(after, md5_of_image());
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
    EXPECT_EQ(write(set_sysTimeZone, "+05:30"), 0);
    EXPECT_EQ(read(get_sysTimeZone), "+05:30");
    EXPECT_EQ(write(set_sysTimeZone, "-03:00"), 0);
    EXPECT_EQ(read(get_sysTimeZone), "-03:00");
    EXPECT_EQ(read(get_sysTimeZoneName), "UTC");  // the name is kept
    EXPECT_EQ(write(set_sysTimeZone, "+ab:cd"), -1);
    EXPECT_EQ(read(get_sysTimeZone), "-03:00");
    EXPECT_EQ(write(set_sysTimeZone, "x01:15"), 0);  // only '-' makes it negative
    EXPECT_EQ(read(get_sysTimeZone), "+01:15");

    // Up to 17 bytes are kept whole, a longer name is cut to 16; the offset stays.
    EXPECT_EQ(write(set_sysTimeZoneName, "ABCDEFGHIJKLMNOPQ"), 0);
    EXPECT_EQ(read(get_sysTimeZoneName), "ABCDEFGHIJKLMNOPQ");
    EXPECT_EQ(write(set_sysTimeZoneName, "ABCDEFGHIJKLMNOPQR"), 0);
    EXPECT_EQ(read(get_sysTimeZoneName), "ABCDEFGHIJKLMNOP");
    EXPECT_EQ(read(get_sysTimeZone), "+01:15");
}

}  // namespace
}  // namespace unit
