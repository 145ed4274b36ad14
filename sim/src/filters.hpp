// Packet filters of the simulated switch and their counters, which move
// with time on the ports a filter is applied on.  The platform calls of
// swplatform/filters.h are in namespace calls, the View first like the
// calls of contract.cpp.
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

namespace swsim::filters {

void defaults(View &v);
// The "filters" part of a scenario (scenarios/README.md); `select` turns a
// port selection into (unit0, port0) pairs.
void build(View &v, const Field &f, const std::function<std::vector<std::pair<int, int>>(const Field &)> &select);

namespace ops {
// Puts a filter into a slot (replacing what was there; its counts start
// from zero) on the ports given.
void set(View &v, int direction, int filter0, const Switch::FilterSettings &s);
void remove(View &v, int direction, int filter0);
}  // namespace ops

std::string damage(const View &v);

namespace calls {
int cfg_get_filter(const View &v, int direction, int filter0, sw_filter_t *out);
int cfg_filter_on_port(const View &v, int direction, int filter0, int unit0, int port0);
int bcmd_get_filter_counter(const View &v, int direction, int filter0, int unit0, int port0, uint64_t *packets,
                            uint64_t *octets);
}  // namespace calls

}  // namespace swsim::filters

// The catalogue lines of the calls above, for contract.cpp:
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_FILTERS_CALLS(X)                                                                               \
    X(int, cfg_get_filter, (int direction, int filter0, sw_filter_t *out), (direction, filter0, out), -1)     \
    X(int, cfg_filter_on_port, (int direction, int filter0, int unit0, int port0),                            \
      (direction, filter0, unit0, port0), -1)                                                                 \
    X(int, bcmd_get_filter_counter,                                                                           \
      (int direction, int filter0, int unit0, int port0, uint64_t *packets, uint64_t *octets),                \
      (direction, filter0, unit0, port0, packets, octets), -1)
