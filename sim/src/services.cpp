// Management services of the simulated switch: address settings, servers,
// SSH host keys, address filters, SNTP and the system log.
#include "services.hpp"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "helpers.hpp"
#include "model.hpp"
#include "util.hpp"
#include "vlans.hpp"

namespace swsim::services {
namespace {

using layout::ServicesConfig;

constexpr uint32_t kReserved = 0xe0000000;  // multicast and reserved from here
constexpr int kKeyRsa = 0, kKeyDsa = 1;

layout::ServicesConfig &cfg(const View &v) { return v.cfg->services; }

// The setters' checks: a switch takes 1 or 0, a number its range; -1 and
// nothing written otherwise.
int set_switch(uint8_t &field, int on) {
    if (on != 0 && on != 1) return -1;
    field = uint8_t(on);
    return 0;
}
int set_in(int32_t &field, int value, int lo, int hi) {
    if (value < lo || value > hi) return -1;
    field = value;
    return 0;
}
int set_level(int32_t &field, int level) { return set_in(field, level, 0, 7); }
// The web servers cannot share a port.
int set_web_port(uint16_t &port, uint16_t other, int value) {
    if (value < 1 || value > 65535 || value == other) return -1;
    port = uint16_t(value);
    return 0;
}

// Texts into a caller's buffer, whole or not at all.
int give_text(const char *text, std::size_t field, char *buf, size_t size) {
    if (!buf || size == 0) return -1;
    const std::size_t n = strnlen(text, field);
    if (n >= size) return -1;
    std::memcpy(buf, text, n);
    buf[n] = '\0';
    return 0;
}
int give_address(uint32_t addr, char *buf, size_t size) { return helpers::ip_uint32_to_str(addr, buf, size); }

bool parse_v4(const char *text, uint32_t &addr) { return text && helpers::ip_str_to_uint32(text, &addr) == 0; }
std::string v4_text(uint32_t addr) {
    char buf[16];
    helpers::ip_uint32_to_str(addr, buf, sizeof buf);
    return buf;
}
// A unicast host address: not 0.0.0.0, not multicast or reserved.
bool parse_host(const char *text, uint32_t &addr) { return parse_v4(text, addr) && addr != 0 && addr < kReserved; }

// ---- filters ----------------------------------------------------------------------------

struct Filter {
    uint32_t addr = 0;
    int prefix = 0;
    bool operator==(const Filter &) const = default;
};
bool parse_filter(const char *text, Filter &f) {
    uint32_t mask = 0;
    if (!text || helpers::ip_addr_prefix_to_addr_mask(text, &f.addr, &mask) != 0) return false;
    f.prefix = helpers::ip_mask_to_prefix(mask);
    return f.prefix >= 0;
}
std::string filter_text(const Filter &f) { return v4_text(f.addr) + "/" + std::to_string(f.prefix); }

using FilterSlots = char[SW_IP_FILTER_SLOTS][SW_IP_FILTER_TEXT_SIZE];

int find_filter(const FilterSlots &slots, const Filter &want) {
    for (int i = 0; i < SW_IP_FILTER_SLOTS; ++i) {
        Filter f;
        if (slots[i][0] && parse_filter(std::string(slots[i], strnlen(slots[i], SW_IP_FILTER_TEXT_SIZE)).c_str(), f) &&
            f == want)
            return i;
    }
    return -1;
}
int get_filter(const View &v, int service, int slot, char *buf, size_t size) {
    if (slot < 0 || slot >= SW_IP_FILTER_SLOTS) return -1;
    return give_text(cfg(v).filters[service][slot], SW_IP_FILTER_TEXT_SIZE, buf, size);
}
int add_filter(const View &v, int service, const char *text) {
    FilterSlots &slots = cfg(v).filters[service];
    Filter f;
    if (!parse_filter(text, f) || find_filter(slots, f) >= 0) return -1;
    for (auto &slot : slots)
        if (!slot[0]) return copy_text(slot, filter_text(f)), 0;
    return -1;
}
int del_filter(const View &v, int service, const char *text) {
    FilterSlots &slots = cfg(v).filters[service];
    Filter f;
    const int i = parse_filter(text, f) ? find_filter(slots, f) : -1;
    if (i < 0) return -1;
    std::memset(slots[i], 0, SW_IP_FILTER_TEXT_SIZE);
    return 0;
}

// ---- SNTP servers and log hosts ----------------------------------------------------------

int find_text(const char (*slots)[16], int n, const std::string &text) {
    for (int i = 0; i < n; ++i)
        if (text == std::string(slots[i], strnlen(slots[i], 16))) return i;
    return -1;
}

// The canonical text and version of a log host address (4 or 6; 0 if it is
// neither).
int log_host_of(const char *text, std::string &canonical) {
    uint32_t v4;
    if (parse_v4(text, v4)) return canonical = v4_text(v4), 4;
    uint8_t v6[16];
    char buf[INET6_ADDRSTRLEN];
    if (text && inet_pton(AF_INET6, text, v6) == 1 && inet_ntop(AF_INET6, v6, buf, sizeof buf))
        return canonical = buf, 6;
    return 0;
}
int find_log_host(const View &v, int version, const std::string &canonical) {
    for (int i = 0; i < SW_LOG_SERVERS; ++i) {
        const layout::LogHost &h = cfg(v).log_hosts[i];
        if (h.version == version && canonical == std::string(h.address, strnlen(h.address, sizeof h.address))) return i;
    }
    return -1;
}
// Adds an IPv4 or IPv6 server (the platform's call takes IPv4 only).
int add_log_host(const View &v, const char *text, int want_version) {
    std::string canonical;
    const int version = log_host_of(text, canonical);
    if (version == 0 || (want_version && version != want_version)) return -1;
    if (version == 4) {
        uint32_t a;
        if (!parse_host(text, a)) return -1;
    }
    if (find_log_host(v, version, canonical) >= 0) return -1;
    for (layout::LogHost &h : cfg(v).log_hosts) {
        if (h.version) continue;
        copy_text(h.address, canonical);
        h.version = uint8_t(version);
        return 0;
    }
    return SW_LOG_HOSTS_FULL;
}

// ---- SSH host keys -------------------------------------------------------------------------

// Key material for a simulated switch: random, not secret.
class Random {
public:
    explicit Random(uint64_t seed) : s_(seed) {}
    uint8_t byte() {
        if (left_ == 0) {
            uint64_t z = (s_ += 0x9e3779b97f4a7c15ull);
            z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
            z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
            word_ = z ^ (z >> 31);
            left_ = 8;
        }
        --left_;
        return uint8_t(word_ >> (8 * left_));
    }

private:
    uint64_t s_, word_ = 0;
    int left_ = 0;
};

void put_string(std::vector<uint8_t> &out, const std::vector<uint8_t> &bytes) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(uint8_t(bytes.size() >> shift));
    out.insert(out.end(), bytes.begin(), bytes.end());
}
// A positive multiple-precision integer of n random octets (top bit set).
std::vector<uint8_t> mpint(Random &r, std::size_t n) {
    std::vector<uint8_t> b{0};
    for (std::size_t i = 0; i < n; ++i) b.push_back(r.byte());
    b[1] |= 0x80;
    b.back() |= 1;
    return b;
}

std::string base64(const std::vector<uint8_t> &in) {
    static const char *abc = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < in.size(); i += 3) {
        const uint32_t n = uint32_t(in[i]) << 16 | (i + 1 < in.size() ? uint32_t(in[i + 1]) << 8 : 0) |
                           (i + 2 < in.size() ? in[i + 2] : 0);
        out += abc[n >> 18 & 63];
        out += abc[n >> 12 & 63];
        out += i + 1 < in.size() ? abc[n >> 6 & 63] : '=';
        out += i + 2 < in.size() ? abc[n & 63] : '=';
    }
    return out;
}

