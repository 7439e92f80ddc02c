#include "road/cellresult.h"

#include "crystal/cellarithmetic.h"
#include "crystal/crystalparacal.h"

namespace tessera {

CellResult cellResultOf(const DataSet& dataSet)
{
    const std::optional<CellParameters> cell = cellParametersFromList(dataSet.m_listCell);
    return cell ? CellResult{cell, CCrystalParaCal(*cell).getVolume()} : CellResult();
}

}  // namespace tessera
