// What the agent should show, read from the module's own catalogues
// (scalars/catalogue.def, tables/catalogue.def, mibs/routing/hand_tables.def):
// every scalar and table with
// its OID, and whether this build serves it to managers.
#pragma once

#include <string_view>
#include <vector>

#include "snmp_client.hpp"

namespace it {

struct CatalogueObject {
    std::string_view name;
    bool table;   // else a scalar
    bool served;  // scalars: state ON; tables: REGISTERED and BUILT
    Oid oid;      // scalars without the instance 0
};

inline const std::vector<CatalogueObject> &catalogue() {
    static const std::vector<CatalogueObject> objects = {
#define SCALAR(name, access, type, range, handler, state, ...) \
    {#name, false, std::string_view(#state) == "ON", Oid{__VA_ARGS__}},
#include "scalars/catalogue.def"
#undef SCALAR
#define TABLE(name, access, registration, state, indexes, lo, hi, writable, ...) \
    {#name, true, std::string_view(#registration) == "REGISTERED" && std::string_view(#state) == "BUILT", Oid{__VA_ARGS__}},
#include "tables/catalogue.def"
#undef TABLE
#define HAND_TABLE(name, ...) {#name, true, true, Oid{__VA_ARGS__}},
#include "mibs/routing/hand_tables.def"
#undef HAND_TABLE
    };
    return objects;
}

}  // namespace it
