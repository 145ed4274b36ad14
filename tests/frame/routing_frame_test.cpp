// The routing handlers in process: the shared handler of the OSPF general
// group and the RIP globals over the query record, and the VRRP tables,
// whose refresh rebuilds their rows.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "agent/trace.hpp"
#include "swsim/control.hpp"
#include "tables/table_runtime.hpp"
#include "tables/tables.hpp"

extern "C" int handle_ospfGeneralGroup(netsnmp_mib_handler *, netsnmp_handler_registration *,
                                       netsnmp_agent_request_info *, netsnmp_request_info *);
extern "C" int handle_rip2GlobalRouteChanges(netsnmp_mib_handler *, netsnmp_handler_registration *,
                                             netsnmp_agent_request_info *, netsnmp_request_info *);

namespace {

namespace fs = std::filesystem;

// One scalar request of one mode, for the OID `name`.
struct Request {
    netsnmp_agent_request_info info{};
    netsnmp_request_info *r = nullptr;
    Request(int mode, const std::vector<oid> &name) {
        info.mode = mode;
        r = SNMP_MALLOC_TYPEDEF(netsnmp_request_info);
        snmp_varlist_add_variable(&r->requestvb, name.data(), name.size(), ASN_NULL, nullptr, 0);
    }
    ~Request() {
        snmp_free_varbind(r->requestvb);
        free(r);
    }
    std::vector<oid> name() const { return {r->requestvb->name, r->requestvb->name + r->requestvb->name_length}; }
};

class RoutingHandlers : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dir_ = fs::temp_directory_path() / ("routing-frame-" + std::to_string(getpid()));
        fs::create_directories(dir_);
        state_ = (dir_ / "switch.state").string();
        swsim::create_state(state_, std::string(SOURCE_DIR) + "/scenarios/default.json");
        setenv("SWSIM_STATE", state_.c_str(), 1);
        ASSERT_GE(swsim::platform_reopen(), 0);
        netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
        init_agent("routing_frame_tests");
        init_snmp("routing_frame_tests");
        snmp_enable_calllog();
        snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &capture_log, nullptr);
    }
    static void TearDownTestSuite() { fs::remove_all(dir_); }
    void SetUp() override {
        sw_ = std::make_unique<swsim::Switch>(state_);
        sw_->fault_clear();
        log_.clear();
    }
    static int capture_log(int, int, void *msg, void *) {
        log_ += static_cast<snmp_log_message *>(msg)->msg;
        return 0;
    }
    static inline fs::path dir_;
    static inline std::string state_;
    static inline std::string log_;
    std::unique_ptr<swsim::Switch> sw_;
};

TEST_F(RoutingHandlers, QueryRecordAnswersCarryTheirNameAndType) {
    Request id(MODE_GET, {1, 3, 6, 1, 2, 1, 14, 1, 1, 0});
    EXPECT_EQ(handle_ospfGeneralGroup(nullptr, nullptr, &id.info, id.r), SNMP_ERR_NOERROR);
    ASSERT_EQ(id.r->requestvb->type, ASN_IPADDRESS);
    ASSERT_EQ(id.r->requestvb->val_len, 4u);
    EXPECT_EQ(std::vector<uint8_t>(id.r->requestvb->val.string, id.r->requestvb->val.string + 4),
              (std::vector<uint8_t>{1, 1, 1, 1}));

    Request limit(MODE_GET, {1, 3, 6, 1, 2, 1, 14, 1, 11, 0});
    handle_ospfGeneralGroup(nullptr, nullptr, &limit.info, limit.r);
    ASSERT_EQ(limit.r->requestvb->type, ASN_INTEGER);
    EXPECT_EQ(*limit.r->requestvb->val.integer, -1) << "a big-endian word read as a signed INTEGER";

    Request queries(MODE_GET, {1, 3, 6, 1, 2, 1, 23, 1, 2, 0});
    handle_rip2GlobalRouteChanges(nullptr, nullptr, &queries.info, queries.r);
    ASSERT_EQ(queries.r->requestvb->type, ASN_COUNTER);
    EXPECT_EQ(*queries.r->requestvb->val.integer, 3);
}

