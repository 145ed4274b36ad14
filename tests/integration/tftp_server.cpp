#include "tftp_server.hpp"

#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "agent_process.hpp"

namespace it {
namespace {

// Whether something holds the loopback UDP port.
bool port_taken(uint16_t port) {
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    a.sin_port = htons(port);
    const bool taken = ::bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a) != 0 && errno == EADDRINUSE;
    ::close(fd);
    return taken;
}

}  // namespace

TftpServer::TftpServer() {
    char tmpl[] = "/tmp/switch-tftpd-XXXXXX";
    if (!mkdtemp(tmpl)) throw std::runtime_error("mkdtemp: " + std::string(std::strerror(errno)));
    dir_ = tmpl;
    // Started as root, the server runs as an unprivileged user that must
    // be able to create files here.
    chmod(dir_.c_str(), 0777);
    port_ = free_udp_port();
    const std::string listen = "127.0.0.1:" + std::to_string(port_);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);
        execl(IN_TFTPD_PATH, IN_TFTPD_PATH, "-L", "-a", listen.c_str(), "-s", dir_.c_str(), "-c",
              static_cast<char *>(nullptr));
        _exit(127);
    }
    for (int i = 0; i < 100; ++i) {
        if (port_taken(port_)) return;
        if (waitpid(pid_, nullptr, WNOHANG) == pid_) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    throw std::runtime_error("in.tftpd did not start on " + listen);
}

TftpServer::~TftpServer() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
}

void TftpServer::put_file(const std::string &name, const std::string &bytes) const {
    const std::string path = dir_ + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    chmod(path.c_str(), 0644);
}

std::string TftpServer::file(const std::string &name) const {
    std::ifstream in(dir_ + "/" + name, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace it
