// Random requests and datagrams against the real agent: rows that vanish
// between and within requests, SETs of every type and edge value to every
// writable object of the catalogues, and damaged messages.  Each test fails
// when the agent dies, hangs, leaves a sanitizer report in its log, or
// answers a response that cannot be right.  A run prints its seed;
// SWITCH_FUZZ_SEED=N replays it and SWITCH_FUZZ_SCALE=F multiplies the work.
#include "fuzz.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <thread>

#include "fixture.hpp"

namespace fz {
namespace {

using namespace it;

const Oid kSysUpTime = parse_oid("1.3.6.1.2.1.1.3.0");
const Oid kSysLocation = parse_oid("1.3.6.1.2.1.1.6.0");
const Oid kVlanStaticRowStatus = parse_oid("1.3.6.1.2.1.17.7.1.4.3.1.5");

bool same(const VarBind &a, const VarBind &b) {
    return a.type == b.type && a.integer == b.integer && a.bytes == b.bytes && a.objid == b.objid;
}

// A change of the switch that removes rows, how to bring them back, and
// the first index values of the rows it removes (interface indexes, trunk,
// VLAN and domain numbers).
struct Change {
    std::string name;
    std::function<void()> apply, undo;
    std::vector<uint32_t> keys = {};
};

// The changes the switch allows now: a unit leaving the stack, a
// transceiver pulled, a trunk or a VLAN removed (over SNMP too, when
// `writer` is given), a ring domain or a multicast group deleted, the
// address table cleared, platform calls failing.
std::vector<std::vector<Change>> possible_changes(swsim::Switch &s, Session *writer, Rng &rng) {
    std::vector<std::vector<Change>> kinds(9);
    for (int u = 1; u < 8; ++u)
        if (s.unit(u).present)
            kinds[0].push_back(
                {"unit " + std::to_string(u + 1) + " absent",
                 [&s, u] { s.set_unit_present(u, false); },
                 [&s, u] { s.set_unit_present(u, true); },
                 {port_index(u, 0), port_index(u, s.unit(u).ports / 2), port_index(u, s.unit(u).ports - 1)}});
    for (int u = 0; u < 8; ++u)
        for (int p = 0, n = s.unit(u).present ? s.unit(u).ports : 0; p < n; ++p)
            if (s.port(u, p).sfp_fitted)
                kinds[1].push_back({"sfp " + std::to_string(u + 1) + "/" + std::to_string(p + 1) + " pulled",
                                    [&s, u, p] { s.set_transceiver(u, p, false); },
                                    [&s, u, p] { s.set_transceiver(u, p, true); },
                                    {port_index(u, p)}});
    for (int t = 0; t < 128; ++t) {
        const swsim::TrunkInfo info = s.trunk(t);
        if (!info.configured) continue;
        kinds[2].push_back({"trunk " + std::to_string(t + 1) + " destroyed",
                            [&s, t] { s.trunk_destroy(t); },
                            [&s, t, info] {
                                s.trunk_create(t, info.dynamic);
                                for (const auto &[u, p] : info.members) s.trunk_add_port(t, u, p);
                            },
                            {trunk_index(t), uint32_t(t + 1)}});
    }
    for (int vid : s.vlan_ids()) {
        if (vid == 1) continue;
        const auto saved = std::make_shared<swsim::VlanInfo>();
        const auto restore = [&s, vid, saved] {
            if (s.vlan(vid).exists) return;
            s.vlan_create(vid, saved->name, saved->dynamic);
            for (const auto &m : saved->members) s.vlan_set_member(vid, m.unit0, m.port0, m.flags);
        };
        kinds[3].push_back({"vlan " + std::to_string(vid) + " deleted",
                            [&s, vid, saved] { *saved = s.vlan(vid), s.vlan_delete(vid); },
                            restore,
                            {uint32_t(vid)}});
        if (writer)
            kinds[4].push_back({"vlan " + std::to_string(vid) + " destroyed over SNMP",
                                [&s, vid, saved, writer] {
                                    *saved = s.vlan(vid);
                                    writer->set({SetValue::integer32(child(kVlanStaticRowStatus, {uint32_t(vid)}), 6)});
                                },
                                restore,
                                {uint32_t(vid)}});
    }
    for (int id = 0; id < 64; ++id) {
        const swsim::Switch::EapsInfo e = s.eaps(id);
        if (e.created)
            kinds[5].push_back({"eaps " + std::to_string(id) + " deleted",
                                [&s, id] { s.eaps_delete(id); },
                                [&s, id, e] { s.eaps_create(id, e.name, e.master, e.state); },
                                {uint32_t(id), uint32_t(id + 1)}});
    }
    for (const swsim::Switch::IgmpGroupInfo &g : s.igmp_groups()) {
        const auto each_port = [&s, g](bool on) {
            for (const auto &[u, p] : g.ports) s.igmp_set_group_port(g.vid, g.group, u, p, on);
        };
        kinds[6].push_back({"igmp group removed",
                            [each_port] { each_port(false); },
                            [each_port] { each_port(true); },
                            {uint32_t(g.vid)}});
    }
    if (const std::vector<swsim::FdbInfo> fdb = s.fdb(); !fdb.empty())
        kinds[7].push_back({"address table cleared",
                            [&s] { s.fdb_clear(); },
                            [&s, fdb] {
                                for (const swsim::FdbInfo &f : fdb)
                                    s.fdb_add(f.mac, f.vid, f.unit0, f.port0, f.trunk0, f.is_static);
                            },
                            {uint32_t(fdb.front().vid)}});
    for (const std::string &call : swsim::faultable_calls()) {
        const int times = std::uniform_int_distribution<int>(-1, 3)(rng);
        if (times == 0) continue;
        kinds[8].push_back({call + " fails " + (times < 0 ? "until cleared" : std::to_string(times) + " times"),
                            [&s, call, times] { s.fault_set(call, -1, times); }, [&s, call] { s.fault_clear(call); }});
    }
    kinds.erase(std::remove_if(kinds.begin(), kinds.end(), [](const auto &k) { return k.empty(); }), kinds.end());
    return kinds;
}

// Runs a change of the simulated switch; one the switch refuses is noted,
// not a failure of the agent.
void run(const std::string &what, const std::function<void()> &f) {
    try {
        f();
    } catch (const std::exception &e) {
        std::printf("note: %s: %s\n", what.c_str(), e.what());
    }
}

template <class Suite>
class FuzzTest : public AgentTest<Suite> {
protected:
    static constexpr int kMaxRestarts = 4;
    // A request unanswered after three tries of this long finds the agent
    // dead or hanging.  Generous: a request that changes the switch's
    // interfaces costs a second of refresh on the max scenario in the
    // sanitizer build, and the machine is shared.
    static constexpr int kTimeoutMs = 4000;

