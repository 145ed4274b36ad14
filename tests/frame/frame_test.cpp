// The module's frame in process: the catalogues as data, row keys, and the
// scalar and table handlers driven mode by mode against the simulated switch,
// with the platform call journal showing what reached the platform.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "agent/trace.hpp"
#include "agent/varbind.hpp"
#include "swsim/control.hpp"
#include "tables/descriptors.hpp"
#include "tables/table_runtime.hpp"
#include "tables/tables.hpp"

extern "C" int handle_sysName(netsnmp_mib_handler *, netsnmp_handler_registration *,
                              netsnmp_agent_request_info *, netsnmp_request_info *);
extern "C" int handle_swChassisModel(netsnmp_mib_handler *, netsnmp_handler_registration *,
                              netsnmp_agent_request_info *, netsnmp_request_info *);
extern "C" int handle_dot1dStpBridgeMaxAge(netsnmp_mib_handler *, netsnmp_handler_registration *,
                                           netsnmp_agent_request_info *, netsnmp_request_info *);
extern "C" void dot1dBasePortTable_removeEntry(int32_t);
extern "C" void *dot1dBasePortTable_createEntry(int32_t);

namespace {

using namespace snmpapi;
namespace fs = std::filesystem;

// ---- The catalogues ----------------------------------------------------------

// Every object has its own name and OID, and no scalar lies inside a table.
TEST(Catalogue, EveryObjectHasItsOwnNameAndOid) {
    EXPECT_EQ(all_scalars().size(), 159u);
    EXPECT_EQ(all_tables().size(), 120u);
    const auto unregistered =
        std::count_if(all_tables().begin(), all_tables().end(), [](const TableDesc &t) { return !t.registered; });
    EXPECT_EQ(unregistered, 7);
    std::set<std::string> names;
    std::set<std::vector<uint32_t>> oids;
    for (const TableDesc &t : all_tables()) {
        EXPECT_TRUE(names.insert(t.name).second) << t.name;
        EXPECT_TRUE(oids.emplace(t.oid.subids, t.oid.subids + t.oid.len).second) << t.name;
    }
    for (const ScalarDesc &s : all_scalars()) {
        EXPECT_TRUE(names.insert(s.name).second) << s.name;
        const std::vector<uint32_t> o(s.oid.subids, s.oid.subids + s.oid.len);
        EXPECT_TRUE(oids.insert(o).second) << s.name;
        for (const TableDesc &t : all_tables())
            EXPECT_FALSE(o.size() > t.oid.len && std::equal(t.oid.subids, t.oid.subids + t.oid.len, o.begin()))
                << s.name << " inside " << t.name;
    }
}

// Ranges are checked only on integers and sizes only on octet strings, and
// their bounds are ordered.
TEST(Catalogue, RangesOnlyOnIntegersAndSizesOnStrings) {
    auto check = [](const auto &objects) {
        for (const auto &o : objects) {
            if (!o.range.checked) continue;
            EXPECT_TRUE(o.type == Type::INTEGER || o.type == Type::OCTET_STR) << o.name;
            EXPECT_LE(o.range.lo, o.range.hi) << o.name;
            if (o.type == Type::OCTET_STR) {
                EXPECT_GE(o.range.lo, 0) << o.name;
            }
        }
    };
    check(all_scalars());
    check(all_columns());
}

// A writable octet string of the private MIB takes the length its SYNTAX
// allows: the SIZE given there, 0..255 for a DisplayString without one, and
// no bound for the rest (BITS, port lists without a SIZE).
TEST(Catalogue, PrivateStringSizesAreTheMibs) {
    std::ifstream in(SOURCE_DIR "/mib/SWITCH-MIB.txt");
    const std::string mib{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::regex object("\\n([a-zA-Z0-9]+) OBJECT-TYPE\\s+SYNTAX\\s+([^\\n]*)");
    std::map<std::string, std::string> syntax;
    for (auto m = std::sregex_iterator(mib.begin(), mib.end(), object); m != std::sregex_iterator(); ++m)
        syntax[(*m)[1]] = (*m)[2];
    const std::regex sized("\\(SIZE \\(([0-9]+)(?:\\.\\.([0-9]+))?\\)\\)");
    auto check = [&](const char *name, bool writable, Type type, const Range &range, const Oid &oid) {
        if (!writable || type != Type::OCTET_STR || oid.len < 7 || oid.subids[6] != 99999) return;
        ASSERT_TRUE(syntax.count(name)) << name << " is not in SWITCH-MIB";
        const std::string &text = syntax[name];
        std::smatch m;
        Range expected;
        if (std::regex_search(text, m, sized))
            expected = Range{true, std::stoll(m[1]), std::stoll(m[2].matched ? m[2].str() : m[1].str())};
        else if (text.rfind("DisplayString", 0) == 0)
            expected = Range{true, 0, 255};
        EXPECT_EQ(range.checked, expected.checked) << name << ": " << text;
        EXPECT_EQ(range.lo, expected.lo) << name;
        EXPECT_EQ(range.hi, expected.hi) << name;
    };
    for (const ScalarDesc &s : all_scalars()) check(s.name, s.writable && s.served, s.type, s.range, s.oid);
    for (const ColumnDesc &c : all_columns()) check(c.name, c.set != nullptr, c.type, c.range, find_table(c.table)->oid);
}

// A built table's columns lie within its registered column range, and the
// columns that accept a SET are exactly the catalogued writable ones.
TEST(Catalogue, BuiltTablesMatchTheirColumns) {
    for (const TableDesc &t : all_tables()) {
        if (!t.built) continue;
        ASSERT_NE(t.exists, nullptr) << t.name;
        std::set<std::string> setters, listed;
        for (const ColumnDesc &c : all_columns()) {
            if (std::string(c.table) != t.name) continue;
            EXPECT_GE(c.number, t.lowest_column) << c.name;
            EXPECT_LE(c.number, t.highest_column) << c.name;
            if (c.set) setters.insert(c.name);
        }
        std::istringstream words(t.writable_columns);
        for (std::string w; words >> w;) listed.insert(w);
        EXPECT_EQ(setters, listed) << t.name;
        EXPECT_EQ(t.writable, !listed.empty()) << t.name;
    }
    for (const ColumnDesc &c : all_columns()) {
        const TableDesc *t = find_table(c.table);
        ASSERT_NE(t, nullptr) << c.table;
        EXPECT_TRUE(t->built) << c.table;
    }
}

// ---- Row keys -----------------------------------------------------------------

TEST(RowKey, EncodesIndexesAsSnmpDoes) {
    RowKey key;
    const uint8_t mac[6] = {0, 0x10, 0x18, 0xff, 0xfe, 0x01};
    encode_key<Keys<IndexKind::IDX_GAUGE, IndexKind::IDX_IMPLIED_OCTET_STR>>(key, 7u, mac, size_t(6));
    EXPECT_EQ(key, (RowKey{7, 0, 0x10, 0x18, 0xff, 0xfe, 0x01}));
    encode_key<Keys<IndexKind::IDX_OCTET_STR, IndexKind::IDX_INTEGER>>(key, mac, size_t(2), int32_t(5));
    EXPECT_EQ(key, (RowKey{2, 0, 0x10, 5}));
    encode_key<Keys<IndexKind::IDX_IPADDRESS, IndexKind::IDX_INTEGER>>(key, 0xC0A80001u, int32_t(3));
    EXPECT_EQ(key, (RowKey{192, 168, 0, 1, 3}));
}

int32_t g_seen_int;
std::string g_seen_bytes;
int record_row(uint32_t fid, const uint8_t *mac, size_t len, int32_t v) {
    g_seen_int = int32_t(fid) * 1000 + v;
    g_seen_bytes.assign(reinterpret_cast<const char *>(mac), len);
    return 0;
}

TEST(RowKey, ThunksHandTheIndexBackToTheAccessor) {
    using K = Keys<IndexKind::IDX_GAUGE, IndexKind::IDX_OCTET_STR>;
    RowKey key;
    const uint8_t text[3] = {'a', 'b', 'c'};
    encode_key<K>(key, 42u, text, size_t(3));
    SetValue v;
    v.word = 9;
    EXPECT_EQ((set_thunk<K, Type::INTEGER, &record_row>(key, v)), 0);
    EXPECT_EQ(g_seen_int, 42009);
    EXPECT_EQ(g_seen_bytes, "abc");
    // A key cut short never reaches the accessor.
    key.pop_back();
    EXPECT_EQ((set_thunk<K, Type::INTEGER, &record_row>(key, v)), -1);
}

// Our key order is the order of the index OIDs that net-snmp builds.
TEST(RowKey, OrderMatchesOidOrder) {
    std::mt19937 rng(7);
    std::vector<RowKey> keys;
    for (int i = 0; i < 200; ++i) {
        RowKey k;
        const uint8_t s[4] = {uint8_t(rng() % 3), uint8_t(rng() % 256), 1, 2};
        encode_key<Keys<IndexKind::IDX_GAUGE, IndexKind::IDX_OCTET_STR>>(k, uint32_t(rng() % 5), s,
                                                                        size_t(rng() % 4));
        keys.push_back(k);
    }
    for (const RowKey &a : keys)
        for (const RowKey &b : keys) {
            std::vector<oid> oa(a.begin(), a.end()), ob(b.begin(), b.end());
            const int c = snmp_oid_compare(oa.data(), oa.size(), ob.data(), ob.size());
            EXPECT_EQ(KeyLess{}(a, b), c < 0);
        }
}

TEST(Range, ComparesUnsignedFromTheLowerBound) {
    const Range r{true, 600, 4000};
    EXPECT_FALSE(r.accepts(599));
    EXPECT_TRUE(r.accepts(600));
    EXPECT_TRUE(r.accepts(4000));
    EXPECT_FALSE(r.accepts(4001));
    EXPECT_FALSE((Range{true, 0, 65535}.accepts(uint32_t(-1))));
    EXPECT_TRUE((Range{true, 0, 65535}.accepts(65535)));
    EXPECT_FALSE((Range{true, 0, 65535}.accepts(65536)));
    EXPECT_TRUE(Range{}.accepts(uint32_t(-5)));
}

// ---- Handlers against the simulated switch ------------------------------------

// One request batch as the agent hands it to a handler.
class Batch {
public:
    explicit Batch(int mode) { reqinfo_.mode = mode; }
    ~Batch() {
        netsnmp_free_all_list_data(reqinfo_.agent_data);
        for (netsnmp_request_info *r : requests_) {
            netsnmp_free_request_data_sets(r);
            snmp_free_varbind(r->requestvb);
            free(r);
        }
    }
    netsnmp_request_info *add(u_char type, const void *value, size_t len) {
        auto *r = SNMP_MALLOC_TYPEDEF(netsnmp_request_info);
        oid name[] = {1, 3, 6, 1, 4, 1, 99999, 0};
        snmp_varlist_add_variable(&r->requestvb, name, OID_LENGTH(name), type, value, len);
        if (!requests_.empty()) {
            requests_.back()->next = r;
            r->prev = requests_.back();
        }
        requests_.push_back(r);
        return r;
    }
    netsnmp_request_info *add_int(int32_t v) { return add(ASN_INTEGER, &v, sizeof(v)); }
    netsnmp_request_info *add_string(const std::string &s) { return add(ASN_OCTET_STR, s.data(), s.size()); }
    // Table requests carry the column, the index and, for a listed row, its data.
    netsnmp_request_info *add_table(unsigned column, int32_t index, int32_t value, void *row) {
        return add_table(column, index, row, ASN_INTEGER, &value, sizeof(value));
    }
    netsnmp_request_info *add_table(unsigned column, int32_t index, void *row, u_char type, const void *value,
                                    size_t len) {
        netsnmp_request_info *r = add(type, value, len);
        auto *info = SNMP_MALLOC_TYPEDEF(netsnmp_table_request_info);
        info->colnum = column;
        snmp_varlist_add_variable(&info->indexes, nullptr, 0, ASN_INTEGER, &index, sizeof(index));
        netsnmp_request_add_list_data(r, netsnmp_create_data_list(TABLE_HANDLER_NAME, info, &free_info));
        if (row) netsnmp_request_add_list_data(r, netsnmp_create_data_list(TABLE_DATA_ROW, row, nullptr));
        return r;
    }
    netsnmp_agent_request_info *info() { return &reqinfo_; }
    netsnmp_request_info *head() { return requests_.front(); }
    netsnmp_request_info *at(size_t i) { return requests_[i]; }

private:
    static void free_info(void *p) {
        auto *info = static_cast<netsnmp_table_request_info *>(p);
        snmp_free_varbind(info->indexes);
        free(info);
    }
    netsnmp_agent_request_info reqinfo_{};
    std::vector<netsnmp_request_info *> requests_;
};

class Handlers : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dir_ = fs::temp_directory_path() / ("frame-" + std::to_string(getpid()));
        fs::create_directories(dir_);
        state_ = (dir_ / "switch.state").string();
        swsim::create_state(state_, std::string(SOURCE_DIR) + "/scenarios/default.json");
        setenv("SWSIM_STATE", state_.c_str(), 1);
        ASSERT_GE(swsim::platform_reopen(), 0);
        static bool agent_started = false;
        if (!agent_started) {
            agent_started = true;
            netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
            init_agent("frame_tests");
            init_snmp("frame_tests");
            snmp_enable_calllog();
            snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &capture_log, nullptr);
        }
    }
    static void TearDownTestSuite() { fs::remove_all(dir_); }

    void SetUp() override {
        sw_ = std::make_unique<swsim::Switch>(state_);
        sw_->fault_clear();
        sw_->journal_clear();
        sw_->journal_enable(true);
        log_.clear();
    }
    void TearDown() override { sw_->journal_enable(false); }

    std::vector<std::string> calls() const {
        std::vector<std::string> out;
        for (const auto &e : sw_->journal()) out.push_back(e.call + "(" + e.args + ")");
        return out;
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

TEST_F(Handlers, ScalarGetAnswersIntoTheFirstVarbind) {
    sw_->set_hostname("edge-7");
    Batch b(MODE_GET);
    b.add(ASN_NULL, nullptr, 0);
    b.add(ASN_NULL, nullptr, 0);
    EXPECT_EQ(handle_sysName(nullptr, nullptr, b.info(), b.head()), SNMP_ERR_NOERROR);
    netsnmp_variable_list *first = b.head()->requestvb;
    ASSERT_EQ(first->type, ASN_OCTET_STR);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(first->val.string), first->val_len), "edge-7");
    EXPECT_EQ(b.at(1)->requestvb->type, ASN_NULL);
    const auto c = calls();
    ASSERT_GE(c.size(), 3u);
    EXPECT_EQ(c.front(), "lock_read(2)");
    EXPECT_EQ(c.back(), "lock_free(2)");
}

