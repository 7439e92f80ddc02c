// Intensity curves: the intensity of a reflection as a function of the frame, with a Lorentzian fit.
#pragma once

#include "records/peak3d.h"

#include <QList>
#include <QPointF>
#include <QVector>

namespace tessera {

/// The curve of reflection nID: frame numbers from 1, and intensities, in the order of the chain.
/// @param nIntensityMode  0: dfIPoint; else dfI2D
/// @return false, with the vectors as they were, when there is no such chain
bool getReflectionChainData(const QList<QList<Peak3D>>& listPeakChain, int nIntensityMode, int nID,
                            QVector<double>& vecFrameNo, QVector<double>& vecInt);

/// The range of frames, from 1, of the beam tilt series in which the curve has its first maximum.
///
/// The upper bound is one past the last frame if no further series starts.
/// @param listBeamTiltBreak  1 for each frame at which a series starts; index 0 is frame number 1
/// @return false, with the bounds as they were, for vectors that are empty or differ in length, or for a
///         maximum on a frame without a flag
bool getContinuousBeamTiltSeriesBound(const QList<int>& listBeamTiltBreak, const QVector<double>& vecFrame,
                                      const QVector<double>& vecInt, int& nLowerBound, int& nUpperBound);

/// The points (frame number, intensity) within the bounds, including both; empty when the vectors differ in
/// length.
QList<QPointF> extractSubChain(const QVector<double>& vecFrame, const QVector<double>& vecInt,
                               int nLowerBound, int nUpperBound);

/// The points of the beam tilt series around the maximum of the curve; empty when its bounds are unknown.
QList<QPointF> getBeamTiltSeriesDataForFitting(const QList<int>& listBeamTiltBreak,
                                               const QVector<double>& vecFrame,
                                               const QVector<double>& vecInt);

/// Fits L(f) = I / ((f - F)² / C² + 1) to points (frame number, intensity).
///
/// @param listParaResult  as it was with fewer than 3 points, else takes 12 values: first frame (whole), 0,
///                        largest intensity (single precision), its frame (whole), number of points, info
///                        of the minimiser, I, F, C, and their standard errors
void fitIntensity(const QList<QPointF>& listInt, QList<double>& listParaResult);

/// Fits the curve of every reflection and stores dfIntFit, dfFrameFit and dfHalfWidth.
///
/// A reflection without a chain keeps its values. One with too few points for a fit gets its own intensity
/// by the mode, its own frame number, and half width 0.
/// @param nJobs  threads; the result does not depend on it
void fitIntensityProfileForSharpPeaks(const QList<QList<Peak3D>>& listPeakChain,
                                      const QList<int>& listBeamTiltBreak, int nIntensityMode,
                                      QList<Peak3D>& listPeakMerged, int nJobs = 1);

}  // namespace tessera