    void SetUp() override {
        AgentTest<Suite>::SetUp();
        const auto *info = ::testing::UnitTest::GetInstance()->current_test_info();
        const std::string name = std::string(info->test_suite_name()) + "." + info->name();
        rng_ = rng_for(name);
        trace_.emplace(__FILE__, __LINE__,
                       "replay: SWITCH_FUZZ_SEED=" + std::to_string(seed()) + " fuzz_tests --gtest_filter=" + name);
        log_seen_ = log().size();
        this->connect(kTimeoutMs);
        // An agent that an earlier test left dead is started again.
        if (!this->agent().running() || !answering()) restart();
    }
    // The sanitizer reports of the agent's log are the test's failures;
    // those that went with a dead agent were reported then.
    void TearDown() override {
        const std::string report = new_log_report();
        for (const char *mark : {"AddressSanitizer", "runtime error"})
            EXPECT_EQ(report.find(mark), std::string::npos) << report;
        trace_.reset();
    }

    std::string log() {
        std::ifstream in(this->agent().log_path());
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    // The agent's report in the log lines written since the last look: the
    // sanitizer's report and its stack, or the last lines.
    std::string new_log_report() {
        const std::string all = log();
        const std::string fresh = all.substr(std::min(log_seen_, all.size()));
        log_seen_ = all.size();
        size_t from = std::string::npos;
        for (const char *mark : {"AddressSanitizer", "runtime error"}) from = std::min(from, fresh.find(mark));
        if (from == std::string::npos) from = fresh.size() > 3000 ? fresh.size() - 3000 : 0;
        from = fresh.rfind('\n', from) == std::string::npos ? 0 : fresh.rfind('\n', from) + 1;
        std::istringstream lines(fresh.substr(from));
        std::string report = "agent log:\n";
        int n = 0;
        for (std::string line; n < 24 && std::getline(lines, line);)
            if (line.rfind("Connection from", 0) != 0) report += line.substr(0, 240) + "\n", ++n;
        return report;
    }

    bool answering() {
        Session probe(this->agent().port(), "public", 1000, 2);
        return probe.get({kSysUpTime}).answered;
    }

    // After a request the agent did not answer: reports it, and restarts an
    // agent that is dead or hangs.  False once there were too many restarts.
    bool recover(const std::string &what) {
        const bool running = this->agent().running();
        const bool answers = running && answering();
        ADD_FAILURE() << (!running  ? "the agent died (" + this->agent().how_it_ended() + ")"
                          : answers ? std::string("the agent dropped a request")
                                    : std::string("the agent hangs"))
                      << " after\n  " << what << "\n"
                      << new_log_report();
        return answers || restart();
    }

    bool restart() {
        if (++restarts_ > kMaxRestarts) {
            given_up_ = true;
            ADD_FAILURE() << "the agent failed " << restarts_ << " times; the test stops here";
            return false;
        }
        this->agent().kill_hard();
        try {
            this->agent().start();
        } catch (const std::exception &e) {
            given_up_ = true;
            ADD_FAILURE() << e.what();
            return false;
        }
        this->connect(kTimeoutMs);
        log_seen_ = log().size();
        return true;
    }

    // Sends the request and checks its response; false when it went
    // unanswered (reported, and the agent restarted).
    bool exchange(const Request &q, Response *out = nullptr) {
        if (given_up_) return false;
        Response r = q.send(this->reader(), this->writer());
        if (!r.answered) {
            recover(q.describe());
            return false;
        }
        const std::string why = check(q, r, model_);
        EXPECT_EQ(why, "") << q.describe();
        if (out) *out = std::move(r);
        return true;
    }

    std::optional<VarBind> read(const Oid &oid) {
        Response r;
        if (!exchange({Request::kGet, {{oid, kNull, 0, {}, {}}}, 0, 0}, &r) || r.varbinds.size() != 1) return {};
        return r.varbinds[0];
    }

    size_t random_below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(rng_); }

