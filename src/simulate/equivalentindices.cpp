#include "simulate/equivalentindices.h"

#include "simulate/crystalstructures.h"
#include "simulate/symmetryoperations.h"

#include <algorithm>

namespace tessera {

CEquivalentIndices::CEquivalentIndices(const QString& strCrystal)
{
    const CrystalStructure* pStructure = findCrystalStructure(strCrystal);
    if (!pStructure) {
        return;
    }
    for (const gemmi::Op& operation : closeGroup(pStructure->listGenerator)) {
        for (const gemmi::Op::Rot& rot : {operation.rot, operation.negated_rot()}) {  // Friedel's law
            const gemmi::Op rotation{rot, {0, 0, 0}};
            if (std::find(m_listRotation.begin(), m_listRotation.end(), rotation) == m_listRotation.end()) {
                m_listRotation.push_back(rotation);
            }
        }
    }
    m_strLaueClass = QLatin1String(gemmi::get_spacegroup_by_number(pStructure->nSpaceGroup).laue_str());
}

std::array<int, 3> CEquivalentIndices::standFor(const std::array<int, 3>& anIndex) const
{
    std::array<int, 3> anBest = anIndex;
    for (const gemmi::Op& rotation : m_listRotation) {
        anBest = std::max(anBest, rotation.apply_to_hkl(anIndex));
    }
    return anBest;
}

}  // namespace tessera
