// Management services: the status writers that deliberately differ, the
// pass-through settings against what the platform takes, SSH host-key
// actions and their order, address filters (keys, prefix conversion, the
// 15-slot limit), SNTP and remote log servers, trap destinations, the trap
// forwarders, and address conversions that fail.
#include <arpa/inet.h>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

extern "C" void init_trap(void);

namespace unit {
namespace {

using Calls = std::vector<std::string>;

uint32_t ip(const char *text) {
    in_addr a{};
    inet_pton(AF_INET, text, &a);
    return ntohl(a.s_addr);
}
std::string dotted(uint32_t addr) {
    in_addr a{htonl(addr)};
    char buf[16];
    return inet_ntop(AF_INET, &a, buf, sizeof buf);
}

// Rows as dotted texts: "a.b.c.d" or "a.b.c.d/m.m.m.m".
void *add_address_row(uint32_t addr) {
    rows().keys.push_back(dotted(addr));
    return &rows();
}
void *add_filter_row(uint32_t addr, uint32_t mask) {
    rows().keys.push_back(dotted(addr) + "/" + dotted(mask));
    return &rows();
}

class ServicesTest : public SwitchTest {
protected:
    std::string scenario() const override {
        return R"({"services": {"address": "192.0.2.20/24", "gateway": "192.0.2.1",
                                "sntp_server": ["192.0.2.121", "192.0.2.122"],
                                "log_server": ["2001:db8::50", "192.0.2.51", "192.0.2.52"]},
                   "traps": {"destinations": [{"address": "::1"}, {"address": "127.0.0.90", "version": 2,
                                                                   "community": "nms"}]}})";
    }
    void TearDown() override {
        register_trap(nullptr, nullptr);
        SwitchTest::TearDown();
    }
};

// ---- status writers and switches ------------------------------------------------------

TEST_F(ServicesTest, StatusWritersDifferAsEachObjectSays) {
    const struct {
        const char *object;
        int (*set)(int32_t);
        int32_t value;
        Calls calls;
        int result;
    } cases[] = {
        // The web and SSH servers: enabled(1), disabled(2), nothing else.
        {"ipHttpState", set_ipHttpState, 1, {"cfg_set_httpd_enable(1)"}, 0},
        {"ipHttpState", set_ipHttpState, 2, {"cfg_set_httpd_enable(0)"}, 0},
        {"ipHttpState", set_ipHttpState, 3, {}, -1},
        {"ipHttpState", set_ipHttpState, 0, {}, -1},
        {"ipHttpsState", set_ipHttpsState, 1, {"cfg_set_httpsd_enable(1)"}, 0},
        {"ipHttpsState", set_ipHttpsState, 2, {"cfg_set_httpsd_enable(0)"}, 0},
        {"ipHttpsState", set_ipHttpsState, 3, {}, -1},
        {"sshServerStatus", set_sshServerStatus, 1, {"cfg_set_sshd_enable(1)"}, 0},
        {"sshServerStatus", set_sshServerStatus, 2, {"cfg_set_sshd_enable(0)"}, 0},
        {"sshServerStatus", set_sshServerStatus, 3, {}, -1},
        // Telnet and SNTP: everything but enabled(1) is off.
        {"ipTelnetState", set_ipTelnetState, 1, {"cfg_set_telnetd(1)"}, 0},
        {"ipTelnetState", set_ipTelnetState, 3, {"cfg_set_telnetd(0)"}, 0},
        {"ipTelnetState", set_ipTelnetState, 0, {"cfg_set_telnetd(0)"}, 0},
        {"sntpStatus", set_sntpStatus, 1, {"cfg_set_sntp_enable(1)"}, 0},
        {"sntpStatus", set_sntpStatus, 2, {"cfg_set_sntp_enable(0)"}, 0},
        {"sntpStatus", set_sntpStatus, 7, {"cfg_set_sntp_enable(0)"}, 0},
        // Remote logging: everything but 0 is on, disabled(2) included.
        {"remoteLogStatus", set_remoteLogStatus, 2, {"cfg_set_remote_log(1)"}, 0},
        {"remoteLogStatus", set_remoteLogStatus, -5, {"cfg_set_remote_log(1)"}, 0},
        {"remoteLogStatus", set_remoteLogStatus, 0, {"cfg_set_remote_log(0)"}, 0},
        // The system log: disabled(2) and 0 are off, anything else on.
        {"sysLogStatus", set_sysLogStatus, 2, {"cfg_set_syslogd(0)"}, 0},
        {"sysLogStatus", set_sysLogStatus, 0, {"cfg_set_syslogd(0)"}, 0},
        {"sysLogStatus", set_sysLogStatus, 1, {"cfg_set_syslogd(1)"}, 0},
        {"sysLogStatus", set_sysLogStatus, 3, {"cfg_set_syslogd(1)"}, 0},
        // Address mode: dhcp(2) asks for the DHCP client, anything else not.
        {"ipAddressMode", set_ipAddressMode, 2, {"cfg_set_vlan_dhcp_client(1)"}, 0},
        {"ipAddressMode", set_ipAddressMode, 1, {"cfg_set_vlan_dhcp_client(0)"}, 0},
        {"ipAddressMode", set_ipAddressMode, 5, {"cfg_set_vlan_dhcp_client(0)"}, 0},
    };
    for (const auto &c : cases) {
        int result = 99;
        EXPECT_EQ(call_texts([&] { result = c.set(c.value); }), c.calls) << c.object << " = " << c.value;
        EXPECT_EQ(result, c.result) << c.object << " = " << c.value;
    }
    // A platform refusal is the setter's result.
    sw().fault_set("cfg_set_telnetd", -6, 1);
    EXPECT_EQ(set_ipTelnetState(1), -6);
}