    // The rows of every table that start with one of the keys, each list
    // led by the name just before them (not a row: where a GETNEXT starts).
    std::vector<Table> rows_near(const std::vector<uint32_t> &keys) {
        std::vector<Table> out;
        for (const Table &t : model_.tables) {
            const Oid column = child(t.entry, {t.columns.front()->number});
            Table near = t;
            near.rows.clear();
            Request q{Request::kGetBulk, {}, 0, 6};
            for (uint32_t key : keys) {
                Oid start = t.kinds.front() == IndexKind::kTimeTicks ? Oid{0} : Oid{};
                if (key > 0) start.insert(start.end(), {key - 1, UINT32_MAX});
                near.rows.push_back(start);
                Oid name = column;
                name.insert(name.end(), start.begin(), start.end());
                q.varbinds.push_back({name, kNull, 0, {}, {}});
            }
            Response r;
            if (q.varbinds.empty() || !exchange(q, &r)) return out;
            for (const VarBind &vb : r.varbinds)
                if (!vb.is_exception() && starts_with(vb.oid, column) && vb.oid.size() > column.size())
                    near.rows.emplace_back(vb.oid.begin() + long(column.size()), vb.oid.end());
            std::sort(near.rows.begin(), near.rows.end());
            near.rows.erase(std::unique(near.rows.begin(), near.rows.end()), near.rows.end());
            out.push_back(std::move(near));
        }
        return out;
    }

    // Requests over all the rows of the tables, a few rows each.
    void requests_over(std::vector<Table> tables) {
        std::shuffle(tables.begin(), tables.end(), rng_);
        for (const Table &t : tables)
            for (size_t first = 0; first < t.rows.size() && !given_up_; first += 6)
                exchange(rows_request(t, first, 6, rng_));
    }

    // A few requests on random rows of every table, in random order.
    void requests_over_rows(size_t per_table) {
        std::vector<const Table *> tables;
        for (const Table &t : model_.tables)
            if (!t.rows.empty()) tables.push_back(&t);
        std::shuffle(tables.begin(), tables.end(), rng_);
        for (const Table *t : tables)
            for (size_t i = 0; i < per_table && !given_up_; ++i)
                exchange(rows_request(*t, random_below(t->rows.size()), 1 + random_below(6), rng_));
        for (size_t i = 0; i < 4 * per_table && !given_up_; ++i) exchange(scalars_request(model_, rng_));
    }

