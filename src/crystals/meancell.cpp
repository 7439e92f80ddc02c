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

}  // namespace

CellParameters cellOfNumbers(const std::array<double, 6>& adf)
{
    return {adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]};
}

MeanCell meanCell(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged)
{
    std::array<double, 6> adfMean = {}, adfSquare = {};
    int nUsed = 0;
    for (size_t n = 0; n < merged.listSettled.size(); ++n) {
        if (!merged.listUsed[n]) {
            continue;
        }
        ++nUsed;
        const SettledCrystal& settled = merged.listSettled[n];
        const std::array<double, 6> adf =
            cellOf(basisInSetting(listCrystal[settled.nCrystal], settled)).numbers();
        for (size_t i = 0; i < adf.size(); ++i) {  // Welford's sums
            const double dfOff = adf[i] - adfMean[i];
            adfMean[i] += dfOff / nUsed;
            adfSquare[i] += dfOff * (adf[i] - adfMean[i]);
        }
    }
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
    const int nParts = 12;  // of an axis: centrings and their settings have halves, thirds and quarters
    std::array<double, 6> adfVariance = {};
    int nUsed = 0;
    for (size_t n = 0; n < merged.listSettled.size(); ++n) {
        if (!merged.listUsed[n]) {
            continue;
        }
        ++nUsed;
        const SettledCrystal& settled = merged.listSettled[n];
        const Crystal& crystal = listCrystal[settled.nCrystal];
        Eigen::Matrix3d matConventional;
        for (int nRow = 0; nRow < 3; ++nRow) {
            for (int i = 0; i < 3; ++i) {
                matConventional(nRow, i) = double(chosen.symmetry.anTransform[nRow][i]) /
                                           std::max(1, chosen.symmetry.nDenominator);
            }
        }
        const Eigen::Matrix3d mat = matConventional * settled.matIndices * nParts;
        ObservationSymmetry direct;  // from the cell of the run, as errors of its edges go together
        direct.nDenominator = nParts;
        for (int nRow = 0; nRow < 3; ++nRow) {
            for (int i = 0; i < 3; ++i) {
                direct.anTransform[nRow][i] = int(std::lround(mat(nRow, i)));
            }
        }
        const std::array<double, 6> adfFree =
            errorsOfSetting(direct, LatticeSystem::Triclinic, crystal.cell, crystal.cellErrors).numbers();
        const std::array<double, 6> adfBound =
            errorsOfSetting(direct, chosen.system, crystal.cell, crystal.cellErrors).numbers();
        for (size_t i = 0; i < adfFree.size(); ++i) {
            adfVariance[i] += adfBound[i] > 0 ? adfFree[i] * adfFree[i] : 0;
        }
    }
    std::array<double, 6> adf = merged.result.cellErrors.numbers();
    for (size_t i = 0; i < adf.size() && nUsed > 0; ++i) {
        adf[i] = std::max(adf[i], std::sqrt(adfVariance[i]) / nUsed);
    }
    return cellOfNumbers(adf);
}

}  // namespace tessera
