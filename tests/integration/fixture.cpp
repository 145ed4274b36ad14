#include "fixture.hpp"

namespace it {

std::vector<uint32_t> expected_port_rows(const swsim::Switch &sw) {
    std::vector<uint32_t> rows;
    for (int u = 0; u < 8; ++u) {
        const swsim::UnitInfo unit = sw.unit(u);
        if (!unit.present) continue;
        for (int p = 0; p < unit.ports; ++p) rows.push_back(port_index(u, p));
    }
    for (int t = 0; t < 128; ++t) {
        const swsim::TrunkInfo trunk = sw.trunk(t);
        if (trunk.configured && !trunk.members.empty()) rows.push_back(trunk_index(t));
    }
    return rows;
}

std::vector<uint32_t> row_indexes(const std::vector<VarBind> &walk, const Oid &column_prefix) {
    std::vector<uint32_t> rows;
    for (const VarBind &vb : walk)
        if (starts_with(vb.oid, column_prefix) && vb.oid.size() > column_prefix.size()) rows.push_back(vb.oid.back());
    return rows;
}

}  // namespace it
