#include "crystals/meancell.h"

#include "crystals/crystalmerging.h"
#include "integration/settingcell.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Rows a, b, c of a crystal in the setting of the group.
LatticeBasis basisInSetting(const Crystal& crystal, const SettledCrystal& settled)
{
    const ReducedCell reduced = reducedCell(crystal.cell, crystal.chCentring);
    // Axes transform as their indices do: first to the reduced cell, then to the setting.
    return (settled.matIndices * reduced.matIndices.inverse()) * reduced.basis;
}

/// Calls fn(crystal, settled) for each crystal that is used, in the order of listSettled.
template <class Fn>
void forEachUsed(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged, Fn fn)
{
    for (size_t n = 0; n < merged.listSettled.size(); ++n) {
        if (merged.listUsed[n]) {
            const SettledCrystal& settled = merged.listSettled[n];
            fn(listCrystal[settled.nCrystal], settled);
        }
    }
}

/// The axes of the conventional setting of the chosen symmetry, from those of the setting of the group.
Eigen::Matrix3d toConventional(const ObservationSymmetry& symmetry)
{
    Eigen::Matrix3d mat;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int i = 0; i < 3; ++i) {
            mat(nRow, i) = double(symmetry.anTransform[nRow][i]) / std::max(1, symmetry.nDenominator);
        }
    }
    return mat;
}

/// The change of the axes of a crystal to the conventional setting.
ObservationSymmetry directChange(const Eigen::Matrix3d& matConventional, const SettledCrystal& settled)
{
    const int nParts = 12;  // of an axis: centrings and their settings have halves, thirds and quarters
    const Eigen::Matrix3d mat = matConventional * settled.matIndices * nParts;
    ObservationSymmetry direct;
    direct.nDenominator = nParts;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int i = 0; i < 3; ++i) {
            direct.anTransform[nRow][i] = int(std::lround(mat(nRow, i)));
        }
    }
    return direct;
}

}  // namespace

CellParameters cellOfNumbers(const std::array<double, 6>& adf)
{
    return {adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]};
}

MeanCell meanCell(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged)
{
    std::array<double, 6> adfMean = {}, adfSquare = {};
    int nUsed = 0;
    forEachUsed(listCrystal, merged, [&](const Crystal& crystal, const SettledCrystal& settled) {
        ++nUsed;
        const std::array<double, 6> adf = cellOf(basisInSetting(crystal, settled)).numbers();
        for (size_t i = 0; i < adf.size(); ++i) {  // Welford's sums
            const double dfOff = adf[i] - adfMean[i];
            adfMean[i] += dfOff / nUsed;
            adfSquare[i] += dfOff * (adf[i] - adfMean[i]);
        }
    });
    for (double& df : adfSquare) {
        df = nUsed > 1 ? std::sqrt(df / (nUsed - 1)) : 0;
    }
    MeanCell cell;
    cell.mean = cellOfNumbers(adfMean);
    cell.spread = cellOfNumbers(adfSquare);
    cell.basis = directBasisOf(cell.mean);
    return cell;
}

CellParameters errorsOfMean(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged)
{
    const LaueCandidate& chosen = merged.result.chosen;
    const Eigen::Matrix3d matConventional = toConventional(chosen.symmetry);
    std::array<double, 6> adfVariance = {};
    int nUsed = 0;
    forEachUsed(listCrystal, merged, [&](const Crystal& crystal, const SettledCrystal& settled) {
        ++nUsed;
        // From the cell of the run, as errors of its edges go together.
        const ObservationSymmetry direct = directChange(matConventional, settled);
        const std::array<double, 6> adfFree =
            errorsOfSetting(direct, LatticeSystem::Triclinic, crystal.cell, crystal.cellErrors).numbers();
        const std::array<double, 6> adfBound =
            errorsOfSetting(direct, chosen.system, crystal.cell, crystal.cellErrors).numbers();
        for (size_t i = 0; i < adfFree.size(); ++i) {
            adfVariance[i] += adfBound[i] > 0 ? adfFree[i] * adfFree[i] : 0;
        }
    });
    std::array<double, 6> adf = merged.result.cellErrors.numbers();
    for (size_t i = 0; i < adf.size() && nUsed > 0; ++i) {
        adf[i] = std::max(adf[i], std::sqrt(adfVariance[i]) / nUsed);
    }
    return cellOfNumbers(adf);
}

}  // namespace tessera
