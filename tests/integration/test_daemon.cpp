#include "test_daemon.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace it {

TestDaemon::TestDaemon(const std::string &prefix) {
    std::string tmpl = "/tmp/" + prefix + "-XXXXXX";
    if (!mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp: " + std::string(std::strerror(errno)));
    dir_ = tmpl;
}

TestDaemon::~TestDaemon() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
}

void TestDaemon::start(const std::vector<std::string> &argv, const std::string &log, const std::string &what,
                       const std::function<bool()> &ready, int tries, std::chrono::milliseconds step) {
    // Everything the child needs is made before fork: it only redirects
    // and execs.
    std::vector<char *> args;
    for (const std::string &a : argv) args.push_back(const_cast<char *>(a.c_str()));
    args.push_back(nullptr);
    const int out = log.empty() ? -1 : open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (!log.empty() && out < 0) throw std::runtime_error("cannot open " + log);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);
        if (out >= 0) {
            dup2(out, 1);
            dup2(out, 2);
        }
        execv(args[0], args.data());
        _exit(127);
    }
    if (out >= 0) close(out);
    for (int i = 0; i < tries; ++i) {
        if (ready()) return;
        if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
            pid_ = -1;
            break;
        }
        std::this_thread::sleep_for(step);
    }
    throw std::runtime_error(what + " did not start");
}

}  // namespace it