// Only the first ten sub-identifiers travel: the answer's name replaces a
// longer one, and an object without value keeps the varbind's own.
TEST_F(RoutingHandlers, TheAnswersNameReplacesTheRequestsAndLengthZeroLeavesTheValue) {
    Request longer(MODE_GET, {1, 3, 6, 1, 2, 1, 14, 1, 3, 0, 5, 5});
    handle_ospfGeneralGroup(nullptr, nullptr, &longer.info, longer.r);
    EXPECT_EQ(longer.name(), (std::vector<oid>{1, 3, 6, 1, 2, 1, 14, 1, 3, 0}));
    EXPECT_EQ(*longer.r->requestvb->val.integer, 2);

    Request unknown(MODE_GET, {1, 3, 6, 1, 2, 1, 14, 1, 18, 0});
    handle_ospfGeneralGroup(nullptr, nullptr, &unknown.info, unknown.r);
    EXPECT_EQ(unknown.name(), (std::vector<oid>{1, 3, 6, 1, 2, 1, 14, 1, 18, 0}));
    EXPECT_EQ(unknown.r->requestvb->type, ASN_NULL);

    // A failing platform fills in nothing: the varbind stays as it was.
    sw_->fault_set("get_ospfGeneral", -1, 1);
    Request failed(MODE_GET, {1, 3, 6, 1, 2, 1, 14, 1, 1, 0});
    EXPECT_EQ(handle_ospfGeneralGroup(nullptr, nullptr, &failed.info, failed.r), SNMP_ERR_NOERROR);
    EXPECT_EQ(failed.name(), (std::vector<oid>{1, 3, 6, 1, 2, 1, 14, 1, 1, 0}));
    EXPECT_EQ(failed.r->requestvb->type, ASN_NULL);
}

TEST_F(RoutingHandlers, ModesOtherThanGetAreLoggedAndRefused) {
    const struct {
        int (*handler)(netsnmp_mib_handler *, netsnmp_handler_registration *, netsnmp_agent_request_info *,
                       netsnmp_request_info *);
        const char *message;
    } cases[] = {
        {handle_ospfGeneralGroup, "Unknown SNMP mode (2) in handle_ospfGeneralGroup\n"},
        {handle_rip2GlobalRouteChanges, "Unknown SNMP mode (2) in handle_rip2GlobalRouteChanges\n"},
    };
    for (const auto &c : cases) {
        log_.clear();
        Request set(MODE_SET_ACTION, {1, 3, 6, 1, 2, 1, 14, 1, 1, 0});
        EXPECT_EQ(c.handler(nullptr, nullptr, &set.info, set.r), SNMP_ERR_GENERR);
        EXPECT_EQ(log_, c.message);
    }
}

// The VRRP tables rebuild their rows at each refresh: a router that has gone
// leaves its row at once (the pattern tables keep it until it is read).
TEST_F(RoutingHandlers, VrrpRowsAreRebuiltAtEveryRefresh) {
    snmpapi::TableRuntime *oper = snmpapi::find_runtime("vrrpOperTable");
    snmpapi::TableRuntime *asso = snmpapi::find_runtime("vrrpAssoIpAddrTable");
    ASSERT_TRUE(oper && asso);
    oper->init();
    asso->init();
    EXPECT_EQ(oper->row_count(), 2u);
    EXPECT_EQ(asso->row_count(), 3u);

    // The switch without its VRRP routers (the state rewritten in place).
    swsim::create_state_from_json(state_, R"({"vlans": [{"vid": 1, "untagged": ["all"]}, {"vid": 10}],
        "routing": {"interfaces": [{"vlan": 10, "address": "10.10.0.1/24"}],
                    "vrrp": [{"vlan": 10, "vrid": 9, "addresses": ["10.10.0.254"]}]}})");
    snmp_set_do_debugging(1);
    debug_register_tokens("vrrpOperTable");
    log_.clear();
    netsnmp_agent_request_info next{};
    oper->refresh_once(&next);
    asso->refresh_once(&next);
    snmp_set_do_debugging(0);
    EXPECT_EQ(oper->row_count(), 1u) << "the routers that have gone left their rows at once";
    EXPECT_EQ(asso->row_count(), 1u);
    EXPECT_NE(log_.find("vrrpOperTable: Adding row\n"), std::string::npos) << log_;
    EXPECT_EQ(log_.find("Adding row."), std::string::npos) << log_;
    netsnmp_free_all_list_data(next.agent_data);
    swsim::create_state(state_, std::string(SOURCE_DIR) + "/scenarios/default.json");
}

}  // namespace
