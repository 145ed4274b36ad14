// Control interface of the simulated switch.
//
// libswsim.so implements the platform calls of swplatform/platform.h over a
// modelled switch stack whose whole state lives in one shared file.  This
// header is the other side of it: creating a state file from a scenario and
// driving a live switch the way the hardware and an operator would (links
// going up and down, transceivers pulled, trunks and VLANs changed, traffic)
// plus fault injection and the call journal.  swctl and the tests use it.
//
// Numbering here is the platform's: unit0, port0, trunk0 from zero.  Humans
// (swctl, scenario files) count units, ports and trunks from one.
//
// Every mutation takes the configuration write lock (lock 2 of
// cfg_lock_table, shared with the agent across processes) for its duration,
// so a thread must not call one while it holds that lock through the
// platform calls.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "swplatform/platform.h"
#include "swplatform/statistics.hpp"

namespace swsim {

// Where the state lives unless SWSIM_STATE says otherwise.
inline constexpr const char *kDefaultStatePath = "/var/lib/swsim/switch.state";
// SWSIM_STATE if set and not empty, else kDefaultStatePath.
std::string default_state_path();

struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Builds a new switch from a scenario (JSON, see scenarios/README.md) at
// state_path.  The switch "boots" now.  A state file already there is
// rewritten in place under the configuration write lock, so processes that
// have it open (a running agent) see the new switch from their next lock on;
// a missing or unusable one is replaced.  Errors name the file and the field:
// "scenarios/x.json: units[1].ports: must be 1..64"; the state at state_path
// is then left as it was.
void create_state(const std::string &state_path, const std::string &scenario_path);
void create_state_from_json(const std::string &state_path, const std::string &json_text,
                            const std::string &origin = "<inline>");

// Closes the platform state this process opened with cfg_init() and opens the
// one SWSIM_STATE names now, as cfg_init() does (the VLAN change flags
// raised for the client that attaches); the result is cfg_init()'s (on
// failure no switch is open).  Pointers handed out earlier (get_status(), cfg_get_cfg()) stay
// valid but see the old file.
// Meant for test fixtures that run many switches in one process.
int platform_reopen();

// Capability bits of cfg_get_port_capabilities / cfg_set_port_capabilities.
namespace cap {
enum : uint32_t {
    k10Half = SW_CAP_10_HALF,
    k10Full = SW_CAP_10_FULL,
    k100Half = SW_CAP_100_HALF,
    k100Full = SW_CAP_100_FULL,
    k1000Half = SW_CAP_1000_HALF,
    k1000Full = SW_CAP_1000_FULL,
    k10GFull = SW_CAP_10G_FULL,
    kAutoneg = SW_CAP_AUTONEG,
    kPause = SW_CAP_PAUSE,
    kAsymPause = SW_CAP_ASYM_PAUSE,
};
}

// Port type codes of cfg_get_port_type_vx7300.
namespace port_type {
enum : int { kCopper = SW_PORT_TYPE_1000T, kSfpPlus = SW_PORT_TYPE_10GX, kTrunk = SW_PORT_TYPE_TRUNK };
}

// Statistic numbers of bcmd_snmp_stat_get.
namespace stat = swp::stat;
// Whether a statistic can be set: false for the sums of others (and for
// numbers out of range).
bool statistic_settable(int stat);

struct JournalEntry {
    uint64_t seq;
    std::string call;
    std::string args;
};

struct FaultInfo {
    std::string call;
    int result;
    int remaining;  // -1: until cleared
};

// Transceiver diagnostics as the optics report them.
struct Ddm {
    double temperature_c = 35.0;
    double voltage_v = 3.3;
    double bias_ma = 6.0;
    double tx_power_mw = 0.5;
    double rx_power_mw = 0.4;
};

struct UnitInfo {
    bool known = false;  // part of the stack (present or not)
    bool present = false;
    bool mpu = false;
    int ports = 0;
    std::string model, serial, version, build_date;
};

struct PortInfo {
    bool link = false;       // as the status block shows it
    int speed = 0;           // live speed, Mbit/s (0 while down)
    bool full_duplex = false;
    bool admin = false;
    bool carrier = false;    // partner present on the wire
    int config_speed = 0;    // 0: negotiated
    int mtu = 0;
    int type = 0;
    int trunk0 = -1;
    bool sfp_slot = false;
    bool sfp_fitted = false;
    uint64_t traffic_pps = 0;
    std::string description;
};

struct TrunkInfo {
    bool configured = false;
    bool dynamic = false;
    std::vector<std::pair<int, int>> members;  // (unit0, port0)
};

struct VlanInfo {
    bool exists = false;
    bool active = false;
    bool dynamic = false;
    std::string name;
    // (unit0, port0, flags); trunks appear as unit0 0, port0 512 + trunk0
    struct Member {
        int unit0, port0;
        uint32_t flags;
    };
    std::vector<Member> members;
};

struct FdbInfo {
    uint8_t mac[6];
    int vid;
    int unit0;
    int port0;
    int trunk0;  // -1 when not learned on a trunk
    bool is_static;
};

struct SystemInfo {
    std::string hostname, contact, location, tz_name, fw_version;
    int tz_offset_min = 0;
    int mac_ageing = 0;
    uint32_t uptime_s = 0;
    int64_t clock_offset_s = 0;
};

// An open handle on a live state file.  It maps the file itself and needs no
// cfg_init(); any number of handles and processes may share one file.  Each
// handle is its own lock holder; a handle opened before fork() shares its
// lock with the parent, so a child opens its own.
class Switch {
public:
    explicit Switch(const std::string &state_path);  // throws Error
    ~Switch();
    Switch(const Switch &) = delete;
    Switch &operator=(const Switch &) = delete;