TEST_F(ServicesTest, SwitchesReadAsThePlatformHasThem) {
    // HTTPS reads the HTTP server's switch, whatever its own.
    const struct {
        const char *http, *https;
        int32_t state;
    } web[] = {{"on", "off", 1}, {"off", "on", 2}, {"off", "off", 2}};
    for (const auto &w : web) {
        sw().service_set("http", w.http);
        sw().service_set("https", w.https);
        EXPECT_EQ(get_ipHttpState(), w.state);
        EXPECT_EQ(get_ipHttpsState(), w.state) << "http " << w.http << ", https " << w.https;
    }
    EXPECT_FALSE(sw().services().https);

    // Remote logging reads back the platform's own value: off is 0.
    ASSERT_EQ(set_remoteLogStatus(2), 0);
    EXPECT_EQ(get_remoteLogStatus(), 1);
    ASSERT_EQ(set_remoteLogStatus(0), 0);
    EXPECT_EQ(get_remoteLogStatus(), 0);

    for (const char *on : {"on", "off"}) {
        for (const char *s : {"telnet", "ssh", "sntp", "syslog", "dhcp"}) sw().service_set(s, on);
        const int32_t expected = std::string(on) == "on" ? 1 : 2;
        EXPECT_EQ(get_ipTelnetState(), expected);
        EXPECT_EQ(get_sshServerStatus(), expected);
        EXPECT_EQ(get_sntpStatus(), expected);
        EXPECT_EQ(get_sysLogStatus(), expected);
        EXPECT_EQ(get_ipAddressMode(), 3 - expected);  // dhcp(2) while on
    }
    EXPECT_EQ(get_sshServerMajorVersion(), 2);
    EXPECT_EQ(get_sshServerMinorVersion(), 0);
}

