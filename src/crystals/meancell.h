// Mean cell: of the crystals that are merged, with their spread and its errors.
#pragma once

#include "crystals/crystal.h"
#include "lattice/latticebasis.h"
#include "records/cellparameters.h"

#include <array>
#include <vector>

namespace tessera {

struct MergedCrystals;

/// The cells of the used crystals in the setting of the group.
struct MeanCell {
    CellParameters mean;
    CellParameters spread;
    LatticeBasis basis;  ///< rows of the mean, a along x
};

CellParameters cellOfNumbers(const std::array<double, 6>& adf);

/// Each used crystal counts alike.
MeanCell meanCell(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged);

/// Standard errors of the mean cell in the chosen setting: what the spread of the crystals tells, but not
/// less than what their own errors do. One crystal alone has no spread, and few crystals may lie close by
/// chance. Edges that the system makes equal are taken to have been equal in the runs, too: their mean is
/// known no better than each.
CellParameters errorsOfMean(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged);

}  // namespace tessera
