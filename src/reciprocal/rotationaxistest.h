// Rotation axis test: the direction of the axis from the places where the peaks begin to show.
#pragma once

#include "geometry/rotationgeometry.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// What the test found. Angles in degrees, counter-clockwise on the screen from 3 o'clock.
struct RotationAxisTest {
    int nPeaks = 0;
    int nChains = 0;
    double dfMaxAngle = 0;          ///< of the sum of squared distances of the heads from the axis
    double dfMaxAngleWeighted = 0;  ///< of the same, each head divided by the length of its chain
    double dfNormal[2] = {0, 0};    ///< azimuth of the centre of gravity of the heads on either side
    double dfAxis[2] = {-90, -90};  ///< at right angles to it
    bool bFinished = false;         ///< false if the run was stopped; the angles then mean nothing
};

/// Links the peaks over the frames to chains and looks at where each chain begins, its head. The sums of
/// squared distances from 1800 trial axes, and the centres of gravity of the heads on either side of a
/// fixed line, go to the log. Nothing is changed.
///
/// A chain is closed once a frame is 4 or more above the nFrame of its last peak. Few reflections begin
/// near the axis, which is why the heads lie far from it.
///
/// @param listPeakShiftCorrected  one list per frame, dfX2D and dfY2D relative to the direct beam of the
///                                frame (pixels), nFrame filled in
/// @param centres          the beam, for the raw positions of the table
/// @param dfMax2DDistance  strict limit in pixels for a peak to join a chain
RotationAxisTest testRotationAxis(const QList<QList<Peak3D>>& listPeakShiftCorrected,
                                  const BeamCentres& centres, double dfMax2DDistance, CRunReport& report);

}  // namespace tessera
