// Checks the content of a state file whose header is valid against the
// switch's limits, so that a damaged file is refused instead of read as
// truth: counts, lengths and indexes that the platform calls and their
// callers size loops and buffers by.
#pragma once

#include <string>

#include "state_file.hpp"

namespace swsim {

// "" if every check passes, else "<section> section: <what is wrong>" for
// the first damage found.
std::string find_damage(const View &v);

}  // namespace swsim
