// extractIntensity: measures the intensities of peaks with known positions again.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakfilters.h"
#include "frames/peakpositions.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <QVector>

namespace tessera {

/// Measures dfIPoint and dfI2D of the peaks on the smoothed frames, as the peak search does, but with the
/// window of the extraction. All peaks, numbered from 0 by nID, become the merged list.
///
/// At a regular end m_listPeakMerged and m_listPeakMergedShown are replaced. As the numbers then no longer
/// refer to chains of frame peaks or to entries of m_vecReflectionFrame, both are emptied, so that no curve
/// or label shows data of another reflection. A run that was stopped or failed (a frame that cannot be
/// loaded, a peak outside its frame) leaves all these as they were. The peaks that it has measured keep
/// their new intensities.
///
/// @param peaksSorted  one list per frame, dfX2D and dfY2D on the raw frame, pixels; changed in place. May
///                     be m_vecPeakIndexedOnFrame; the run fails if its number of frames changes during the
///                     run
/// @param hunting      its smoothing radius is used
/// @param filters      made anew where they do not fit
/// @param fnFrameDone  called after each frame, to draw circles of the radius of the window
/// @return Refused for another number of frames, and when the call was made during a run and stops it
RunOutcome extractIntensity(DataSet& dataSet, QVector<QList<Peak3D>>& peaksSorted,
                            const PeakHuntingParameters& hunting, const ExtractionParameters& parameters,
                            CPeakFilters& filters, CRunReport& report,
                            const FnFramePositions& fnFrameDone = {});

}  // namespace tessera