// An OpenSSH public key line: RSA 2048 bits (e = 65537) or DSA 1024 bits.
std::string make_key(const View &v, int kind) {
    const uint32_t serial = ++cfg(v).ssh_keys_made;
    Random r(uint64_t(model::realtime_ns()) ^ (uint64_t(serial) << 40) ^ uint64_t(getpid()));
    const std::string type = kind == kKeyRsa ? "ssh-rsa" : "ssh-dss";
    std::vector<uint8_t> blob;
    put_string(blob, std::vector<uint8_t>(type.begin(), type.end()));
    if (kind == kKeyRsa) {
        put_string(blob, {0x01, 0x00, 0x01});
        put_string(blob, mpint(r, 256));
    } else {
        for (std::size_t n : {128, 20, 128, 128}) put_string(blob, mpint(r, n));
    }
    return type + " " + base64(blob) + " switch-" + std::to_string(serial);
}

int create_key(const View &v, int kind) {
    copy_text(cfg(v).ssh_key[kind], make_key(v, kind));
    return 0;
}
int reset_key(const View &v, int kind) {
    std::memset(cfg(v).ssh_key[kind], 0, SW_SSH_KEY_SIZE);
    return 0;
}
const char *key_text(const View &v, int kind) {
    // A copy that stays whole while the key changes.
    thread_local char key[2][SW_SSH_KEY_SIZE];
    copy_text(key[kind], SW_SSH_KEY_SIZE, cfg(v).ssh_key[kind]);
    return key[kind];
}