    const std::string &path() const;

    // Hardware events.
    void set_unit_present(int unit0, bool present);
    void set_link(int unit0, int port0, bool up);
    // What the link partner offers; a negotiating port follows it.
    void set_link_speed(int unit0, int port0, int mbps, bool full_duplex);
    void trunk_create(int trunk0, bool dynamic = false);
    void trunk_destroy(int trunk0);
    void trunk_add_port(int trunk0, int unit0, int port0);
    void trunk_remove_port(int trunk0, int unit0, int port0);
    void vlan_create(int vid, const std::string &name = "", bool dynamic = false);
    void vlan_delete(int vid);
    void vlan_set_member(int vid, int unit0, int port0, uint32_t flags);  // SW_VLAN_*, 0 removes
    void fdb_add(const uint8_t mac[6], int vid, int unit0, int port0, int trunk0, bool is_static);
    void fdb_clear();
    void set_counter(int unit0, int port0, int stat, uint64_t value);
    void set_traffic(int unit0, int port0, uint64_t packets_per_second);
    void set_transceiver(int unit0, int port0, bool fitted, const Ddm &readings = Ddm{});

    // Operator configuration.
    void set_hostname(const std::string &name);
    void set_port_description(int unit0, int port0, const std::string &text);
    void set_port_admin(int unit0, int port0, bool enabled);
    void set_port_speed(int unit0, int port0, int mbps);  // 0: negotiate
    void set_clock_offset(int64_t seconds);

    // Faults and journal.
    void fault_set(const std::string &call, int result, int times);  // times -1: until cleared
    void fault_clear(const std::string &call = "");                   // "": all
    std::vector<FaultInfo> faults() const;
    void journal_enable(bool on);
    bool journal_enabled() const;
    void journal_clear();
    std::vector<JournalEntry> journal() const;

    // Reads.
    UnitInfo unit(int unit0) const;
    PortInfo port(int unit0, int port0) const;
    TrunkInfo trunk(int trunk0) const;
    VlanInfo vlan(int vid) const;
    std::vector<int> vlan_ids() const;  // existing VLANs
    std::vector<FdbInfo> fdb() const;
    SystemInfo system() const;
    uint64_t counter(int unit0, int port0, int stat) const;  // ports and trunks
    std::string hostname() const { return system().hostname; }

    void save();  // flush the mapping to the file

