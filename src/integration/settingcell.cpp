#include "integration/settingcell.h"

#include "integration/unitcell.h"

#include "lattice/latticebasis.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

std::array<double, 6> transformed(const Eigen::Matrix3d& matTransform, const std::array<double, 6>& aCell)
{
    const std::optional<gemmi::UnitCell> cell = unitCellOf(
        {aCell[0], aCell[1], aCell[2], aCell[3], aCell[4], aCell[5]});
    if (!cell) {
        return {};
    }
    LatticeBasis basis;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            basis(nRow, n) = cell->orth.mat[n][nRow];
        }
    }
    return cellOf(matTransform * basis).numbers();
}

/// The edges that a lattice system makes equal.
std::vector<std::vector<size_t>> equalEdges(LatticeSystem system)
{
    switch (system) {
        case LatticeSystem::Tetragonal:
        case LatticeSystem::Rhombohedral:
        case LatticeSystem::Hexagonal:
            return {{0, 1}};
        case LatticeSystem::Cubic:
            return {{0, 1, 2}};
        default:
            return {};
    }
}

}  // namespace

CellParameters errorsOfSetting(const ObservationSymmetry& symmetry, LatticeSystem system,
                               const CellParameters& cellInForce, const CellParameters& errors)
{
    Eigen::Matrix3d matTransform;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            matTransform(nRow, n) = double(symmetry.anTransform[nRow][n]) /
                                    std::max(1, symmetry.nDenominator);
        }
    }
    const std::array<double, 6> aCell = cellInForce.numbers();
    const std::array<double, 6> aError = errors.numbers();
    std::array<double, 6> aVariance = {};
    for (size_t n = 0; n < aCell.size(); ++n) {
        const double dfStep = 1e-4;
        std::array<double, 6> aMore = aCell;
        std::array<double, 6> aLess = aCell;
        aMore[n] += dfStep;
        aLess[n] -= dfStep;
        const std::array<double, 6> aHigh = transformed(matTransform, aMore);
        const std::array<double, 6> aLow = transformed(matTransform, aLess);
        for (size_t nTo = 0; nTo < aCell.size(); ++nTo) {
            const double df = (aHigh[nTo] - aLow[nTo]) / (2 * dfStep) * aError[n];
            aVariance[nTo] += std::isfinite(df) ? df * df : 0;
        }
    }
    for (const std::vector<size_t>& listEdge : equalEdges(system)) {
        double dfSum = 0;
        for (const size_t n : listEdge) {
            dfSum += aVariance[n];
        }
        for (const size_t n : listEdge) {
            aVariance[n] = dfSum / double(listEdge.size() * listEdge.size());
        }
    }
    for (size_t n = 3; n < aVariance.size(); ++n) {
        const bool bFree = system == LatticeSystem::Triclinic ||
                           (system == LatticeSystem::Monoclinic && n == 4);
        aVariance[n] = bFree ? aVariance[n] : 0;
    }
    return {std::sqrt(aVariance[0]), std::sqrt(aVariance[1]), std::sqrt(aVariance[2]),
            std::sqrt(aVariance[3]), std::sqrt(aVariance[4]), std::sqrt(aVariance[5])};
}

}  // namespace tessera