// ---- settings by name ------------------------------------------------------------------------

[[noreturn]] void refuse(const std::string &name, const std::string &value, const std::string &accepts) {
    throw Error(name + ": '" + value + "' is not accepted (" + accepts + ")");
}

int parse_number(const std::string &text, bool &ok) {
    ok = false;
    if (text.empty() || text.size() > 10 || text.find_first_not_of("0123456789") != std::string::npos) return 0;
    const long long n = std::stoll(text);
    ok = n <= INT32_MAX;
    return int(n);
}
int parse_switch(const std::string &text, bool &ok) {
    static const std::map<std::string, int> words = {{"on", 1}, {"off", 0}, {"enabled", 1}, {"disabled", 0},
                                                     {"true", 1}, {"false", 0}, {"1", 1},  {"0", 0}};
    auto it = words.find(text);
    ok = it != words.end();
    return ok ? it->second : 0;
}

// A setting: the platform call (or control change) it makes and what it
// accepts; the call's refusal is the setting's.
struct Setting {
    const char *name;
    const char *accepts;
    int (*apply)(const View &, const std::string &);
};

template <int (*Call)(const View &, int)>
int with_switch(const View &v, const std::string &text) {
    bool ok;
    const int on = parse_switch(text, ok);
    return ok ? Call(v, on) : -1;
}
template <int (*Call)(const View &, int)>
int with_number(const View &v, const std::string &text) {
    bool ok;
    const int n = parse_number(text, ok);
    return ok ? Call(v, n) : -1;
}
int set_address(const View &v, const std::string &text) {
    Filter f;
    if (!parse_filter(text.c_str(), f) || f.addr >= kReserved) return -1;
    cfg(v).ip_address = f.addr;
    cfg(v).ip_mask = f.prefix ? ~0u << (32 - f.prefix) : 0;
    return 0;
}
int set_gateway(const View &v, const std::string &text) { return calls::cfg_set_ip_default_gw(v, text.c_str(), 0); }
template <int Which>
int set_dns(const View &v, const std::string &text) {
    uint32_t a;
    return parse_v4(text.c_str(), a) ? calls::cfg_set_ip_dns_servers(v, Which, a) : -1;
}
int set_dhcp(const View &v, const std::string &text) {
    bool ok;
    const int on = parse_switch(text, ok);
    return ok ? vlans_impl::cfg_set_vlan_dhcp_client(v, on) : -1;
}