TEST_F(ServicesTest, PassedThroughValuesAreCheckedByThePlatformAlone) {
    const struct {
        const char *object;
        int32_t (*get)(void);
        int (*set)(int32_t);
        int32_t good, bad;
    } values[] = {
        {"ipHttpPort", get_ipHttpPort, set_ipHttpPort, 8080, 443},  // 443 is the HTTPS port
        {"ipHttpsPort", get_ipHttpsPort, set_ipHttpsPort, 8443, 8080},  // the HTTP port now
        {"sshTimeout", get_sshTimeout, set_sshTimeout, 45, 121},
        {"sntpPollInterval", get_sntpPollInterval, set_sntpPollInterval, 64, 15},
        {"remoteLogLevel", get_remoteLogLevel, set_remoteLogLevel, 7, 8},
        {"sysLogHistoryFlashLevel", get_sysLogHistoryFlashLevel, set_sysLogHistoryFlashLevel, 0, -1},
        {"sysLogHistoryRamLevel", get_sysLogHistoryRamLevel, set_sysLogHistoryRamLevel, 5, 9},
    };
    for (const auto &v : values) {
        EXPECT_EQ(v.set(v.good), 0) << v.object;
        EXPECT_EQ(v.get(), v.good) << v.object;
        EXPECT_EQ(calls_of([&] { EXPECT_EQ(v.set(v.bad), -1) << v.object; }).size(), 1u) << v.object;
        EXPECT_EQ(v.get(), v.good) << v.object;
    }

    // The facility goes to the log daemon only when the platform took it.
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_remoteLogFacilityType(17), 0); }),
              (Calls{"cfg_set_remote_facility(17)", "cfg_log_export_rem_facility()"}));
    EXPECT_EQ(sw().services().daemon_facility, 17);
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_remoteLogFacilityType(9), -1); }), Calls{"cfg_set_remote_facility(9)"});
    // The daemon's answer is not the setter's.
    sw().fault_set("cfg_log_export_rem_facility", -3, 1);
    EXPECT_EQ(set_remoteLogFacilityType(18), 0);
    EXPECT_EQ(get_remoteLogFacilityType(), 18);
    EXPECT_EQ(sw().services().daemon_facility, 17);
}

TEST_F(ServicesTest, GatewayAndNameServers) {
    EXPECT_EQ(get_ipDefaultGateway(), ip("192.0.2.1"));
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_ipDefaultGateway(ip("198.51.100.1")), 0); }),
              (Calls{"ip_uint32_to_str(3325256705,17)", "cfg_set_ip_default_gw(\"198.51.100.1\",0)"}));
    EXPECT_EQ(get_ipDefaultGateway(), ip("198.51.100.1"));
    EXPECT_EQ(set_ipDefaultGateway(ip("224.0.0.1")), -1);
    // A conversion that fails is the setter's result; nothing is set.
    sw().fault_set("ip_uint32_to_str", -12, 1);
    EXPECT_EQ(count_calls("cfg_set_ip_default_gw", [] { EXPECT_EQ(set_ipDefaultGateway(ip("203.0.113.1")), -12); }), 0u);
    // A gateway the platform cannot tell, or whose text is no address: 0.0.0.0.
    sw().fault_set("cfg_get_ip_default_gw", -1, 1);
    EXPECT_EQ(get_ipDefaultGateway(), 0u);
    sw().fault_set("ip_str_to_uint32", -1, 1);
    EXPECT_EQ(get_ipDefaultGateway(), 0u);
    EXPECT_EQ(get_ipDefaultGateway(), ip("198.51.100.1"));

    // Name servers go to the platform as they are, and read from its status.
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_ipPrimaryDnsServer(ip("192.0.2.53")), 0); }),
              Calls{"cfg_set_ip_dns_servers(0,3221226037)"});
    EXPECT_EQ(set_ipSecondaryDnsServer(ip("192.0.2.54")), 0);
    EXPECT_EQ(get_ipPrimaryDnsServer(), ip("192.0.2.53"));
    EXPECT_EQ(get_ipSecondaryDnsServer(), ip("192.0.2.54"));
    EXPECT_EQ(set_ipSecondaryDnsServer(ip("239.1.1.1")), -1);
    EXPECT_EQ(get_ipSecondaryDnsServer(), ip("192.0.2.54"));
    EXPECT_EQ(sw().services().dns[1], ip("192.0.2.54"));
}

// ---- SSH host keys ----------------------------------------------------------------------

