// Intensity curves: a reflection's intensity over the frames, and the Lorentzian through it.
#pragma once

#include "records/peak3d.h"

#include <QList>
#include <QPointF>
#include <QVector>

namespace tessera {

/// The curve of reflection nID: frame numbers from 1, and intensities, in chain order.
/// @param nIntensityMode  0 dfIPoint, any other dfI2D
/// @return false, with the vectors untouched, when there is no such chain
bool getReflectionChainData(const QList<QList<Peak3D>>& listPeakChain, int nIntensityMode, int nID,
                            QVector<double>& vecFrameNo, QVector<double>& vecInt);

/// The frame numbers, from 1, of the beam tilt series that holds the curve's first maximum.
///
/// The upper bound is one past the last frame where no later series starts.
/// @param listBeamTiltBreak  per frame 1 where a series starts (index 0 is frame number 1)
/// @return false, with the bounds untouched, for vectors that are empty or of different length, or
///         a maximum on a frame without a flag
bool getContinuousBeamTiltSeriesBound(const QList<int>& listBeamTiltBreak, const QVector<double>& vecFrame,
                                      const QVector<double>& vecInt, int& nLowerBound, int& nUpperBound);

/// The points (frame number, intensity) within the bounds, both included; empty when the vectors
/// differ in length.
QList<QPointF> extractSubChain(const QVector<double>& vecFrame, const QVector<double>& vecInt,
                               int nLowerBound, int nUpperBound);

/// The points of the series around the curve's maximum; empty when its bounds cannot be told.
QList<QPointF> getBeamTiltSeriesDataForFitting(const QList<int>& listBeamTiltBreak,
                                               const QVector<double>& vecFrame,
                                               const QVector<double>& vecInt);

/// Fits L(f) = I / ((f - F)² / C² + 1) through points (frame number, intensity).
///
/// @param listParaResult  untouched with fewer than 3 points, else 12 values: first frame (whole),
///        0, largest intensity (single precision), its frame (whole), number of points, the
///        minimiser's info, I, F, C, and their standard errors
void fitIntensity(const QList<QPointF>& listInt, QList<double>& listParaResult);

/// Fits the curve of every reflection and stores dfIntFit, dfFrameFit and dfHalfWidth.
/// @param nJobs  threads; the curves are the same for every number
///
/// A reflection without a chain keeps its fields; one with too few points for a fit gets its own
/// intensity in the mode in force, its own frame number and half width 0.
void fitIntensityProfileForSharpPeaks(const QList<QList<Peak3D>>& listPeakChain,
                                      const QList<int>& listBeamTiltBreak, int nIntensityMode,
                                      QList<Peak3D>& listPeakMerged, int nJobs = 1);

}  // namespace tessera