    // ---- vlans ----
    // GVRP registers (on) or withdraws a port's or trunk's dynamic membership
    // (SW_VLAN_DYNAMIC_* bits that fit a byte: 0x10 .. 0x80).
    void vlan_register(int vid, int unit0, int port0, bool on, uint32_t flags = SW_VLAN_DYNAMIC_GVRP);
    void vlan_set_active(int vid, bool active);
    // ---- transceivers and traffic controls ----
    // Readings of a fitted transceiver, as the platform reports them.
    struct TransceiverInfo {
        bool cage = false;         // the port takes a transceiver
        bool fitted = false;
        bool diagnostics = false;  // the transceiver reports readings
        int temperature_c = 0;
        uint16_t voltage = 0;      // 100 microvolts
        uint16_t bias = 0;         // 0.1 milliampere
        uint16_t tx_power = 0;     // 0.1 microwatt
        uint16_t rx_power = 0;     // 0.1 microwatt
    };
    enum Direction : int { kIngress = 0, kEgress = 1 };
    enum QueueCounter : int { kSentPackets = 0, kSentBytes = 1, kDroppedPackets = 2, kDroppedBytes = 3 };
    struct TrafficInfo {
        uint32_t rate_kbps[2] = {};  // by Direction; 0 no limit
        uint32_t burst_kb[2] = {};
        bool storm_control = false;
        uint32_t storm_pps = 0;
        int mirror = 0;                   // SW_MIRROR_*
        uint64_t queues[4][SW_QUEUES] = {};  // by QueueCounter, queue 0 first
    };
    // New readings of a fitted transceiver.
    void set_transceiver_readings(int unit0, int port0, const Ddm &readings);
    // A fitted transceiver that reports diagnostics, or one that does not.
    void set_transceiver_diagnostics(int unit0, int port0, bool available);
    TransceiverInfo transceiver(int unit0, int port0) const;
    // kbps 0 lifts the limit; burst 0 is the default burst.
    void set_rate_limit(int unit0, int port0, Direction direction, uint32_t kbps, uint32_t burst_kb = 0);
    void set_storm_control(int unit0, int port0, bool enabled, uint32_t pps = 0);  // pps 0: default
    void set_mirror(int unit0, int port0, int mode);  // SW_MIRROR_*
    void set_mirror_to(int unit0, int port0);         // port0 -1: no destination
    std::pair<int, int> mirror_to() const;            // (-1, -1): none
    void set_queue_counter(int unit0, int port0, QueueCounter kind, int queue, uint64_t value);
    TrafficInfo traffic(int unit0, int port0) const;  // ports and trunks
    // ---- interfaces ----
    // A port blocked by an error condition (loop, flapping, BPDU guard)
    // keeps its link but carries no traffic.
    void set_error_blocked(int unit0, int port0, bool blocked);
    bool error_blocked(int unit0, int port0) const;
    // Link up/down notifications of a port or trunk (unit0 0, 512 + trunk0).
    bool trap_enabled(int unit0, int port0) const;
    // uptime_cs() when an interface last appeared or went away.
    uint32_t if_table_last_change() const;

    // LACP.  What a port's link partner announces; setting it (or
    // clearing it, or changing a port's LACP settings) lets the switch form
    // and dissolve its dynamic trunks.
    struct LacpPartner {
        uint8_t system[6] = {0x02, 0x00, 0x00, 0x00, 0x00, 0x01};
        int system_priority = 32768;
        int key = 1;
        int port = 1;
        int port_priority = 32768;
        bool short_timeout = false;
        bool aggregatable = true;
    };
    void lacp_set_partner(int unit0, int port0, const LacpPartner &partner);
    void lacp_clear_partner(int unit0, int port0);
    void lacp_enable(int unit0, int port0, bool enabled);
    void lacp_set_key(int unit0, int port0, int key);  // 1..65535
    // Counter SW_LACP_*; names: rx_lacpdu, rx_marker, rx_marker_response,
    // rx_unknown, rx_illegal, tx_lacpdu, tx_marker, tx_marker_response.
    void lacp_set_counter(int unit0, int port0, int counter, uint64_t value);
    static int lacp_counter_number(const std::string &name);  // throws Error
    sw_lacp_port_t lacp_port(int unit0, int port0) const;