TEST_F(ServicesTest, HostKeyActionsAndTheirOrder) {
    const struct {
        int (*set)(int32_t);
        const char *verb;
    } actions[] = {{set_sshHostKeyGenAction, "create"}, {set_sshHostKeyDelAction, "reset"}};
    for (const auto &a : actions) {
        const std::string rsa = std::string("cfg_ssh_") + a.verb + "_keys_rsa()";
        const std::string dsa = std::string("cfg_ssh_") + a.verb + "_keys_dsa()";
        const struct {
            int32_t action;
            Calls calls;
        } cases[] = {{2, {rsa}}, {3, {dsa}}, {4, {rsa, dsa}}, {1, {}}, {5, {}}, {0, {}}, {-1, {}}};
        for (const auto &c : cases) {
            int result = 99;
            EXPECT_EQ(call_texts([&] { result = a.set(c.action); }), c.calls) << a.verb << " " << c.action;
            EXPECT_EQ(result, 0);
        }
        // Both: the sum of the two results, and DSA is tried after RSA failed.
        sw().fault_set(std::string("cfg_ssh_") + a.verb + "_keys_rsa", -3, 1);
        sw().fault_set(std::string("cfg_ssh_") + a.verb + "_keys_dsa", -4, 1);
        EXPECT_EQ(a.set(4), -7);
    }
    EXPECT_EQ(get_sshHostKeyGenAction(), 1);
    EXPECT_EQ(get_sshHostKeyDelAction(), 1);

    // The keys themselves: each generation is a new key; the text is read
    // once for its length and once more.
    ASSERT_EQ(set_sshHostKeyGenAction(4), 0);
    const std::string rsa = read_text(get_sshRsaHostKey), dsa = read_text(get_sshDsaHostKey);
    EXPECT_EQ(rsa.rfind("ssh-rsa AAAAB3NzaC1yc2E", 0), 0u) << rsa;
    EXPECT_EQ(dsa.rfind("ssh-dss AAAAB3NzaC1kc3M", 0), 0u) << dsa;
    EXPECT_GT(dsa.size(), 255u) << "longer than a DisplayString";
    EXPECT_EQ(count_calls("cfg_ssh_get_key_rsa", [] { read_text(get_sshRsaHostKey); }), 2u);
    ASSERT_EQ(set_sshHostKeyGenAction(2), 0);
    EXPECT_NE(read_text(get_sshRsaHostKey), rsa);
    EXPECT_EQ(read_text(get_sshDsaHostKey), dsa);
    ASSERT_EQ(set_sshHostKeyDelAction(3), 0);
    EXPECT_EQ(read_text(get_sshDsaHostKey), "");
    EXPECT_EQ(sw().services().ssh_dsa_key, "");
    EXPECT_NE(sw().services().ssh_rsa_key, "");
}

// ---- address filters ----------------------------------------------------------------------

struct FilterFamily {
    const char *list;  // the simulator's name of the service's filters
    const char *suffix;  // of the platform calls
    int (*populate)(void *(*)(uint32_t, uint32_t));
    int (*exists)(uint32_t, uint32_t);
    int32_t (*get)(uint32_t, uint32_t);
    int (*set)(uint32_t, uint32_t, int32_t);
    const char *table;
};
const FilterFamily kFilters[] = {
    {"filter_http", "http", init_index_ipFilterHTTPTable, exists_entry_ipFilterHTTPTable, get_ipFilterHTTPStatus,
     set_ipFilterHTTPStatus, "ipFilterHTTPTable"},
    {"filter_ssh", "ssh", init_index_ipFilterSSHTable, exists_entry_ipFilterSSHTable, get_ipFilterSSHStatus,
     set_ipFilterSSHStatus, "ipFilterSSHTable"},
    {"filter_snmp", "snmp", init_index_ipFilterSnmpTable, exists_entry_ipFilterSnmpTable, get_ipFilterSnmpStatus,
     set_ipFilterSnmpStatus, "ipFilterSnmpTable"},
    {"filter_telnet", "telnet", init_index_ipFilterTelnetTable, exists_entry_ipFilterTelnetTable,
     get_ipFilterTelnetStatus, set_ipFilterTelnetStatus, "ipFilterTelnetTable"},
};

