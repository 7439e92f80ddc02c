// Centres of spots to fractions of a pixel, by centroids over a local background.
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
/// The centroid within a Gaussian as wide as the spots, which goes with the centre until it stays: about as
/// exact as a fit of the spot's profile, and it has nothing to go astray with. The background is the median
/// of a ring round the spot.
/// @param dfSigma  of the spots, pixels
/// @return none where the spot is cut by the image's edge, does not stand above its background, or lies more
///         than 1.5 pixels from the place
/// Source: Bertin (2009), SExtractor User's manual, version 2.13, windowed positions; their errors Mighell
/// (2005), MNRAS 361, 861.
std::optional<QPointF> spotCentre(const CImgObj<float>& img, const QPointF& ptPlace, double dfSigma);

/// Moves peaks to the centres of their spots; what has none stays where it is.
/// @param vecPeak  a list for each frame; dfX2D and dfY2D are changed. Frames with an empty list are not read
/// @param dfSigma  of the spots, pixels
/// @param nJobs    frames worked on side by side; the result is the same for each
/// @return not finished where a frame cannot be loaded or the report asked to stop; vecPeak is as it was then
RunOutcome moveToSpotCentres(const DataSet& dataSet, QVector<QList<Peak3D>>& vecPeak, double dfSigma,
                             CRunReport& report, int nJobs = 1);

}  // namespace tessera
