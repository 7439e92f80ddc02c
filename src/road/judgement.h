// Judgement: what must be said of results that no user looks at, so that a wrong one is not taken for good.
#pragma once

#include "dataset/dataset.h"
#include "reciprocal/cellfromdifferences.h"
#include "reciprocal/centreoffset.h"
#include "reciprocal/indexing.h"
#include "records/runreport.h"

#include <optional>

namespace tessera {

/// Says which frames moved by more than 10 pixels against their neighbours, which no drift does in one frame.
/// @return their numbers, from 1
QList<int> judgeShifts(const QList<QPointF>& listShift, CRunReport& report);

/// Says where the reflections would have the direct beam, and warns where that is more than a pixel away and
/// certain.
///
/// Those that were indexed are asked, unless they are less than half: a wrong beam itself keeps reflections
/// from being indexed, and those that fit in spite of it tell least of it.
/// @return none where the reflections do not determine the beam
std::optional<CentreOffset> judgeCentre(const IndexingResult& result, const DataSet& dataSet,
                                        CRunReport& report);

/// Whether the beam is more than a pixel away, and certainly so.
bool isBeamWrong(const CentreOffset& offset);

/// Warns where the tilts of the reflections say that the series was turned the other way.
/// @return whether they do
bool judgeRotation(const QList<Peak3D>& listIndexed, const DataSet& dataSet, CRunReport& report);

/// The part of the selected reflections that was indexed, 0 to 1.
double indexedShareOf(const IndexingResult& result);

/// Warns where less than half of the reflections were indexed, which a right cell and geometry index at the
/// least.
void judgeIndexedShare(const IndexingResult& result, CRunReport& report);

/// Whether more than a tenth of the groups of pairs were left out, as the members of each disagree.
bool pairsDisagree(const DifferenceVectorRefinement& found);

/// Warns where more than a tenth of the groups of pairs were left out, as the members of each disagree.
/// @param strPairs  "peak pairs at ...", as the log calls them
void judgePairs(const DifferenceVectorRefinement& found, const QString& strPairs, CRunReport& report);

}  // namespace tessera