TEST_F(ServicesTest, FilterKeysAndPrefixes) {
    const struct {
        const char *addr, *mask, *key;  // key null: the mask is not contiguous
    } cases[] = {
        {"10.0.0.0", "255.0.0.0", "10.0.0.0/8"},
        {"192.168.1.0", "255.255.255.0", "192.168.1.0/24"},
        {"0.0.0.0", "0.0.0.0", "0.0.0.0/0"},
        {"255.255.255.255", "255.255.255.255", "255.255.255.255/32"},
        {"172.16.5.4", "255.255.240.0", "172.16.5.4/20"},
        {"10.0.0.0", "255.0.255.0", nullptr},
        {"10.0.0.0", "0.255.255.255", nullptr},
        {"10.0.0.0", "255.255.255.253", nullptr},
    };
    for (const FilterFamily &f : kFilters) {
        for (const auto &c : cases) {
            SCOPED_TRACE(std::string(f.list) + " " + c.addr + "/" + c.mask);
            const uint32_t a = ip(c.addr), m = ip(c.mask);
            if (c.key == nullptr) {
                // ip_mask_to_prefix's failure, for every accessor.
                EXPECT_EQ(count_calls(std::string("cfg_add_ip_filter_") + f.suffix, [&] { EXPECT_EQ(f.set(a, m, 1), -1); }),
                          0u);
                EXPECT_EQ(f.get(a, m), 2);
                rows().clear();
                EXPECT_EQ(f.exists(a, m), 0);
                EXPECT_TRUE(rows().removed.empty()) << "a row whose key cannot be built is left alone";
                continue;
            }
            EXPECT_EQ(calls_named(std::string("cfg_add_ip_filter_") + f.suffix, [&] { EXPECT_EQ(f.set(a, m, 1), 0); })
                          .at(0)
                          .args,
                      "\"" + std::string(c.key) + "\"");
            EXPECT_EQ(f.get(a, m), 1);
            EXPECT_EQ(f.exists(a, m), 1);
            rows().clear();
            ASSERT_EQ(f.populate(add_filter_row), 0);
            EXPECT_EQ(rows().keys, std::vector<std::string>{std::string(c.addr) + "/" + c.mask})
                << "the slot's text reads back as the row";
            EXPECT_EQ(calls_named(std::string("cfg_del_ip_filter_") + f.suffix, [&] { EXPECT_EQ(f.set(a, m, 2), 0); })
                          .at(0)
                          .args,
                      "\"" + std::string(c.key) + "\"");
            EXPECT_TRUE(sw().services().filters[&f - kFilters].empty());
            rows().clear();
            EXPECT_EQ(f.exists(a, m), 0);
            EXPECT_EQ(rows().removed, std::vector<std::string>{std::string(f.table) + " " + c.addr + "/" + c.mask});
            EXPECT_EQ(f.get(a, m), 2);
        }
        // Other statuses, and deleting what is not there.
        EXPECT_TRUE(calls_of([&] { EXPECT_EQ(f.set(ip("10.0.0.0"), ip("255.0.0.0"), 3), -1); }).size() == 2u)
            << "only the key's conversions";
        EXPECT_EQ(f.set(ip("10.0.0.0"), ip("255.0.0.0"), 0), -1);
        EXPECT_EQ(f.set(ip("10.9.0.0"), ip("255.255.0.0"), 2), -1);
    }
}

TEST_F(ServicesTest, FifteenFilterSlotsAreAllThatIsRead) {
    for (const FilterFamily &f : kFilters) {
        SCOPED_TRACE(f.list);
        for (uint32_t i = 0; i < 15; ++i) ASSERT_EQ(f.set(ip("10.0.0.0") + (i << 16), ip("255.255.0.0"), 1), 0);
        EXPECT_EQ(f.set(ip("10.99.0.0"), ip("255.255.0.0"), 1), -1) << "the platform keeps 15";
        rows().clear();
        const auto reads = calls_named(std::string("cfg_get_ip_filter_") + f.suffix, [&] {
            EXPECT_EQ(f.populate(add_filter_row), 0);
        });
        ASSERT_EQ(reads.size(), 15u);
        EXPECT_EQ(reads.front().args, "0," + std::to_string(SW_IP_FILTER_TEXT_SIZE));
        EXPECT_EQ(reads.back().args, "14," + std::to_string(SW_IP_FILTER_TEXT_SIZE));
        ASSERT_EQ(rows().keys.size(), 15u);
        EXPECT_EQ(rows().keys[14], "10.14.0.0/255.255.0.0");
        // A slot that cannot be split stops the population with its result.
        sw().fault_set("ip_addr_prefix_to_addr_mask", -8, 1);
        rows().clear();
        EXPECT_EQ(f.populate(add_filter_row), -8);
        EXPECT_TRUE(rows().keys.empty());
        // The address of a row that cannot be printed: no key, no change.
        sw().fault_set("ip_uint32_to_str", -2, 1);
        EXPECT_EQ(f.set(ip("10.1.0.0"), ip("255.255.0.0"), 2), -2);
        EXPECT_EQ(sw().services().filters[&f - kFilters].size(), 15u);
        sw().fault_set("ip_uint32_to_str", -2, 1);
        EXPECT_EQ(f.get(ip("10.1.0.0"), ip("255.255.0.0")), 2);
    }
}

