// One snmpd with libsnmpdAPI loaded over a simulated switch of its own: a
// temporary directory holding the switch state (made from a scenario), the
// agent's configuration and its log, a free loopback UDP port, and the agent
// process itself (started, killed and restarted on the same state).
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace it {

// A loopback UDP port that nothing is bound to right now.
uint16_t free_udp_port();

class AgentProcess {
public:
    // Creates the directory and the switch state from the scenario (a path
    // relative to the source tree), then starts the agent; conf_options go
    // to scripts/make-snmpd-conf.sh (--agentx, --v3-user ...).
    explicit AgentProcess(const std::string &scenario, std::vector<std::string> conf_options = {});
    ~AgentProcess();  // stops the agent, removes the directory
    AgentProcess(const AgentProcess &) = delete;
    AgentProcess &operator=(const AgentProcess &) = delete;

    uint16_t port() const { return port_; }
    pid_t pid() const { return pid_; }
    const std::string &dir() const { return dir_; }  // snmpd's run directory
    const std::string &conf_path() const { return conf_path_; }
    const std::string &state_path() const { return state_path_; }
    const std::string &log_path() const { return log_path_; }

    // Whether the snmpd process is still there (not exited, not killed);
    // once it is not, how it ended ("killed by signal 11 (Segmentation
    // fault)", "exited with status 1").
    bool running();
    std::string how_it_ended() const;

    // Starts snmpd and waits (bounded) until it answers a GET; throws when
    // it does not come up.
    void start();
    // SIGTERM, then SIGKILL when it does not end in time.
    void stop();
    // SIGKILL at once, as a crash would.
    void kill_hard();

    // Lines of the agent's log that show a fault of the module: sanitizer
    // reports, the module not loaded, or an OID registered twice (a built-in
    // module of snmpd serving the module's OIDs).
    std::vector<std::string> problems() const;

private:
    std::string dir_, state_path_, conf_path_, log_path_, pid_path_;
    std::vector<std::string> conf_options_;
    uint16_t port_ = 0;
    pid_t pid_ = -1;
    int end_status_ = 0;  // waitpid's status of the last snmpd that ended

    void spawn();
    bool wait_until_answering();
};

}  // namespace it
