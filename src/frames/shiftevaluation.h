// Shift evaluation: measures the drift of the pattern over the series, and the direct beam.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QPointF>
#include <QRectF>

#include <functional>

namespace tessera {

/// Options of the shift evaluation.
struct ShiftEvaluationOptions {
    bool bKeepPartial = true;  ///< a run that cannot use a frame keeps and saves the shifts before it; else
                               ///< it changes nothing
    bool bSave = true;         ///< write the shift file beside the project
    int nJobs = 1;             ///< regions read side by side, at most 4; the result does not depend on it
};

/// Called after each frame with its index from 0, its shift, and the aligned and filtered region for the
/// view, which m_vecFrameImage has then. The region is made only if there is such a function.
using FnShiftFrameDone =
    std::function<void(int nFrame, const QPointF& ptShift, const CImgObj<float>& imgAligned)>;

/// Measures the shift of each frame against the running sum of the aligned frames before it, and the direct
/// beam on that sum.
///
/// Replaces m_listShift, m_dfCenterX, m_dfCenterY (raw pixels of the first frame) and the shift file ".sc".
/// The correlation uses the low frequencies of a square region, with compressed amplitudes. A region that
/// is not wholly inside a frame, also the first one, ends the run with a red line that names the frame, as
/// does a frame that cannot be loaded. An odd side is reduced by one pixel, with a line, as the layout of
/// spectra needs even sides; a side below 16 pixels is refused. A run that was stopped by goOn() logs a red
/// line, leaves everything as it was and writes nothing.
///
/// If the fit of the beam leaves the region, a red line is logged and the coarse position is used.
///
/// @param rcRegion  raw frame pixels; x, y and width are truncated to whole numbers, also for the beam; the
///                  height is not used
/// @return Finished only if all frames were reached, with the reason if the shift file was not written;
///         Refused without frames and for too small a side
RunOutcome runShiftEvaluation(DataSet& dataSet, const QRectF& rcRegion, CRunReport& report,
                              const ShiftEvaluationOptions& options = {},
                              const FnShiftFrameDone& fnFrameDone = {});

}  // namespace tessera
