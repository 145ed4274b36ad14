#include "trap_daemon.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
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

TrapDaemon::TrapDaemon() {
    char tmpl[] = "/tmp/switch-trapd-XXXXXX";
    if (!mkdtemp(tmpl)) throw std::runtime_error("mkdtemp: " + std::string(std::strerror(errno)));
    dir_ = tmpl;
    log_path_ = dir_ + "/snmptrapd.log";
    const std::string conf = dir_ + "/snmptrapd.conf", pid_file = dir_ + "/snmptrapd.pid";
    std::ofstream(conf) << kConf;
    port_ = free_udp_port();
    const std::string listen = "udp:127.0.0.1:" + std::to_string(port_);
    const int log = open(log_path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (log < 0) throw std::runtime_error("cannot open " + log_path_);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);
        dup2(log, 1);
        dup2(log, 2);
        execl(SNMPTRAPD_PATH, SNMPTRAPD_PATH, "-f", "-Lo", "-C", "-c", conf.c_str(), "-m", "", "-On", "-p",
              pid_file.c_str(), listen.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    close(log);
    // It writes its version line once it listens.
    for (int i = 0; i < 100; ++i) {
        std::ifstream in(log_path_);
        std::stringstream text;
        text << in.rdbuf();
        if (text.str().find("NET-SNMP version") != std::string::npos) return;
        if (waitpid(pid_, nullptr, WNOHANG) == pid_) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("snmptrapd did not start on " + listen);
}

TrapDaemon::~TrapDaemon() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
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