const Setting kSettings[] = {
    {"address", "the management address and prefix length, e.g. 192.0.2.20/24", set_address},
    {"dhcp", "on or off: the address comes from DHCP", set_dhcp},
    {"gateway", "an IPv4 address below 224.0.0.0, 0.0.0.0 for none", set_gateway},
    {"dns1", "an IPv4 address below 224.0.0.0, 0.0.0.0 for none", set_dns<0>},
    {"dns2", "an IPv4 address below 224.0.0.0, 0.0.0.0 for none", set_dns<1>},
    {"http", "on or off", with_switch<calls::cfg_set_httpd_enable>},
    {"http_port", "1..65535, not the HTTPS port", with_number<calls::cfg_set_httpd_port>},
    {"https", "on or off", with_switch<calls::cfg_set_httpsd_enable>},
    {"https_port", "1..65535, not the HTTP port", with_number<calls::cfg_set_httpsd_port>},
    {"telnet", "on or off", with_switch<calls::cfg_set_telnetd>},
    {"ssh", "on or off", with_switch<calls::cfg_set_sshd_enable>},
    {"ssh_timeout", "1..120 seconds", with_number<calls::cfg_set_sshd_timeout>},
    {"sntp", "on or off", with_switch<calls::cfg_set_sntp_enable>},
    {"sntp_interval", "16..16384 seconds", with_number<calls::cfg_set_sntp_interval>},
    {"syslog", "on or off", with_switch<calls::cfg_set_syslogd>},
    {"flash_level", "0..7", with_number<calls::cfg_set_flash_level>},
    {"ram_level", "0..7", with_number<calls::cfg_set_ram_level>},
    {"remote_log", "on or off", with_switch<calls::cfg_set_remote_log>},
    {"remote_level", "0..7", with_number<calls::cfg_set_remote_level>},
    {"facility", "16..23 (local0..local7); the log daemon takes it at once",
     [](const View &v, const std::string &text) {
         const int rc = with_number<calls::cfg_set_remote_facility>(v, text);
         return rc < 0 ? rc : calls::cfg_log_export_rem_facility(v);
     }},
};

// Whether a value is listed already.
template <int Service>
bool filter_listed(const View &v, const char *text) {
    Filter f;
    return parse_filter(text, f) && find_filter(cfg(v).filters[Service], f) >= 0;
}
bool sntp_listed(const View &v, const char *text) {
    uint32_t a;
    return parse_v4(text, a) && find_text(cfg(v).sntp_servers, SW_SNTP_SERVERS, v4_text(a)) >= 0;
}
bool log_host_listed(const View &v, const char *text) {
    std::string canonical;
    const int version = log_host_of(text, canonical);
    return version && find_log_host(v, version, canonical) >= 0;
}

struct List {
    const char *name;
    const char *accepts;
    int (*add)(const View &, const char *);
    int (*remove)(const View &, const char *);
    bool (*listed)(const View &, const char *);
};
const List kLists[] = {
    {"filter_http", "a network as address/prefix length, e.g. 10.0.0.0/8; 15 at most", calls::cfg_add_ip_filter_http,
     calls::cfg_del_ip_filter_http, filter_listed<layout::kFilterHttp>},
    {"filter_ssh", "a network as address/prefix length; 15 at most", calls::cfg_add_ip_filter_ssh,
     calls::cfg_del_ip_filter_ssh, filter_listed<layout::kFilterSsh>},
    {"filter_snmp", "a network as address/prefix length; 15 at most", calls::cfg_add_ip_filter_snmp,
     calls::cfg_del_ip_filter_snmp, filter_listed<layout::kFilterSnmp>},
    {"filter_telnet", "a network as address/prefix length; 15 at most", calls::cfg_add_ip_filter_telnet,
     calls::cfg_del_ip_filter_telnet, filter_listed<layout::kFilterTelnet>},
    {"sntp_server", "an IPv4 host address; 3 at most", calls::cfg_add_sntp_server, calls::cfg_del_sntp_server,
     sntp_listed},
    {"log_server", "an IPv4 or IPv6 host address; 5 at most",
     [](const View &v, const char *text) { return add_log_host(v, text, 0); }, calls::cfg_log_del_remote_host,
     log_host_listed},
};

template <class T, std::size_t N>
const T &named(const T (&table)[N], const std::string &name, const char *what) {
    for (const T &e : table)
        if (name == e.name) return e;
    std::string known;
    for (const T &e : table) known += (known.empty() ? "" : ", ") + std::string(e.name);
    throw Error("no " + std::string(what) + " '" + name + "' (" + known + ")");
}

template <class T, std::size_t N>
std::vector<Switch::ServiceSetting> described(const T (&table)[N]) {
    std::vector<Switch::ServiceSetting> out;
    for (const T &e : table) out.push_back({e.name, e.accepts});
    return out;
}

}  // namespace

// ---- control side ------------------------------------------------------------------------------

