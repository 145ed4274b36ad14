#include "tftp_server.hpp"

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <sstream>

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
    // Started as root, the server runs as an unprivileged user that must
    // be able to create files here.
    chmod(daemon_.dir().c_str(), 0777);
    port_ = free_udp_port();
    const std::string listen = "127.0.0.1:" + std::to_string(port_);
    daemon_.start({IN_TFTPD_PATH, "-L", "-a", listen, "-s", daemon_.dir(), "-c"}, "", "in.tftpd on " + listen,
                  [this] { return port_taken(port_); }, 100, std::chrono::milliseconds(20));
}

void TftpServer::put_file(const std::string &name, const std::string &bytes) const {
    const std::string path = daemon_.dir() + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    chmod(path.c_str(), 0644);
}

std::string TftpServer::file(const std::string &name) const {
    std::ifstream in(daemon_.dir() + "/" + name, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace it