    // Rounds of: rows removed, requests over the rows as they were, rows
    // brought back.
    void vanishing_rows(size_t rows_per_table, size_t rounds, size_t per_table) {
        model_ = Model::read(this->reader(), rows_per_table);
        for (size_t round = 0; round < rounds && !given_up_; ++round) {
            const auto kinds = possible_changes(this->sw(), &this->writer(), rng_);
            std::vector<Change> changes;
            for (size_t n = 1 + random_below(2); n > 0; --n) {
                const auto &kind = kinds[random_below(kinds.size())];
                const Change &c = kind[random_below(kind.size())];
                if (changes.empty() || changes.front().name != c.name) changes.push_back(c);
            }
            std::string names;
            std::vector<uint32_t> keys;
            for (const Change &c : changes) {
                names += (names.empty() ? "" : ", ") + c.name;
                keys.insert(keys.end(), c.keys.begin(), c.keys.end());
            }
            SCOPED_TRACE("round " + std::to_string(round) + ": " + names);
            const std::vector<Table> near = rows_near(keys);
            for (const Change &c : changes) run(c.name, c.apply);
            requests_over(near);
            requests_over_rows(per_table);
            for (auto c = changes.rbegin(); c != changes.rend(); ++c) run(c->name + " undone", c->undo);
            this->sw().fault_clear();
        }
    }

    // Requests while another process removes and restores rows, so that
    // rows also go between the varbinds of one request.  The changes are
    // bounded in time: a control call that never returns is a failure.
    void rows_churn(size_t rows_per_table, size_t changes) {
        model_ = Model::read(this->reader(), rows_per_table);
        int names[2];
        ASSERT_EQ(pipe2(names, O_CLOEXEC | O_NONBLOCK), 0);
        const uint64_t seed = rng_();
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {  // the switch's side: its own handle, its own generator
            close(names[0]);
            Rng rng(seed);
            int status = 1;
            run("churn", [&] {
                swsim::Switch s(this->agent().state_path());
                const auto kinds = possible_changes(s, nullptr, rng);
                for (size_t i = 0; i < changes && !kinds.empty(); ++i) {
                    const auto &kind = kinds[std::uniform_int_distribution<size_t>(0, kinds.size() - 1)(rng)];
                    const Change &c = kind[std::uniform_int_distribution<size_t>(0, kind.size() - 1)(rng)];
                    const std::string line = c.name + "\n";
                    if (::write(names[1], line.data(), line.size()) < 0) break;
                    run(c.name, c.apply);
                    std::this_thread::sleep_for(std::chrono::microseconds(2000 + rng() % 18000));
                    run(c.name + " undone", c.undo);
                    s.fault_clear();
                    std::this_thread::sleep_for(std::chrono::microseconds(rng() % 10000));
                }
                status = 0;
            });
            _exit(status);
        }
        close(names[1]);
        std::string last;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(20000 + 100 * changes);
        int status = 0;
        while (!given_up_ && waitpid(child, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                kill(child, SIGKILL);
                waitpid(child, &status, 0);
                ADD_FAILURE() << "the switch's changes did not end in time; the last one: " << last;
                break;
            }
            requests_over_rows(1);
            char buf[4096];
            for (ssize_t n; (n = ::read(names[0], buf, sizeof buf)) > 0;) {
                last.append(buf, size_t(n));  // keeps the last line whole
                const size_t end = last.find_last_of('\n', last.size() - 2);
                if (end != std::string::npos) last.erase(0, end + 1);
            }
        }
        if (given_up_ && waitpid(child, &status, WNOHANG) == 0) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
        }
        close(names[0]);
    }