    // ---- trap service ----
    // Trap destinations (at most SW_TRAP_DESTS), the UDP port they listen on
    // (162 unless set), whether notifications may leave this machine, and
    // what the service has sent.
    struct TrapDestInfo {
        int slot = 0;
        std::string address, community;
        int version = 0;    // SW_TRAP_V1 or SW_TRAP_V2C
        uint64_t sent = 0;  // datagrams sent to it
    };
    struct TrapInfo {
        int port = 0;
        std::vector<TrapDestInfo> destinations;  // slots in use, in slot order
        uint64_t notifications = 0;  // raised since the switch booted
        uint64_t failed = 0;         // datagrams the network refused
        uint64_t withheld = 0;       // datagrams for destinations beyond loopback
        bool beyond_loopback = false;
    };
    void trap_add(const std::string &address, const std::string &community = "public", int version = SW_TRAP_V2C);
    void trap_remove(const std::string &address);
    void set_trap_port(int port);
    // A simulated switch sends to loopback destinations only, and counts
    // the datagrams it withholds from the others, until this allows them.
    void set_trap_beyond_loopback(bool allowed);
    TrapInfo traps() const;
    // A management service of the platform (SW_SERVICE_*) refused a login:
    // the platform raises authenticationFailure.
    void report_login_failure(int service, const std::string &peer);
    // The RMON engine saw an alarm cross a threshold: the platform raises
    // risingAlarm or fallingAlarm.
    struct RmonAlarmNotice {
        int32_t alarm_index = 1;
        bool rising = true;
        std::vector<uint32_t> variable;  // the sampled object's OID
        int32_t sample_type = SW_RMON_DELTA;
        int32_t value = 0;
        int32_t threshold = 0;
    };
    void report_rmon_alarm(const RmonAlarmNotice &alarm);

    // ---- RMON engine ----
    // An alarm or event row of the engine, as the control tool gives it.
    struct RmonAlarm {
        int32_t index = 1;
        std::string variable;  // dotted OID of the sampled object
        int32_t interval = 5;  // seconds
        int32_t sample_type = SW_RMON_DELTA;
        int32_t startup = 3;   // 1 rising, 2 falling, 3 both
        int32_t rising = 0, falling = 0;
        int32_t rising_event = 0, falling_event = 0;
        std::string owner;
    };
    struct RmonEvent {
        int32_t index = 1;
        std::string description;
        bool log = true, trap = false;
        int32_t script = 0;  // command script number, 0 none
        std::string community, owner;
    };
    struct RmonInfo {
        struct Statistic {
            int32_t index, unit0, port0, status;
            std::string owner;
        };
        struct History {
            int32_t index, unit0, port0, status, interval, requested, granted, taken;
            std::string owner;
        };
        struct Alarm {
            RmonAlarm row;
            int32_t value;
            int last_event;  // 0 none, 1 rising, 2 falling
        };
        struct Event {
            RmonEvent row;
            uint32_t fired;
        };
        bool paused = false;
        std::vector<Statistic> statistics;
        std::vector<History> histories;
        std::vector<Alarm> alarms;
        std::vector<Event> events;
        std::vector<RmonAlarm> alarm_slots;  // the configuration's copies
        std::vector<RmonEvent> event_slots;
        uint32_t commands_run = 0;
        std::string last_command, last_script;
    };
    RmonInfo rmon() const;
    // The engine's thread in the agent stops (or resumes) sampling and
    // answering requests; while it is paused rmon_step() and the requests
    // below run in the calling process, with its callbacks.
    void rmon_pause(bool paused);
    // Rows made as the boot configuration makes them (valid at once).
    void rmon_add_statistic(int32_t index, int unit0, int port0, const std::string &owner = "");
    void rmon_add_history(int32_t index, int unit0, int port0, int interval_s, int buckets,
                          const std::string &owner = "");
    void rmon_add_alarm(const RmonAlarm &alarm);
    void rmon_add_event(const RmonEvent &event);
    void rmon_set_script(int number, const std::string &name, const std::string &commands, bool enabled = true);
    // A history row takes `count` samples now.
    void rmon_take_samples(int32_t index, int count);
    // One engine pass now (samples and alarms due), in this process.
    void rmon_step();
    // Requests answered by the engine through the agent's callbacks; the
    // callback's result (throws when no engine answers within the timeout).
    int rmon_fire_event(int32_t event_index);
    int rmon_restore_all();
    int rmon_clear_all();

