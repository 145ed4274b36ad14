// Row stand-ins of the Ethernet statistics, transceiver and traffic control
// tables (see row_store.hpp): two-integer rows are recorded in
// rows().keys as "index/second".
#pragma once

#include <cstdint>

namespace unit {
void *add_int_int_row(int32_t index, int32_t second);
}
