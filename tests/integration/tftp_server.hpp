// Debian's tftpd-hpa (in.tftpd) as a foreground child on a free loopback UDP
// port, serving a directory of its own in which it may create files.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace it {

class TftpServer {
public:
    TftpServer();   // starts it and waits (bounded) until it listens; throws otherwise
    ~TftpServer();  // stops it, removes its directory
    TftpServer(const TftpServer &) = delete;
    TftpServer &operator=(const TftpServer &) = delete;

    uint16_t port() const { return port_; }
    // A file of the served directory.
    void put_file(const std::string &name, const std::string &bytes) const;
    // Its bytes, or "" when there is none.
    std::string file(const std::string &name) const;

private:
    std::string dir_;
    uint16_t port_ = 0;
    pid_t pid_ = -1;
};

}  // namespace it
