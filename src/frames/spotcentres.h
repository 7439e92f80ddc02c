// Spot centres: the centres of spots to fractions of a pixel, by centroids above the local background.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QPointF>
#include <QVector>

#include <optional>

namespace tessera {

/// The centre of the spot next to a place, column and row of the image, pixels.
///
/// It is the centroid weighted by a Gaussian as wide as the spots, which is moved to the centroid until it
/// no longer changes. This is about as precise as a fit of the profile and cannot diverge. The background
/// is the median of a ring around the spot.
/// @param dfSigma  of the spots, pixels
/// @return nothing where the spot is cut by the edge of the image, is not above its background, or is more
///         than 1.5 pixels from the place
/// Source: Bertin (2009), SExtractor User's manual, version 2.13, windowed positions; their errors Mighell
/// (2005), MNRAS 361, 861.
std::optional<QPointF> spotCentre(const CImgObj<float>& img, const QPointF& ptPlace, double dfSigma);

/// Moves peaks to the centres of their spots. A peak without a centre keeps its position.
/// @param vecPeak  a list for each frame; dfX2D and dfY2D are changed. Frames with an empty list are not
///                 read
/// @param dfSigma  of the spots, pixels
/// @param nJobs    frames that are processed side by side; the result does not depend on it
/// @return not Finished, with vecPeak as it was, where a frame cannot be loaded or the report asked to stop
RunOutcome moveToSpotCentres(const DataSet& dataSet, QVector<QList<Peak3D>>& vecPeak, double dfSigma,
                             CRunReport& report, int nJobs = 1);

}  // namespace tessera
