// The configuration lock: element 2 of the platform's lock table guards every
// read and write that the module makes.  Accessors never lock; the handlers
// bracket each accessor call with these.
#pragma once

#include "swplatform/platform.h"

namespace snmpapi {

inline constexpr int kConfigLock = 2;

inline void config_read_lock() { lock_read(cfg_lock_table[kConfigLock]); }
inline void config_write_lock() { lock_write(cfg_lock_table[kConfigLock]); }
inline void config_unlock() { lock_free(cfg_lock_table[kConfigLock]); }

}  // namespace snmpapi