    // ---- management services ----
    struct ServicesInfo {
        bool dhcp = false;                            // the address comes from DHCP
        uint32_t address = 0, mask = 0, gateway = 0;  // IPv4, host order
        uint32_t dns[2] = {};                         // name servers in use
        bool http = false, https = false, telnet = false, ssh = false;
        int http_port = 0, https_port = 0, ssh_timeout = 0;
        std::string ssh_rsa_key, ssh_dsa_key;  // "" none
        std::vector<std::string> filters[4];   // http, ssh, snmp, telnet: slots in use
        bool sntp = false;
        int sntp_interval = 0;
        std::vector<std::string> sntp_servers;
        bool syslog = false, remote_log = false;
        int flash_level = 0, ram_level = 0, remote_level = 0;
        int remote_facility = 0;  // configured
        int daemon_facility = 0;  // the log daemon's, as last handed over
        std::vector<std::string> log_servers;  // IPv4 and IPv6
    };
    // A setting or list of the services and what it accepts.
    struct ServiceSetting {
        std::string name, accepts;
    };
    ServicesInfo services() const;
    // By name (service_settings(), service_lists()); the value as text.
    void service_set(const std::string &setting, const std::string &value);
    void service_add(const std::string &list, const std::string &value);
    void service_remove(const std::string &list, const std::string &value);
    // SSH host keys: kind "rsa", "dsa" or "both"; made anew or deleted.
    void ssh_keys(const std::string &kind, bool create);
    static const std::vector<ServiceSetting> &service_settings();
    static const std::vector<ServiceSetting> &service_lists();

    // ---- port authentication ----
    struct Dot1xPortInfo {
        sw_dot1x_port_t status{};  // as status_dot1x_port answers it now
        bool supplicant = false;   // a supplicant is logged on
        int server = -1;           // RADIUS slot holding the port's request, -1 none
        uint32_t params[SW_DOT1X_PARAMS] = {};  // SW_DOT1X_* settings
    };
    struct RadiusServerInfo {
        int slot = 0;
        sw_radius_server_t server{};      // in_use 0: a free slot
        sw_radius_counters_t counters{};
        bool down = false;                // never answers (operator's choice)
    };
    // A supplicant logs on to a port as user, from mac; the authenticator
    // asks the RADIUS servers (see sim/README.md).
    void dot1x_start(int unit0, int port0, const std::string &user, const uint8_t mac[6]);
    // The RADIUS server holding the port's request accepts or rejects it.
    void dot1x_answer(int unit0, int port0, bool accept);
    void dot1x_logoff(int unit0, int port0);
    void radius_server_down(int slot, bool down);
    Dot1xPortInfo dot1x_port(int unit0, int port0) const;
    std::vector<RadiusServerInfo> radius_servers() const;

    // ---- file store, TFTP and restarts ----
    struct FilesInfo {
        sw_file_info_t firmware[SW_FIRMWARE_SLOTS] = {};
        sw_file_info_t config[SW_CONFIG_SLOTS] = {};
        uint32_t tftp_server = 0;  // host order, 0 none
        int tftp_port = 69;        // where the simulated switch finds the TFTP server
        std::string tftp_file;
        int tftp_config_slot = 0;
        int tftp_state = SW_TFTP_IDLE, tftp_action = 0;  // of the last transfer
        std::string tftp_error;   // why it failed
        uint32_t restarts = 0;    // restarts asked for
        int last_restart = 0;     // SW_RESTART_* of the last one
    };
    FilesInfo files() const;
    // A stored file's bytes (kind SW_FILE_*, slot from 0).
    std::vector<uint8_t> file_bytes(int kind, int slot) const;
    void file_store(int kind, int slot, const std::string &name, const std::vector<uint8_t> &bytes);
    // The UDP port the switch's TFTP transfers go to (69 unless a test
    // server listens elsewhere).
    void set_tftp_port(int port);

