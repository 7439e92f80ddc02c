// Expected frames: measured tilts against those of a cell before and after its refinement.
#pragma once

#include "reciprocal/tiltrefinement.h"

namespace tessera {

/// One reflection of the comparison. Tilts and errors in degrees.
struct ExpectedFrame {
    Peak3D peak;
    double dfTiltBefore;
    double dfTiltAfter;
    double dfErrBefore;  ///< dfTiltFit less the calculated tilt
    double dfErrAfter;
    double dfSeriesMean;  ///< mean of dfErrAfter over the beam tilt series of the frame
    int nPlaceInSeries;   ///< of the frame in its beam tilt series
};

/// Compares the tilts of two bases with dfTiltFit of the reflections, as a table in the log. Reflections
/// that the sphere of either basis does not reach are left out, and with none left the averaged errors, roots
/// of the mean squares, show 0.
/// @param bExchanged  whether h and k of the reflections are those of a working copy with a* and b*
///                    exchanged; absences go by the indices of the cell in force
/// @return one entry per row; empty, with a red line, unless both bases have three vectors
QList<ExpectedFrame> calExpectedFrameNo(const QList<Vec3D>& listUnitCellBefore,
                                        const QList<Vec3D>& listUnitCellAfter, const QList<Peak3D>& listPeak,
                                        const DataSet& dataSet, CRunReport& report,
                                        const TiltRefinementOptions& options = {}, bool bExchanged = false);

}  // namespace tessera
