#include "road/cellresult.h"

#include "crystal/cellarithmetic.h"
#include "crystal/crystalparacal.h"
#include "reciprocal/latticepoints.h"

namespace tessera {

CellResult cellResultOf(const DataSet& dataSet)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    const std::optional<CellParameters> cell = basis ? cellParameters(*basis) : std::nullopt;
    if (!cell) {
        return {};
    }
    CellResult result = {cell, CCrystalParaCal(*cell).getVolume(), {}};
    const LatticePoints listPoint = latticePoints(dataSet);
    if (!listPoint.empty()) {
        result.fit = fitOfLattice(latticeBasisOf(*basis), listPoint);
    }
    return result;
}

}  // namespace tessera