    // Reads and writes at the edges of every table's index: 0, 2^31,
    // 2^32 - 1, empty and overlong strings, indexes cut short or too long.
    // Each SET carries one varbind, so that every edge meets the accessor.
    static constexpr size_t kMaxOidLength = 128;
    void edge_indexes() {
        model_ = Model::read(this->reader(), 1);
        for (const Table &t : model_.tables) {
            const std::vector<Oid> rows = t.boundary_rows();
            for (Request::Kind kind : {Request::kGet, Request::kGetNext, Request::kSet}) {
                Request q{kind, {}, 0, 0};
                for (const Oid &row : rows)
                    for (const CatalogueColumn *c : t.columns) {
                        if (kind == Request::kSet && !c->writable) continue;
                        // No manager can name more sub-identifiers than the
                        // protocol carries; the datagram test sends those.
                        if (t.instance(*c, row).size() > kMaxOidLength) continue;
                        SetValue v =
                            sample_value(t.instance(*c, row), kind == Request::kSet ? c->type : uint8_t(kNull), rng_);
                        if (c->range.bounded) v.integer = c->range.lo;
                        q.varbinds.push_back(v);
                    }
                const size_t step = kind == Request::kSet ? 1 : 24;
                for (size_t i = 0; i < q.varbinds.size() && !given_up_; i += step) {
                    Request part{kind, {}, 0, 0};
                    part.varbinds.assign(q.varbinds.begin() + long(i),
                                         q.varbinds.begin() + long(std::min(i + step, q.varbinds.size())));
                    exchange(part);
                }
            }
        }
    }

    Rng rng_;
    Model model_;
    bool given_up_ = false;

private:
    std::optional<::testing::ScopedTrace> trace_;
    size_t log_seen_ = 0;
    int restarts_ = 0;
};

// ---- rows that vanish -------------------------------------------------------

class Rows : public FuzzTest<Rows> {};
class RowsMax : public FuzzTest<RowsMax> {
public:
    static constexpr const char *kScenario = "scenarios/max.json";
};

TEST_F(Rows, VanishBetweenRequests) { vanishing_rows(200, scaled(14), 2); }
TEST_F(Rows, VanishWithinRequests) { rows_churn(200, scaled(150)); }
TEST_F(RowsMax, VanishBetweenRequests) { vanishing_rows(100, scaled(8), 1); }
TEST_F(RowsMax, VanishWithinRequests) { rows_churn(100, scaled(80)); }

// ---- SETs of every type and edge value ------------------------------------

// The values of the object's own type to try: the edges of the type and of
// the catalogue's range, strings of many lengths, addresses of wrong length.
std::vector<SetValue> edge_values(const Oid &oid, uint8_t type, const Range &range, Rng &rng) {
    std::vector<SetValue> out;
    std::vector<int64_t> numbers;
    if (type == kInteger) numbers = {INT32_MIN, -1, 0, 1, INT32_MAX};
    if (type == kGauge32 || type == kCounter32 || type == kTimeTicks) numbers = {0, 1, INT32_MAX, UINT32_MAX};
    if (type == kCounter64) numbers = {0, 1, -1};
    if (range.bounded && !numbers.empty())
        numbers.insert(numbers.end(), {range.lo - 1, range.lo, range.hi, range.hi + 1});
    for (int64_t n : numbers) out.push_back({oid, type, n, {}, {}});
    std::vector<size_t> lengths = {0, 1, 16, 255, 256, 1400};
    if (type == kOctetString && range.bounded) {
        lengths.insert(lengths.end(), {size_t(range.lo), size_t(range.hi), size_t(range.hi) + 1});
        if (range.lo > 0) lengths.push_back(size_t(range.lo) - 1);
    }
    if (type == kOctetString)
        for (size_t len : lengths) {
            SetValue v = sample_value(oid, type, rng);
            v.bytes.resize(len, 'A');
            out.push_back(v);
        }
    if (type == kIpAddress)
        for (size_t len : {0, 3, 4, 5, 16}) out.push_back({oid, type, 0, std::string(len, '\xff'), {}});
    if (type == kObjectId) {
        out.push_back({oid, type, 0, {}, {0, 0}});
        // The longest OID the protocol carries, every arc at its largest
        // (the first two arcs are bounded by the encoding: 1.3).
        Oid longest(128, 4294967295u);
        longest[0] = 1;
        longest[1] = 3;
        out.push_back({oid, type, 0, {}, longest});
    }
    return out;
}

class Sets : public FuzzTest<Sets> {
protected:
    // A writable object of the catalogues at an instance that exists.
    struct Target {
        std::string name;
        Oid oid;
        uint8_t type;
        Range range;
    };
    std::vector<Target> targets(bool writable) const {
        std::vector<Target> out;
        for (const CatalogueObject *s : model_.scalars)
            if (s->writable == writable && s->type != 0)
                out.push_back({std::string(s->name), child(s->oid, {0}), s->type, s->range});
        for (const Table &t : model_.tables)
            for (const CatalogueColumn *c : t.columns)
                if (c->writable == writable && !t.rows.empty())
                    out.push_back({std::string(c->name), t.instance(*c, t.rows.front()), c->type, c->range});
        return out;
    }

