// Plane indexing: the difference vectors of one pattern against the d* of a known cubic cell.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>
#include <QPointF>

namespace tessera {

/// Difference vectors that agree. A vector and its negative count as the same one.
struct PlaneGroup {
    QPointF ptMean;  ///< mean vector, pixels of the raw frame, without the stretching
    int nCount = 0;  ///< number of vectors
};

/// Groups the difference vectors of all pairs of peaks of a pattern and compares the mean lengths, after a
/// fixed stretching, with the d* of a cubic cell of 20.734 Å. Points and groups are written to the log as
/// tables: the points in one message, the groups in messages of at least 100 000 rows and a last one with the
/// rest. The columns of 1/length show 0 for the length 0.
///
/// @param listPeaks         peaks of one frame; of each its place on the raw frame and its d* are read
/// @param dfPixelSize       Å⁻¹ per pixel
/// @param dfResolutionMax   Å⁻¹; only peaks with d* above 0.01 Å⁻¹ and below this limit are used
/// @param dfBackgroundSize  tolerance: how far a vector may be from the first (shortest) one of its group, in
///                          per cent of the length of that one
/// @return the groups in the order of the lengths of their first vectors; empty, with a red line, for more
///         than 10⁶ difference vectors and when the report's goOn(), asked after each group, ended the run
QList<PlaneGroup> test2DIndexing(const QList<Peak3D>& listPeaks, double dfPixelSize, double dfResolutionMax,
                                 double dfBackgroundSize, CRunReport& report);

}  // namespace tessera
