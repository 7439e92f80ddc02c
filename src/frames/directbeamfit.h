// fitDirectBeam: fits the direct beam on each frame and compares it with the place that the shifts give.
#pragma once

#include "dataset/dataset.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QPointF>

#include <functional>
#include <vector>

namespace tessera {

/// The beam on one frame, raw pixels.
struct DirectBeamOnFrame {
    int nFrame = 0;              ///< from 0
    QPointF ptExpected;          ///< the direct beam on the first frame plus the shift of the frame
    QPointF ptFitted;            ///< equal to ptExpected where the box is outside the frame
    std::vector<double> vecFit;  ///< the values that FitPeak2D() returns
};

/// Fits the direct beam on each frame and writes the results to the log. The data set keeps nothing of
/// them.
///
/// A Lorentzian is fitted in a box of half size 50 around the expected place, without pixels of 3000 or
/// more. Each frame has one line: frame from 1, expected x and y, fitted x and y, their differences,
/// height, squared half widths, info of the fit. A frame that cannot be loaded is skipped. A frame without
/// a shift is taken as unshifted.
/// @param fnFrameDone  called after the line of a frame, when m_vecFrameImage has its images
/// @return Refused when the call was made during a run and stops it
RunOutcome fitDirectBeam(DataSet& dataSet, CRunReport& report,
                         const std::function<void(const DirectBeamOnFrame&)>& fnFrameDone = {});

}  // namespace tessera
