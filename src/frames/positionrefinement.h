// Peak positions refined to fractions of a pixel by fits of Lorentzians.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakpositions.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QVector>

#include <vector>

namespace tessera {

/// How a position refinement works and whom it calls, all from the calling thread.
struct PositionRefinementOptions {
    int nJobs = 1;  ///< peaks of a frame fitted side by side; the result is the same for each
    /// A constant is fitted beside the Lorentzian. Without it a spot that does not stand far above its
    /// background leaves the fit to the background: tessera-bench, spotPositions, measures both.
    bool bConstantBackground = false;
    FnFramePositions fnBeforeFit;  ///< a frame is loaded, its peaks are where they were
    FnFramePositions fnAfterFit;   ///< the same frame, the fitted positions
};

struct RefinedPositions {
    /// One list per frame; those done when the run was stopped or a frame could not be loaded.
    QVector<QList<Peak3D>> vecPeak;
    /// Refused for another number of frames. A run that was stopped in its last frame has a list for each
    /// frame too.
    RunOutcome outcome;
};

/// The peaks with their positions fitted in boxes of 41 × 41 pixels; pixels from 3500 are left out.
///
/// In the returned copies dfX2D, dfY2D are the fitted position, dfX2DCorrected, dfY2DCorrected the one before
/// the fit (raw pixels too), fX3D, fY3D the standard errors of x and y and fZ3D the info of the fit; −1 each
/// where the box was empty or the fit is not believed. They are for the refinement alone and must not go back
/// into m_listPeakFrame. A fit whose centre left its box or the pixels of the frame, or is no number, is not
/// believed: the peak keeps its position, the table shows what the fit gave, and a red line counts such peaks
/// and names the first.
///
/// The log gets a table of 25 columns: frame, h, k, l, dfIPoint, d*, distance to the rotation axis, beam,
/// old and fitted position, fitted position relative to the beam with the peak's stretching, its azimuth,
/// angle to the axis, distance to the beam per index before and after stretching, shift of the position,
/// standard errors, info, symmetry group. A peak in the beam's column has a stretching that is no number;
/// that shows in the table alone.
///
/// @param peaksSorted  one list per frame; frames with an empty list are not loaded
RefinedPositions refinePeakPosition(DataSet& dataSet, const QVector<QList<Peak3D>>& peaksSorted,
                                    CRunReport& report, const PositionRefinementOptions& options = {});

/// The same fits, with dfX2D, dfY2D of the peaks changed in place and nothing else of them.
///
/// Logs a table of 12 columns: number, frame, h, k, l, dfIPoint, old and new position, standard errors, −1
/// of a fit that is not believed; of a run that stopped, for the peaks it reached.
/// @param peaksSorted  may be m_vecPeakIndexedOnFrame; if its number of frames changes under the run, the
///                     run ends
/// @return per frame and peak the values of FitPeak2D, one entry per frame, empty where the run did not
///         get to; without entries where refinePeakPosition is refused
QVector<std::vector<std::vector<double>>> refinePeakPositionOnFrame(
    DataSet& dataSet, QVector<QList<Peak3D>>& peaksSorted, CRunReport& report,
    const PositionRefinementOptions& options = {});

}  // namespace tessera
