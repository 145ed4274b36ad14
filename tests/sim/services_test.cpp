// The management services of the simulated switch: settings and lists by
// name (control handle, swctl, scenario), the platform calls' own checks,
// canonical filters, and damaged service state refused on open.
#include "raw_state.hpp"
#include "support.hpp"

namespace {

using simtest::complaint;
using simtest::RawState;
using simtest::SwitchTest;
using simtest::TempDir;

TEST_F(SwitchTest, SettingsAndListsByName) {
    sw_->service_set("address", "192.0.2.20/24");
    sw_->service_set("http_port", "8080");
    sw_->service_set("telnet", "off");
    auto s = sw_->services();
    EXPECT_EQ(s.address, 0xc0000214u);
    EXPECT_EQ(s.mask, 0xffffff00u);
    EXPECT_EQ(s.http_port, 8080);
    EXPECT_FALSE(s.telnet);

    // Refusals name the setting and what it accepts, and change nothing.
    const struct {
        const char *setting, *value, *problem;
    } refused[] = {
        {"https_port", "8080", "https_port: '8080' is not accepted (1..65535, not the HTTP port)"},
        {"ssh_timeout", "0", "ssh_timeout: '0' is not accepted (1..120 seconds)"},
        {"ssh", "maybe", "ssh: 'maybe' is not accepted (on or off)"},
        {"gateway", "224.0.0.1", "gateway: '224.0.0.1' is not accepted (an IPv4 address below 224.0.0.0, 0.0.0.0 for none)"},
        {"facility", "15", "facility: '15' is not accepted (16..23 (local0..local7); the log daemon takes it at once)"},
        {"flash_level", "99999999999", "flash_level: '99999999999' is not accepted (0..7)"},
    };
    for (const auto &r : refused)
        EXPECT_EQ(complaint([&] { sw_->service_set(r.setting, r.value); }), r.problem);
    EXPECT_EQ(complaint([&] { sw_->service_set("colour", "blue"); }).rfind("no setting 'colour' (address, dhcp,", 0), 0u);
    s = sw_->services();
    EXPECT_EQ(s.https_port, 443);
    EXPECT_EQ(s.ssh_timeout, 120);
    EXPECT_EQ(s.daemon_facility, 23);

    // Filters are kept in their canonical spelling and found by value.
    sw_->service_add("filter_http", "010.001.0.0/16");
    EXPECT_EQ(sw_->services().filters[0], std::vector<std::string>{"10.1.0.0/16"});
    EXPECT_EQ(complaint([&] { sw_->service_add("filter_http", "10.1.0.0/16"); }), "filter_http: 10.1.0.0/16 is listed already");
    EXPECT_EQ(complaint([&] { sw_->service_add("filter_http", "10.1.0.0/33"); }),
              "filter_http: '10.1.0.0/33' is not accepted (a network as address/prefix length, e.g. 10.0.0.0/8; 15 at most)");
    char text[SW_IP_FILTER_TEXT_SIZE];
    ASSERT_EQ(cfg_get_ip_filter_http(0, text, sizeof text), 0);
    EXPECT_STREQ(text, "10.1.0.0/16");
    EXPECT_EQ(cfg_get_ip_filter_http(0, text, 11), -1) << "too small a buffer gets nothing";
    EXPECT_EQ(cfg_get_ip_filter_http(15, text, sizeof text), -1);
    EXPECT_EQ(cfg_del_ip_filter_http("10.1.0.0/8"), -1) << "another prefix is another filter";
    EXPECT_EQ(cfg_del_ip_filter_http("10.1.00.0/16"), 0);
    EXPECT_EQ(complaint([&] { sw_->service_remove("filter_http", "10.1.0.0/16"); }), "filter_http: 10.1.0.0/16 is not listed");

    // Log servers: IPv6 from outside, IPv4 through the platform, -9 when full.
    sw_->service_add("log_server", "2001:DB8::1");
    EXPECT_EQ(cfg_log_add_remote_host_ipv4("2001:db8::2"), -1);
    EXPECT_EQ(cfg_log_add_remote_host_ipv4("0.0.0.0"), -1);
    for (const char *a : {"192.0.2.1", "192.0.2.2", "192.0.2.3", "192.0.2.4"}) ASSERT_EQ(cfg_log_add_remote_host_ipv4(a), 0);
    EXPECT_EQ(cfg_log_add_remote_host_ipv4("192.0.2.5"), SW_LOG_HOSTS_FULL);
    EXPECT_EQ(cfg_log_add_remote_host_ipv4("192.0.2.1"), -1) << "listed already";
    EXPECT_EQ(cfg_log_get_remote_host_addr_version(0), 6);
    ASSERT_EQ(cfg_log_get_remote_host(0, text, sizeof text), 0);
    EXPECT_STREQ(text, "2001:db8::1");
    EXPECT_EQ(cfg_log_del_remote_host("2001:db8:0:0::1"), 0);
    EXPECT_EQ(cfg_log_get_remote_host_addr_version(0), 0);
    EXPECT_EQ(cfg_log_get_remote_host(0, text, sizeof text), -1) << "a free slot";
    EXPECT_EQ(cfg_log_get_remote_host_addr_version(5), -1);

    // Host keys: made anew, deleted, by kind.
    const std::string rsa = sw_->services().ssh_rsa_key;
    sw_->ssh_keys("rsa", true);
    EXPECT_NE(sw_->services().ssh_rsa_key, rsa);
    sw_->ssh_keys("both", false);
    EXPECT_EQ(sw_->services().ssh_rsa_key, "");
    EXPECT_EQ(sw_->services().ssh_dsa_key, "");
    EXPECT_STREQ(cfg_ssh_get_key_dsa(), "");
    EXPECT_EQ(complaint([&] { sw_->ssh_keys("ecdsa", true); }), "key kind 'ecdsa' (rsa, dsa or both)");
}

TEST_F(TempDir, ScenarioServicesAndSwctl) {
    swsim::create_state_from_json(state_, R"({"services": {"address": "198.51.100.7/25", "https": false,
        "sntp_server": ["192.0.2.123"], "ssh_keys": false, "facility": 20, "filter_ssh": ["10.0.0.0/8"]}})");
    {
        const auto s = swsim::Switch(state_).services();
        EXPECT_EQ(s.mask, 0xffffff80u);
        EXPECT_FALSE(s.https);
        EXPECT_EQ(s.sntp_servers, std::vector<std::string>{"192.0.2.123"});
        EXPECT_EQ(s.ssh_rsa_key, "");
        EXPECT_EQ(s.daemon_facility, 20);
        EXPECT_EQ(s.filters[1], std::vector<std::string>{"10.0.0.0/8"});
    }
    const struct {
        const char *json, *problem;
    } bad[] = {
        {R"({"services": {"colour": 1}})", "s.json: services.colour: unknown field"},
        {R"({"services": {"sntp_interval": 2}})", "s.json: services.sntp_interval: sntp_interval: '2' is not accepted (16..16384 seconds)"},
        {R"({"services": {"filter_snmp": ["10.0.0.0/40"]}})",
         "s.json: services.filter_snmp[0]: filter_snmp: '10.0.0.0/40' is not accepted (a network as address/prefix length; 15 at most)"},
        {R"({"services": {"sntp_server": ["192.0.2.1", "192.0.2.2", "192.0.2.3", "192.0.2.4"]}})",
         "s.json: services.sntp_server[3]: sntp_server: '192.0.2.4' is not accepted (an IPv4 host address; 3 at most)"},
        {R"({"services": {"ssh_keys": "no"}})", "s.json: services.ssh_keys: must be true or false"},
    };
    for (const auto &b : bad) EXPECT_EQ(complaint([&] { swsim::create_state_from_json(state_, b.json, "s.json"); }), b.problem);

    ok("mgmt set https on");
    ok("mgmt add filter_telnet 192.168.0.0/16");
    ok("mgmt keys generate dsa");
    fails("mgmt remove filter_telnet 10.0.0.0/8", "filter_telnet: 10.0.0.0/8 is not listed");
    fails("mgmt set ssh_timeout 500", "ssh_timeout: '500' is not accepted (1..120 seconds)");
    const auto shown = swctl("show services");
    EXPECT_EQ(shown.code, 0);
    for (const char *part : {"address     198.51.100.7/25", "https       on, port 443", "filter telnet 192.168.0.0/16",
                             "rsa key     none", "dsa key     ssh-dss AAAAB3NzaC1k", "facility 20 (daemon 20)"})
        EXPECT_NE(shown.out.find(part), std::string::npos) << part << "\n" << shown.out;
}

TEST_F(SwitchTest, DamagedServiceStateIsRefusedOnOpen) {
    const struct {
        const char *problem;
        std::function<void(RawState &)> apply;
    } damages[] = {
        {"log server 2's address version is 9 (0, 4 or 6)", [](RawState &r) { r.cfg().services.log_hosts[2].version = 9; }},
        {"address filter 3.14 runs past its 20 bytes",
         [](RawState &r) { std::memset(r.cfg().services.filters[3][14], '1', SW_IP_FILTER_TEXT_SIZE); }},
        {"the DSA host key runs past its 1024 bytes",
         [](RawState &r) { std::memset(r.cfg().services.ssh_key[1], 'k', SW_SSH_KEY_SIZE); }},
        {"SNTP server 1 runs past its 16 bytes", [](RawState &r) { std::memset(r.cfg().services.sntp_servers[1], '9', 16); }},
    };
    for (const auto &d : damages) {
        boot(simtest::kSmallSwitch);
        {
            RawState raw(state_);
            ASSERT_TRUE(raw.ok());
            d.apply(raw);
        }
        EXPECT_EQ(complaint([&] { swsim::Switch check(state_); }), state_ + ": damaged image section: " + d.problem);
    }
}

}  // namespace
