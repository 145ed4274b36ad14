// Debian's snmptrapd as a trap receiver for the tests: in the foreground on
// a free loopback UDP port, with a configuration of its own that accepts
// every community and prints one line per notification.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "test_daemon.hpp"

namespace it {

class TrapDaemon {
public:
    TrapDaemon();   // starts it and waits (bounded) until it listens; throws otherwise
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
    TestDaemon daemon_{"switch-trapd"};
    std::string log_path_;
    uint16_t port_ = 0;
};

}  // namespace it
