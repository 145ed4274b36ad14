// The "rmon" field of a scenario: the RMON rows the switch boots with.
//
//   "rmon": {"paused": false,
//            "statistics": [{"index": 1, "port": "1/1", "owner": "noc"}],
//            "histories": [{"index": 1, "port": "1/1", "interval": 30, "buckets": 50, "owner": ""}],
//            "alarms": [{"index": 1, "variable": "1.3.6.1.2.1.16.1.1.1.5.1", "interval": 5,
//                        "sample_type": "delta", "startup": 3, "rising": 1000, "falling": 10,
//                        "rising_event": 1, "falling_event": 2, "owner": ""}],
//            "events": [{"index": 1, "description": "", "log": true, "trap": false, "script": 0,
//                        "community": "public", "owner": ""}],
//            "scripts": [{"number": 1, "name": "", "commands": "...", "enabled": true}]}
//
// A "port" is one port or trunk selection (U/P or Tn); "statistics" and
// "histories" items may also select many ports, taking consecutive indexes
// from "index".
#pragma once

#include "rmon.hpp"
#include "scenario_field.hpp"

namespace swsim::rmon {

template <class Select>
void scenario(View &v, const Field &f, Select select) {
    f.expect_object({"paused", "statistics", "histories", "alarms", "events", "scripts"});
    ops::set_paused(v, f.boolean("paused", false));
    auto rows = [&](const char *key, auto add) {
        if (!f.has(key)) return;
        for (const Field &item : f.at(key).items()) {
            if (!item.has("port")) item.fail("needs a port");
            int32_t index = int32_t(item.integer("index", 1, 65535, 1));
            for (auto [unit0, port0] : select(item.at("port"))) at_field(item, [&] { add(item, index++, unit0, port0); });
        }
    };
    rows("statistics", [&](const Field &item, int32_t index, int unit0, int port0) {
        item.expect_object({"index", "port", "owner"});
        ops::add_statistic(v, index, unit0, port0, item.text("owner", 31, ""));
    });
    rows("histories", [&](const Field &item, int32_t index, int unit0, int port0) {
        item.expect_object({"index", "port", "interval", "buckets", "owner"});
        ops::add_history(v, index, unit0, port0, int(item.integer("interval", 1, 3600, 1800)),
                         int(item.integer("buckets", 1, 65535, 50)), item.text("owner", 31, ""));
    });
    if (f.has("scripts"))
        for (const Field &item : f.at("scripts").items()) {
            item.expect_object({"number", "name", "commands", "enabled"});
            at_field(item, [&] {
                ops::set_script(v, int(item.integer("number", 1, SW_RMON_SCRIPTS, 1)), item.text("name", 287, ""),
                                item.text("commands", 1023, ""), item.boolean("enabled", true));
            });
        }
    if (f.has("events"))
        for (const Field &item : f.at("events").items()) {
            item.expect_object({"index", "description", "log", "trap", "script", "community", "owner"});
            Switch::RmonEvent e;
            e.index = int32_t(item.integer("index", 1, 65535, 1));
            e.description = item.text("description", 127, "");
            e.log = item.boolean("log", true);
            e.trap = item.boolean("trap", false);
            e.script = int32_t(item.integer("script", 0, SW_RMON_SCRIPTS, 0));
            e.community = item.text("community", 31, "public");
            e.owner = item.text("owner", 31, "");
            at_field(item, [&] { ops::add_event(v, e); });
        }
    if (f.has("alarms"))
        for (const Field &item : f.at("alarms").items()) {
            item.expect_object({"index", "variable", "interval", "sample_type", "startup", "rising", "falling",
                                "rising_event", "falling_event", "owner"});
            Switch::RmonAlarm a;
            a.index = int32_t(item.integer("index", 1, 65535, 1));
            if (!item.has("variable")) item.fail("needs a variable");
            a.variable = item.at("variable").text(127);
            a.interval = int32_t(item.integer("interval", 1, 3600, 5));
            const std::string type = item.text("sample_type", 8, "delta");
            if (type != "delta" && type != "absolute") item.at("sample_type").fail("must be delta or absolute");
            a.sample_type = type == "delta" ? SW_RMON_DELTA : SW_RMON_ABSOLUTE;
            a.startup = int32_t(item.integer("startup", 1, 3, 3));
            a.rising = int32_t(item.integer("rising", INT32_MIN, INT32_MAX, 0));
            a.falling = int32_t(item.integer("falling", INT32_MIN, INT32_MAX, 0));
            a.rising_event = int32_t(item.integer("rising_event", 0, 65535, 0));
            a.falling_event = int32_t(item.integer("falling_event", 0, 65535, 0));
            a.owner = item.text("owner", 31, "");
            at_field(item, [&] { ops::add_alarm(v, a); });
        }
}

}  // namespace swsim::rmon