void defaults(View &v) {
    ServicesConfig &c = cfg(v);
    c.http_on = c.https_on = c.telnet_on = c.ssh_on = 1;
    c.http_port = 80;
    c.https_port = 443;
    c.ssh_timeout = 120;
    create_key(v, kKeyRsa);
    create_key(v, kKeyDsa);
    c.sntp_interval = 1024;
    c.syslog_on = 1;
    c.flash_level = 3;
    c.ram_level = 6;
    c.remote_level = 4;
    c.remote_facility = 23;
    v.hw->services.daemon_facility = 23;
}

Switch::ServicesInfo info(const View &v) {
    const ServicesConfig &c = cfg(v);
    Switch::ServicesInfo s;
    s.dhcp = v.cfg->vlan_settings.dhcp_client != 0;
    s.address = c.ip_address;
    s.mask = c.ip_mask;
    s.gateway = c.gateway;
    s.dns[0] = v.status->dns_servers[0];
    s.dns[1] = v.status->dns_servers[1];
    s.http = c.http_on, s.https = c.https_on, s.telnet = c.telnet_on, s.ssh = c.ssh_on;
    s.http_port = c.http_port, s.https_port = c.https_port, s.ssh_timeout = c.ssh_timeout;
    s.ssh_rsa_key = text_of(c.ssh_key[kKeyRsa]);
    s.ssh_dsa_key = text_of(c.ssh_key[kKeyDsa]);
    for (int f = 0; f < layout::kFilterServices; ++f)
        for (const auto &slot : c.filters[f])
            if (slot[0]) s.filters[f].push_back(text_of(slot));
    s.sntp = c.sntp_on;
    s.sntp_interval = c.sntp_interval;
    for (const auto &server : c.sntp_servers)
        if (server[0]) s.sntp_servers.push_back(text_of(server));
    s.syslog = c.syslog_on, s.remote_log = c.remote_log_on;
    s.flash_level = c.flash_level, s.ram_level = c.ram_level, s.remote_level = c.remote_level;
    s.remote_facility = c.remote_facility;
    s.daemon_facility = v.hw->services.daemon_facility;
    for (const layout::LogHost &h : c.log_hosts)
        if (h.version) s.log_servers.push_back(text_of(h.address));
    return s;
}

void set(View &v, const std::string &setting, const std::string &value) {
    const Setting &s = named(kSettings, setting, "setting");
    if (s.apply(v, value) < 0) refuse(setting, value, s.accepts);
}
void list_add(View &v, const std::string &list, const std::string &value) {
    const List &l = named(kLists, list, "list");
    if (l.listed(v, value.c_str())) throw Error(list + ": " + value + " is listed already");
    if (l.add(v, value.c_str()) < 0) refuse(list, value, l.accepts);
}
void list_remove(View &v, const std::string &list, const std::string &value) {
    const List &l = named(kLists, list, "list");
    if (l.remove(v, value.c_str()) < 0) throw Error(list + ": " + value + " is not listed");
}
void ssh_keys(View &v, const std::string &kind, bool create) {
    if (kind != "rsa" && kind != "dsa" && kind != "both") throw Error("key kind '" + kind + "' (rsa, dsa or both)");
    for (int k : {kKeyRsa, kKeyDsa}) {
        if (kind != "both" && (k == kKeyRsa) != (kind == "rsa")) continue;
        create ? create_key(v, k) : reset_key(v, k);
    }
}
const std::vector<Switch::ServiceSetting> &settings() {
    static const std::vector<Switch::ServiceSetting> out = described(kSettings);
    return out;
}
const std::vector<Switch::ServiceSetting> &lists() {
    static const std::vector<Switch::ServiceSetting> out = described(kLists);
    return out;
}

