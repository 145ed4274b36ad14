// The per-port traffic controls of the simulated switch: the platform calls
// of swplatform/traffic.h (namespace calls, each taking the View first like
// the calls of contract.cpp), the derived queue counters and the changes a
// control handle or a scenario makes.
#pragma once

#include <cstdint>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::traffic {

namespace calls {
int cfg_get_port_rate_ingress(const View &v, int unit0, int port0, uint32_t *kbps);
int cfg_set_port_rate_ingress(const View &v, int unit0, int port0, uint32_t kbps);
int cfg_get_port_burst_ingress(const View &v, int unit0, int port0, uint32_t *kbytes);
int cfg_set_port_burst_ingress(const View &v, int unit0, int port0, uint32_t kbytes);
int cfg_set_default_port_rate_ingress(const View &v, int unit0, int port0);
int cfg_set_default_port_burst_ingress(const View &v, int unit0, int port0);
int cfg_get_port_rate_egress(const View &v, int unit0, int port0, uint32_t *kbps);
int cfg_set_port_rate_egress(const View &v, int unit0, int port0, uint32_t kbps);
int cfg_get_port_burst_egress(const View &v, int unit0, int port0, uint32_t *kbytes);
int cfg_set_port_burst_egress(const View &v, int unit0, int port0, uint32_t kbytes);
int cfg_set_default_port_rate_egress(const View &v, int unit0, int port0);
int cfg_set_default_port_burst_egress(const View &v, int unit0, int port0);
int cfg_get_port_rate_bcast_enable(const View &v, int unit0, int port0, uint8_t *enabled);
int cfg_set_port_rate_bcast_enable(const View &v, int unit0, int port0, uint8_t enabled);
int cfg_get_port_rate_bcast_value(const View &v, int unit0, int port0, uint32_t *pps);
int cfg_set_port_rate_bcast_value(const View &v, int unit0, int port0, uint32_t pps);
int cfg_get_queue_pkts_cnt(const View &v, int unit0, int port0, uint8_t *area, size_t size);
int cfg_get_queue_bytes_cnt(const View &v, int unit0, int port0, uint8_t *area, size_t size);
int cfg_get_queue_dropped_pkts(const View &v, int unit0, int port0, uint8_t *area, size_t size);
int cfg_get_queue_dropped_bytes(const View &v, int unit0, int port0, uint8_t *area, size_t size);
int cfg_get_port_mirror(const View &v, int unit0, int port0, int *mode);
int cfg_set_port_mirror(const View &v, int unit0, int port0, int mode);
int cfg_get_mirror_to(const View &v, int *unit0, int *port0);
int cfg_set_mirror_to(const View &v, int unit0, int port0);
}  // namespace calls

// Queue counter `kind` (Switch::QueueCounter) of queue q of a port or
// configured trunk (interface number of the model).
uint64_t queue_counter(const View &v, int iface, int kind, int q);

// Changes from outside; they throw Error naming what is wrong.
namespace ops {
void set_transceiver_readings(View &v, int unit0, int port0, const Ddm &readings);
void set_transceiver_diagnostics(View &v, int unit0, int port0, bool available);
void set_rate_limit(View &v, int unit0, int port0, int direction, uint32_t kbps, uint32_t burst_kb);
void set_storm_control(View &v, int unit0, int port0, bool enabled, uint32_t pps);
void set_mirror(View &v, int unit0, int port0, int mode);
void set_mirror_to(View &v, int unit0, int port0);  // port0 < 0: none
void set_queue_counter(View &v, int unit0, int port0, int kind, int q, uint64_t value);
}  // namespace ops

Switch::TransceiverInfo transceiver_info(const View &v, int unit0, int port0);
Switch::TrafficInfo traffic_info(const View &v, int unit0, int port0);

}  // namespace swsim::traffic
