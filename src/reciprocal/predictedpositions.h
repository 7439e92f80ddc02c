// Predicted positions: where the cell in force puts reflections on a frame.
#pragma once

#include "dataset/dataset.h"

#include <QList>
#include <QSize>

namespace tessera {

/// The reflections with d* up to `dfMaxDStar` (Å⁻¹) that cross the Ewald sphere at a tilt nearest to that of
/// frame `nFrame`, and within half a step of it. Half a step is half the median difference of neighbouring
/// tilts (1 degree for a single frame), so that gaps of the series stay empty. Frames of equal tilt show the
/// same reflections; else each crossing is on one frame. Absences of the space group are not left out.
///
/// The geometry is the mapping's: sphere about (0, 0, +1/λ), tilt relaxation included, the pixel on the
/// line from its centre. A reflection close to the axis that is cut twice shows both times.
///
/// Each record has indices, point, dfDStar, the tilt of its own crossing as dfFrameTilt (degrees, with the
/// relaxation), the raw pixel of that moment, nFrame and a running nID.
///
/// @param bApplyStretching  whether the mapping undoes the stretching; the prediction then puts it back
/// @return in the order of the indices of the nearest-to-beam axis last; empty without a cell in
///         force, for a frame without tilt, for a geometry that is no number, and for a cell so large that
///         over 10⁷ rows of the lattice or 10⁶ reflections would have to be looked at
QList<Peak3D> predictedPositions(const DataSet& dataSet, int nFrame, double dfMaxDStar,
                                 bool bApplyStretching = false);

/// Those of predictedPositions() that lie on a frame of that size in pixels. What no pixel of the frame can
/// show is not looked for, so that a limit far beyond the frame costs nothing.
QList<Peak3D> predictedPositionsOnFrame(const DataSet& dataSet, int nFrame, double dfMaxDStar,
                                        bool bApplyStretching, const QSize& sizeFrame);

}  // namespace tessera