std::string damage(const View &v) {
    const ServicesConfig &c = cfg(v);
    auto unterminated = [](const char *field, std::size_t n) { return std::memchr(field, 0, n) == nullptr; };
    for (int k : {kKeyRsa, kKeyDsa})
        if (unterminated(c.ssh_key[k], SW_SSH_KEY_SIZE))
            return std::string(k == kKeyRsa ? "the RSA" : "the DSA") + " host key runs past its " +
                   std::to_string(SW_SSH_KEY_SIZE) + " bytes";
    for (int f = 0; f < layout::kFilterServices; ++f)
        for (int i = 0; i < SW_IP_FILTER_SLOTS; ++i)
            if (unterminated(c.filters[f][i], SW_IP_FILTER_TEXT_SIZE))
                return "address filter " + std::to_string(f) + "." + std::to_string(i) + " runs past its " +
                       std::to_string(SW_IP_FILTER_TEXT_SIZE) + " bytes";
    for (int i = 0; i < SW_SNTP_SERVERS; ++i)
        if (unterminated(c.sntp_servers[i], sizeof c.sntp_servers[i]))
            return "SNTP server " + std::to_string(i) + " runs past its 16 bytes";
    for (int i = 0; i < SW_LOG_SERVERS; ++i) {
        const layout::LogHost &h = c.log_hosts[i];
        if (h.version != 0 && h.version != 4 && h.version != 6)
            return "log server " + std::to_string(i) + "'s address version is " + std::to_string(h.version) +
                   " (0, 4 or 6)";
        if (unterminated(h.address, sizeof h.address))
            return "log server " + std::to_string(i) + " runs past its " + std::to_string(sizeof h.address) + " bytes";
    }
    return "";
}

// ---- the platform calls ------------------------------------------------------------------------

namespace calls {

int cfg_get_ip_default_gw(const View &v, char *buf, size_t size) {
    return buf ? give_address(cfg(v).gateway, buf, size) : -1;
}
int cfg_set_ip_default_gw(const View &v, const char *gateway, int family) {
    uint32_t a;
    if (family != 0 || !parse_v4(gateway, a) || a >= kReserved) return -1;
    cfg(v).gateway = a;
    return 0;
}
int cfg_set_ip_dns_servers(const View &v, int which, uint32_t addr) {
    if (which < 0 || which > 1 || addr >= kReserved) return -1;
    cfg(v).dns[which] = addr;
    v.status->dns_servers[which] = addr;
    return 0;
}

int cfg_get_httpd_enable(const View &v) { return cfg(v).http_on; }
int cfg_set_httpd_enable(const View &v, int on) { return set_switch(cfg(v).http_on, on); }
int cfg_get_httpd_port(const View &v) { return cfg(v).http_port; }
int cfg_set_httpd_port(const View &v, int port) { return set_web_port(cfg(v).http_port, cfg(v).https_port, port); }
int cfg_set_httpsd_enable(const View &v, int on) { return set_switch(cfg(v).https_on, on); }
int cfg_get_httpsd_port(const View &v) { return cfg(v).https_port; }
int cfg_set_httpsd_port(const View &v, int port) { return set_web_port(cfg(v).https_port, cfg(v).http_port, port); }
int cfg_get_telnetd(const View &v) { return cfg(v).telnet_on; }
int cfg_set_telnetd(const View &v, int on) { return set_switch(cfg(v).telnet_on, on); }
int cfg_get_sshd_enable(const View &v) { return cfg(v).ssh_on; }
int cfg_set_sshd_enable(const View &v, int on) { return set_switch(cfg(v).ssh_on, on); }
int cfg_get_sshd_timeout(const View &v) { return cfg(v).ssh_timeout; }
int cfg_set_sshd_timeout(const View &v, int seconds) { return set_in(cfg(v).ssh_timeout, seconds, 1, 120); }

const char *cfg_ssh_get_key_rsa(const View &v) { return key_text(v, kKeyRsa); }
const char *cfg_ssh_get_key_dsa(const View &v) { return key_text(v, kKeyDsa); }
int cfg_ssh_create_keys_rsa(const View &v) { return create_key(v, kKeyRsa); }
int cfg_ssh_create_keys_dsa(const View &v) { return create_key(v, kKeyDsa); }
int cfg_ssh_reset_keys_rsa(const View &v) { return reset_key(v, kKeyRsa); }
int cfg_ssh_reset_keys_dsa(const View &v) { return reset_key(v, kKeyDsa); }

#define SWSIM_FILTER_CALL_DEFS(service, index)                                                               \
    int cfg_get_ip_filter_##service(const View &v, int slot, char *buf, size_t size) {                       \
        return get_filter(v, index, slot, buf, size);                                                        \
    }                                                                                                        \
    int cfg_add_ip_filter_##service(const View &v, const char *filter) { return add_filter(v, index, filter); } \
    int cfg_del_ip_filter_##service(const View &v, const char *filter) { return del_filter(v, index, filter); }
