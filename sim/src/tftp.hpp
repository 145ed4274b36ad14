// A small TFTP client (RFC 1350, octet mode) for the simulated switch's
// transfers.  Each packet waits kTimeoutMs for its answer and is sent again
// up to kRetries times, so a server that never answers fails a transfer
// within (kRetries + 1) * kTimeoutMs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace swsim::tftp {

inline constexpr int kTimeoutMs = 1000;
inline constexpr int kRetries = 2;

// Reads `name` from the server (addr host order) into `out`, refusing more
// than `max` bytes.  "" on success, else what went wrong.
std::string get(uint32_t addr, uint16_t port, const std::string &name, std::size_t max, std::vector<uint8_t> &out);
// Writes `data` to the server as `name`.
std::string put(uint32_t addr, uint16_t port, const std::string &name, const std::vector<uint8_t> &data);

}  // namespace swsim::tftp
