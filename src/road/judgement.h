// Judgement: warnings about implausible results, since no user watches a road.
#pragma once

#include "dataset/dataset.h"
#include "reciprocal/cellfromdifferences.h"
#include "reciprocal/centreoffset.h"
#include "reciprocal/indexing.h"
#include "records/runreport.h"

#include <optional>

namespace tessera {

/// Warns of frames that are displaced by more than 10 pixels from their neighbours, more than drift can do.
/// @return the numbers of these frames, from 1
QList<int> judgeShifts(const QList<QPointF>& listShift, CRunReport& report);

/// Determines the direct beam from the reflections, and warns if it is certainly more than a pixel away.
///
/// The indexed reflections are used unless they are less than half of all: if a wrong beam has kept most from
/// being indexed, those that were indexed in spite of it show least of the error.
/// @return none if the reflections do not determine the beam
std::optional<CentreOffset> judgeCentre(const IndexingResult& result, const DataSet& dataSet,
                                        CRunReport& report);

/// Whether the beam is certainly more than a pixel away.
bool isBeamWrong(const CentreOffset& offset);

/// Warns if the tilts at which reflections were found indicate that the rotation has the opposite sense.
/// @return whether they do
bool judgeRotation(const QList<Peak3D>& listIndexed, const DataSet& dataSet, CRunReport& report);

/// The fraction of the selected reflections that was indexed, 0 to 1.
double indexedShareOf(const IndexingResult& result);

/// Warns if less than half of the reflections were indexed; a correct cell and geometry index at least that
/// many.
void judgeIndexedShare(const IndexingResult& result, CRunReport& report);

/// Whether more than a tenth of the groups of pairs were left out because their members disagree.
bool pairsDisagree(const DifferenceVectorRefinement& found);

/// Warns if pairsDisagree().
/// @param strPairs  name of the pairs in the log, "peak pairs at ..."
void judgePairs(const DifferenceVectorRefinement& found, const QString& strPairs, CRunReport& report);

}  // namespace tessera
