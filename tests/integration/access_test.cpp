// What the agent opens to the host and to managers: the sockets it listens
// on, the MIBs it serves beside the switch's, who may write what, and its
// SNMPv3 users.
#include <arpa/inet.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "catalogue.hpp"
#include "fixture.hpp"

namespace it {
namespace {

// ---- the agent's sockets --------------------------------------------------

// The inodes of the sockets process pid holds open.
std::set<std::string> socket_inodes(pid_t pid) {
    std::set<std::string> inodes;
    for (const auto &fd : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd")) {
        std::error_code ec;
        const std::string target = std::filesystem::read_symlink(fd.path(), ec).string();
        if (!ec && target.rfind("socket:[", 0) == 0) inodes.insert(target.substr(8, target.size() - 9));
    }
    return inodes;
}

// "127.0.0.1:161" from /proc/net's "0100007F:00A1" (IPv4) or its 32-digit
// IPv6 form: the address words as the kernel holds them, the port in host
// order.
std::string inet_endpoint(const std::string &field) {
    const size_t colon = field.find(':');
    const std::string hex = field.substr(0, colon);
    unsigned char address[16];
    for (size_t word = 0; word < hex.size() / 8; ++word) {
        const uint32_t w = uint32_t(std::stoul(hex.substr(word * 8, 8), nullptr, 16));
        std::memcpy(address + word * 4, &w, 4);
    }
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(hex.size() == 8 ? AF_INET : AF_INET6, address, text, sizeof text);
    const std::string port = std::to_string(std::stoul(field.substr(colon + 1), nullptr, 16));
    return hex.size() == 8 ? std::string(text) + ":" + port : "[" + std::string(text) + "]:" + port;
}

// The Internet and Unix sockets process pid holds, each as "udp
// 127.0.0.1:161", "tcp6 [::]:199", "unix /path" (or "unix" unnamed).
std::multiset<std::string> sockets_of(pid_t pid) {
    const std::set<std::string> inodes = socket_inodes(pid);
    std::multiset<std::string> found;
    for (const char *table : {"tcp", "tcp6", "udp", "udp6", "unix"}) {
        const bool is_unix = std::strcmp(table, "unix") == 0;
        std::ifstream in(std::string("/proc/net/") + table);
        std::string line;
        std::getline(in, line);  // the heading
        while (std::getline(in, line)) {
            std::istringstream fields(line);
            std::vector<std::string> f;
            for (std::string w; fields >> w;) f.push_back(w);
            const size_t inode_field = is_unix ? 6 : 9;
            if (f.size() <= inode_field || !inodes.count(f[inode_field])) continue;
            if (is_unix) found.insert(f.size() > 7 ? "unix " + f[7] : "unix");
            else found.insert(std::string(table) + " " + inet_endpoint(f[1]));
        }
    }
    return found;
}

std::string listing(const std::multiset<std::string> &sockets) {
    std::string out;
    for (const std::string &s : sockets) out += "\n  " + s;
    return out.empty() ? " none" : out;
}

// ---- subtrees ---------------------------------------------------------------

struct Subtree {
    const char *name;
    Oid oid;
};

// What snmpd serves of the host it runs on: none of it describes the switch.
const std::vector<Subtree> kHostSubtrees = {
    {"HOST-RESOURCES-MIB", parse_oid("1.3.6.1.2.1.25")},
    {"UCD-SNMP-MIB (memory, load, disks, module loader)", parse_oid("1.3.6.1.4.1.2021")},
    {"NET-SNMP-AGENT-MIB, NET-SNMP-EXTEND-MIB", parse_oid("1.3.6.1.4.1.8072")},
    {"ipForwarding, ipDefaultTTL and the IP counters", parse_oid("1.3.6.1.2.1.4.1")},
    {"ipRouteTable", parse_oid("1.3.6.1.2.1.4.21")},
    {"ipNetToMediaTable", parse_oid("1.3.6.1.2.1.4.22")},
    {"ipSystemStatsTable, ipIfStatsTable", parse_oid("1.3.6.1.2.1.4.31")},
    {"ipAddressTable", parse_oid("1.3.6.1.2.1.4.34")},
    {"ipNetToPhysicalTable", parse_oid("1.3.6.1.2.1.4.35")},
    {"ipDefaultRouterTable", parse_oid("1.3.6.1.2.1.4.37")},
    {"at (address translation)", parse_oid("1.3.6.1.2.1.3")},
    {"ICMP", parse_oid("1.3.6.1.2.1.5")},
    {"TCP", parse_oid("1.3.6.1.2.1.6")},
    {"UDP", parse_oid("1.3.6.1.2.1.7")},
    {"IPV6-MIB", parse_oid("1.3.6.1.2.1.55")},
    {"DISMAN-EVENT-MIB", parse_oid("1.3.6.1.2.1.88")},
    {"NOTIFICATION-LOG-MIB", parse_oid("1.3.6.1.2.1.92")},
    {"DISMAN-SCHEDULE-MIB", parse_oid("1.3.6.1.2.1.63")},
};

// The SNMP engine's own MIBs, which stay.
const std::vector<Subtree> kEngineSubtrees = {
    {"SNMPv2-MIB snmp group", parse_oid("1.3.6.1.2.1.11")},
    {"snmpSetSerialNo", parse_oid("1.3.6.1.6.3.1.1.6.1")},
    {"SNMP-FRAMEWORK-MIB snmpEngine", parse_oid("1.3.6.1.6.3.10.2.1")},
    {"SNMP-MPD-MIB snmpMPDStats", parse_oid("1.3.6.1.6.3.11.2.1")},
    {"SNMP-USER-BASED-SM-MIB usmStats", parse_oid("1.3.6.1.6.3.15.1.1")},
    {"SNMP-USER-BASED-SM-MIB usmUserTable", parse_oid("1.3.6.1.6.3.15.1.2.2")},
    {"SNMP-VIEW-BASED-ACM-MIB", parse_oid("1.3.6.1.6.3.16.1")},
};

// The subtrees of the view "switch" in the agent's configuration.
std::vector<Oid> switch_view(const std::string &conf_path) {
    std::ifstream in(conf_path);
    std::vector<Oid> view;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string directive, name, kind, subtree;
        if (words >> directive >> name >> kind >> subtree && directive == "view" && name == "switch") {
            EXPECT_EQ(kind, "included") << line;
            view.push_back(parse_oid(subtree));
        }
    }
    return view;
}

// ---- the suites ---------------------------------------------------------------

const UsmUser kReader{"watcher", "watch-auth-1", "watch-priv-1"};
const UsmUser kOperator{"operator", "oper-auth-1", "oper-priv-1"};

class Access : public AgentTest<Access> {
public:
    static std::vector<std::string> agent_options() {
        return {"--v3-user", kReader.name + ":" + kReader.auth_pass + ":" + kReader.priv_pass,  //
                "--v3-rwuser", kOperator.name + ":" + kOperator.auth_pass + ":" + kOperator.priv_pass};
    }
};

TEST_F(Access, OnlyTheLoopbackUdpPortIsOpen) {
    const std::multiset<std::string> expected = {"udp 127.0.0.1:" + std::to_string(agent().port())};
    const std::multiset<std::string> open = sockets_of(agent().pid());
    EXPECT_EQ(open, expected) << "snmpd holds:" << listing(open);
}

TEST_F(Access, SnmpdServesNoHostMib) {
    for (const Subtree &s : kHostSubtrees) {
        const std::vector<VarBind> objects = reader().walk(s.oid);
        EXPECT_TRUE(objects.empty()) << s.name << " is served, first " << describe(objects.front());
    }
}

TEST_F(Access, TheEngineMibsRemain) {
    for (const Subtree &s : kEngineSubtrees) EXPECT_FALSE(reader().walk(s.oid).empty()) << s.name << " is not served";
}

// The write view covers every object of the catalogues and nothing of the
// engine's or the host's.
TEST_F(Access, TheWriteViewIsTheSwitchsSubtrees) {
    const std::vector<Oid> view = switch_view(agent().conf_path());
    ASSERT_FALSE(view.empty());
    for (const CatalogueObject &object : catalogue())
        EXPECT_TRUE(std::any_of(view.begin(), view.end(), [&](const Oid &v) { return starts_with(object.oid, v); }))
            << object.name << " (" << to_string(object.oid) << ") is outside the write view";
    for (const Oid &v : view) {
        for (const auto *list : {&kHostSubtrees, &kEngineSubtrees})
            for (const Subtree &s : *list)
                EXPECT_FALSE(starts_with(v, s.oid) || starts_with(s.oid, v))
                    << "write view " << to_string(v) << " meets " << s.name;
    }
}

// SETs that snmpd's engine MIBs accept from a community allowed to write
// them: each is refused with noAccess and changes nothing.
struct EngineWrite {
    const char *what;
    std::vector<SetValue> values;
};

std::vector<EngineWrite> engine_writes(Session &reader) {
    const Oid auth_traps = parse_oid("1.3.6.1.2.1.11.30.0");
    const Oid usm_spin_lock = parse_oid("1.3.6.1.6.3.15.1.2.1.0");
    const auto current = [&](const Oid &oid) {
        Response r = reader.get({oid});
        return r.varbinds.size() == 1 ? r.varbinds[0].integer : 0;
    };
    return {
        {"snmpEnableAuthenTraps", {SetValue::integer32(auth_traps, current(auth_traps) == 1 ? 2 : 1)}},
        {"usmUserSpinLock (test and increment)", {SetValue::integer32(usm_spin_lock, current(usm_spin_lock))}},
        // A view "x" over 1.3, made with createAndGo.
        {"vacmViewTreeFamilyStatus", {SetValue::integer32(parse_oid("1.3.6.1.6.3.16.1.5.2.1.6.1.120.2.1.3"), 4)}},
        // The community "y" put into a group of its own.
        {"vacmSecurityToGroupTable",
         {SetValue::octets(parse_oid("1.3.6.1.6.3.16.1.2.1.3.2.1.121"), "admins"),
          SetValue::integer32(parse_oid("1.3.6.1.6.3.16.1.2.1.5.2.1.121"), 4)}},
    };
}

// The value (or exception) of every varbind of a write, read back.
std::vector<std::string> read_back(Session &reader, const std::vector<SetValue> &values) {
    std::vector<std::string> out;
    for (const SetValue &v : values) {
        Response r = reader.get({v.oid});
        out.push_back(r.varbinds.size() == 1 ? describe(r.varbinds[0]) : "no answer");
    }
    return out;
}

// Writes each engine object through session; each must be refused.
void expect_engine_writes_refused(Session &writer, Session &reader) {
    for (const EngineWrite &w : engine_writes(reader)) {
        SCOPED_TRACE(w.what);
        const std::vector<std::string> before = read_back(reader, w.values);
        Response r = writer.set(w.values);
        ASSERT_TRUE(r.answered);
        EXPECT_EQ(r.error_status, kNoAccess);
        EXPECT_EQ(read_back(reader, w.values), before);
    }
}

TEST_F(Access, TheWriteCommunityWritesTheSwitchOnly) {
    expect_engine_writes_refused(writer(), reader());
    // The switch's objects, standard and private, stay writable.
    EXPECT_EQ(set_one(SetValue::octets(child(oids::kSystem, {6, 0}), "rack 4")), kNoError);
    EXPECT_EQ(sw().system().location, "rack 4");
    EXPECT_EQ(set_one(SetValue::octets(oids::port_column(oids::kPortName, port_index(0, 1)), "uplink")), kNoError);
    EXPECT_EQ(sw().port(0, 1).description, "uplink");
    // The read community writes nothing.
    Response r = reader().set({SetValue::octets(child(oids::kSystem, {6, 0}), "elsewhere")});
    EXPECT_EQ(r.error_status, kNoAccess);
    EXPECT_EQ(sw().system().location, "rack 4");
}

TEST_F(Access, Snmpv3UsersReadAndWriteWithinTheSameViews) {
    const Oid location = child(oids::kSystem, {6, 0});
    Session watcher(agent().port(), kReader), op(agent().port(), kOperator);

    Response r = watcher.get({oids::kSysName, parse_oid("1.3.6.1.6.3.10.2.1.1.0")});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kNoError);
    ASSERT_EQ(r.varbinds.size(), 2u);
    EXPECT_EQ(r.varbinds[0].bytes, sw().hostname());
    EXPECT_EQ(r.varbinds[1].type, kOctetString);  // snmpEngineID
    EXPECT_EQ(watcher.set({SetValue::octets(location, "by watcher")}).error_status, kNoAccess);

