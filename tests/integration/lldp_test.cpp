// LLDP-MIB through a real snmpd over scenarios/default.json (neighbours on
// 1/3, 1/25, 1/26 and the management port): the remote tables as swctl
// changes the neighbours, the switch's own tables and scalars, writes and
// their refusals; then a real lldpd peer on a veth link between two network
// namespaces, whose neighbour list (lldpcli's JSON) is imported and read
// back with the values lldpd reported.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "fixture.hpp"

namespace it {
namespace {

const Oid kLldp = parse_oid("1.0.8802.1.1.2.1");
const Oid kRemEntry = child(kLldp, {4, 1, 1});
const Oid kRemManAddrEntry = child(kLldp, {4, 2, 1});
const Oid kRemUnknownTlvEntry = child(kLldp, {4, 3, 1});
const Oid kRemOrgDefEntry = child(kLldp, {4, 4, 1});
const Oid kLocPortEntry = child(kLldp, {3, 7, 1});
const Oid kLocManAddrEntry = child(kLldp, {3, 8, 1});
const Oid kConfigManAddrEntry = child(kLldp, {1, 7, 1});
const Oid kPortConfigEntry = child(kLldp, {1, 6, 1});
const Oid kStatsRxEntry = child(kLldp, {2, 7, 1});
constexpr uint32_t kMgmtPort = 1024;

// A walked table as rows: index (the OID after the column) -> column -> value.
using Rows = std::map<Oid, std::map<uint32_t, VarBind>>;
Rows rows_of(const std::vector<VarBind> &walk, const Oid &entry) {
    Rows rows;
    for (const VarBind &vb : walk) {
        if (!starts_with(vb.oid, entry) || vb.oid.size() <= entry.size() + 1) continue;
        rows[Oid(vb.oid.begin() + long(entry.size()) + 1, vb.oid.end())][vb.oid[entry.size()]] = vb;
    }
    return rows;
}
// The rows of the neighbours of one local port (index: time mark, port, ...).
Rows rows_on(const Rows &rows, uint32_t port) {
    Rows out;
    for (const auto &[index, columns] : rows)
        if (index.size() >= 3 && index[1] == port) out.emplace(index, columns);
    return out;
}
int run(const std::string &command) { return std::system(command.c_str()); }

class Lldp : public AgentTest<Lldp> {
protected:
    int swctl(const std::string &args) {
        return run(std::string(SWCTL_PATH) + " --state " + agent().state_path() + " " + args + " >/dev/null");
    }
    Rows remote() { return rows_of(reader().walk(kRemEntry), kRemEntry); }
};

TEST_F(Lldp, RemoteTablesListTheNeighboursAndFollowSwctl) {
    const Rows rem = remote();
    std::vector<uint32_t> ports;
    for (const auto &[index, columns] : rem) {
        ports.push_back(index[1]);
        EXPECT_EQ(columns.size(), 9u) << "columns 4..12 of every row";
    }
    std::sort(ports.begin(), ports.end());
    EXPECT_EQ(ports, (std::vector<uint32_t>{3, 25, 26, kMgmtPort}));
    const Rows on_25 = rows_on(rem, 25), on_26 = rows_on(rem, 26);
    ASSERT_EQ(on_25.size(), 1u);
    ASSERT_EQ(on_26.size(), 1u);
    const auto &dist1 = on_25.begin()->second;
    EXPECT_EQ(dist1.at(4).integer, 4);
    EXPECT_EQ(dist1.at(5).bytes, "00:1b:21:aa:10:01");
    EXPECT_EQ(dist1.at(7).bytes, "Te1/0/49");
    EXPECT_EQ(dist1.at(9).bytes, "dist-sw-1");
    EXPECT_EQ(dist1.at(11).bytes, "\x28");  // bridge, router
    const auto &dist2 = on_26.begin()->second;
    EXPECT_EQ(dist2.at(4).integer, 7);
    EXPECT_EQ(dist2.at(5).bytes, "646973742d73772d32");
    // TimeTicks, local port, remote index.
    EXPECT_EQ(on_26.begin()->first.size(), 3u);

    // Addresses of the three that announce one: subtype, then the octets
    // without a length.
    const Rows addrs = rows_of(reader().walk(kRemManAddrEntry), kRemManAddrEntry);
    ASSERT_EQ(addrs.size(), 3u);
    const Rows addr_25 = rows_on(addrs, 25);
    ASSERT_EQ(addr_25.size(), 1u);
    const auto &[addr_index, addr] = *addr_25.begin();
    EXPECT_EQ(Oid(addr_index.begin() + 3, addr_index.end()), (Oid{1, 192, 0, 2, 1}));
    EXPECT_EQ(addr.at(3).integer, 2);
    EXPECT_EQ(addr.at(4).integer, 10);
    EXPECT_EQ(addr.at(5).objid, (Oid{0, 0}));
    // Unknown TLVs: one row a neighbour, by its TLV type.
    const Rows tlvs = rows_of(reader().walk(kRemUnknownTlvEntry), kRemUnknownTlvEntry);
    EXPECT_EQ(tlvs.size(), 4u);
    const Rows tlv_3 = rows_on(tlvs, 3);
    ASSERT_EQ(tlv_3.size(), 1u);
    const auto &[tlv_index, tlv] = *tlv_3.begin();
    EXPECT_EQ(tlv_index.back(), 100u);
    EXPECT_EQ(tlv.at(2).bytes, std::string("\x00\x12\xbb\x01\x02", 5));

    // A neighbour without a management address and with a chassis ID that
    // is no MAC: a remote row, no address row, on the next request.
    ASSERT_EQ(swctl("lldp add 2/5 rack-7-pdu 0x0102 --chassis-subtype 7 --sys-name pdu"), 0);
    Rows on_2_5 = rows_on(remote(), port_index(1, 4));
    ASSERT_EQ(on_2_5.size(), 1u);
    EXPECT_EQ(on_2_5.begin()->second.at(5).bytes, "7261636b2d372d706475");
    EXPECT_EQ(on_2_5.begin()->second.at(7).bytes, "\x01\x02");
    EXPECT_TRUE(rows_on(rows_of(reader().walk(kRemManAddrEntry), kRemManAddrEntry), port_index(1, 4)).empty());

    // Changed: the row moves to a new time mark; the old one answers nothing.
    const Oid old_name = child(kRemEntry, {9});
    Oid old = old_name;
    old.insert(old.end(), on_2_5.begin()->first.begin(), on_2_5.begin()->first.end());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_EQ(swctl("lldp change 2/5 " + std::to_string(on_2_5.begin()->first[2]) + " --sys-name pdu-2"), 0);
    EXPECT_EQ(type_of(old), kNoSuchInstance);
    on_2_5 = rows_on(remote(), port_index(1, 4));
    ASSERT_EQ(on_2_5.size(), 1u);
    EXPECT_EQ(on_2_5.begin()->second.at(9).bytes, "pdu-2");
    ASSERT_EQ(swctl("lldp remove 2/5 all"), 0);
    EXPECT_TRUE(rows_on(remote(), port_index(1, 4)).empty());
    EXPECT_GE(must_get(child(kLldp, {2, 2, 0})).integer, 5);  // inserts
    EXPECT_EQ(must_get(child(kLldp, {2, 3, 0})).integer, 1);  // deletes
}

TEST_F(Lldp, TheSwitchsOwnTablesAndScalars) {
    const Rows ports = rows_of(reader().walk(kLocPortEntry), kLocPortEntry);
    std::vector<uint32_t> indexes;
    for (const auto &[index, columns] : ports) indexes.push_back(index[0]);
    std::vector<uint32_t> want;
    for (int u = 0; u < 2; ++u)
        for (int p = 0; p < 28; ++p) want.push_back(port_index(u, p));
    want.push_back(kMgmtPort);
    EXPECT_EQ(indexes, want);
    EXPECT_EQ(ports.at({kMgmtPort}).at(3).bytes, "mgmt");
    EXPECT_EQ(ports.at({kMgmtPort}).at(4).bytes, "Management port");
    EXPECT_EQ(ports.at({66}).at(3).bytes, "2/2");

    EXPECT_EQ(must_get(child(kLldp, {3, 1, 0})).integer, 4);
    EXPECT_EQ(must_get(child(kLldp, {3, 2, 0})).bytes, "02:00:5e:10:00:00");
    // One management address: 192.0.2.10, length-prefixed in the index.
    const Rows addr = rows_of(reader().walk(kLocManAddrEntry), kLocManAddrEntry);
    ASSERT_EQ(addr.size(), 1u);
    EXPECT_EQ(addr.begin()->first, (Oid{1, 4, 192, 0, 2, 10}));
    EXPECT_EQ(addr.begin()->second.at(3).integer, 4);
    EXPECT_EQ(addr.begin()->second.at(6).objid, (Oid{1, 3, 6, 1, 2, 1, 2, 2, 1, 1}));
    // Tables the switch keeps to itself.
    EXPECT_TRUE(rows_of(reader().walk(kConfigManAddrEntry), kConfigManAddrEntry).empty());
    EXPECT_TRUE(rows_of(reader().walk(kRemOrgDefEntry), kRemOrgDefEntry).empty());
    // Statistics: the neighbour on 1/25 has sent at least the frame it was heard by.
    EXPECT_GE(must_get(child(kStatsRxEntry, {4, 25})).integer, 1);
    EXPECT_EQ(must_get(child(kStatsRxEntry, {4, 1})).integer, 0);
}

TEST_F(Lldp, WritesReachThePlatformAndBadOnesAreRefused) {
    const Oid tlvs = child(kPortConfigEntry, {4, 5});
    EXPECT_EQ(set_one(SetValue::octets(tlvs, "\xf0")), kNoError);
    EXPECT_EQ(must_get(tlvs).bytes, "\x70") << "the port description TLV goes off with any write";
    EXPECT_EQ(set_one(SetValue::octets(tlvs, std::string("\x70\x00", 2))), kWrongLength);
    EXPECT_EQ(set_one(SetValue::integer32(tlvs, 1)), kWrongType);

    const Oid admin_mgmt = child(kPortConfigEntry, {2, kMgmtPort});
    EXPECT_EQ(set_one(SetValue::integer32(admin_mgmt, 4)), kNoError);
    EXPECT_EQ(must_get(admin_mgmt).integer, 4);
    EXPECT_EQ(set_one(SetValue::integer32(admin_mgmt, 5)), kWrongValue);
    EXPECT_EQ(must_get(admin_mgmt).integer, 4);
    EXPECT_EQ(set_one(SetValue::integer32(child(kPortConfigEntry, {3, 5}), 1)), kNoError);
    EXPECT_EQ(must_get(child(kPortConfigEntry, {3, 5})).integer, 1);
    EXPECT_EQ(set_one(SetValue::octets(child(kLocPortEntry, {3, 5}), "x")), kNotWritable);

    const Oid interval = child(kLldp, {1, 1, 0});
    EXPECT_EQ(set_one(SetValue::integer32(interval, 4)), kGenErr) << "the platform takes 5..32768";
    EXPECT_EQ(must_get(interval).integer, 30);
    EXPECT_EQ(set_one(SetValue::integer32(interval, 60)), kNoError);
    EXPECT_EQ(must_get(interval).integer, 60);
    EXPECT_EQ(set_one(SetValue::integer32(child(kLldp, {2, 2, 0}), 1)), kNotWritable);
}

// ---- a real lldpd peer -----------------------------------------------------------------------------

// Two network namespaces joined by a veth pair, lldpd running in each; the
// test's own names, removed with it.
class LldpdLink {
public:
    LldpdLink() {
        // lldpcli drops to lldpd's own user: its sockets live where that
        // user can reach them.
        char tmpl[] = "/tmp/swlldp-XXXXXX";
        if (mkdtemp(tmpl)) {
            dir_ = tmpl;
            chmod(tmpl, 0755);
        }
        const std::string tag = std::to_string(getpid());
        ns_[0] = "swlldp-a-" + tag, ns_[1] = "swlldp-b-" + tag;
        if_[0] = "swla" + tag.substr(tag.size() > 8 ? tag.size() - 8 : 0);
        if_[1] = "swlb" + tag.substr(tag.size() > 8 ? tag.size() - 8 : 0);
    }
    ~LldpdLink() {
        for (pid_t pid : pids_) {
            kill(pid, SIGTERM);
            int status = 0;
            for (int i = 0; i < 50 && waitpid(pid, &status, WNOHANG) == 0; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            if (kill(pid, 0) == 0) {
                kill(pid, SIGKILL);
                waitpid(pid, &status, 0);
            }
        }
        for (const std::string &ns : ns_) run("ip netns del " + ns + " 2>/dev/null");
        if (!dir_.empty()) std::filesystem::remove_all(dir_);
    }

    // Why the link cannot be made here, or "".
    std::string make() {
        if (geteuid() != 0) return "needs root to make network namespaces";
        if (dir_.empty()) return "no directory for lldpd's sockets";
        if (run("command -v lldpd >/dev/null && command -v lldpcli >/dev/null") != 0)
            return "lldpd is not installed (package lldpd)";
        for (const std::string &ns : ns_)
            if (run("ip netns add " + ns + " 2>/dev/null") != 0) return "network namespaces cannot be made here";
        if (run("ip link add " + if_[0] + " type veth peer name " + if_[1] + " 2>/dev/null") != 0)
            return "veth pairs cannot be made here";
        for (int i = 0; i < 2; ++i) {
            if (run("ip link set " + if_[i] + " netns " + ns_[i]) != 0 ||
                run("ip -n " + ns_[i] + " link set " + if_[i] + " up") != 0 ||
                run("ip -n " + ns_[i] + " addr add 192.0.2." + std::to_string(101 + i) + "/24 dev " + if_[i]) != 0)
                return "the veth pair cannot be set up";
        }
        for (int i = 0; i < 2; ++i) {
            if (!std::ifstream(config(i))) configure(i, {});
            start(i);
        }
        return "";
    }

    // What side `side` runs through lldpcli as it starts, before it sends
    // anything (the host's own lldpd configuration is not read).
    void configure(int side, const std::vector<std::string> &commands) {
        std::ofstream out(config(side));
        for (const std::string &c : commands) out << c << "\n";
    }

    std::string lldpcli(int side, const std::string &args) const {
        const std::string out = dir_ + "/lldpcli.out";
        run("ip netns exec " + ns_[side] + " lldpcli -u " + socket(side) + " " + args + " >" + out + " 2>>" + dir_ +
            "/lldpcli.err");
        std::stringstream s;
        s << std::ifstream(out).rdbuf();
        return s.str();
    }
    const std::string &iface(int side) const { return if_[side]; }
    // What lldpd and lldpcli logged, for a failure's message.
    std::string logs() const {
        std::stringstream s;
        for (const char *name : {"/lldpd-0.log", "/lldpd-1.log", "/lldpcli.err"})
            s << "== " << name << "\n" << std::ifstream(dir_ + name).rdbuf() << "\n";
        return s.str();
    }

private:
    std::string socket(int side) const { return dir_ + "/lldpd-" + std::to_string(side) + ".socket"; }
    std::string config(int side) const { return dir_ + "/lldpd-" + std::to_string(side) + ".conf"; }
    void start(int side) {
        const pid_t pid = fork();
        if (pid == 0) {
            const std::string log = dir_ + "/lldpd-" + std::to_string(side) + ".log";
            const int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(fd, 1);
            dup2(fd, 2);
            const std::string address = "192.0.2." + std::to_string(101 + side);
            // Each side also gets a host name of its own (peer-a, peer-b) in
            // a UTS namespace: lldpd may announce the resolved host name
            // rather than a configured one in its first frames, and then the
            // name stands for as long as the frames do not change.
            const std::string name = std::string("peer-") + char('a' + side);
            execlp("ip", "ip", "netns", "exec", ns_[side].c_str(), "unshare", "--uts", "sh", "-c",
                   "hostname \"$0\" && exec \"$@\"", name.c_str(), "lldpd", "-d", "-u", socket(side).c_str(), "-I",
                   if_[side].c_str(), "-m", address.c_str(), "-O", config(side).c_str(), static_cast<char *>(nullptr));
            _exit(127);
        }
        if (pid > 0) pids_.push_back(pid);
    }

    std::string dir_;
    std::string ns_[2], if_[2];
    std::vector<pid_t> pids_;
};

class LldpdPeer : public AgentTest<LldpdPeer> {};

TEST_F(LldpdPeer, ItsNeighbourListImportedReadsBackThroughSnmp) {
    // Side B announces a name, a description, a router and a TLV of its own;
    // side A hears it.
    LldpdLink link;
    link.configure(1, {"configure system hostname peer-b", "configure system description \"lldpd peer B\"",
                       "configure system capabilities enabled router", "configure lldp portidsubtype ifname",
                       "configure lldp custom-tlv oui 33,44,55 subtype 44 oui-info 45,46,47"});
    if (const std::string why = link.make(); !why.empty()) GTEST_SKIP() << "no lldpd peer: " << why;

    nlohmann::json doc, entry;
    // lldpd refreshes its own chassis from its configuration on its 30 s
    // transmit timer at the latest: a frame sent before it took the name may
    // stand until then on a loaded machine.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(45);
    std::string text;
    while (std::chrono::steady_clock::now() < deadline) {
        link.lldpcli(1, "update");
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        text = link.lldpcli(0, "-f json show neighbors details");
        doc = nlohmann::json::parse(text, nullptr, false);
        if (doc.is_discarded() || !doc.contains("lldp") || !doc["lldp"].contains("interface")) continue;
        entry = doc["lldp"]["interface"][link.iface(0)];
        if (entry.contains("chassis") && entry["chassis"].contains("peer-b") && entry.contains("unknown-tlvs")) break;
    }
    ASSERT_TRUE(entry.contains("chassis") && entry["chassis"].contains("peer-b"))
        << "lldpd on " << link.iface(0) << " heard no peer-b; lldpcli said:\n" << text << link.logs();
    const std::string file = agent().dir() + "/neighbours.json";
    std::ofstream(file) << text;

    // Onto 2/8 through swctl, as an operator would.
    const std::string cmd = std::string(SWCTL_PATH) + " --state " + agent().state_path() + " lldp import " + file +
                            " " + link.iface(0) + "=2/8 >/dev/null";
    ASSERT_EQ(run(cmd), 0) << cmd;

    // What lldpd reported, read back through the agent.
    const nlohmann::json &chassis = entry["chassis"]["peer-b"];
    const uint32_t port = port_index(1, 7);
    const Rows rem = rows_on(rows_of(reader().walk(kRemEntry), kRemEntry), port);
    ASSERT_EQ(rem.size(), 1u);
    const auto &[index, columns] = *rem.begin();
    EXPECT_EQ(chassis["id"]["type"], "mac");
    EXPECT_EQ(columns.at(4).integer, 4);
    EXPECT_EQ(columns.at(5).bytes, chassis["id"]["value"].get<std::string>());
    EXPECT_EQ(columns.at(6).integer, 5);  // ifname: interface name
    EXPECT_EQ(columns.at(7).bytes, entry["port"]["id"]["value"].get<std::string>());
    EXPECT_EQ(columns.at(7).bytes, link.iface(1));
    EXPECT_EQ(columns.at(8).bytes, entry["port"]["descr"].get<std::string>());
    EXPECT_EQ(columns.at(9).bytes, "peer-b");
    EXPECT_EQ(columns.at(10).bytes, chassis["descr"].get<std::string>());
    EXPECT_EQ(columns.at(10).bytes, "lldpd peer B");
    EXPECT_EQ(columns.at(12).bytes, "\x08") << "router enabled";

    const Rows addrs = rows_on(rows_of(reader().walk(kRemManAddrEntry), kRemManAddrEntry), port);
    ASSERT_EQ(addrs.size(), 1u);
    EXPECT_EQ(Oid(addrs.begin()->first.begin() + 3, addrs.begin()->first.end()), (Oid{1, 192, 0, 2, 102}));
    EXPECT_EQ(addrs.begin()->second.at(4).integer, std::stol(chassis["mgmt-iface"].get<std::string>()));

    const Rows tlvs = rows_on(rows_of(reader().walk(kRemUnknownTlvEntry), kRemUnknownTlvEntry), port);
    ASSERT_EQ(tlvs.size(), 1u);
    EXPECT_EQ(tlvs.begin()->first.back(), 127u);
    EXPECT_EQ(tlvs.begin()->second.at(2).bytes, "\x33\x44\x55\x2c\x45\x46\x47");
    (void)index;
}

}  // namespace
}  // namespace it