SWSIM_FILTER_CALL_DEFS(http, layout::kFilterHttp)
SWSIM_FILTER_CALL_DEFS(ssh, layout::kFilterSsh)
SWSIM_FILTER_CALL_DEFS(snmp, layout::kFilterSnmp)
SWSIM_FILTER_CALL_DEFS(telnet, layout::kFilterTelnet)
#undef SWSIM_FILTER_CALL_DEFS

int cfg_get_sntp_enable(const View &v) { return cfg(v).sntp_on; }
int cfg_set_sntp_enable(const View &v, int on) { return set_switch(cfg(v).sntp_on, on); }
int cfg_get_sntp_interval(const View &v) { return cfg(v).sntp_interval; }
int cfg_set_sntp_interval(const View &v, int seconds) { return set_in(cfg(v).sntp_interval, seconds, 16, 16384); }
int sntp_dump_server_ip_addr(const View &v, int slot, char *buf, size_t size) {
    if (slot < 0 || slot >= SW_SNTP_SERVERS) return -1;
    return give_text(cfg(v).sntp_servers[slot], 16, buf, size);
}
int cfg_add_sntp_server(const View &v, const char *addr) {
    uint32_t a;
    if (!parse_host(addr, a)) return -1;
    auto &slots = cfg(v).sntp_servers;
    if (find_text(slots, SW_SNTP_SERVERS, v4_text(a)) >= 0) return -1;
    for (auto &slot : slots)
        if (!slot[0]) return copy_text(slot, v4_text(a)), 0;
    return -1;
}
int cfg_del_sntp_server(const View &v, const char *addr) {
    uint32_t a;
    const int i = parse_v4(addr, a) ? find_text(cfg(v).sntp_servers, SW_SNTP_SERVERS, v4_text(a)) : -1;
    if (i < 0) return -1;
    std::memset(cfg(v).sntp_servers[i], 0, 16);
    return 0;
}

int cfg_get_syslogd(const View &v) { return cfg(v).syslog_on; }
int cfg_set_syslogd(const View &v, int on) { return set_switch(cfg(v).syslog_on, on); }
int cfg_get_flash_level(const View &v) { return cfg(v).flash_level; }
int cfg_set_flash_level(const View &v, int level) { return set_level(cfg(v).flash_level, level); }
int cfg_get_ram_level(const View &v) { return cfg(v).ram_level; }
int cfg_set_ram_level(const View &v, int level) { return set_level(cfg(v).ram_level, level); }
int cfg_get_remote_log(const View &v) { return cfg(v).remote_log_on; }
int cfg_set_remote_log(const View &v, int on) { return set_switch(cfg(v).remote_log_on, on); }
int cfg_get_remote_level(const View &v) { return cfg(v).remote_level; }
int cfg_set_remote_level(const View &v, int level) { return set_level(cfg(v).remote_level, level); }
int cfg_get_remote_facility(const View &v) { return cfg(v).remote_facility; }
int cfg_set_remote_facility(const View &v, int facility) { return set_in(cfg(v).remote_facility, facility, 16, 23); }
int cfg_log_export_rem_facility(const View &v) {
    v.hw->services.daemon_facility = cfg(v).remote_facility;
    return 0;
}
int cfg_log_get_remote_host_addr_version(const View &v, int slot) {
    return slot >= 0 && slot < SW_LOG_SERVERS ? cfg(v).log_hosts[slot].version : -1;
}
int cfg_log_get_remote_host(const View &v, int slot, char *buf, size_t size) {
    if (slot < 0 || slot >= SW_LOG_SERVERS || !cfg(v).log_hosts[slot].version) return -1;
    return give_text(cfg(v).log_hosts[slot].address, SW_LOG_HOST_TEXT_SIZE, buf, size);
}
int cfg_log_add_remote_host_ipv4(const View &v, const char *addr) { return add_log_host(v, addr, 4); }
int cfg_log_del_remote_host(const View &v, const char *addr) {
    std::string canonical;
    const int version = log_host_of(addr, canonical);
    const int i = version ? find_log_host(v, version, canonical) : -1;
    if (i < 0) return -1;
    layout::LogHost &h = cfg(v).log_hosts[i];
    h.version = 0;
    std::memset(h.address, 0, sizeof h.address);
    return 0;
}

}  // namespace calls

}  // namespace swsim::services