    // ---- packet filters ----
    struct FilterSettings {
        std::string name, rule;
        std::vector<std::pair<int, int>> ports;  // (unit0, port0) it is applied on
        uint64_t pps = 0;                        // packets it matches a second on each port
        int packet_bytes = 64;
    };
    // direction SW_FILTER_INGRESS or SW_FILTER_EGRESS, filter0 from 0; the
    // counts of a filter set anew start from zero.
    void filter_set(int direction, int filter0, const FilterSettings &settings);
    void filter_remove(int direction, int filter0);

    // ---- CFM delay measurement probes ----
    struct CfmProbeSettings {
        uint32_t id = 0;  // 1..SW_CFM_PROBE_MAX_ID
        int unit0 = 0, port0 = 0;  // the local MEP's port
        uint8_t target[6] = {};    // the remote MEP
        uint32_t delay_us = 100;   // the path's two-way delay at its least
        uint32_t jitter_us = 20;   // how far above it a measurement may lie
    };
    struct CfmProbeInfo {
        sw_cfm_probe_t probe{};
        sw_cfm_dm_result_t result{};  // as bcmd_get_cfm_dm_result answers it now
        uint32_t delay_us = 0, jitter_us = 0;
    };
    // A new probe; its number must be free.
    void cfm_probe_add(const CfmProbeSettings &settings);
    void cfm_probe_remove(uint32_t id);
    std::vector<CfmProbeInfo> cfm_probes() const;

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;

public:
    // ---- layer-2 protocols ----
    // Spanning tree: settings, where the tree converged, topology changes.
    // Times in hundredths of a second.
    struct StpInfo {
        bool enabled = false;
        int force_mode = 0;
        int prio = 0, max_age = 0, hello = 0, fwd_delay = 0;
        bool root_bridge = true;  // this bridge is the root
        int root_prio = 0;
        uint8_t root_mac[6] = {};
        uint32_t root_cost = 0;
        int root_unit0 = -1, root_port0 = -1;  // where the root is reached
        uint32_t changes = 0;
    };
    struct StpPortInfo {
        int state = 0;  // SW_STP_*, as the platform reports it
        bool forced = false;  // set by stp_set_port_state, not derived
        bool enabled = false, edge = false;
        int linktype = 0, prio = 0;
        uint32_t cost = 0;
    };
    // Settings of one port; a negative value leaves it as it is.
    struct StpPortSettings {
        int enabled = -1, edge = -1, linktype = -1, prio = -1;
        int64_t cost = -1;
    };
    // A root elsewhere in the network, heard on (unit0, port0).
    struct StpRoot {
        int prio = 32768;
        uint8_t mac[6] = {};
        uint32_t cost = 0;  // root path cost through that port
        int unit0 = 0, port0 = 0;
        int max_age = 2000, hello = 200, fwd_delay = 1500;
    };
    void stp_topology_change();
    void stp_set_port_state(int unit0, int port0, int state);  // -1: follow link and settings
    void stp_set_root(const StpRoot &root);
    void stp_become_root();
    void stp_set_port(int unit0, int port0, const StpPortSettings &settings);
    StpInfo stp() const;
    StpPortInfo stp_port(int unit0, int port0) const;

    // IGMP snooping: static groups (user ports) and multicast router ports.
    struct IgmpGroupInfo {
        int vid = 0;
        uint32_t group = 0;  // IPv4, host order
        std::vector<std::pair<int, int>> ports;  // (unit0, port0)
    };
    void igmp_set_group_port(int vid, uint32_t group, int unit0, int port0, bool member);
    void igmp_set_router_port(int vid, int unit0, int port0, bool on);
    std::vector<IgmpGroupInfo> igmp_groups() const;
    std::vector<std::pair<int, int>> igmp_router_ports(int vid) const;

