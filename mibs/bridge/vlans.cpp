// Q-BRIDGE VLAN tables and scalars and the private vlanTable.
//
// VLAN rows are added from the platform's VLAN set only when the platform
// has flagged a change for the table (a byte of its own per table in the
// status block): a full scan of 4094 VLANs on every request would cost more
// than the request.  VLAN 1 is added every time.  Rows of VLANs that have
// gone are removed when a request next meets them.
#include <cstring>
#include <string>

#include "agent/ifindex.hpp"
#include "agent/vlan_members.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

namespace mask = snmpapi::vlan_mask;

constexpr int kDefaultVlan = 1;

bool vlan_exists(uint32_t vid) { return vid <= SW_MAX_VLAN_ID && cfg_vlan_exists(static_cast<int>(vid)) > 0; }

// Adds VLAN 1, then, when the table's change flag is up, every existing VLAN,
// and lowers the flag.
template <class Add>
int populate_vlans(uint8_t sw_status_t::*changed, Add add) {
    if (vlan_exists(kDefaultVlan)) add(kDefaultVlan);
    sw_status_t *status = get_status();
    if (status == nullptr || status->*changed == 0) return 0;
    for (uint32_t vid = 1; vid <= SW_MAX_VLAN_ID; ++vid)
        if (vlan_exists(vid)) add(vid);
    status->*changed = 0;
    return 0;
}

// The row check of the VLAN tables: a VLAN that has gone loses its row.
template <class Remove>
int vlan_row_exists(uint32_t vid, Remove remove) {
    if (vlan_exists(vid)) return 1;
    remove();
    return 0;
}

// Port settings are addressed as the platform's (unit0, port0); a trunk is
// unit0 0, port0 512 + trunk0.
struct PortAddress {
    int unit0, port0;
};
PortAddress port_address(int32_t i) { return {ifindex_to_unit0(i), ifindex_to_port0(i)}; }

// Before a port setting is written, indexes 512 .. 639 are checked as trunks:
// 513 .. 639 as trunk i - 513 and 512 as trunk 511 (512 is unit 8's last port
// elsewhere, but it is checked here as the trunk range is checked by the
// interface texts).  -1 when that trunk does not exist.
int trunk_write_check(int32_t i) {
    if (i < 512 || i > 639) return 0;
    const int trunk0 = i == 512 ? 511 : i - 513;
    return cfg_check_trunk(trunk0) > 0 ? 0 : -1;
}

// Reads an int port setting through `get`, 0 on failure.
int port_setting(int32_t i, int (*get)(int, int, int *)) {
    const PortAddress a = port_address(i);
    int value = 0;
    return get(a.unit0, a.port0, &value) == 0 ? value : 0;
}

// Writes an int port setting through `set` after the trunk check.
int write_port_setting(int32_t i, int (*set)(int, int, int), int value) {
    if (trunk_write_check(i) < 0) return -1;
    const PortAddress a = port_address(i);
    return set(a.unit0, a.port0, value);
}

int32_t truth(int on) { return on != 0 ? 1 : 2; }  // true/enabled : false/disabled

enum RowStatus : int32_t { kActive = 1, kNotInService = 2, kNotReady = 3, kCreateAndGo = 4, kCreateAndWait = 5, kDestroy = 6 };

}  // namespace