TEST_F(Handlers, ScalarSetWritesOnceInActionAndFreesTheLockOnFailure) {
    for (int mode : {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION, MODE_SET_COMMIT}) {
        Batch b(mode);
        b.add_string("core-1");
        EXPECT_EQ(handle_sysName(nullptr, nullptr, b.info(), b.head()), SNMP_ERR_NOERROR);
        EXPECT_EQ(b.head()->status, 0);
    }
    EXPECT_EQ(sw_->hostname(), "core-1");
    const auto written = calls();
    EXPECT_EQ(std::count(written.begin(), written.end(), "cfg_set_hostname(\"core-1\")"), 1);

    sw_->fault_set("cfg_set_hostname", -3, 1);
    sw_->journal_clear();
    Batch b(MODE_SET_ACTION);
    b.add_string("core-2");
    EXPECT_EQ(handle_sysName(nullptr, nullptr, b.info(), b.head()), SNMP_ERR_NOERROR);
    EXPECT_EQ(b.head()->status, SNMP_ERR_GENERR);
    EXPECT_EQ(sw_->hostname(), "core-1");
    EXPECT_EQ(calls(), (std::vector<std::string>{"lock_write(2)", "cfg_set_hostname(\"core-2\")", "lock_free(2)"}));
}

TEST_F(Handlers, ScalarUnknownModeIsLoggedAndRefused) {
    Batch b(99);
    b.add_string("x");
    EXPECT_EQ(handle_sysName(nullptr, nullptr, b.info(), b.head()), SNMP_ERR_GENERR);
    EXPECT_NE(log_.find("unknown mode (99) in handle_sysName"), std::string::npos) << log_;
    EXPECT_TRUE(calls().empty());
}

