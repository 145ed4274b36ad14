#include "agent_process.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include <swsim/control.hpp>

#include "snmp_client.hpp"

extern char **environ;

namespace it {

uint16_t free_udp_port() {
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    const bool bound = fd >= 0 && bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0 &&
                       getsockname(fd, reinterpret_cast<sockaddr *>(&a), &len) == 0;
    const std::string why = std::strerror(errno);
    if (fd >= 0) close(fd);
    if (!bound) throw std::runtime_error("no free UDP port: " + why);
    return ntohs(a.sin_port);
}

namespace {

std::string read_file(const std::string &path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// conf/snmpd-modules: snmpd's own modules to start, those of the SNMP engine
// and the module loader only.
std::vector<std::string> module_args() {
    std::istringstream in(read_file(SOURCE_DIR "/conf/snmpd-modules"));
    std::vector<std::string> args;
    for (std::string word; in >> word;) args.push_back(word);
    return args;
}

std::vector<std::string> child_environment(const std::string &state_path) {
    static const char *const kReplaced[] = {"SWSIM_STATE=", "MIBS=", "LD_PRELOAD=", "ASAN_OPTIONS=", "UBSAN_OPTIONS="};
    std::vector<std::string> env;
    for (char **e = environ; *e; ++e) {
        bool replaced = false;
        for (const char *r : kReplaced) replaced = replaced || std::strncmp(*e, r, std::strlen(r)) == 0;
        if (!replaced) env.emplace_back(*e);
    }
    env.push_back("SWSIM_STATE=" + state_path);
    env.push_back("MIBS=");
#ifdef SWITCH_SANITIZE
    // snmpd itself is not instrumented: the sanitizer runtime must come
    // first.  The C++ runtime follows it: snmpd is a C program, and without
    // libstdc++ loaded at start-up the sanitizer's interceptor of
    // __cxa_throw finds nothing to call, so the first exception thrown in
    // the agent (even one caught there) aborts it.
    env.push_back(std::string("LD_PRELOAD=") + ASAN_RUNTIME + " " + CXX_RUNTIME);
    env.push_back("ASAN_OPTIONS=detect_leaks=0");
    env.push_back("UBSAN_OPTIONS=print_stacktrace=1");
#endif
    return env;
}

std::vector<char *> c_strings(std::vector<std::string> &v) {
    std::vector<char *> out;
    for (std::string &s : v) out.push_back(s.data());
    out.push_back(nullptr);
    return out;
}

}  // namespace

AgentProcess::AgentProcess(const std::string &scenario, std::vector<std::string> conf_options)
    : conf_options_(std::move(conf_options)) {
    char tmpl[] = "/tmp/switch-it-XXXXXX";
    if (!mkdtemp(tmpl)) throw std::runtime_error("mkdtemp: " + std::string(std::strerror(errno)));
    dir_ = tmpl;
    state_path_ = dir_ + "/switch.state";
    conf_path_ = dir_ + "/snmpd.conf";
    log_path_ = dir_ + "/snmpd.log";
    pid_path_ = dir_ + "/snmpd.pid";
    try {
        swsim::create_state(state_path_, SOURCE_DIR "/" + scenario);
        start();
    } catch (...) {
        kill_hard();
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
        throw;
    }
}

AgentProcess::~AgentProcess() {
    stop();
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
}

void AgentProcess::spawn() {
    std::string conf = "bash '" SOURCE_DIR "/scripts/make-snmpd-conf.sh'";
    for (const std::string &option : conf_options_) conf += " '" + option + "'";
    conf += " '" MODULE_PATH "' " + std::to_string(port_) + " '" + dir_ + "' public private > '" + conf_path_ + "'";
    if (std::system(conf.c_str()) != 0) throw std::runtime_error("failed: " + conf);
    std::vector<std::string> args = {SNMPD_PATH, "-f", "-Lo", "-C", "-c", conf_path_, "-p", pid_path_};
    for (std::string &a : module_args()) args.push_back(a);
    std::vector<std::string> env = child_environment(state_path_);
    std::vector<char *> argv = c_strings(args), envp = c_strings(env);
    const int log = open(log_path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (log < 0 || null < 0) throw std::runtime_error("cannot open " + log_path_);
    const pid_t parent = getpid();

    pid_ = fork();
    if (pid_ == 0) {
        // Only async-signal-safe calls until exec.  The agent dies with the
        // test process, however that ends.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);
        dup2(null, 0);
        dup2(log, 1);
        dup2(log, 2);
        execve(SNMPD_PATH, argv.data(), envp.data());
        _exit(127);
    }
    close(log);
    close(null);
    if (pid_ < 0) throw std::runtime_error("cannot start " SNMPD_PATH);
}

bool AgentProcess::wait_until_answering() {
    Session probe(port_, "public", 100, 0);
    const Oid sys_uptime = parse_oid("1.3.6.1.2.1.1.3.0");
    for (int attempt = 0; attempt < 200; ++attempt) {
        if (waitpid(pid_, nullptr, WNOHANG) != 0) {  // snmpd ended
            pid_ = -1;
            return false;
        }
        if (probe.get({sys_uptime}).answered) return true;
    }
    return false;
}

void AgentProcess::start() {
    // The port may be taken between choosing it and snmpd binding it: try again.
    for (int attempt = 0; attempt < 3; ++attempt) {
        port_ = free_udp_port();
        spawn();
        if (wait_until_answering()) return;
        kill_hard();
    }
    throw std::runtime_error("snmpd did not answer; log " + log_path_ + ":\n" + read_file(log_path_));
}

void AgentProcess::stop() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    for (int waited_ms = 0; waited_ms < 5000; waited_ms += 10) {
        if (waitpid(pid_, nullptr, WNOHANG) != 0) {
            pid_ = -1;
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill_hard();
}

bool AgentProcess::running() {
    if (pid_ <= 0) return false;
    if (waitpid(pid_, &end_status_, WNOHANG) == 0) return true;
    pid_ = -1;
    return false;
}

std::string AgentProcess::how_it_ended() const {
    if (WIFSIGNALED(end_status_))
        return "killed by signal " + std::to_string(WTERMSIG(end_status_)) + " (" + strsignal(WTERMSIG(end_status_)) + ")";
    return "exited with status " + std::to_string(WEXITSTATUS(end_status_));
}

void AgentProcess::kill_hard() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

std::vector<std::string> AgentProcess::problems() const {
    static const char *const kMarks[] = {"ERROR: AddressSanitizer", "AddressSanitizer: CHECK failed", "runtime error",
                                         "duplicate registration", "dlsym failed", "dlopen failed"};
    std::vector<std::string> found;
    std::istringstream in(read_file(log_path_));
    for (std::string line; std::getline(in, line);)
        if (std::any_of(std::begin(kMarks), std::end(kMarks), [&](const char *m) { return line.find(m) != line.npos; }))
            found.push_back(line);
    return found;
}

}  // namespace it