    r = op.set({SetValue::octets(location, "by operator")});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kNoError);
    EXPECT_EQ(sw().system().location, "by operator");
    expect_engine_writes_refused(op, reader());

    // The users need privacy: the same user without it is refused.
    Session in_clear(agent().port(), UsmUser{kOperator.name, kOperator.auth_pass, ""});
    r = in_clear.get({oids::kSysName});
    ASSERT_TRUE(r.answered);
    EXPECT_EQ(r.error_status, kAuthorizationError);
}

// With AgentX asked for, its socket is the only other one, in the run
// directory and open to snmpd's user alone.
class AgentX : public AgentTest<AgentX> {
public:
    static std::vector<std::string> agent_options() { return {"--agentx"}; }
};

TEST_F(AgentX, ItsSocketIsInTheRunDirectoryAndPrivate) {
    const std::string path = agent().dir() + "/agentx";
    const std::multiset<std::string> expected = {"udp 127.0.0.1:" + std::to_string(agent().port()), "unix " + path};
    const std::multiset<std::string> open = sockets_of(agent().pid());
    EXPECT_EQ(open, expected) << "snmpd holds:" << listing(open);
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0) << path;
    EXPECT_TRUE(S_ISSOCK(st.st_mode));
    EXPECT_EQ(st.st_mode & 077, 0u) << std::oct << (st.st_mode & 0777);
}

}  // namespace
}  // namespace it
