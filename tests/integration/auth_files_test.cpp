// Port authentication and the file store through a real snmpd over
// scenarios/default.json: supplicants driven with swctl seen in the 802.1X
// and RADIUS tables, servers added and refused through SNMP, the 802.1X
// tables that stay unregistered, TFTP transfers both ways with Debian's
// tftpd-hpa, a transfer to a server that never answers, a restart, and the
// filter counters.
#include <chrono>
#include <cstdlib>
#include <thread>

#include "fixture.hpp"
#include "tftp_server.hpp"

namespace it {
namespace {

class Auth : public AgentTest<Auth> {};
class Files : public AgentTest<Files> {
protected:
    // tftpAction once it is no longer inProgress (bounded).
    long settled_action() {
        long action = must_get(kTftpAction).integer;
        for (int i = 0; i < 200 && action == 6; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            action = must_get(kTftpAction).integer;
        }
        return action;
    }

public:
    static inline const Oid kTftpAction = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.6.4.0");
};

const Oid kPae = parse_oid("1.0.8802.1.1.1.1");
const Oid kSystemAuthControl = child(kPae, {1, 1, 0});
const Oid kPortEntry = child(kPae, {1, 2, 1}), kAuthConfigEntry = child(kPae, {2, 1, 1});
const Oid kAuthStatsEntry = child(kPae, {2, 2, 1}), kSessionEntry = child(kPae, {2, 4, 1});
const Oid kRadiusAuthServerEntry = parse_oid("1.3.6.1.2.1.67.1.2.1.1.3.1");
const Oid kRadius = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.17.1");
const Oid kRadiusServerEntry = child(kRadius, {7, 1});
const Oid kRadiusKey = child(kRadius, {3, 0});
const Oid kTftp = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.6");
const Oid kTftpFile = child(kTftp, {1, 0}), kTftpFlashConfig = child(kTftp, {2, 0}), kTftpServer = child(kTftp, {3, 0});
const Oid kRestartControl = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.7.3.0");
const Oid kFileEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.21.1.1");
const Oid kSysUpTime = parse_oid("1.3.6.1.2.1.1.3.0");

constexpr uint32_t kPort5 = 5;

std::string loopback() { return std::string("\x7f\x00\x00\x01", 4); }

TEST_F(Auth, ASupplicantsLogOnShowsInTheAuthenticatorAndTheRadiusClient) {
    EXPECT_EQ(must_get(kSystemAuthControl).integer, 1);
    ASSERT_EQ(swctl("dot1x start 1/5 alice --mac 02:aa:bb:cc:dd:05"), 0);
    EXPECT_EQ(must_get(child(kAuthConfigEntry, {1, kPort5})).integer, 4);  // authenticating
    ASSERT_EQ(swctl("dot1x auth 1/5"), 0);
    EXPECT_EQ(must_get(child(kAuthConfigEntry, {1, kPort5})).integer, 5);  // authenticated
    EXPECT_EQ(must_get(child(kAuthConfigEntry, {5, kPort5})).integer, 1);  // authorized
    const VarBind source = must_get(child(kAuthStatsEntry, {12, kPort5}));
    EXPECT_EQ(source.bytes, std::string("\x02\xaa\xbb\xcc\xdd\x05", 6));
    EXPECT_EQ(must_get(child(kSessionEntry, {9, kPort5})).bytes, "alice");
    EXPECT_EQ(must_get(child(kSessionEntry, {8, kPort5})).integer, 999);
    EXPECT_EQ(must_get(child(kSessionEntry, {1, kPort5})).type, kCounter64);
    const VarBind accepts = must_get(child(kRadiusAuthServerEntry, {7, 1}));
    EXPECT_EQ(accepts.type, kCounter32);
    EXPECT_EQ(accepts.integer, 1);
    // A manager re-initialises the port: the session ends with its cause.
    EXPECT_EQ(set_one(SetValue::integer32(child(kPortEntry, {4, kPort5}), 1)), kNoError);
    EXPECT_EQ(must_get(child(kSessionEntry, {8, kPort5})).integer, 6);
    EXPECT_EQ(must_get(child(kAuthConfigEntry, {5, kPort5})).integer, 2);
}

TEST_F(Auth, RefusalsAreClearAndChangeNothing) {
    const Oid quiet = child(kAuthConfigEntry, {7, kPort5});
    const long before = must_get(quiet).integer;
    const struct {
        const char *what;
        SetValue value;
        long status;
    } cases[] = {
        {"a period as INTEGER", SetValue::integer32(quiet, 5), kWrongType},
        {"TruthValue 3", SetValue::integer32(child(kAuthConfigEntry, {13, kPort5}), 3), kWrongValue},
        {"a read-only state", SetValue::integer32(child(kAuthConfigEntry, {1, kPort5}), 2), kNotWritable},
        {"reauthenticating nobody", SetValue::integer32(child(kPortEntry, {5, kPort5}), 1), kGenErr},
        {"a 65-byte key", SetValue::octets(kRadiusKey, std::string(65, 'k')), kWrongLength},
        {"a server address taken", SetValue::address(child(kRadiusServerEntry, {2, 3}), std::string("\xc0\x00\x02\x0b", 4)),
         kGenErr},
    };
    for (const auto &c : cases) EXPECT_EQ(set_one(c.value), c.status) << c.what;
    EXPECT_EQ(must_get(quiet).integer, before);
    EXPECT_EQ(reader().walk(child(kRadiusServerEntry, {2})).size(), 2u);
}

TEST_F(Auth, ServersAddedBySnmpAreAskedAndCounted) {
    ASSERT_EQ(set_one(SetValue::address(child(kRadiusServerEntry, {2, 3}), std::string("\xc0\x00\x02\x0d", 4))), kNoError);
    EXPECT_EQ(must_get(child(kRadiusServerEntry, {3, 3})).integer, 1812);
    EXPECT_EQ(must_get(child(kRadiusServerEntry, {4, 3})).bytes, "");  // the secret is not shown
    EXPECT_EQ(must_get(child(kRadiusAuthServerEntry, {2, 3})).bytes, std::string("\xc0\x00\x02\x0d", 4));
    // The first two stop answering: the request reaches the third.
    ASSERT_EQ(swctl("radius server 1 down"), 0);
    ASSERT_EQ(swctl("radius server 2 down"), 0);
    ASSERT_EQ(swctl("dot1x start 1/6 bob"), 0);
    ASSERT_EQ(swctl("dot1x fail 1/6"), 0);
    EXPECT_EQ(must_get(child(kRadiusAuthServerEntry, {13, 1})).integer, 4);  // 1 + 3 retransmissions timed out
    EXPECT_EQ(must_get(child(kRadiusAuthServerEntry, {8, 3})).integer, 1);   // rejected by the third
    EXPECT_EQ(must_get(child(kRadiusServerEntry, {8, 1})).integer, 2);       // not reachable
    // invalid(2) removes it from both tables.
    EXPECT_EQ(set_one(SetValue::integer32(child(kRadiusServerEntry, {7, 3}), 2)), kNoError);
    EXPECT_EQ(reader().walk(child(kRadiusAuthServerEntry, {2})).size(), 2u);
}

TEST_F(Auth, TheDiagnosticAndSupplicantTablesAreNotRegistered) {
    for (const Oid &table : {child(kPae, {2, 3}), child(kPae, {3, 1}), child(kPae, {3, 2})}) {
        Response r = reader().get({child(table, {1, 1, kPort5})});
        ASSERT_EQ(r.varbinds.size(), 1u);
        EXPECT_EQ(r.varbinds[0].type, kNoSuchObject) << to_string(table);
    }
    // The registered ones hold a row per port and none for trunks.
    const auto rows = row_indexes(reader().walk(child(kAuthConfigEntry, {1})), child(kAuthConfigEntry, {1}));
    ASSERT_FALSE(rows.empty());
    EXPECT_LE(rows.back(), 512u);
}

TEST_F(Files, TftpMovesFilesBothWaysWithARealServer) {
    TftpServer server;
    sw().set_tftp_port(server.port());
    std::string image(70000, '\0');
    for (std::size_t i = 0; i < image.size(); ++i) image[i] = char((i * 7919) >> 3);
    server.put_file("fw-2.0.bin", image);
    ASSERT_EQ(set_one(SetValue::address(kTftpServer, loopback())), kNoError);
    ASSERT_EQ(set_one(SetValue::octets(kTftpFile, "fw-2.0.bin")), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(kTftpAction, 2)), kNoError);  // downloadFirmware
    ASSERT_EQ(settled_action(), 7) << sw().files().tftp_error;
    // Into the image the switch does not start from.
    const std::vector<uint8_t> stored = sw().file_bytes(SW_FILE_FIRMWARE, 1);
    EXPECT_EQ(std::string(stored.begin(), stored.end()), image);
    EXPECT_EQ(must_get(child(kFileEntry, {3, 1, 2})).bytes, "fw-2.0.bin");
    EXPECT_EQ(must_get(child(kFileEntry, {4, 1, 2})).integer, 70000);
    EXPECT_EQ(must_get(child(kFileEntry, {6, 1, 2})).integer, 2);

