#include "road/pairrefinement.h"

namespace tessera {

DifferenceVectorRefinement refineCellFromPairs(DataSet& dataSet, const RefinementParameters& parameters,
                                               const PositionRefinementOptions& fit, CRunReport& report)
{
    using PeakLists = QVector<QList<Peak3D>>;
    return runUnitCellRefinement(dataSet, parameters, report, [&](const PeakLists& vecPeak) {
        RefinedPositions refined = refinePeakPosition(dataSet, vecPeak, report, fit);
        return refined.outcome.finished() ? refined.vecPeak : PeakLists();
    });
}

}  // namespace tessera
