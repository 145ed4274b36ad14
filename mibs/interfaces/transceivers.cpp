// ddTransceiversTable: the digital diagnostics of the pluggable transceivers
// fitted in the ports: temperature, supply voltage, optical power each way
// and laser bias, as display text and as scaled integers.
//
// The platform keeps one diagnostics record per port in the status block,
// already in the units used here (whole degrees Celsius, 100 microvolts,
// 0.1 microwatt, 0.1 milliampere); a port has diagnostics only while both of
// its transceiver flag bytes are set.  Rows are the ports of present units
// that have them; trunks have none.
#include <cmath>
#include <cstdio>
#include <cstring>

#include "agent/ifindex.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

// Every text column is built in a 10-byte area of its own.
constexpr size_t kTextSize = 10;
using Text = char[kTextSize];

// The status record of a port, or null for an index that names no port
// record (trunks, VLAN interfaces, indexes beyond the eighth unit).
const sw_port_status_t *port_record(int32_t i) {
    const int32_t unit0 = ifindex_to_unit0(i), port0 = ifindex_to_port0(i);
    if (unit0 < 0 || unit0 >= SW_MAX_UNITS || port0 < 0 || port0 >= SW_PORTS_PER_UNIT) return nullptr;
    const sw_status_t *st = get_status();
    return st != nullptr ? &st->units[unit0].ports[port0] : nullptr;
}

bool has_diagnostics(const sw_port_status_t *p) { return p != nullptr && p->sfp_present != 0 && p->sfp_ddm != 0; }

// The readings of a port; an index without a record reads all zero.
sw_port_status_t readings(int32_t i) {
    const sw_port_status_t *p = port_record(i);
    return p != nullptr ? *p : sw_port_status_t{};
}

template <class... Args>
const uint8_t *format(Text &buf, size_t *len, const char *fmt, Args... args) {
    if (std::snprintf(buf, kTextSize, fmt, args...) < 0) buf[0] = '\0';
    *len = std::strlen(buf);
    return reinterpret_cast<const uint8_t *>(buf);
}

// Optical power p in 0.1 microwatt as dBm (p / 10000 is milliwatts).  No
// light at all reads 0.0, like 1 mW.
double power_dbm(uint16_t p) { return p == 0 ? 0.0 : 10.0 * std::log10(p / 10000.0); }

// The same in tenths of a dBm, computed in single precision and truncated
// toward zero.
int32_t power_tenth_dbm(uint16_t p) {
    if (p == 0) return 0;
    return static_cast<int32_t>(100.0f * std::log10(static_cast<float>(p) / 10000.0f));
}

const uint8_t *power_text(Text &buf, uint16_t p, size_t *len) { return format(buf, len, "%.1fdBm", power_dbm(p)); }

}  // namespace

extern "C" {

int init_index_ddTransceiversTable(void *(*create)(int32_t)) {
    for (int unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (!ifindex_unit_present(unit0)) continue;
        for (int port0 = 0; port0 < unit_port_count(unit0); ++port0) {
            const int32_t i = port_to_ifindex(unit0, port0);
            if (has_diagnostics(port_record(i))) create(i);
        }
    }
    return 0;
}

// A pulled transceiver's row goes at the first request that meets it.
int exists_entry_ddTransceiversTable(int32_t i) {
    if (has_diagnostics(port_record(i))) return 1;
    ddTransceiversTable_removeEntry(i);
    return 0;
}

const uint8_t *get_ddTransceiversTemperature(int32_t i, size_t *len) {
    static Text text;
    return format(text, len, "%dC", int(readings(i).ddm_temperature));
}

// Volts with one decimal, truncated.
const uint8_t *get_ddTransceiversVcc3v3(int32_t i, size_t *len) {
    static Text text;
    const unsigned v = readings(i).ddm_voltage;
    return format(text, len, "%u.%01uV", v / 10000, (v % 10000) / 1000);
}

const uint8_t *get_ddTransceiversRxPower(int32_t i, size_t *len) {
    static Text text;
    return power_text(text, readings(i).ddm_rx_power, len);
}

const uint8_t *get_ddTransceiversTxPower(int32_t i, size_t *len) {
    static Text text;
    return power_text(text, readings(i).ddm_tx_power, len);
}

const uint8_t *get_ddTransceiversTxBias(int32_t i, size_t *len) {
    static Text text;
    const unsigned b = readings(i).ddm_bias;
    return format(text, len, "%u.%01umA", b / 10, b % 10);
}

int32_t get_ddTransceiversTemperatureValue(int32_t i) { return readings(i).ddm_temperature; }
// Tenths of a volt.
int32_t get_ddTransceiversVcc3v3Value(int32_t i) { return readings(i).ddm_voltage / 1000; }
int32_t get_ddTransceiversRxPowerValue(int32_t i) { return power_tenth_dbm(readings(i).ddm_rx_power); }
int32_t get_ddTransceiversTxPowerValue(int32_t i) { return power_tenth_dbm(readings(i).ddm_tx_power); }
// Tenths of a milliampere.
int32_t get_ddTransceiversTxBiasValue(int32_t i) { return readings(i).ddm_bias; }

}  // extern "C"