TEST_F(ServicesTest, EachServiceHasItsOwnFilters) {
    for (const FilterFamily &f : kFilters) {
        sw().service_add(f.list, "192.168.7.0/24");
        for (const FilterFamily &other : kFilters) {
            rows().clear();
            ASSERT_EQ(other.populate(add_filter_row), 0);
            EXPECT_EQ(rows().keys.size(), &other == &f ? 1u : 0u) << f.list << " seen by " << other.list;
            EXPECT_EQ(other.get(ip("192.168.7.0"), ip("255.255.255.0")), &other == &f ? 1 : 2);
        }
        sw().service_remove(f.list, "192.168.7.0/24");
    }
}

// ---- SNTP and remote log servers -------------------------------------------------------

TEST_F(ServicesTest, SntpServers) {
    rows().clear();
    ASSERT_EQ(init_index_sntpServerTable(add_address_row), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"192.0.2.121", "192.0.2.122"}));
    EXPECT_EQ(get_sntpServerIp(ip("192.0.2.121")), ip("192.0.2.121"));
    EXPECT_TRUE(calls_of([] { EXPECT_EQ(set_sntpServerIp(ip("192.0.2.121"), ip("1.2.3.4")), 0); }).empty());
    EXPECT_EQ(get_sntpServerStatus(ip("198.51.100.1")), 1) << "always 1";

    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_sntpServerStatus(ip("192.0.2.123"), 1), 0); }),
              (Calls{"ip_uint32_to_str(3221226107,17)", "cfg_add_sntp_server(\"192.0.2.123\")"}));
    EXPECT_EQ(set_sntpServerStatus(ip("192.0.2.124"), 1), -1) << "three servers at most";
    EXPECT_EQ(set_sntpServerStatus(ip("192.0.2.121"), 2), 0);
    EXPECT_EQ(sw().services().sntp_servers, (std::vector<std::string>{"192.0.2.122", "192.0.2.123"}));
    EXPECT_TRUE(calls_named("cfg_add_sntp_server", [] { EXPECT_EQ(set_sntpServerStatus(ip("192.0.2.9"), 3), -1); }).empty());

    rows().clear();
    EXPECT_EQ(exists_entry_sntpServerTable(ip("192.0.2.122")), 1);
    EXPECT_EQ(exists_entry_sntpServerTable(ip("192.0.2.121")), 0);
    EXPECT_EQ(rows().removed, Calls{"sntpServerTable 192.0.2.121"});
    // A slot that cannot be read: the population stops, the check says -1
    // and removes nothing.
    sw().fault_set("sntp_dump_server_ip_addr", -1, 1);
    rows().clear();
    EXPECT_EQ(init_index_sntpServerTable(add_address_row), -1);
    EXPECT_TRUE(rows().keys.empty());
    sw().fault_set("sntp_dump_server_ip_addr", -1, 1);
    EXPECT_EQ(exists_entry_sntpServerTable(ip("192.0.2.121")), -1);
    EXPECT_TRUE(rows().removed.empty());
    sw().fault_set("ip_uint32_to_str", -5, 1);
    EXPECT_EQ(set_sntpServerStatus(ip("192.0.2.122"), 2), -5);
}

