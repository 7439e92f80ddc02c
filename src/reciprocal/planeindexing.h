// Plane indexing: the difference vectors of one pattern against the d* of a known cubic cell.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>
#include <QPointF>

namespace tessera {

/// Difference vectors that agree, with their mean in pixels.
struct PlaneGroup {
    QPointF ptMean;
    int nCount = 0;
};

/// Groups the difference vectors of all pairs of peaks of a pattern and compares the mean lengths, after a
/// fixed stretching, with the d* of a cubic cell of 20.734 Å. Tables go to the log, the points as one entry,
/// the groups as one, or several of some 100 000 rows each; 1/0 shows 0.
///
/// @param dfPixelSize       Å⁻¹ per pixel
/// @param dfResolutionMax   Å⁻¹, d* of the peaks lies below it and above 0.01
/// @param dfBackgroundSize  tolerance of a group in hundredths of the length of its first vector
/// @return the groups, shortest first; empty, with a red line, for more than 10⁶ difference vectors and when
///         the report's goOn(), asked after each group, ended the run
QList<PlaneGroup> test2DIndexing(const QList<Peak3D>& listPeaks, double dfPixelSize, double dfResolutionMax,
                                 double dfBackgroundSize, CRunReport& report);

}  // namespace tessera
