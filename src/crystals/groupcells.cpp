#include "crystals/groupcells.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

/// Mean and standard deviation of cells, number by number.
void takeMean(const std::vector<CellParameters>& listCell, CellParameters& mean, CellParameters& deviation)
{
    const double dfRounding = 1e-9;  // of a number: the same cell many times has no spread
    std::array<double, 6> adfMean = {}, adfSquare = {}, adfDeviation = {};
    for (const CellParameters& cell : listCell) {
        for (size_t n = 0; n < 6; ++n) {
            adfMean[n] += cell.numbers()[n] / double(listCell.size());
        }
    }
    for (const CellParameters& cell : listCell) {
        for (size_t n = 0; n < 6 && listCell.size() > 1; ++n) {
            const double dfOff = cell.numbers()[n] - adfMean[n];
            adfSquare[n] += dfOff * dfOff / double(listCell.size() - 1);
        }
    }
    mean = {adfMean[0], adfMean[1], adfMean[2], adfMean[3], adfMean[4], adfMean[5]};
    for (size_t n = 0; n < 6; ++n) {
        const double dfDeviation = std::sqrt(adfSquare[n]);
        adfDeviation[n] = dfDeviation > dfRounding * adfMean[n] ? dfDeviation : 0;
    }
    deviation = {adfDeviation[0], adfDeviation[1], adfDeviation[2],
                 adfDeviation[3], adfDeviation[4], adfDeviation[5]};
}

}  // namespace

void takeMeanOfMembers(const CrystalsJobResult& result, const CellTolerance& tolerance,
                       CompoundGroup& compound)
{
    std::vector<CellParameters> listCell;
    for (const int nMember : compound.group.listMember) {
        const Crystal& crystal = result.listCrystal[nMember];
        const LatticeBasis basis = reducedCell(crystal.cell, crystal.chCentring).basis;
        const std::vector<CellSetting> list = settingsBetween(basis, compound.group.reference, tolerance);
        if (!list.empty()) {  // a member may be further from the reference than from the others
            listCell.push_back(cellOf(list.front().matAxes.cast<double>() * basis));
        }
    }
    takeMean(listCell, compound.cellMean, compound.cellSpread);
}

void takeConventionalCell(const CrystalsJobResult& result, CompoundGroup& compound)
{
    const ObservationSymmetry& symmetry = compound.merged.result.chosen.symmetry;
    Eigen::Matrix3d matConventional;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            matConventional(nRow, n) = double(symmetry.anTransform[nRow][n]) /
                                       std::max(1, symmetry.nDenominator);
        }
    }
    std::vector<CellParameters> listCell;
    for (size_t n = 0; n < compound.merged.listSettled.size(); ++n) {
        const SettledCrystal& settled = compound.merged.listSettled[n];
        if (compound.merged.listUsed[n]) {
            const LatticeBasis basis = directBasisOf(result.listCrystal[settled.nCrystal].cell);
            listCell.push_back(cellOf(matConventional * settled.matIndices * basis));
        }
    }
    CellParameters mean;
    takeMean(listCell, mean, compound.cellDeviation);
    compound.cell = compound.merged.result.cell;
}

}  // namespace tessera