TEST_F(ServicesTest, RemoteLogServersAreIpv4Only) {
    rows().clear();
    ASSERT_EQ(init_index_remoteLogServerTable(add_address_row), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"192.0.2.51", "192.0.2.52"})) << "the IPv6 server is not listed";
    EXPECT_EQ(get_remoteLogServerIp(ip("192.0.2.52")), ip("192.0.2.52"));
    EXPECT_EQ(get_remoteLogServerIp(ip("192.0.2.53")), 0u);
    EXPECT_EQ(get_remoteLogServerStatus(ip("192.0.2.51")), 1);
    EXPECT_EQ(get_remoteLogServerStatus(ip("192.0.2.53")), 2);
    EXPECT_EQ(set_remoteLogServerIp(ip("192.0.2.51"), ip("192.0.2.60")), -1);

    ASSERT_EQ(set_remoteLogServerStatus(ip("192.0.2.53"), 1), 0);
    ASSERT_EQ(set_remoteLogServerStatus(ip("192.0.2.54"), 1), 0);
    EXPECT_EQ(sw().services().log_servers.size(), 5u);
    // The platform says its list is full with -9: the module says -1.
    EXPECT_EQ(set_remoteLogServerStatus(ip("192.0.2.55"), 1), -1);
    sw().fault_set("cfg_log_add_remote_host_ipv4", -9, 1);
    EXPECT_EQ(set_remoteLogServerStatus(ip("192.0.2.51"), 2), 0);
    EXPECT_EQ(set_remoteLogServerStatus(ip("192.0.2.55"), 1), -1);
    sw().fault_set("cfg_log_add_remote_host_ipv4", -4, 1);
    EXPECT_EQ(set_remoteLogServerStatus(ip("192.0.2.55"), 1), -4) << "other refusals pass";
    EXPECT_EQ(set_remoteLogServerStatus(ip("192.0.2.55"), 7), -1);

    rows().clear();
    EXPECT_EQ(exists_entry_remoteLogServerTable(ip("192.0.2.52")), 1);
    EXPECT_EQ(exists_entry_remoteLogServerTable(ip("192.0.2.51")), 0);
    EXPECT_EQ(rows().removed, Calls{"remoteLogServerTable 192.0.2.51"});
    // The check does not look at the version: every slot is read.
    EXPECT_EQ(count_calls("cfg_log_get_remote_host", [] { exists_entry_remoteLogServerTable(ip("192.0.2.9")); }), 5u);
    EXPECT_EQ(count_calls("cfg_log_get_remote_host_addr_version",
                          [] { exists_entry_remoteLogServerTable(ip("192.0.2.9")); }),
              0u);
}

// ---- trap destinations --------------------------------------------------------------------

