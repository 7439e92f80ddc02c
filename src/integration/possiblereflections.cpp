#include "integration/possiblereflections.h"

#include "integration/asymmetricunit.h"
#include "integration/unitcell.h"

#include "geometry/angles.h"

#include <cmath>

namespace tessera {

bool forEachPossibleReflection(const ObservationSymmetry& symmetry, const CellParameters& cell, double dfDMin,
                               const std::function<void(const std::array<int, 3>&, double)>& fnReflection)
{
    const std::optional<gemmi::UnitCell> unitCell = unitCellOf(cell);
    if (!unitCell) {
        return false;
    }
    const double dfMost = 1 / dfDMin;
    const double dfPoints = 4 * g_dfPi / 3 * unitCell->volume * std::pow(dfMost, 3);
    const double dfMostPoints = 5e6;
    if (!(dfDMin > 0) || !(dfPoints < dfMostPoints)) {
        return false;
    }
    const CAsymmetricUnit unit(symmetry.ops);
    const double dfSlack = 1 + 1e-6;  // includes the reflection that determines the limit
    const gemmi::Miller anMost = unitCell->get_hkl_limits(dfDMin / dfSlack);
    gemmi::Miller an = {};
    for (an[0] = -anMost[0]; an[0] <= anMost[0]; ++an[0]) {
        for (an[1] = -anMost[1]; an[1] <= anMost[1]; ++an[1]) {
            for (an[2] = -anMost[2]; an[2] <= anMost[2]; ++an[2]) {
                const double dfDStar = std::sqrt(unitCell->calculate_1_d2(an));
                if (dfDStar > 0 && dfDStar <= dfMost * dfSlack && !unit.isAbsent(an) && unit.contains(an)) {
                    fnReflection(an, dfDStar);
                }
            }
        }
    }
    return true;
}

}  // namespace tessera
