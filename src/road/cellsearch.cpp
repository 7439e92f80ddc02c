#include "road/cellsearch.h"

#include "reciprocal/cellcommit.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/checkedcellhunting.h"
#include "reciprocal/latticehunting.h"

namespace tessera {

CellSearchResult searchCell(DataSet& dataSet, const QList<Peak3D>& listSelection, const CellSearch& search,
                            CRunReport& report)
{
    CellSearchResult result;
    if (search.range.m_method != CellSearchMethod::DifferenceVectors || search.range.m_bAutoRange) {
        result.end = runLatticeHunting(dataSet, listSelection, search.range, search.dfIndexThreshold, report,
                                       search.nJobs, search.strLatticeHost);
    } else if (search.poorCell == PoorCell::SearchedAgain) {
        result.end = runCheckedCellHunting(dataSet, listSelection, search.range, search.dfIndexThreshold,
                                           report, search.nJobs);
    } else {
        result.end = runUnitCellHunting(dataSet, listSelection, search.range, report, search.nJobs,
                                        search.strLatticeHost);
    }
    if (!result.end.finished()) {
        return result;
    }
    report.forgetReason();  // the reason of the repeated search, which found nothing better
    noteCellMade(dataSet);
    if (search.bSave && search.fnBeforeSave) {
        search.fnBeforeSave();
    }
    result.bSaved = search.bSave && saveProjectCell(dataSet, report);
    if (search.poorCell == PoorCell::Told) {
        adviseOnCell(dataSet, listSelection, search.range, search.dfIndexThreshold, report);
    }
    return result;
}

}  // namespace tessera