TEST_F(ServicesTest, TrapDestinations) {
    const uint32_t nms = ip("127.0.0.90"), fresh = ip("127.0.0.91");
    rows().clear();
    ASSERT_EQ(init_index_trapDestTable(add_address_row), 0);
    EXPECT_EQ(rows().keys, std::vector<std::string>{"127.0.0.90"}) << "the IPv6 destination is not listed";
    EXPECT_EQ(read_text(get_trapDestCommunity, nms), "nms");
    EXPECT_EQ(get_trapDestVersion(nms), 2);

    // A new destination: empty community, version 1; then its community.
    EXPECT_EQ(calls_named("cfg_add_snmp_trap_host", [&] { EXPECT_EQ(set_trapDestStatus(fresh, 1), 0); }).at(0).args,
              "\"127.0.0.91\",\"\",1");
    EXPECT_EQ(get_trapDestStatus(fresh), 1);
    EXPECT_EQ(read_text(get_trapDestCommunity, fresh), "");
    EXPECT_EQ(get_trapDestVersion(fresh), 1);
    EXPECT_EQ(set_trapDestCommunity(fresh, bytes("ops-centreXX"), 10), 0);
    EXPECT_EQ(read_text(get_trapDestCommunity, fresh), "ops-centre");
    EXPECT_EQ(set_trapDestVersion(fresh, 2), 0);
    EXPECT_EQ(set_trapDestVersion(fresh, 3), -1) << "the platform's check";
    EXPECT_EQ(get_trapDestVersion(fresh), 2);
    EXPECT_EQ(set_trapDestStatus(fresh, 1), -1) << "listed already";
    // Five destinations at most (the IPv6 one counts).
    EXPECT_EQ(set_trapDestStatus(ip("127.0.0.92"), 1), 0);
    EXPECT_EQ(set_trapDestStatus(ip("127.0.0.93"), 1), 0);
    EXPECT_EQ(set_trapDestStatus(ip("127.0.0.94"), 1), -1);
    EXPECT_EQ(get_trapDestStatus(ip("127.0.0.94")), 2);
    ASSERT_EQ(set_trapDestStatus(ip("127.0.0.93"), 2), 0);

    // No such destination: no value, and nothing to write.
    const uint32_t none = ip("127.0.0.99");
    size_t len = 7;
    EXPECT_EQ(get_trapDestCommunity(none, &len), nullptr);
    EXPECT_EQ(len, 0u);
    EXPECT_EQ(get_trapDestVersion(none), 0);
    EXPECT_EQ(get_trapDestStatus(none), 2);
    EXPECT_EQ(set_trapDestCommunity(none, bytes("x"), 1), -1);
    EXPECT_EQ(set_trapDestVersion(none, 1), -1);
    EXPECT_EQ(set_trapDestStatus(none, 2), -1);
    EXPECT_TRUE(calls_named("cfg_add_snmp_trap_host", [&] { EXPECT_EQ(set_trapDestStatus(none, 3), -1); }).empty());

    ASSERT_EQ(set_trapDestStatus(nms, 2), 0);
    rows().clear();
    EXPECT_EQ(exists_entry_trapDestTable(nms), 0);
    EXPECT_EQ(exists_entry_trapDestTable(fresh), 1);
    EXPECT_EQ(rows().removed, Calls{"trapDestTable 127.0.0.90"});
    // A slot whose address cannot be printed names no destination.
    sw().fault_set("ip_addr_to_str", -1, 5);
    EXPECT_EQ(get_trapDestStatus(fresh), 2);
    sw().fault_set("ip_uint32_to_str", -3, 1);
    EXPECT_EQ(set_trapDestStatus(fresh, 2), -3);
}

TEST_F(ServicesTest, TrapForwardersHandNotificationsOnUnchanged) {
    init_trap();
    EXPECT_EQ(call_texts([&] { sw().report_login_failure(SW_SERVICE_SSH, "198.51.100.4"); }),
              Calls{"send_trap_snmp_authentication_fail(3,\"198.51.100.4\")"});
    swsim::Switch::RmonAlarmNotice alarm;
    alarm.alarm_index = 12;
    alarm.rising = false;
    alarm.variable = {1, 3, 6, 1, 2, 1, 2, 2, 1, 10, 5};
    alarm.sample_type = SW_RMON_ABSOLUTE;
    alarm.value = -40;
    alarm.threshold = 100;
    EXPECT_EQ(call_texts([&] { sw().report_rmon_alarm(alarm); }), Calls{"send_trap_rmon_alarm(12,0,11,1,-40,100)"});
    EXPECT_EQ(sw().traps().notifications, 2u);
}

}  // namespace
}  // namespace unit

// The row store's removals, recorded.
extern "C" {
#define UNIT_FILTER_REMOVER(table)                                                                 \
    void table##_removeEntry(uint32_t addr, uint32_t mask) {                                       \
        unit::rows().removed.push_back(#table " " + unit::dotted(addr) + "/" + unit::dotted(mask)); \
    }
UNIT_FILTER_REMOVER(ipFilterHTTPTable)
UNIT_FILTER_REMOVER(ipFilterSSHTable)
UNIT_FILTER_REMOVER(ipFilterSnmpTable)
UNIT_FILTER_REMOVER(ipFilterTelnetTable)
#define UNIT_ADDRESS_REMOVER(table) \
    void table##_removeEntry(uint32_t addr) { unit::rows().removed.push_back(#table " " + unit::dotted(addr)); }
UNIT_ADDRESS_REMOVER(sntpServerTable)
UNIT_ADDRESS_REMOVER(remoteLogServerTable)
UNIT_ADDRESS_REMOVER(trapDestTable)
}
