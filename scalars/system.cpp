// System identity, uptime, integrity hashes and the switch clock: the
// accessors behind the MIB-II system group, vxAgInf*, swProd*, swHash* and
// the clock and time-zone scalars.
#include <openssl/evp.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

#include "agent/ifindex.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"

namespace {

// Platform texts are read up to the longest DisplayString, whether or not
// the platform ended them.
constexpr size_t kMaxText = 255;
// The longest integrity hash the switch keeps (a SHA-512 digest).
constexpr size_t kMaxHash = 64;

const uint8_t *text_result(const char *text, size_t *len) {
    static const char empty[] = "";
    if (text == nullptr) text = empty;
    *len = strnlen(text, kMaxText);
    return reinterpret_cast<const uint8_t *>(text);
}

// A platform byte string, or none when the platform has none or gives a
// length no hash has.
const uint8_t *bytes_result(const uint8_t *bytes, size_t *len) {
    if (bytes == nullptr || *len > kMaxHash) *len = 0;
    return *len != 0 ? bytes : reinterpret_cast<const uint8_t *>("");
}

// The equipment OID, or 0.0 when the platform has none or gives a length
// that is no OID's.
const uint32_t *equipment_oid(size_t *len) {
    static const uint32_t zero_dot_zero[2] = {0, 0};
    *len = 0;
    const uint32_t *oid = cfg_equip_get_int_oid(len);
    if (oid != nullptr && *len % sizeof(uint32_t) == 0 && *len <= snmpapi::kMaxOidSubids * sizeof(uint32_t))
        return oid;
    *len = sizeof zero_dot_zero;
    return zero_dot_zero;
}

// A text read into a buffer owned by its getter; cleared first so that a
// failing read answers the empty string.
template <size_t N>
const uint8_t *read_text(char (&buf)[N], int (*read)(char *, size_t), size_t *len) {
    buf[0] = '\0';
    read(buf, N);
    buf[N - 1] = '\0';
    return text_result(buf, len);
}

// Component `which` (0 major, 1 minor, 2 release) of the firmware version
// text; 0 unless every component up to it was read.
int32_t firmware_version(int which) {
    static constexpr const char *formats[] = {"%d%*s", "%d.%d%*s", "%d.%d.%d%*s"};
    const sw_status_t *st = get_status();
    if (st == nullptr) return 0;
    char text[sizeof st->fw_version + 1] = {};
    std::memcpy(text, st->fw_version, sizeof st->fw_version);
    int v[3] = {};
    const int got = std::sscanf(text, formats[which], &v[0], &v[1], &v[2]);
    return got == which + 1 ? v[which] : 0;
}

// The characters [from, from + n) of a received text, stopping at its end.
std::string field(const std::string &text, size_t from, size_t n) {
    if (from >= text.size()) return {};
    const std::string f = text.substr(from, n);
    return f.substr(0, std::strlen(f.c_str()));
}

// Reads "<number><sep>" at *p; advances *p past the separator.  False when
// the separator is missing.
bool number_then(const char *&p, char sep, long *value) {
    const char *end = std::strchr(p, sep);
    if (end == nullptr) return false;
    *value = std::strtol(std::string(p, end).c_str(), nullptr, 10);
    p = end + 1;
    return true;
}

constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

extern "C" {

const uint8_t *get_sysDescr(size_t *len) { return text_result(status_get_hw_model(0), len); }
const uint32_t *get_sysObjectID(size_t *len) { return equipment_oid(len); }
const uint32_t *get_vxAgInfOID(size_t *len) { return equipment_oid(len); }
uint32_t get_sysUpTime(void) { return uptime() * 100u; }
int32_t get_sysServices(void) { return 2; }
uint32_t get_sysORLastChange(void) { return 0; }
int32_t get_swIdentifier(void) { return 0; }

const uint8_t *get_sysContact(size_t *len) {
    static char buf[SW_TEXT_SIZE];
    return read_text(buf, cfg_get_snmpd_sys_contact, len);
}
int set_sysContact(const uint8_t *bytes, size_t len) {
    return cfg_set_snmpd_sys_contact(received_text(bytes, len).c_str());
}

const uint8_t *get_sysName(size_t *len) {
    static char buf[SW_TEXT_SIZE];
    return read_text(buf, cfg_get_hostname, len);
}
int set_sysName(const uint8_t *bytes, size_t len) { return cfg_set_hostname(received_text(bytes, len).c_str()); }

const uint8_t *get_sysLocation(size_t *len) {
    static char buf[SW_TEXT_SIZE];
    return read_text(buf, cfg_get_snmpd_sys_location, len);
}
int set_sysLocation(const uint8_t *bytes, size_t len) {
    return cfg_set_snmpd_sys_location(received_text(bytes, len).c_str());
}

int32_t get_vxAgInfFwMajorVersionNum(void) { return firmware_version(0); }
int32_t get_vxAgInfFwMinorVersionNum(void) { return firmware_version(1); }
int32_t get_vxAgInfFwReleaseVersionNum(void) { return firmware_version(2); }

const uint8_t *get_swProdDescription(size_t *len) {
    const sw_status_t *st = get_status();
    return text_result(st != nullptr ? cfg_equip_get_name_vx7300(st) : nullptr, len);
}
const uint8_t *get_swProdManufacturer(size_t *len) { return text_result("", len); }
const uint8_t *get_swProdUrl(size_t *len) { return text_result(cfg_equip_get_vendor_url(), len); }

int32_t get_swVendorId(void) {
    const sw_status_t *st = get_status();
    return st != nullptr ? static_cast<int32_t>(st->vendor_id) : 0;
}

// MD5 of the whole configuration image.
const uint8_t *get_swHashConfig(size_t *len) {
    static uint8_t digest[16];
    const uint8_t *image = cfg_get_cfg();
    unsigned int n = 0;
    if (image == nullptr || !EVP_Digest(image, SW_CFG_IMAGE_SIZE, digest, &n, EVP_md5(), nullptr)) {
        *len = 0;
        return digest;
    }
    *len = n;
    return digest;
}
const uint8_t *get_swHashHardware(size_t *len) {
    *len = 0;
    return bytes_result(bcmd_get_hw_hash(len), len);
}
const uint8_t *get_swHashStatus(size_t *len) {
    *len = 0;
    return bytes_result(bcmd_get_status_hash(len), len);
}

// ---- Clock ------------------------------------------------------------------

// "Mar  5 14:07:09 2021": the day's tens digit is a space below 10.
const uint8_t *get_sysCurrentTime(size_t *len) {
    static char buf[25];
    buf[0] = '\0';
    const time_t now = sys_clock_get();
    if (const struct tm *lt = std::localtime(&now)) {
        const struct tm tm = *lt;
        std::strftime(buf, sizeof buf, "%b %d %T %Y", &tm);
        if (buf[4] == '0') buf[4] = ' ';
    }
    return text_result(buf, len);
}

// Accepts exactly the getter's layout, by fixed positions:
// month 0..2, day 4..5, time 7..14, year 16..19.
int set_sysCurrentTime(const uint8_t *bytes, size_t len) {
    const std::string text = received_text(bytes, len);
    const std::string month = field(text, 0, 3), day = field(text, 4, 2);
    const std::string clock = field(text, 7, 8), year_text = field(text, 16, 4);
    if (clock.empty()) return -1;

    const char *p = clock.c_str();
    long hour = 0, minute = 0;
    if (!number_then(p, ':', &hour) || static_cast<unsigned long>(hour) > 23) return -1;
    if (!number_then(p, ':', &minute) || static_cast<unsigned long>(minute) > 59) return -1;
    if (*p == '\0') return -1;
    const long second = std::strtol(p, nullptr, 10);
    if (static_cast<unsigned long>(second) > 59) return -1;

    int mon = 0;
    while (mon < 12 && kMonths[mon] != month) ++mon;
    if (mon == 12) return -1;
    long year = std::strtol(year_text.c_str(), nullptr, 10);
    // Above 1899 a calendar year, otherwise already years since 1900.
    if (year > 1899) year -= 1900;

    struct tm tm {};
    tm.tm_sec = static_cast<int>(second);
    tm.tm_min = static_cast<int>(minute);
    tm.tm_hour = static_cast<int>(hour);
    tm.tm_mday = static_cast<int>(std::strtol(day.c_str(), nullptr, 10));
    tm.tm_mon = mon;
    tm.tm_year = static_cast<int>(year);
    tm.tm_isdst = -1;
    const time_t t = std::mktime(&tm);
    if (t < 0) return -1;
    return sys_clock_set(t) < 0 ? -1 : 0;
}

// "+05:30", " 00:00" or "-03:00".
const uint8_t *get_sysTimeZone(size_t *len) {
    static char buf[7];
    char name[SW_TZ_NAME_SIZE] = {};
    int offset = 0;
    cfg_get_timezone(name, &offset);
    const char sign = offset < 0 ? '-' : offset == 0 ? ' ' : '+';
    const unsigned minutes = offset < 0 ? 0u - unsigned(offset) : unsigned(offset);
    // Bounded to the buffer; the text is 6 bytes for any real zone.
    if (std::snprintf(buf, sizeof buf, "%c%02u:%02u", sign, minutes / 60, minutes % 60) < 0) buf[0] = '\0';
    return text_result(buf, len);
}

// Takes the hours and minutes after the sign; the zone name is kept.
int set_sysTimeZone(const uint8_t *bytes, size_t len) {
    const std::string text = received_text(bytes, len);
    const std::string hhmmss = field(text, 1, 5) + ":00";
    char name[SW_TZ_NAME_SIZE] = {};
    int offset = 0;
    cfg_get_timezone(name, &offset);
    int hours = 0, minutes = 0, seconds = 0;
    if (parse_time(hhmmss.c_str(), &hours, &minutes, &seconds) < 0) return -1;
    offset = hours * 60 + minutes;
    if (!text.empty() && text[0] == '-') offset = -offset;
    return cfg_set_timezone(name, offset);
}

const uint8_t *get_sysTimeZoneName(size_t *len) {
    static char name[SW_TZ_NAME_SIZE];
    int offset = 0;
    name[0] = '\0';
    cfg_get_timezone(name, &offset);
    name[sizeof name - 1] = '\0';
    return text_result(name, len);
}

// A name of up to 17 bytes is kept whole; a longer one is cut to 16.
int set_sysTimeZoneName(const uint8_t *bytes, size_t len) {
    char name[SW_TZ_NAME_SIZE] = {};
    int offset = 0;
    cfg_get_timezone(name, &offset);
    std::string text = received_text(bytes, len);
    if (text.size() > 17) text.resize(16);
    return cfg_set_timezone(text.c_str(), offset);
}

}  // extern "C"
