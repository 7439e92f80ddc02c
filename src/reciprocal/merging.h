// Merging: each chain of the peaks of one reflection reduced to one record.
#pragma once

#include "dataset/dataset.h"
#include "geometry/rotationgeometry.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"

#include <vector>

namespace tessera {

/// What a merge leaves beside the lists of the data set.
struct PeakMergingResult {
    RunOutcome outcome{RunEnd::Stopped, {}};  ///< but for Finished the data set is as it was
    QList<int> listStreakIndex;               ///< places of the streaks' peaks in m_listPeakMergedShown
    int nPeaks = 0;                           ///< peaks in all chains
    int nNotPositive = 0;    ///< chains that gave nothing because no peak has a positive intensity
    int nOutsideLimits = 0;  ///< chosen peaks that the intensity or resolution limits kept out
};

/// Links the peaks of m_listPeakFrameShown into chains, frame by frame, and merges each chain.
///
/// Replaces m_listPeakChain, m_listPeakMerged, m_listPeakMergedShown and m_nIntensityMode, and fits the
/// curves through the frames (dfIntFit, dfFrameFit, dfHalfWidth of m_listPeakMerged). Refuses with a red line
/// when the frame counts of peaks, shifts and tilts differ.
///
/// @param pvecSelected  null: all peaks. Else one flag per nID of m_listPeakFrame: 0 keeps the peak out, and
///                      so does an nID beyond the flags, so that no flags at all select nothing.
/// @param nJobs         threads; the result is the same for every number
PeakMergingResult peakReduction3D(DataSet& dataSet, const PeakMergingParameters& parameters,
                                  const std::vector<char>* pvecSelected, CRunReport& report, int nJobs = 1);

/// Merges one chain into the weighted mean of its points, with the greatest weight as intensity.
///
/// @param listChain       peaks of one reflection, positions relative to the direct beam
/// @param nIntensityMode  the weight: 1 dfI2D, else dfIPoint; only weights above 0 count
/// @return false, with peakOut untouched, when no weight counts
bool mergeReflectionsMax(Peak3D& peakOut, const QList<Peak3D>& listChain, const BeamCentres& centres,
                         int nIntensityMode);

/// Merges one chain as mergeReflectionsMax does with the weight dfIPoint, and takes as intensity the
/// integral along the path through reciprocal space (of dfI2D in mode 1, else dfIPoint), times 100.
///
/// @return false, with peakOut untouched, for fewer than 2 peaks or when no weight counts
bool mergeReflectionsLineIntegration(Peak3D& peakOut, const QList<Peak3D>& listChain,
                                     const BeamCentres& centres, int nIntensityMode);

}  // namespace tessera
