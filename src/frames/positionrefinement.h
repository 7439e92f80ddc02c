// Position refinement: refines peak positions to fractions of a pixel by fits of Lorentzians.
#pragma once

#include "dataset/dataset.h"
#include "frames/peakpositions.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QVector>

#include <vector>

namespace tessera {

/// Options of the position refinement. All functions are called by the calling thread.
struct PositionRefinementOptions {
    int nJobs = 1;  ///< peaks of a frame fitted side by side; the result does not depend on it
    /// Fits a constant beside the Lorentzian. Without it, the fit of a weak spot mostly follows the
    /// background. The benchmark spotPositions measures both.
    bool bConstantBackground = false;
    FnFramePositions fnBeforeFit;  ///< called with the positions before the fit when a frame is loaded
    FnFramePositions fnAfterFit;   ///< called with the fitted positions of the frame
};

/// The result of refinePeakPosition().
struct RefinedPositions {
    /// One list per frame that was done before the end of the run.
    QVector<QList<Peak3D>> vecPeak;
    /// Refused for another number of frames. A run that was stopped in its last frame has a list for each
    /// frame, too.
    RunOutcome outcome;
};

/// Fits the positions of peaks in boxes of 41 × 41 pixels, without pixels of 3500 or more.
///
/// In the returned copies, dfX2D and dfY2D are the fitted position, dfX2DCorrected and dfY2DCorrected the
/// position before the fit (raw pixels, too), fX3D and fY3D the standard errors of x and y, and fZ3D the
/// info of the fit; these three are −1 where the box was empty or the fit was rejected. The copies are for
/// the refinement only and must not be put into m_listPeakFrame. A fit is rejected if its centre is outside
/// its box or the frame, or is not finite. The peak then keeps its position, the table shows the fitted
/// values, and a red line tells how many fits were rejected and names the first of them.
///
/// The log gets a table of 25 columns: frame, h, k, l, dfIPoint, d*, distance to the rotation axis, beam,
/// old and fitted position, fitted position relative to the beam with the stretching of the peak, its
/// azimuth, angle to the axis, distance to the beam per index before and after stretching, shift of the
/// position, standard errors, info, symmetry group. A peak in the column of the beam has a stretching that
/// is not finite, which only shows in the table.
///
/// @param peaksSorted  one list per frame; frames with an empty list are not loaded
RefinedPositions refinePeakPosition(DataSet& dataSet, const QVector<QList<Peak3D>>& peaksSorted,
                                    CRunReport& report, const PositionRefinementOptions& options = {});

/// Does the same fits, and changes only dfX2D and dfY2D of the peaks in place.
///
/// Logs a table of 12 columns: number, frame, h, k, l, dfIPoint, old and new position, standard errors,
/// which are −1 for a rejected fit. If the run was stopped, the table has the peaks up to there.
/// @param peaksSorted  may be m_vecPeakIndexedOnFrame; the run ends if its number of frames changes during
///                     the run
/// @return for each frame and peak the values of FitPeak2D(). There is one entry per frame, which is empty
///         where the run did not reach it; no entries where refinePeakPosition() would be refused
QVector<std::vector<std::vector<double>>> refinePeakPositionOnFrame(
    DataSet& dataSet, QVector<QList<Peak3D>>& peaksSorted, CRunReport& report,
    const PositionRefinementOptions& options = {});

}  // namespace tessera
