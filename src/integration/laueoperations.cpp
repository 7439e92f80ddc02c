#include "integration/laueoperations.h"

#include <gemmi/symmetry.hpp>

#include <algorithm>
#include <utility>

namespace tessera {

namespace {

/// The space group without translations of each Laue class, in its standard setting.
const std::pair<const char*, const char*> g_aClass[] = {
    {"-1", "P -1"},         {"2/m", "P 1 2/m 1"}, {"mmm", "P m m m"},     {"4/m", "P 4/m"},
    {"4/mmm", "P 4/m m m"}, {"-3", "P -3"},       {"-31m", "P -3 1 m"},   {"-3m1", "P -3 m 1"},
    {"-3m", "P -3 m 1"},    {"6/m", "P 6/m"},     {"6/mmm", "P 6/m m m"}, {"m-3", "P m -3"},
    {"m-3m", "P m -3 m"}};

}  // namespace

std::vector<IndexOperation> laueOperations(const QString& strClass)
{
    std::vector<IndexOperation> listOperation;
    for (const auto& [pszClass, pszGroup] : g_aClass) {
        const gemmi::SpaceGroup* pGroup = strClass == QLatin1String(pszClass)
                                              ? gemmi::find_spacegroup_by_name(pszGroup)
                                              : nullptr;
        if (!pGroup) {
            continue;
        }
        for (const gemmi::Op& op : pGroup->operations().sym_ops) {
            IndexOperation operation;
            for (size_t nRow = 0; nRow < 3; ++nRow) {
                for (size_t nColumn = 0; nColumn < 3; ++nColumn) {
                    // Indices are row vectors; rotations act on them from the right.
                    operation[3 * nRow + nColumn] = op.rot[nColumn][nRow] / gemmi::Op::DEN;
                }
            }
            listOperation.push_back(operation);
        }
    }
    const IndexOperation identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const auto it = std::find(listOperation.begin(), listOperation.end(), identity);
    if (it != listOperation.end()) {
        std::iter_swap(listOperation.begin(), it);
    }
    return listOperation;
}

}  // namespace tessera