// Trace lines appear only while the agent's debugging is on, as a position
// line under "trace" followed by the message, and cost no platform call.
TEST_F(Handlers, TracesOnlyWhileDebugging) {
    auto get_name = [&] {
        sw_->journal_clear();
        Batch b(MODE_GET);
        b.add(ASN_NULL, nullptr, 0);
        handle_sysName(nullptr, nullptr, b.info(), b.head());
        return calls();
    };
    const auto quiet = get_name();
    EXPECT_EQ(log_.find("get de"), std::string::npos);

    snmp_set_do_debugging(1);
    debug_register_tokens("scalars,trace");
    const auto traced = get_name();
    snmp_set_do_debugging(0);
    EXPECT_EQ(quiet, traced);
    const std::regex shape("trace: handle_sysName\\(\\): scalars, [0-9]+:\nscalars: get de sysName\n");
    EXPECT_TRUE(std::regex_search(log_, shape)) << log_;
}

TEST_F(Handlers, ScalarRangeTypeAndLengthAreCheckedInReserve1) {
    Batch b(MODE_SET_RESERVE1);
    b.add_int(599);
    b.add_int(600);
    b.add_string("600");
    EXPECT_EQ(handle_dot1dStpBridgeMaxAge(nullptr, nullptr, b.info(), b.head()), SNMP_ERR_NOERROR);
    EXPECT_EQ(b.at(0)->status, SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(b.at(1)->status, 0);
    EXPECT_EQ(b.at(2)->status, SNMP_ERR_WRONGTYPE);

    Batch n(MODE_SET_RESERVE1);
    n.add_int(0x41424344);
    n.add_string(std::string(256, 'x'));
    n.add_string(std::string(255, 'x'));
    EXPECT_EQ(handle_sysName(nullptr, nullptr, n.info(), n.head()), SNMP_ERR_NOERROR);
    EXPECT_EQ(n.at(0)->status, SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(n.at(1)->status, SNMP_ERR_WRONGLENGTH);
    EXPECT_EQ(n.at(2)->status, 0);
    EXPECT_TRUE(calls().empty()) << "nothing reaches the platform before ACTION";
}

// A SET value of the wrong ASN.1 type, or of a length its type or SIZE rules
// out, is refused in the first phase, before anything reaches the switch.
TEST(SetValues, TypeAndLengthAreCheckedForEveryType) {
    struct Case {
        Type type;
        Range range;
        u_char asn;
        size_t len;
        int status;
    };
    const Range any{}, name{true, 0, 255}, mac{true, 6, 6}, priority{true, 0, 7};
    const Case cases[] = {
        {Type::INTEGER, priority, ASN_INTEGER, 4, SNMP_ERR_NOERROR},
        {Type::INTEGER, priority, ASN_GAUGE, 4, SNMP_ERR_WRONGTYPE},
        {Type::INTEGER, any, ASN_OCTET_STR, 4, SNMP_ERR_WRONGTYPE},
        {Type::INTEGER, any, ASN_NULL, 0, SNMP_ERR_WRONGTYPE},
        {Type::GAUGE, any, ASN_GAUGE, 4, SNMP_ERR_NOERROR},
        {Type::GAUGE, any, ASN_INTEGER, 4, SNMP_ERR_WRONGTYPE},
        {Type::COUNTER, any, ASN_COUNTER, 4, SNMP_ERR_NOERROR},
        {Type::COUNTER, any, ASN_TIMETICKS, 4, SNMP_ERR_WRONGTYPE},
        {Type::TIMETICKS, any, ASN_TIMETICKS, 4, SNMP_ERR_NOERROR},
        {Type::TIMETICKS, any, ASN_COUNTER, 4, SNMP_ERR_WRONGTYPE},
        {Type::COUNTER64, any, ASN_COUNTER64, 8, SNMP_ERR_NOERROR},
        {Type::COUNTER64, any, ASN_COUNTER, 4, SNMP_ERR_WRONGTYPE},
        {Type::IPADDRESS, any, ASN_IPADDRESS, 4, SNMP_ERR_NOERROR},
        {Type::IPADDRESS, any, ASN_IPADDRESS, 3, SNMP_ERR_WRONGLENGTH},
        {Type::IPADDRESS, any, ASN_IPADDRESS, 5, SNMP_ERR_WRONGLENGTH},
        {Type::IPADDRESS, any, ASN_OCTET_STR, 4, SNMP_ERR_WRONGTYPE},
        {Type::OCTET_STR, name, ASN_OCTET_STR, 0, SNMP_ERR_NOERROR},
        {Type::OCTET_STR, name, ASN_OCTET_STR, 255, SNMP_ERR_NOERROR},
        {Type::OCTET_STR, name, ASN_OCTET_STR, 256, SNMP_ERR_WRONGLENGTH},
        {Type::OCTET_STR, mac, ASN_OCTET_STR, 5, SNMP_ERR_WRONGLENGTH},
        {Type::OCTET_STR, mac, ASN_OCTET_STR, 6, SNMP_ERR_NOERROR},
        {Type::OCTET_STR, any, ASN_OCTET_STR, 4000, SNMP_ERR_NOERROR},
        {Type::OCTET_STR, any, ASN_INTEGER, 4, SNMP_ERR_WRONGTYPE},
        {Type::OCTET_STR, any, ASN_OBJECT_ID, 4 * sizeof(oid), SNMP_ERR_WRONGTYPE},
        {Type::OBJECT_ID, any, ASN_OBJECT_ID, 128 * sizeof(oid), SNMP_ERR_NOERROR},
        {Type::OBJECT_ID, any, ASN_OBJECT_ID, 129 * sizeof(oid), SNMP_ERR_WRONGLENGTH},
        {Type::OBJECT_ID, any, ASN_OCTET_STR, 8, SNMP_ERR_WRONGTYPE},
        {Type::PER_OBJECT, any, ASN_OCTET_STR, 3, SNMP_ERR_NOERROR},
    };
    std::vector<uint8_t> bytes(4000, 0);
    for (const Case &c : cases) {
        netsnmp_variable_list var{};
        var.type = c.asn;
        var.val.string = bytes.data();  // enough bytes behind every kind of value
        var.val_len = c.len;
        EXPECT_EQ(set_value_error(&var, c.type, c.range), c.status)
            << "type " << int(c.type) << ", asn " << int(c.asn) << ", length " << c.len;
    }
    // An integer out of range stays wrongValue once its type is right.
    long eight = 8;
    netsnmp_variable_list var{};
    var.type = ASN_INTEGER;
    var.val.integer = &eight;
    var.val_len = sizeof(eight);
    EXPECT_EQ(set_value_error(&var, Type::INTEGER, priority), SNMP_ERR_WRONGVALUE);
}

class Tables : public Handlers {
protected:
    static void SetUpTestSuite() {
        Handlers::SetUpTestSuite();
        for (const char *t : {"portTable", "dot1dBasePortTable"}) find_runtime(t)->init();
    }
    static TableRuntime &table(const char *name) { return *find_runtime(name); }
    static void *row(const char *name, int32_t index) {
        RowKey key{uint32_t(index)};
        return table(name).find(key);
    }
};

TEST_F(Tables, PopulationListsPresentPortsAndTrunks) {
    std::set<int32_t> expected;
    for (int u = 0; u < 8; ++u) {
        const swsim::UnitInfo unit = sw_->unit(u);
        if (unit.present)
            for (int p = 0; p < unit.ports; ++p) expected.insert(u * 64 + p + 1);
    }
    for (int t = 0; t < 128; ++t)
        if (sw_->trunk(t).configured && !sw_->trunk(t).members.empty()) expected.insert(513 + t);
    ASSERT_FALSE(expected.empty());
    Batch b(MODE_GET);
    table("portTable").refresh_once(b.info());
    EXPECT_EQ(table("portTable").row_count(), expected.size());
    for (int32_t i : expected) EXPECT_NE(row("portTable", i), nullptr) << i;
}

// The population runs once per request PDU, however often the agent calls the
// table's chain for it (once per GETBULK repetition), and again for the next.
TEST_F(Tables, RefreshRunsOncePerRequest) {
    auto populations = [&] {
        const auto c = calls();
        return std::count_if(c.begin(), c.end(), [](const std::string &call) {
            return call.rfind("cfg_check_trunk(0)", 0) == 0;
        });
    };
    Batch first(MODE_GET);
    table("portTable").refresh_once(first.info());
    table("portTable").refresh_once(first.info());
    EXPECT_EQ(populations(), 1);
    table("dot1dBasePortTable").refresh_once(first.info());
    EXPECT_EQ(populations(), 2) << "each table keeps its own mark";
    Batch next(MODE_GET);
    table("portTable").refresh_once(next.info());
    EXPECT_EQ(populations(), 3);
}

TEST_F(Tables, ReadOnlyColumnStopsTheCheckOfTheBatch) {
    Batch b(MODE_SET_RESERVE1);
    b.add_table(3, 1, 1, row("portTable", 1));   // portType: read-only
    b.add_table(4, 1, 9, row("portTable", 1));   // portSpeedDpxCfg 9: out of range, unchecked
    table("portTable").handle(b.info(), b.head());
    EXPECT_EQ(b.at(0)->status, SNMP_ERR_NOTWRITABLE);
    EXPECT_EQ(b.at(1)->status, 0);

    Batch c(MODE_SET_RESERVE1);
    c.add_table(4, 1, 9, row("portTable", 1));
    c.add_table(7, 1, 0, row("portTable", 1));   // portAutonegotiation 0
    c.add_table(4, 1, 8, row("portTable", 1));
    table("portTable").handle(c.info(), c.head());
    EXPECT_EQ(c.at(0)->status, SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(c.at(1)->status, SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(c.at(2)->status, 0);

    Batch t(MODE_SET_RESERVE1);  // each writable column's type and SIZE
    const std::string long_name(256, 'p');
    t.add_table(4, 1, row("portTable", 1), ASN_OCTET_STR, "5", 1);
    t.add_table(2, 1, row("portTable", 1), ASN_OCTET_STR, long_name.data(), long_name.size());
    t.add_table(2, 1, row("portTable", 1), ASN_INTEGER, "\0\0\0\0", 4);
    t.add_table(2, 1, row("portTable", 1), ASN_OCTET_STR, long_name.data(), 255);
    table("portTable").handle(t.info(), t.head());
    EXPECT_EQ(t.at(0)->status, SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(t.at(1)->status, SNMP_ERR_WRONGLENGTH);
    EXPECT_EQ(t.at(2)->status, SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(t.at(3)->status, 0);

    Batch d(MODE_SET_RESERVE1);  // a read-only table refuses at the first request
    d.add_table(1, 1, 1, row("dot1dBasePortTable", 1));
    d.add_table(2, 1, 1, row("dot1dBasePortTable", 1));
    table("dot1dBasePortTable").handle(d.info(), d.head());
    EXPECT_EQ(d.at(0)->status, SNMP_ERR_NOTWRITABLE);
    EXPECT_EQ(d.at(1)->status, 0);
}

TEST_F(Tables, ActionWritesThroughTheSetterEvenWithoutARow) {
    // Unit 2 port 3 written through an index the table has not listed.
    const int32_t index = 64 + 3;
    Batch b(MODE_SET_ACTION);
    b.add_table(4, index, 5, nullptr);
    table("portTable").handle(b.info(), b.head());
    EXPECT_EQ(b.at(0)->status, 0);
    const auto c = calls();
    EXPECT_NE(std::find(c.begin(), c.end(), "cfg_set_port_speed(1,2,100)"), c.end());

    sw_->fault_set("cfg_set_port_speed", -1, -1);
    sw_->journal_clear();
    Batch f(MODE_SET_ACTION);
    f.add_table(4, 1, 5, row("portTable", 1));
    table("portTable").handle(f.info(), f.head());
    EXPECT_EQ(f.at(0)->status, SNMP_ERR_GENERR);
    const auto after = calls();
    ASSERT_FALSE(after.empty());
    EXPECT_EQ(after.back(), "lock_free(2)");
    const auto taken = std::count(after.begin(), after.end(), "lock_read(2)") +
                       std::count(after.begin(), after.end(), "lock_write(2)");
    EXPECT_EQ(taken, std::count(after.begin(), after.end(), "lock_free(2)"));
}

TEST_F(Tables, RowsOfAVanishedUnitGoWhenRead) {
    auto refresh = [] { table("dot1dBasePortTable").refresh_once(Batch(MODE_GET).info()); };
    refresh();
    ASSERT_NE(row("dot1dBasePortTable", 65), nullptr);
    ASSERT_NE(row("dot1dBasePortTable", 66), nullptr);

    sw_->set_unit_present(1, false);
    {
        // Two columns of the vanished row in one request: the helper hands
        // both varbinds the same row, which the first check removes.
        void *gone = row("dot1dBasePortTable", 65);
        Batch b(MODE_GET);
        b.add_table(2, 65, 0, gone);
        b.add_table(3, 65, 0, gone);
        b.add_table(2, 1, 0, row("dot1dBasePortTable", 1));
        table("dot1dBasePortTable").handle(b.info(), b.head());
        for (size_t i : {0, 1}) {
            EXPECT_EQ(b.at(i)->requestvb->type, ASN_INTEGER) << "no value is set for a vanished row";
            EXPECT_EQ(*b.at(i)->requestvb->val.integer, 0);
        }
        EXPECT_EQ(row("dot1dBasePortTable", 65), nullptr);
        EXPECT_NE(row("dot1dBasePortTable", 66), nullptr) << "rows not read stay until read";
        EXPECT_EQ(*b.at(2)->requestvb->val.integer, 1);
    }

    sw_->set_unit_present(1, true);
    refresh();
    EXPECT_NE(row("dot1dBasePortTable", 65), nullptr);
}

// Rows added and removed in any order stay findable and in index order, in
// our store and in the agent's table data alike; an unknown row is no trouble.
TEST_F(Tables, RowStoreKeepsIndexOrderUnderChurn) {
    std::vector<int32_t> added;
    std::mt19937 rng(11);
    for (int i = 0; i < 300; ++i) {
        const int32_t index = 2000 + int32_t(rng() % 400);
        void *first = dot1dBasePortTable_createEntry(index);
        EXPECT_EQ(dot1dBasePortTable_createEntry(index), first) << "an existing row is returned";
        added.push_back(index);
    }
    std::shuffle(added.begin(), added.end(), rng);
    for (size_t i = 0; i < added.size(); i += 3) dot1dBasePortTable_removeEntry(added[i]);
    std::set<int32_t> kept;
    for (size_t i = 0; i < added.size(); ++i)
        if (i % 3 != 0) kept.insert(added[i]);
    for (size_t i = 0; i < added.size(); i += 3) kept.erase(added[i]);
    for (int32_t index : kept) EXPECT_NE(row("dot1dBasePortTable", index), nullptr) << index;

    std::vector<int32_t> listed;
    auto *rows = static_cast<netsnmp_table_row *>(row("dot1dBasePortTable", 1));
    while (rows && rows->prev) rows = rows->prev;
    for (; rows; rows = rows->next) listed.push_back(static_cast<int32_t>(rows->index_oid[0]));
    EXPECT_TRUE(std::is_sorted(listed.begin(), listed.end()));
    for (int32_t index : kept) EXPECT_TRUE(std::binary_search(listed.begin(), listed.end(), index)) << index;
    for (int32_t index : kept) dot1dBasePortTable_removeEntry(index);
    EXPECT_EQ(row("dot1dBasePortTable", *kept.begin()), nullptr);
    const size_t before = table("dot1dBasePortTable").row_count();
    dot1dBasePortTable_removeEntry(4000);
    EXPECT_EQ(table("dot1dBasePortTable").row_count(), before) << "removing an unknown row is harmless";
}

// swChassisModel has a handler of its own: GET only, read without the
// configuration lock; every other mode is logged and refused.
TEST_F(Handlers, ChassisModelIsReadWithoutTheLockAndRefusesEverythingElse) {
    Batch get(MODE_GET);
    get.add(ASN_NULL, nullptr, 0);
    EXPECT_EQ(handle_swChassisModel(nullptr, nullptr, get.info(), get.head()), SNMP_ERR_NOERROR);
    netsnmp_variable_list *vb = get.head()->requestvb;
    ASSERT_EQ(vb->type, ASN_INTEGER);
    EXPECT_EQ(*vb->val.integer, 7300);
    EXPECT_EQ(calls(), (std::vector<std::string>{"cfg_chassis_get_info()"}));
    for (int mode : {MODE_SET_RESERVE1, MODE_SET_RESERVE2, MODE_SET_ACTION, MODE_SET_COMMIT, MODE_SET_FREE,
                     MODE_SET_UNDO, int(MODE_GETNEXT)}) {
        log_.clear();
        Batch set(mode);
        set.add_int(1);
        EXPECT_EQ(handle_swChassisModel(nullptr, nullptr, set.info(), set.head()), SNMP_ERR_GENERR) << mode;
        EXPECT_NE(log_.find("unknown mode (" + std::to_string(mode) + ") in handle_swChassisModel"), std::string::npos)
            << log_;
    }
}

}  // namespace
