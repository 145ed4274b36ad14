// Debian's tftpd-hpa (in.tftpd) as a foreground child on a free loopback UDP
// port, serving a directory of its own in which it may create files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "test_daemon.hpp"

namespace it {

class TftpServer {
public:
    TftpServer();   // starts it and waits (bounded) until it listens; throws otherwise
    TftpServer(const TftpServer &) = delete;
    TftpServer &operator=(const TftpServer &) = delete;

    uint16_t port() const { return port_; }
    // A file of the served directory.
    void put_file(const std::string &name, const std::string &bytes) const;
    // Its bytes, or "" when there is none.
    std::string file(const std::string &name) const;

private:
    TestDaemon daemon_{"switch-tftpd"};
    uint16_t port_ = 0;
};

}  // namespace it