    // Ring protection domains 0..63 and their states (the platform's codes).
    struct EapsInfo {
        bool created = false;
        bool master = false;
        std::string name;
        uint32_t state = 0;
    };
    void eaps_create(int id, const std::string &name, bool master, uint32_t state = 0);
    void eaps_delete(int id);
    void eaps_set_state(int id, uint32_t state);
    EapsInfo eaps(int id) const;

    // ---- chassis ----
    // Power supplies (kPsu, by bay) and fan modules (kFan, by position) of
    // a unit: fitted and working (SW_MODULE_OK), failed (SW_MODULE_FAILED:
    // no output, fan stopped) or taken out (SW_MODULE_ABSENT).  An empty
    // model keeps the position's model.
    enum ModuleKind : int { kPsu = 0, kFan = 1 };
    void set_module(ModuleKind kind, int unit0, int position0, int state, const std::string &model = "");
    sw_module_status_t module(ModuleKind kind, int unit0, int position0) const;
    void set_alarm_input(int unit0, int input0, bool raised);
    // An alarm output energised whatever the alarms say (forced), or left
    // to them.
    void set_alarm_output(int output0, bool forced);
    // Processor and memory load of a unit, percent: the base and how far the
    // readings swing around it either way (0: steady).
    struct Load {
        uint32_t cpu = 20, mem = 40, cpu_swing = 5, mem_swing = 1;
    };
    void set_load(int unit0, const Load &load);
    void set_temperature(int unit0, int celsius);  // with every fan running
    // The switch booted `cs` hundredths of a second ago.
    void set_uptime_cs(uint64_t cs);
    // How long a count of a unit's address table takes; while `hold` is set
    // counts wait until it is cleared.
    void set_mac_summary(uint32_t delay_ms, bool hold);
    // Device information of the status block.
    struct DeviceInfo {
        std::string boot_version, fw_date;  // fw_date as "Tue Mar 02 14:05:00 UTC 2021"
        uint64_t serial_no = 0;
        uint32_t model_word = 0;
    };
    void set_device_info(const DeviceInfo &info);
    DeviceInfo device_info() const;
    sw_chassis_info_t chassis() const;
    // What the chassis calls answer for a present unit now.
    struct UnitEnvironment {
        int mpu_role = SW_MPU_NONE;
        int temperature_c = 0;
        uint32_t cpu = 0, mem = 0;   // percent
        uint32_t alarms_raised = 0;  // bit i: alarm input i + 1
    };
    UnitEnvironment environment(int unit0) const;
    bool alarm_output(int output0) const;  // energised now

