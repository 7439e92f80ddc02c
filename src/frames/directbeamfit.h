// fitDirectBeam: the direct beam fitted on each frame, beside where the shifts expect it.
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
    QPointF ptExpected;          ///< the beam on the first frame plus the frame's shift
    QPointF ptFitted;            ///< ptExpected where the box lies outside the frame
    std::vector<double> vecFit;  ///< the values of FitPeak2D
};

/// Fits the direct beam on each frame and logs it beside its expected place; stores nothing.
///
/// Lorentzian in a box of half size 50 around the expected place, pixels from 3000 left out. One line a
/// frame: frame from 1, expected x and y, fitted x and y, their differences, height, squared half widths,
/// info of the fit. A frame that cannot be loaded is skipped. A frame without a shift counts as unshifted.
/// @param fnFrameDone  after a frame's line; its images stand in m_vecFrameImage
/// @return Refused for the call during a run that stops it
RunOutcome fitDirectBeam(DataSet& dataSet, CRunReport& report,
                         const std::function<void(const DirectBeamOnFrame&)>& fnFrameDone = {});

}  // namespace tessera