extern "C" {

// ---- dot1qVlanCurrentTable --------------------------------------------------

int init_index_dot1qVlanCurrentTable(void *(*create)(uint32_t, uint32_t)) {
    return populate_vlans(&sw_status_t::vlan_changed_current, [&](uint32_t vid) { create(0, vid); });
}
int exists_entry_dot1qVlanCurrentTable(uint32_t time_mark, uint32_t vid) {
    return vlan_row_exists(vid, [&] { dot1qVlanCurrentTable_removeEntry(time_mark, vid); });
}

// A VLAN's filtering database is its own: the FDB id is the VID.
uint32_t get_dot1qVlanFdbId(uint32_t, uint32_t vid) { return vid; }
const uint8_t *get_dot1qVlanCurrentEgressPorts(uint32_t, uint32_t vid, size_t *len) {
    return snmp_vlan_get_member_bitmap(vid, mask::kCurrentEgress, len);
}
const uint8_t *get_dot1qVlanCurrentUntaggedPorts(uint32_t, uint32_t vid, size_t *len) {
    return snmp_vlan_get_member_bitmap(vid, mask::kUntagged, len);
}
// 2 permanent, 3 dynamicGvrp; 0 for a VLAN that has gone.
int32_t get_dot1qVlanStatus(uint32_t, uint32_t vid) {
    if (!vlan_exists(vid)) return 0;
    return cfg_is_vlan_dynamic(static_cast<int>(vid)) > 0 ? 3 : 2;
}
uint32_t get_dot1qVlanCreationTime(uint32_t, uint32_t) { return 0; }

// ---- dot1qVlanStaticTable ---------------------------------------------------

int init_index_dot1qVlanStaticTable(void *(*create)(uint32_t)) {
    return populate_vlans(&sw_status_t::vlan_changed_static, [&](uint32_t vid) { create(vid); });
}
int exists_entry_dot1qVlanStaticTable(uint32_t vid) {
    return vlan_row_exists(vid, [&] { dot1qVlanStaticTable_removeEntry(vid); });
}

const uint8_t *get_dot1qVlanStaticName(uint32_t vid, size_t *len) {
    static char name[SW_TEXT_SIZE];
    name[0] = '\0';
    if (cfg_get_vlan_name(static_cast<int>(vid), name, sizeof name) < 0) name[0] = '\0';
    name[sizeof name - 1] = '\0';
    *len = std::strlen(name);
    return reinterpret_cast<const uint8_t *>(name);
}
int set_dot1qVlanStaticName(uint32_t vid, const uint8_t *bytes, size_t len) {
    const std::string name = received_text(bytes, len);
    if (!vlan_exists(vid)) return -1;
    return cfg_set_vlan_name(static_cast<int>(vid), name.c_str());
}

const uint8_t *get_dot1qVlanStaticEgressPorts(uint32_t vid, size_t *len) {
    return snmp_vlan_get_member_bitmap(vid, mask::kStaticEgress, len);
}
// A port added to the egress list becomes a tagged member unless it is a
// member already (an untagged member stays untagged).
int set_dot1qVlanStaticEgressPorts(uint32_t vid, const uint8_t *octets, size_t len) {
    return snmp_vlan_set_member_bitmap(vid, mask::kStaticEgress, mask::kStaticEgress, SW_VLAN_TAGGED, octets, len);
}
const uint8_t *get_dot1qVlanForbiddenEgressPorts(uint32_t vid, size_t *len) {
    return snmp_vlan_get_member_bitmap(vid, mask::kForbidden, len);
}
int set_dot1qVlanForbiddenEgressPorts(uint32_t vid, const uint8_t *octets, size_t len) {
    return snmp_vlan_set_member_bitmap(vid, 0, mask::kForbidden, SW_VLAN_FORBIDDEN, octets, len);
}
const uint8_t *get_dot1qVlanStaticUntaggedPorts(uint32_t vid, size_t *len) {
    return snmp_vlan_get_member_bitmap(vid, mask::kUntagged, len);
}
int set_dot1qVlanStaticUntaggedPorts(uint32_t vid, const uint8_t *octets, size_t len) {
    return snmp_vlan_set_member_bitmap(vid, 0, SW_VLAN_UNTAGGED, SW_VLAN_UNTAGGED, octets, len);
}

int32_t get_dot1qVlanStaticRowStatus(uint32_t vid) {
    return cfg_vlan_is_active(static_cast<int>(vid)) > 0 ? kActive : kNotReady;
}

// The platform creates and destroys the VLAN; the row follows at the next
// population (or row check).
int set_dot1qVlanStaticRowStatus(uint32_t vid, int32_t status) {
    const int v = static_cast<int>(vid);
    switch (status) {
    case kActive: return vlan_exists(vid) ? cfg_vlan_enable(v) : -1;
    case kNotInService: return vlan_exists(vid) ? cfg_vlan_disable(v) : -1;
    case kCreateAndGo: {
        const int created = cfg_vlan_create(v, 0, 0);
        return created + cfg_vlan_enable(v);
    }
    case kCreateAndWait: return cfg_vlan_create(v, 0, 0);
    case kDestroy:
        if (cfg_vlan_is_active(v) > 0) cfg_vlan_disable(v);
        return cfg_vlan_destroy(v);
    default: return -1;  // notReady is not a state a manager can ask for
    }
}

// ---- vlanTable (private) ----------------------------------------------------

int init_index_vlanTable(void *(*create)(uint32_t)) {
    return populate_vlans(&sw_status_t::vlan_changed_private, [&](uint32_t vid) { create(vid); });
}
int exists_entry_vlanTable(uint32_t vid) {
    return vlan_row_exists(vid, [&] { vlanTable_removeEntry(vid); });
}

// 1 set by the user, 2 from a DHCP client; only the management VLAN (1) has
// an address of the switch's own.
int32_t get_vlanAddressMethod(uint32_t vid) {
    if (vid != kDefaultVlan) return 1;
    return cfg_get_vlan_dhcp_client(kDefaultVlan) > 0 ? 2 : 1;
}
int set_vlanAddressMethod(uint32_t vid, int32_t method) {
    if (vid != kDefaultVlan) return -1;
    if (method == 2) return cfg_set_vlan_dhcp_client(1);
    if (method == 1) return cfg_set_vlan_dhcp_client(0);
    return -1;
}

// ---- dot1qPortVlanTable -----------------------------------------------------

int init_index_dot1qPortVlanTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_dot1qPortVlanTable(int32_t i) { return ifindex_row_exists(i, dot1qPortVlanTable_removeEntry); }

uint32_t get_dot1qPvid(int32_t i) { return static_cast<uint32_t>(port_setting(i, cfg_get_pvid)); }
int set_dot1qPvid(int32_t i, uint32_t pvid) { return write_port_setting(i, cfg_set_pvid, static_cast<int>(pvid)); }

// Discard modes: 0 admit all, 2 discard untagged.  1 admitAll, 2 admitOnlyVlanTagged.
int32_t get_dot1qPortAcceptableFrameTypes(int32_t i) {
    switch (port_setting(i, cfg_get_port_discard)) {
    case 0: return 1;
    case 2: return 2;
    default: return 0;
    }
}
int set_dot1qPortAcceptableFrameTypes(int32_t i, int32_t types) {
    if (trunk_write_check(i) < 0) return -1;
    if (types != 1 && types != 2) return 0;  // nothing to change
    const PortAddress a = port_address(i);
    return cfg_set_port_discard(a.unit0, a.port0, types == 2 ? 2 : 0);
}

int32_t get_dot1qPortIngressFiltering(int32_t i) { return truth(port_setting(i, cfg_get_ingress_filtering)); }
int set_dot1qPortIngressFiltering(int32_t i, int32_t on) {
    return write_port_setting(i, cfg_set_ingress_filtering, on == 2 ? 0 : 1);
}

int32_t get_dot1qPortGvrpStatus(int32_t i) { return truth(port_setting(i, cfg_get_gvrp_enable_port)); }
// Any non-zero value enables GVRP on the port, 2 (disabled) included; only 0
// disables it.  Managers of this switch rely on it as it is.
int set_dot1qPortGvrpStatus(int32_t i, int32_t on) {
    return write_port_setting(i, cfg_set_gvrp_enable_port, on != 0 ? 1 : 0);
}

uint32_t get_dot1qPortGvrpFailedRegistrations(int32_t) { return 0; }
const uint8_t *get_dot1qPortGvrpLastPduOrigin(int32_t, size_t *) { return nullptr; }

// ---- Scalars ----------------------------------------------------------------

int32_t get_dot1qVlanVersionNumber(void) { return 1; }
int32_t get_dot1qMaxVlanId(void) { return SW_MAX_VLAN_ID; }
uint32_t get_dot1qMaxSupportedVlans(void) { return SW_MAX_VLAN_ID; }

uint32_t get_dot1qNumVlans(void) {
    uint32_t n = 0;
    for (uint32_t vid = 1; vid <= SW_MAX_VLAN_ID; ++vid) n += vlan_exists(vid);
    return n;
}

// The lowest VID not in use; 0 when every VID is.
int32_t get_dot1qNextFreeLocalVlanIndex(void) {
    for (uint32_t vid = 1; vid <= SW_MAX_VLAN_ID; ++vid)
        if (!vlan_exists(vid)) return static_cast<int32_t>(vid);
    return 0;
}

uint32_t get_dot1qVlanNumDeletes(void) { return 0; }

int32_t get_dot1qGvrpStatus(void) { return cfg_get_gvrp_enable() > 0 ? 1 : 2; }
int set_dot1qGvrpStatus(int32_t status) { return cfg_set_gvrp_enable(status == 2 || status == 0 ? 0 : 1); }

}  // extern "C"
