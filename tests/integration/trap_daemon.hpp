// Debian's snmptrapd as a trap receiver for the tests: in the foreground on
// a free loopback UDP port, with a configuration of its own that accepts
// every community and prints one line per notification.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace it {

class TrapDaemon {
public:
    TrapDaemon();   // starts it and waits (bounded) until it listens; throws otherwise
    ~TrapDaemon();  // stops it, removes its directory
    TrapDaemon(const TrapDaemon &) = delete;
    TrapDaemon &operator=(const TrapDaemon &) = delete;

    uint16_t port() const { return port_; }

    // The notifications received so far, one line each:
    //   "v1 community=C enterprise=OID generic=G specific=S vars=V" or
    //   "v2 community=C vars=V", V the variables as "OID = TYPE: value"
    //   separated by tabs.
    std::vector<std::string> notifications() const;
    // Waits until a notification line contains every one of `parts`;
    // returns it, or "" after the timeout.
    std::string wait_for(const std::vector<std::string> &parts,
                         std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;

private:
    std::string dir_, log_path_;
    uint16_t port_ = 0;
    pid_t pid_ = -1;
};

}  // namespace it
