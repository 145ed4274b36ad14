#include "trap_daemon.hpp"

#include <fstream>
#include <sstream>
#include <thread>

#include "agent_process.hpp"

namespace it {

namespace {

// snmptrapd's line formats: SNMPv1 (format1) and SNMPv2c (format2).
constexpr const char *kConf =
    "disableAuthorization yes\n"
    "format1 v1 community=%P enterprise=%N generic=%w specific=%q vars=%v\\n\n"
    "format2 v2 community=%P vars=%v\\n\n";

// %P is "TRAP, SNMP v1, community C" or "TRAP2, SNMP v2c, community C":
// only the community is kept.
std::string tidy(std::string line) {
    const std::string from = "community=";
    const auto at = line.find(from);
    const auto name = line.find("community ", at);
    if (at != std::string::npos && name != std::string::npos) line.erase(at + from.size(), name + 10 - at - from.size());
    return line;
}

}  // namespace

TrapDaemon::TrapDaemon() : log_path_(daemon_.dir() + "/snmptrapd.log") {
    const std::string conf = daemon_.dir() + "/snmptrapd.conf", pid_file = daemon_.dir() + "/snmptrapd.pid";
    std::ofstream(conf) << kConf;
    port_ = free_udp_port();
    const std::string listen = "udp:127.0.0.1:" + std::to_string(port_);
    // It writes its version line once it listens.
    const auto listening = [this] {
        std::ifstream in(log_path_);
        std::stringstream text;
        text << in.rdbuf();
        return text.str().find("NET-SNMP version") != std::string::npos;
    };
    daemon_.start({SNMPTRAPD_PATH, "-f", "-Lo", "-C", "-c", conf, "-m", "", "-On", "-p", pid_file, listen}, log_path_,
                  "snmptrapd on " + listen, listening, 100, std::chrono::milliseconds(50));
}

std::vector<std::string> TrapDaemon::notifications() const {
    std::ifstream in(log_path_);
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);)
        if (line.rfind("v1 ", 0) == 0 || line.rfind("v2 ", 0) == 0) out.push_back(tidy(line));
    return out;
}

std::string TrapDaemon::wait_for(const std::vector<std::string> &parts, std::chrono::milliseconds timeout) const {
    const auto end = std::chrono::steady_clock::now() + timeout;
    do {
        for (const std::string &line : notifications()) {
            bool all = true;
            for (const std::string &p : parts) all = all && line.find(p) != std::string::npos;
            if (all) return line;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    } while (std::chrono::steady_clock::now() < end);
    return "";
}

}  // namespace it
