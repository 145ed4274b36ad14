// Ethernet ring protection: eapsInfoTable lists the configured ring domains
// (identifiers 0..63, so a row with index 0 is legal) with name, role and the
// state the platform keeps in its ring status block.
#include <algorithm>
#include <cstdio>

#include "swplatform/platform.h"
#include "swplatform/records_l2proto.hpp"
#include "tables/catalogue.hpp"

namespace {

constexpr size_t kNameArea = 50;

// The platform answers a missing domain with -1, so -1 itself must not pass.
bool domain_exists(int32_t id) {
    return id >= 0 && id < SW_EAPS_DOMAINS && verify_created_eaps_domain(id) == id;
}

}  // namespace

extern "C" {

// 1 when at least one row was added.
int init_index_eapsInfoTable(void *(*create)(int32_t)) {
    int added = 0;
    for (int32_t id = 0; id < SW_EAPS_DOMAINS; ++id)
        if (domain_exists(id)) {
            create(id);
            added = 1;
        }
    return added;
}

// A deleted domain's row stays until the population leaves it out: the row
// check only answers.
int exists_entry_eapsInfoTable(int32_t id) { return domain_exists(id) ? 1 : 0; }

int32_t get_eapsInfoId(int32_t id) { return id; }

const uint8_t *get_eapsInfoName(int32_t id, size_t *len) {
    static char name[kNameArea];
    name[0] = '\0';
    *len = 0;
    if (!domain_exists(id)) return reinterpret_cast<const uint8_t *>(name);
    const char *text = cfg_get_eaps_name(id);
    const int n = std::snprintf(name, sizeof name, "%s", text != nullptr ? text : "");
    *len = n < 0 ? 0 : std::min(size_t(n), sizeof name - 1);
    return reinterpret_cast<const uint8_t *>(name);
}

// master(1) or transit(2).
int32_t get_eapsInfoMode(int32_t id) {
    if (!domain_exists(id)) return 0;
    return cfg_get_eaps_is_master(id) != 0 ? 1 : 2;
}

int32_t get_eapsInfoState(int32_t id) {
    if (!domain_exists(id)) return 0;
    const uint8_t *block = status_get_eaps();
    return block != nullptr ? int32_t(swp::eaps_status::state(block, id)) : 0;
}

}  // extern "C"