    // The second configuration file goes up.
    ASSERT_EQ(set_one(SetValue::integer32(kTftpFlashConfig, 2)), kNoError);
    ASSERT_EQ(set_one(SetValue::octets(kTftpFile, "saved.cfg")), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(kTftpAction, 5)), kNoError);  // uploadConfig
    ASSERT_EQ(settled_action(), 7) << sw().files().tftp_error;
    const std::vector<uint8_t> config = sw().file_bytes(SW_FILE_CONFIG, 1);
    EXPECT_EQ(server.file("saved.cfg"), std::string(config.begin(), config.end()));
    EXPECT_EQ(server.file("saved.cfg"), "hostname sw-lab-01\n!\nend\n");

    // A file the server does not have fails the transfer.
    ASSERT_EQ(set_one(SetValue::octets(kTftpFile, "missing.cfg")), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(kTftpAction, 3)), kNoError);
    EXPECT_EQ(settled_action(), 8);
}

TEST_F(Files, AnUnreachableServerFailsTheActionWhileTheAgentKeepsAnswering) {
    sw().set_tftp_port(free_udp_port());
    ASSERT_EQ(set_one(SetValue::address(kTftpServer, loopback())), kNoError);
    ASSERT_EQ(set_one(SetValue::octets(kTftpFile, "never.cfg")), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(kTftpAction, 3)), kNoError);
    EXPECT_EQ(must_get(kTftpAction).integer, 6);  // in progress, and the agent answers
    EXPECT_EQ(must_get(oids::kSysName).type, kOctetString);
    EXPECT_EQ(set_one(SetValue::integer32(kTftpAction, 3)), kGenErr);  // one at a time
    EXPECT_EQ(settled_action(), 8);
    EXPECT_EQ(set_one(SetValue::integer32(kTftpAction, 6)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(kTftpAction, 9)), kWrongValue);
}

