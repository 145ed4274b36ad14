// CFM delay measurement probes of the simulated switch.  Each probe sends a
// delay measurement message once a second from its port; the delay of
// measurement k (k whole seconds of uptime) is the path's delay plus a
// jitter drawn from the probe's number and k alone, so that a reading is
// the same for everyone who asks within that second and after a restart
// at the same uptime.  A probe whose port's link is down (its unit absent
// included) has no measurement.  The platform calls of swplatform/cfm.h are
// in namespace calls, the View first like the calls of contract.cpp.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim {
class Field;
}

namespace swsim::cfm {

void defaults(View &v);
// The "cfm" part of a scenario (scenarios/README.md); `select` turns a port
// selection into (unit0, port0) pairs.
void build(View &v, const Field &f, const std::function<std::vector<std::pair<int, int>>(const Field &)> &select);

namespace ops {
void add(View &v, const Switch::CfmProbeSettings &s);
void remove(View &v, uint32_t id);
}  // namespace ops

std::vector<Switch::CfmProbeInfo> info(const View &v);

std::string damage(const View &v);

namespace calls {
int cfg_get_cfm_probe(const View &v, uint32_t id, sw_cfm_probe_t *out);
int cfg_get_cfm_probe_next(const View &v, uint32_t after, sw_cfm_probe_t *out);
int bcmd_get_cfm_dm_result(const View &v, uint32_t id, sw_cfm_dm_result_t *out);
}  // namespace calls

}  // namespace swsim::cfm

// The catalogue lines of the calls above, for contract.cpp:
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_CFM_CALLS(X)                                                                                   \
    X(int, cfg_get_cfm_probe, (uint32_t id, sw_cfm_probe_t *out), (id, out), -1)                              \
    X(int, cfg_get_cfm_probe_next, (uint32_t after, sw_cfm_probe_t *out), (after, out), -1)                   \
    X(int, bcmd_get_cfm_dm_result, (uint32_t id, sw_cfm_dm_result_t *out), (id, out), -1)
