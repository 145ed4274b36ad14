#include "util.hpp"

#include <cstdio>

#include "layout.hpp"

namespace swsim {

std::string mac_text(const uint8_t mac[6]) {
    char buf[18];
    std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
                  mac[5]);
    return buf;
}

bool parse_mac(const std::string &text, uint8_t mac[6]) {
    if (text.size() != 17) return false;
    uint8_t out[6];
    for (int i = 0; i < 6; ++i) {
        if (i > 0 && text[3 * i - 1] != ':' && text[3 * i - 1] != '-') return false;
        unsigned v = 0;
        for (int k = 0; k < 2; ++k) {
            char c = text[3 * i + k];
            int d = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                                   : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
            if (d < 0) return false;
            v = v * 16 + unsigned(d);
        }
        out[i] = uint8_t(v);
    }
    std::copy(out, out + 6, mac);
    return true;
}

std::string trunk_name(int trunk0) { return "trunk " + std::to_string(human(trunk0)); }

std::string port_name(int unit0, int port0) {
    if (unit0 == 0 && port0 >= layout::kTrunkPortBase) return trunk_name(port0 - layout::kTrunkPortBase);
    return std::to_string(human(unit0)) + "/" + std::to_string(human(port0));
}

}  // namespace swsim
