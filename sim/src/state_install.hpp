// Putting a newly built switch in the place of the state file that every
// user has mapped.
#pragma once

#include <string>

#include "state_file.hpp"

namespace swsim {

// Makes the switch built in `fresh` (at `fresh_path`, beside the target) the
// one at `state_path`.  A state file that users may have open is rewritten in
// place under the configuration write lock: it stays the same file, so a
// running agent keeps it mapped and answers for the new switch from its next
// request on.  A missing or unusable file is replaced by renaming `fresh`
// over it.  `fresh_path` is gone afterwards either way.
void install_state(StateFile &fresh, const std::string &fresh_path, const std::string &state_path);

}  // namespace swsim