    // A SET of a wrong type beside a valid one: wrongType at the wrong one,
    // and neither object changed.  "" when so, else what went wrong.
    std::string wrong_type(const Target &target, uint8_t type, bool stable) {
        const Oid other_oid = target.oid == kSysLocation ? oids::kSysContact : kSysLocation;
        const std::optional<VarBind> object = read(target.oid), other = read(other_oid);
        const SetValue bad = sample_value(target.oid, type, rng_);
        const SetValue good = SetValue::octets(other_oid, "fuzz " + std::to_string(rng_() % 100000));
        const bool bad_first = rng_() % 2;
        Request q{Request::kSet, bad_first ? std::vector{bad, good} : std::vector{good, bad}, 0, 0};
        Response r;
        if (!object || !other || !exchange(q, &r)) return "";
        std::ostringstream why;
        if (r.error_status != kWrongType || r.error_index != (bad_first ? 1 : 2))
            why << " error status " << r.error_status << " at " << r.error_index;
        const std::optional<VarBind> object_after = read(target.oid), other_after = read(other_oid);
        if (stable && object_after && !same(*object, *object_after)) why << ", wrote " << describe(*object_after);
        if (other_after && !same(*other, *other_after)) why << ", wrote " << describe(*other_after);
        return why.str().empty() ? "" : "\n" + q.describe() + "\n  =>" + why.str();
    }

