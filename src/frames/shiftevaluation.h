// Shift evaluation: the drift of the pattern over the series, and the direct beam.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QPointF>
#include <QRectF>

#include <functional>

namespace tessera {

struct ShiftEvaluationOptions {
    bool bKeepPartial = true;  ///< a run that meets a frame it cannot use keeps and saves the shifts it
                               ///< found; else it leaves everything as it was
    bool bSave = true;         ///< write the shift file beside the project
    int nJobs = 1;  ///< regions read and transformed side by side, 4 at the most; the result is the
                    ///< same for each
};

/// Called after each frame: index from 0, its shift, the aligned and filtered region for the view, which
/// is made only then and stands in m_vecFrameImage.
using FnShiftFrameDone =
    std::function<void(int nFrame, const QPointF& ptShift, const CImgObj<float>& imgAligned)>;

/// Measures each frame's shift against the running sum of the aligned frames before it, and the
/// direct beam on that sum.
///
/// Replaces m_listShift, m_dfCenterX, m_dfCenterY (raw pixels of the first frame) and the shift file
/// ".sc". The correlation works on low frequencies of a square region, amplitude-compressed.
/// A region that does not lie wholly inside a frame (frames of another size, the first included) ends
/// the run there with a red line naming the frame, as a frame that cannot be loaded does: a shift
/// measured on pixels of another frame would be a wrong number. A side that is odd is lowered by one
/// pixel, with a line, as spectra are centred by halves; a side below 16 pixels is refused.
/// A run that the report's goOn() stopped says so in red, leaves everything as it was and writes nothing.
///
/// A fit of the beam that leaves the region is not believed: a red line, and the coarse position stands.
///
/// @param rcRegion  raw frame pixels; x, y and width are truncated to whole ones, for the beam too;
///                  its height is not read
/// @return Finished only if all frames were reached, with the reason if the shift file was not written;
///         Refused without frames and with too small a side
RunOutcome runShiftEvaluation(DataSet& dataSet, const QRectF& rcRegion, CRunReport& report,
                              const ShiftEvaluationOptions& options = {},
                              const FnShiftFrameDone& fnFrameDone = {});

}  // namespace tessera