    // ---- LLDP ----
    // The neighbours heard on the user ports and on the management port,
    // which the calls below address as unit0 kLldpMgmtUnit (port0 0).
    static constexpr int kLldpMgmtUnit = -1;
    // A neighbour as it announces itself.  Identifiers and addresses are
    // octets: a MAC chassis ID (subtype 4) is its six octets.
    struct LldpNeighbour {
        int chassis_subtype = 4;        // 1..7 (4 MAC address, 7 locally assigned)
        std::string chassis_id;         // 1..255 octets
        int port_subtype = 5;           // 1..7 (3 MAC address, 5 interface name, 7 local)
        std::string port_id;            // 1..255 octets
        std::string port_desc, sys_name, sys_desc;  // texts of up to 255 characters
        uint16_t caps_supported = 0;    // bit k: capability k (0 other, 2 bridge, 4 router, 7 station)
        uint16_t caps_enabled = 0;
        bool has_mgmt = false;          // announces a management address
        int mgmt_subtype = 1;           // address family: 1 IPv4, 2 IPv6, 6 MAC
        std::string mgmt_addr;          // 1..31 octets
        int mgmt_if_subtype = 2;        // 1 unknown, 2 ifIndex, 3 system port number
        int32_t mgmt_if_id = 0;
        int unknown_tlv_type = 0;       // a TLV the switch does not know: 9..127; 0 none
        std::string unknown_tlv_info;   // up to 511 octets
        int rx_interval_s = 30;         // how often it sends (1..3600 s)
        // Kept by the switch (ignored when hearing or changing one):
        int32_t remote_index = 0;
        uint32_t time_mark = 0;         // uptime in 1/100 s when heard first or changed last
    };
    // Hears a neighbour on a port: one with the same chassis and port IDs
    // there is updated (its time mark moves if anything changed), else it is
    // added.  Returns its remote index.
    int32_t lldp_hear(int unit0, int port0, const LldpNeighbour &neighbour);
    // Replaces what a neighbour announces; its time mark moves.
    void lldp_change(int unit0, int port0, int32_t remote_index, const LldpNeighbour &neighbour);
    // remote_index 0: all neighbours of the port.  `aged`: they timed out
    // (counted as ageouts) rather than said goodbye.
    void lldp_remove(int unit0, int port0, int32_t remote_index, bool aged = false);
    std::vector<LldpNeighbour> lldp_neighbours(int unit0, int port0) const;  // by remote index
    // Imports what `lldpcli -f json show neighbors details` (or -f json0)
    // printed: the neighbours of lldpd's interface `iface` are heard on the
    // port; iface "" takes every interface.  Returns how many were heard.
    struct LldpImportTarget {
        std::string iface;
        int unit0 = 0, port0 = 0;
    };
    int lldp_import(const std::string &json_text, const std::vector<LldpImportTarget> &targets);
    // ---- routing ----
    // Addresses of VLAN interfaces (each brings its connected route), the
    // routing table, OSPF neighbours and LSAs, VRRP routers.  Addresses are
    // IPv4 in host order.
    struct Route {
        uint32_t dest = 0;
        int prefix_len = 0;
        uint32_t next_hop = 0;        // 0.0.0.0: none (connected, blackhole)
        int vid = 0;                  // outgoing VLAN interface; 0: found from the next hop
        int source = SW_ROUTE_STATIC; // SW_ROUTE_*
        uint32_t metric = 0;
    };
    void ip_addr_add(int vid, uint32_t addr, int prefix_len);
    void ip_addr_remove(uint32_t addr);
    std::vector<sw_ip_iface_t> ip_addrs() const;
    void route_add(const Route &route);  // replaces a route with the same prefix and next hop
    void route_remove(uint32_t dest, int prefix_len, uint32_t next_hop);
    std::vector<sw_route_t> routes() const;
    void ospf_set_neighbor_state(uint32_t addr, int state);  // SW_OSPF_NBR_*
    std::vector<sw_ospf_nbr_t> ospf_neighbors() const;
    // Every LSA (or those of one type, type 0: all) grows `seconds` older,
    // up to the maximum age of 3600 s.
    void ospf_age_lsas(uint32_t seconds, uint32_t type = 0);
    std::vector<sw_ospf_lsa_t> ospf_lsas() const;
    void vrrp_set_state(int vid, int vrid, int state);  // SW_VRRP_*
    std::vector<sw_vrrp_router_t> vrrp_routers() const;
    // Routes and OSPF neighbours as FRRouting prints them (vtysh's "show ip
    // route json" and "show ip ospf neighbor json"; either text may be empty).
    // The routes replace the routing table and the neighbours the OSPF
    // neighbours.  An interface is mapped to its VLAN by `vlans` (name to
    // VID), else by a name ending in the VID ("vlan10", "eth0.10").
    struct FrrImport {
        int routes = 0, neighbors = 0, skipped = 0;
    };
    FrrImport import_frr(const std::string &routes_json, const std::string &neighbors_json,
                         const std::vector<std::pair<std::string, int>> &vlans = {});
};

// The names of the platform calls that faults can be armed on.
const std::vector<std::string> &faultable_calls();

// Crash testing.  The next time this process reaches the named step of a
// write to the shared state (crash_steps(): "counter-copying", "lock-held",
// ...), it sends itself `signal`: SIGKILL (9) to die there, SIGSTOP (19) to
// freeze there.  An empty step disarms.  The environment variable
// SWSIM_CRASH_AT="STEP" or "STEP:SIGNAL" arms a step as the library loads,
// for processes such as swctl and snmpd.
void crash_at(const std::string &step, int signal = 9);
const std::vector<std::string> &crash_steps();

}  // namespace swsim