    // A SET of the object's own type: an edge value out of the range is
    // wrongValue, an address of wrong length or a string outside its SIZE
    // wrongLength, and no other value of the right type is wrongType or
    // notWritable.
    void edge_value(const Target &target, const SetValue &v) {
        Request q{Request::kSet, {v}, 0, 0};
        Response r;
        if (v.type == kIpAddress && v.bytes.size() != 4) {
            // net-snmp's decoder discards a message whose IpAddress is not
            // four octets before any handler sees it; the agent goes on and
            // the object keeps its value.
            const std::optional<VarBind> before = read(target.oid);
            Session quick_reader(this->agent().port(), "public", 300, 0);
            Session quick_writer(this->agent().port(), "private", 300, 0);
            r = q.send(quick_reader, quick_writer);
            if (r.answered) {
                EXPECT_EQ(r.error_status, kWrongLength) << q.describe();
            }
            if (!answering()) recover(q.describe());
            const std::optional<VarBind> after = read(target.oid);
            if (before && after) {
                EXPECT_TRUE(same(*before, *after)) << q.describe() << "\nnow " << describe(*after);
            }
            return;
        }
        if (!exchange(q, &r)) return;
        const bool numeric = v.type != kOctetString && v.type != kIpAddress && v.type != kObjectId;
        if (numeric && target.range.bounded && (v.integer < target.range.lo || v.integer > target.range.hi))
            EXPECT_EQ(r.error_status, kWrongValue) << q.describe();
        else if (v.type == kOctetString && target.range.bounded &&
                 (int64_t(v.bytes.size()) < target.range.lo || int64_t(v.bytes.size()) > target.range.hi))
            EXPECT_EQ(r.error_status, kWrongLength) << q.describe();
        else
            EXPECT_TRUE(r.error_status != kWrongType && r.error_status != kNotWritable &&
                        r.error_status != kWrongLength)
                << "error status " << r.error_status << " for " << q.describe();
    }
};
class SetsMax : public FuzzTest<SetsMax> {
public:
    static constexpr const char *kScenario = "scenarios/max.json";
};

TEST_F(Sets, EveryTypeAndEdgeValueToEveryWritableObject) {
    model_ = Model::read(reader(), 3);
    const std::vector<Target> all = targets(true);
    ASSERT_FALSE(all.empty());
    // Clocks and counters: objects whose value moves by itself over a second
    // and more.
    std::vector<std::optional<VarBind>> first;
    for (const Target &target : all) first.push_back(read(target.oid));
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    for (size_t i = 0; i < all.size(); ++i) {
        const Target &target = all[i];
        SCOPED_TRACE(target.name);
        const std::optional<VarBind> second = read(target.oid);
        const bool stable = first[i] && second && same(*first[i], *second);
        std::string wrong;
        for (uint8_t type : kSetTypes)
            if (type != target.type && !given_up_) wrong += wrong_type(target, type, stable);
        if (!wrong.empty()) ADD_FAILURE() << "SETs of a wrong type not refused with wrongType, or applied:" << wrong;
        for (const SetValue &v : edge_values(target.oid, target.type, target.range, rng_))
            if (!given_up_) edge_value(target, v);
    }
}

TEST_F(Sets, ReadOnlyObjectsRefuseEveryWrite) {
    model_ = Model::read(reader(), 1);
    for (const Target &target : targets(false)) {
        if (given_up_) break;
        const std::optional<VarBind> before = read(target.oid);
        Request q{Request::kSet, {sample_value(target.oid, target.type, rng_)}, 0, 0};
        Response r;
        if (!exchange(q, &r)) continue;
        EXPECT_EQ(r.error_status, kNotWritable) << q.describe();
        const std::optional<VarBind> after = read(target.oid);
        // Counters and clocks move by themselves.
        const bool steady = target.type == kInteger || target.type == kOctetString || target.type == kObjectId;
        if (before && after && steady) {
            EXPECT_TRUE(same(*before, *after)) << q.describe() << "\nnow " << describe(*after);
        }
    }
}

TEST_F(Sets, EdgeIndexes) { edge_indexes(); }

TEST_F(SetsMax, EveryTypeToEveryWritableObject) {
    model_ = Model::read(reader(), 1);
    for (const CatalogueObject *s : model_.scalars) {
        if (!s->writable || given_up_) continue;
        for (uint8_t type : kSetTypes) exchange({Request::kSet, {sample_value(child(s->oid, {0}), type, rng_)}, 0, 0});
    }
    for (const Table &t : model_.tables)
        for (const CatalogueColumn *c : t.columns)
            for (size_t i = 0; c->writable && !t.rows.empty() && i < 3 && !given_up_; ++i) {
                const Oid row = t.rows[random_below(t.rows.size())];
                exchange({Request::kSet,
                          {sample_value(t.instance(*c, row), kSetTypes[random_below(std::size(kSetTypes))], rng_)},
                          0,
                          0});
            }
}

TEST_F(SetsMax, EdgeIndexes) { edge_indexes(); }

// ---- damaged datagrams --------------------------------------------------------

class Datagrams : public FuzzTest<Datagrams> {
protected:
    int socket_ = -1;
    void SetUp() override {
        FuzzTest::SetUp();
        socket_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ASSERT_GE(socket_, 0);
    }
    void TearDown() override {
        if (socket_ >= 0) close(socket_);
        FuzzTest::TearDown();
    }
    void send_raw(const std::string &bytes) {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(agent().port());
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        sendto(socket_, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr *>(&to), sizeof to);
    }
    // Every answer that came back is one well-formed BER message; answers
    // how many came.
    size_t drain() {
        char buf[65536];
        size_t count = 0;
        for (ssize_t n; (n = recv(socket_, buf, sizeof buf, MSG_DONTWAIT)) > 0; ++count)
            EXPECT_TRUE(well_formed_ber(std::string_view(buf, size_t(n))))
                << "answer " << hex(std::string_view(buf, size_t(n)));
        return count;
    }
};

TEST_F(Datagrams, DamagedMessagesLeaveTheAgentAnswering) {
    model_ = Model::read(reader(), 20);
    const size_t total = scaled(5000), batch = 50;
    size_t answers = 0;
    for (size_t sent = 0; sent < total && !given_up_; sent += batch) {
        std::vector<std::string> messages;
        for (size_t i = 0; i < batch; ++i) {
            const std::string valid = random_message(model_, rng_);
            messages.push_back(rng_() % 10 == 0 ? valid : mutate(valid, rng_));
        }
        for (const std::string &m : messages) send_raw(m);
        if (agent().running() && answering()) {
            answers += drain();
            continue;
        }
        // Find the message that did it: one at a time on a new agent.
        const std::string batch_log = new_log_report();
        if (!restart()) break;
        bool found = false;
        for (const std::string &m : messages) {
            send_raw(m);
            if (agent().running() && answering()) continue;
            recover("the datagram " + hex(m));
            found = true;
            break;
        }
        if (!found)
            ADD_FAILURE() << "the agent failed on a batch of " << batch << " datagrams, not on any one\n" << batch_log;
        answers += drain();
    }
    std::printf("%zu datagrams, %zu answers\n", total, answers);
    EXPECT_GT(answers, 0u) << "no datagram reached the agent";
}

}  // namespace
}  // namespace fz
