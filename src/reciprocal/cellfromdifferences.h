// Cell refinement from difference vectors: the distances of indexed peaks of one frame, which depend neither
// on the direct beam nor, but for their indices, on the tilt.
#pragma once

#include "crystal/cellrefinement.h"
#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <functional>
#include <optional>

namespace tessera {

/// What the run found.
struct DifferenceVectorRefinement {
    std::optional<CellRefinement> refinement;  ///< none if no cell came out of a fit
    QList<Peak3D> listDifference;              ///< one record per accepted group: indices and mean d*
    qint64 nPairs = 0;
    int nGroupsRejected = 0;
    int nVectorsRejected = 0;
};

/// Measures the peaks' positions anew to a fraction of a pixel; the same shape goes in and comes out, and
/// fewer lists when the work was stopped. In the peaks that come out dfX2DCorrected, dfY2DCorrected hold the
/// former position and fX3D, fY3D the standard errors of the new one (pixels).
using FnRefinePositions = std::function<QVector<QList<Peak3D>>(const QVector<QList<Peak3D>>&)>;

/// Refines the cell in force, through unitCellRefinement(), against the mean lengths of the difference
/// vectors of indexed peaks, one mean for each triple of index differences.
///
/// Only the plane of the pattern is measured: the curvature of the Ewald sphere between the two peaks is
/// not corrected for, which costs some 0.02% in the lengths. The stretching of the data set is undone
/// whether or not it is applied elsewhere, by the direction of the difference rather than those of the two
/// peaks: an amplitude of 1% leaves some 0.2% in the lengths. All means of a peak share its error, so that
/// the e.s.d. come out two to three times too small.
/// A group whose d* spread by 2 pixels or more is left out. The result goes to the log and to the caller;
/// the data set keeps its cell. Table quotients with a divisor of 0 show 0. The table of pairs is one log
/// entry, or several of 100 000 rows each, as a longer one cannot be held in one text; a run that is stopped
/// between these keeps the cell that it found.
///
/// @param vecPeak            one list per frame, raw pixels, indices; those of m_vecPeakIndexedOnFrame
/// @param fnRefinePositions  called when m_bRefine2D is set; without one the positions go on as they are
DifferenceVectorRefinement refineCellFromDifferenceVectors(const QVector<QList<Peak3D>>& vecPeak,
                                                           const DataSet& dataSet,
                                                           const RefinementParameters& parameters,
                                                           CRunReport& report,
                                                           const FnRefinePositions& fnRefinePositions = {});

/// The run of the page: refineCellFromDifferenceVectors() on the indexed peaks of the data set, which must
/// have been indexed before (a red line if not).
DifferenceVectorRefinement runUnitCellRefinement(const DataSet& dataSet,
                                                 const RefinementParameters& parameters, CRunReport& report,
                                                 const FnRefinePositions& fnRefinePositions = {});

}  // namespace tessera