TEST_F(Files, ARestartIsRecordedOnceAndTheUptimeStartsAgain) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    ASSERT_GE(must_get(kSysUpTime).integer, 100);
    const uint32_t before = sw().files().restarts;
    ASSERT_EQ(set_one(SetValue::integer32(kRestartControl, 2)), kNoError);
    EXPECT_EQ(sw().files().restarts, before + 1);
    EXPECT_EQ(sw().files().last_restart, SW_RESTART_WARM);
    EXPECT_LT(must_get(kSysUpTime).integer, 100);
    EXPECT_EQ(must_get(kRestartControl).integer, 1);
}

TEST_F(Files, FilterCountersListTheFiltersAndCountWhatTheyMatch) {
    const Oid counters = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.23");
    const Oid packets = child(counters, {2, 1, 1});
    // The scenario's ingress filter on ports 1/1-4.
    EXPECT_EQ(must_get(child(counters, {1, 1, 1, 1})).bytes, "block-telnet");
    const std::vector<VarBind> walk = reader().walk(packets);
    ASSERT_EQ(walk.size(), 4u);
    EXPECT_EQ(walk.front().oid, child(packets, {1, 1}));
    EXPECT_EQ(walk.front().type, kCounter64);
    ASSERT_EQ(swctl("filter set in 2 web 1/7 --pps 100000 --packet-bytes 100"), 0);
    const long first = must_get(child(packets, {2, 7})).integer;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const VarBind later = must_get(child(packets, {2, 7}));
    EXPECT_GT(later.integer, first);
    EXPECT_EQ(must_get(child(counters, {2, 1, 2, 2, 7})).integer % 100, 0);  // octets of 100-byte packets
    // The egress table is its own.
    EXPECT_EQ(reader().walk(child(counters, {4, 1, 1})).size(), 1u);
    ASSERT_EQ(swctl("filter remove in 2"), 0);
    Response r = reader().get({child(packets, {2, 7})});
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_TRUE(r.varbinds[0].is_exception());
}

}  // namespace
}  // namespace it
