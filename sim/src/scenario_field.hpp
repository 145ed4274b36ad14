// Checked reading of a scenario's JSON: every value is read through a Field
// that knows its path in the document, so that a problem is reported as
// "ORIGIN: FIELD.PATH: problem".
#pragma once

#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "swsim/control.hpp"

namespace swsim {

using nlohmann::json;

class Field;

struct Source {
    std::string origin;
    [[noreturn]] void fail(const std::string &path, const std::string &problem) const {
        throw Error(origin + ": " + path + ": " + problem);
    }
};

// A JSON value and where it sits in the document.
class Field {
public:
    Field(const Source &src, const json &j, std::string path) : src_(src), j_(j), path_(std::move(path)) {}

    const json &raw() const { return j_; }
    const std::string &path() const { return path_; }
    [[noreturn]] void fail(const std::string &problem) const { src_.fail(path_, problem); }

    bool is_object() const { return j_.is_object(); }
    bool is_array() const { return j_.is_array(); }

    // An object whose keys must all be among `known`.
    void expect_object(std::initializer_list<const char *> known) const {
        if (!j_.is_object()) fail("must be an object");
        for (auto it = j_.begin(); it != j_.end(); ++it) {
            bool ok = false;
            for (const char *k : known) ok |= it.key() == k;
            if (!ok) src_.fail(join(it.key()), "unknown field");
        }
    }
    bool has(const char *key) const { return j_.contains(key); }
    Field at(const char *key) const { return Field(src_, j_.at(key), join(key)); }

    std::vector<Field> items() const {
        if (!j_.is_array()) fail("must be an array");
        std::vector<Field> out;
        for (std::size_t i = 0; i < j_.size(); ++i) out.emplace_back(src_, j_[i], path_ + "[" + std::to_string(i) + "]");
        return out;
    }

    int64_t integer(int64_t lo, int64_t hi) const {
        if (!j_.is_number_integer()) fail("must be an integer");
        int64_t v = j_.is_number_unsigned() && j_.get<uint64_t>() > uint64_t(INT64_MAX) ? INT64_MAX : j_.get<int64_t>();
        if (v < lo || v > hi) fail("must be " + std::to_string(lo) + ".." + std::to_string(hi));
        return v;
    }
    bool boolean() const {
        if (!j_.is_boolean()) fail("must be true or false");
        return j_.get<bool>();
    }
    std::string text(std::size_t max_len) const {
        if (!j_.is_string()) fail("must be a string");
        std::string s = j_.get<std::string>();
        if (s.size() > max_len) fail("must be at most " + std::to_string(max_len) + " characters");
        return s;
    }

    // Optional members with defaults.
    int64_t integer(const char *key, int64_t lo, int64_t hi, int64_t dflt) const {
        return has(key) ? at(key).integer(lo, hi) : dflt;
    }
    bool boolean(const char *key, bool dflt) const { return has(key) ? at(key).boolean() : dflt; }
    std::string text(const char *key, std::size_t max_len, const std::string &dflt) const {
        return has(key) ? at(key).text(max_len) : dflt;
    }

private:
    std::string join(const std::string &key) const { return path_.empty() ? key : path_ + "." + key; }
    const Source &src_;
    const json &j_;
    std::string path_;
};

// Runs a model change, reporting its complaint at `where`.
template <class Body>
void at_field(const Field &where, Body body) {
    try {
        body();
    } catch (const Error &e) {
        where.fail(e.what());
    }
}

}  // namespace swsim
