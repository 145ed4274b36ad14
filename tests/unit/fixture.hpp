// A simulated switch per test: the state file is built from an inline JSON
// scenario (or scenarios/default.json), this process's platform library is
// opened on it, and a control handle changes hardware, arms faults and reads
// the journal of platform calls.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "swplatform/platform.h"
#include "swsim/control.hpp"
#include "row_store.hpp"

namespace unit {

inline std::string text(const uint8_t *p, size_t len) { return std::string(reinterpret_cast<const char *>(p), len); }
inline const uint8_t *bytes(const char *s) { return reinterpret_cast<const uint8_t *>(s); }

// An octet-string getter's value (its index arguments first) as text or octets.
template <class Get, class... Index>
std::string read_text(Get get, Index... index) {
    size_t len = 99;
    const uint8_t *p = get(index..., &len);
    return text(p, len);
}
template <class Get, class... Index>
std::vector<uint8_t> read_octets(Get get, Index... index) {
    const std::string s = read_text(get, index...);
    return std::vector<uint8_t>(s.begin(), s.end());
}

class SwitchTest : public ::testing::Test {
protected:
    // The test's scenario as JSON; empty selects scenarios/default.json.
    virtual std::string scenario() const { return "{}"; }

    void SetUp() override {
        rows().clear();
        boot(scenario());
    }
    void TearDown() override {
        sw_.reset();
        std::remove(path_.c_str());
    }

    void boot(const std::string &json) {
        path_ = ::testing::TempDir() + "unit_tests." + std::to_string(::getpid()) + ".state";
        sw_.reset();
        if (json.empty())
            swsim::create_state(path_, SOURCE_DIR "/scenarios/default.json");
        else
            swsim::create_state_from_json(path_, json);
        ::setenv("SWSIM_STATE", path_.c_str(), 1);
        // Each test is a client that has just attached (and is told of
        // every VLAN).
        static bool opened = false;
        ASSERT_EQ(opened ? swsim::platform_reopen() : cfg_init(), 0);
        opened = true;
        sw_ = std::make_unique<swsim::Switch>(path_);
        sw_->journal_enable(true);
        sw_->journal_clear();
    }

    swsim::Switch &sw() { return *sw_; }

    // The platform calls `body` makes.
    template <class Body>
    std::vector<swsim::JournalEntry> calls_of(Body &&body) {
        sw_->journal_clear();
        body();
        return sw_->journal();
    }
    // The same as "call(args)" texts.
    template <class Body>
    std::vector<std::string> call_texts(Body &&body) {
        std::vector<std::string> out;
        for (const auto &c : calls_of(body)) out.push_back(c.call + "(" + c.args + ")");
        return out;
    }
    // Those of them that are calls of `name`.
    template <class Body>
    std::vector<swsim::JournalEntry> calls_named(const std::string &name, Body &&body) {
        std::vector<swsim::JournalEntry> out;
        for (auto &c : calls_of(body))
            if (c.call == name) out.push_back(c);
        return out;
    }
    template <class Body>
    size_t count_calls(const std::string &name, Body &&body) {
        return calls_named(name, body).size();
    }

private:
    std::string path_;
    std::unique_ptr<swsim::Switch> sw_;
};

}  // namespace unit
