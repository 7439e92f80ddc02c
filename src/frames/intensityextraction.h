// extractIntensity: the intensities of peaks whose positions are known, measured again.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "frames/peakpositions.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QVector>

namespace tessera {

/// Measures dfIPoint and dfI2D of the peaks on the smoothed frames, as peak hunting does but with the window
/// of the extraction, and makes all of them, numbered from 0 by nID, the merged list.
///
/// Replaces m_listPeakMerged and m_listPeakMergedShown at a regular end. Their numbers then no longer name
/// chains of frame peaks, nor entries of m_vecReflectionFrame: both are emptied, so that no curve and no
/// label shows another reflection's data. A run that was stopped or failed (a frame that cannot be loaded, a
/// peak outside its frame) leaves all these as they were, and of the peaks measured so far the intensities
/// alone are new.
///
/// @param peaksSorted  one list per frame, dfX2D and dfY2D on the raw frame, pixels; changed in place. May be
///                     m_vecPeakIndexedOnFrame; if its number of frames changes under the run, the run fails
/// @param hunting      for the smoothing radius; the filters are remade where they do not fit
/// @param fnFrameDone  after each frame, for the circles of the window's radius
/// @return Refused for another number of frames and for the call during a run that stops it
RunOutcome extractIntensity(DataSet& dataSet, QVector<QList<Peak3D>>& peaksSorted,
                            const PeakHuntingParameters& hunting, const ExtractionParameters& parameters,
                            CPeakFilters& filters, CRunReport& report,
                            const FnFramePositions& fnFrameDone = {});

}  // namespace tessera
