#include "integration/unitcell.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

std::optional<gemmi::UnitCell> unitCellOf(const CellParameters& cell)
{
    const std::array<double, 6> a = cell.numbers();
    const bool bEdges = std::all_of(a.begin(), a.begin() + 3,
                                    [](double df) { return std::isfinite(df) && df > 0; });
    const bool bAngles = std::all_of(a.begin() + 3, a.end(), [](double df) { return df > 0 && df < 180; });
    if (!bEdges || !bAngles) {
        return std::nullopt;
    }
    const double dfCosA = std::cos(radians(cell.alpha));
    const double dfCosB = std::cos(radians(cell.beta));
    const double dfCosC = std::cos(radians(cell.gamma));
    const double dfSquare = 1 - dfCosA * dfCosA - dfCosB * dfCosB - dfCosC * dfCosC +
                            2 * dfCosA * dfCosB * dfCosC;
    if (!(dfSquare > 1e-9)) {
        return std::nullopt;
    }
    return gemmi::UnitCell(a[0], a[1], a[2], a[3], a[4], a[5]);
}

}  // namespace tessera
