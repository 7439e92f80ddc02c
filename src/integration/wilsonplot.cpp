#include "integration/wilsonplot.h"

#include "integration/asymmetricunit.h"
#include "integration/unitcell.h"

#include <gemmi/c4322.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

struct Entry {
    double dfSquare = 0;
    double dfIntensity = 0;
};

/// Slope of the least-squares line; not finite with fewer than three points.
double slopeOf(const std::vector<std::array<double, 2>>& listPoint)
{
    const double dfNone = std::numeric_limits<double>::quiet_NaN();
    const size_t nFewest = 3;
    if (listPoint.size() < nFewest) {
        return dfNone;
    }
    double dfX = 0;
    double dfY = 0;
    for (const auto& aPoint : listPoint) {
        dfX += aPoint[0] / double(listPoint.size());
        dfY += aPoint[1] / double(listPoint.size());
    }
    double dfAbove = 0;
    double dfBelow = 0;
    for (const auto& aPoint : listPoint) {
        dfAbove += (aPoint[0] - dfX) * (aPoint[1] - dfY);
        dfBelow += (aPoint[0] - dfX) * (aPoint[0] - dfX);
    }
    return dfBelow > 0 ? dfAbove / dfBelow : dfNone;
}

}  // namespace

double meanSquareScattering(double dfSquare)
{
    using Table = gemmi::C4322<double>;
    double dfSum = 0;
    for (const gemmi::El element : {gemmi::El::C, gemmi::El::O, gemmi::El::Si}) {
        const double df = Table::get(element).calculate_sf(dfSquare);
        dfSum += df * df / 3;
    }
    return dfSum;
}

WilsonPlot wilsonPlot(const std::vector<MergedReflection>& listMerged, const ObservationSymmetry& symmetry,
                      const CellParameters& cell, const gemmi::GroupOps* pGroup)
{
    WilsonPlot plot;
    plot.dfB = std::numeric_limits<double>::quiet_NaN();
    const CAsymmetricUnit unit(symmetry.ops);
    const std::optional<gemmi::UnitCell> unitCell = unitCellOf(cell);
    if (!unitCell) {
        return plot;
    }
    std::vector<Entry> listEntry;
    for (const MergedReflection& merged : listMerged) {
        const double dfSquare = unitCell->calculate_1_d2(merged.anIndex) / 4;
        const bool bAbsent = pGroup && pGroup->is_systematically_absent(merged.anIndex);
        if (std::isfinite(dfSquare) && dfSquare > 0 && !bAbsent) {
            const int nEpsilon = pGroup ? pGroup->epsilon_factor_without_centering(merged.anIndex)
                                        : unit.epsilon(merged.anIndex);
            listEntry.push_back({dfSquare, merged.dfIntensity / nEpsilon / meanSquareScattering(dfSquare)});
        }
    }
    std::stable_sort(listEntry.begin(), listEntry.end(),
                     [](const Entry& one, const Entry& other) { return one.dfSquare < other.dfSquare; });
    const size_t nInShell = 60;
    const size_t nMostShells = 30;
    const size_t nFewShells = listEntry.size() >= 100 ? 5 : 1;
    const size_t nShells = std::clamp(listEntry.size() / nInShell, nFewShells, nMostShells);
    for (size_t nShell = 0; nShell < nShells; ++nShell) {
        const size_t nFirst = listEntry.size() * nShell / nShells;
        const size_t nEnd = listEntry.size() * (nShell + 1) / nShells;
        double dfSquare = 0;
        double dfIntensity = 0;
        for (size_t n = nFirst; n < nEnd; ++n) {
            dfSquare += listEntry[n].dfSquare / double(nEnd - nFirst);
            dfIntensity += listEntry[n].dfIntensity / double(nEnd - nFirst);
        }
        if (nEnd > nFirst && dfIntensity > 0) {
            plot.listPoint.push_back({dfSquare, std::log(dfIntensity)});
        }
    }
    std::vector<std::array<double, 2>> listFar;
    const double dfNear = 1.0 / (4 * 3 * 3);
    std::copy_if(plot.listPoint.begin(), plot.listPoint.end(), std::back_inserter(listFar),
                 [&](const auto& aPoint) { return aPoint[0] > dfNear; });
    plot.dfB = -slopeOf(listFar.size() < 4 ? plot.listPoint : listFar) / 2;
    return plot;
}

}  // namespace tessera
