// libsnmpdAPI exports every function of its conventions, with C linkage and
// its exact name: the catalogues say which.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> expected_exports() {
    std::vector<std::string> names = {
        "init_libsnmpdAPI", "init_scalars",   "ifindex_is_trunk", "ifindex_is_vlan",
        "ifindex_to_unit0", "ifindex_to_port0", "ifindex_to_trunk0", "port_to_ifindex",
        "trunk_to_ifindex", "get_ifName",     "get_ifDescr", "snmp_vlan_get_member_bitmap",
        "snmp_vlan_set_member_bitmap",
        // The routing tables that answer GET and GETNEXT themselves.
        "init_ipCidrRouteTable", "init_inetCidrRouteTable", "init_rip2Table", "init_rip2IfStatTable",
        "init_rip2PeerTable", "init_ospfTables",
    };
#define SA_X_RW(name) names.push_back("set_" #name);
#define SA_X_RO(name)
#define SA_X_COMMON_ON(name, access) \
    names.push_back("handle_" #name); \
    names.push_back("get_" #name);    \
    SA_X_##access(name)
#define SA_X_CHASSIS_ON(name, access) \
    names.push_back("handle_" #name); \
    names.push_back("get_" #name);
#define SA_X_COMMON_LATER(name, access)
#define SA_X_CHASSIS_LATER(name, access)
#define SA_X_OSPF_LATER(name, access)
#define SA_X_RIP_LATER(name, access)
#define SA_X_OSPF_ON(name, access) names.push_back("handle_ospfGeneralGroup");
#define SA_X_RIP_ON(name, access) names.push_back("handle_rip2GlobalRouteChanges");
#define SCALAR(name, access, type, range, handler, state, ...) SA_X_##handler##_##state(name, access)
#include "scalars/catalogue.def"
#undef SCALAR

#define SA_X_BUILT(name)                             \
    names.push_back("init_" #name);                  \
    names.push_back(#name "_createEntry");           \
    names.push_back(#name "_removeEntry");           \
    names.push_back("init_index_" #name);            \
    names.push_back("exists_entry_" #name);
#define SA_X_LATER(name)
#define TABLE(name, access, reg, state, ...) SA_X_##state(name)
#include "tables/catalogue.def"
#undef TABLE

#define COLUMN(table, number, name, type, access, range) \
    names.push_back("get_" #name);                       \
    SA_X_##access(name)
#include "tables/columns.def"
#undef COLUMN

    // The LLDP access layer, under each LLDP object's name, and the LLDP
    // start-up step.
#define SA_X_IPC_RW(name) names.push_back("set_ipc_" #name);
#define SA_X_IPC_RO(name)
#define COLUMN(table, number, name, type, access, range) \
    names.push_back("get_ipc_" #name);                   \
    SA_X_IPC_##access(name)
#include "mibs/lldp/columns.def"
#undef COLUMN
#define LLDP_TABLE(table)                          \
    names.push_back("init_ipc_index_" #table);     \
    names.push_back("exists_ipc_entry_" #table);
#define LLDP_SCALAR(name, type, access)   \
    names.push_back("get_ipc_" #name);    \
    SA_X_IPC_##access(name)
#include "mibs/lldp/objects.def"
#undef LLDP_TABLE
#undef LLDP_SCALAR
    names.push_back("init_lldp");
    // The start-up functions of the module (cfg_init is the platform's).
#define SA_X_STEP_ON(fn) \
    if (std::string(#fn) != "cfg_init") names.push_back(#fn);
#define SA_X_STEP_LATER(fn)
#define STEP(fn, state) SA_X_STEP_##state(fn)
#define TABLE_STEP(table)
#include "agent/startup.def"
#undef STEP
#undef TABLE_STEP
    // The RMON engine's callbacks, handed to register_rmon by init_rmon.
    for (const char *fn : {"rmon_alarm_delete_pre", "rmon_event_delete_pre", "rmon_alarm_set_pre", "rmon_event_set_pre",
                           "rmon_restore_all", "rmon_clear_all", "rmon_event_fired", "rmon_walk_and_invalidate"})
        names.push_back(fn);
    return names;
}

TEST(Exports, EveryConventionalFunctionIsExported) {
    void *module = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    const auto names = expected_exports();
    EXPECT_GT(names.size(), 150u);
    for (const std::string &name : names) EXPECT_NE(dlsym(module, name.c_str()), nullptr) << name;
    dlclose(module);
}

// ... and nothing else: no C++ name of the core, no helper.
TEST(Exports, NothingElseIsExported) {
    const auto list = expected_exports();
    const std::set<std::string> expected(list.begin(), list.end());
    FILE *nm = popen("nm -D --defined-only '" MODULE_PATH "'", "r");
    ASSERT_NE(nm, nullptr);
    std::set<std::string> exported;
    char line[1024];
    while (std::fgets(line, sizeof line, nm)) {
        std::istringstream words(line);
        std::string address, kind, name;
        if (words >> address >> kind >> name) exported.insert(name);
    }
    ASSERT_EQ(pclose(nm), 0);
    ASSERT_FALSE(exported.empty());
    for (const std::string &name : exported) EXPECT_TRUE(expected.count(name)) << name << " is exported";
}

}  // namespace
