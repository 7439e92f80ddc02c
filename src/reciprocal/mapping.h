// Mapping: all peaks of the frames into reciprocal space, and the filter of what is shown and merged.
#pragma once

#include "dataset/dataset.h"
#include "geometry/placecorrection.h"
#include "geometry/rotationgeometry.h"
#include "records/runparameters.h"
#include "records/runreport.h"

namespace tessera {

/// The direct beam positions of a data set.
BeamCentres beamCentres(const DataSet& dataSet);

/// The peaks of each frame with dfX2D, dfY2D relative to its direct beam, pixels. No stretching enters here.
QList<QList<Peak3D>> peaksAroundBeam(const QList<QList<Peak3D>>& listPeakFrame, const BeamCentres& centres);

/// The tilt in degrees that frame `nFrame` of `nFrames` is turned by: its overall tilt plus the share of
/// the relaxation, which grows linearly from 0 on the first frame.
double relaxedTilt(const DataSet& dataSet, int nFrame, int nFrames);

/// What the mapping undoes in the plane of the frames.
CPlaceCorrection placeCorrection(const DataSet& dataSet, bool bApplyStretching);

/// Peaks of frames in raw pixels with the distortions beside the stretching undone, for those who undo the
/// stretching by differences of places. Without such distortions they are the same.
QVector<QList<Peak3D>> withoutDistortionBeside(const QVector<QList<Peak3D>>& vecPeak, const DataSet& dataSet);

/// Maps one raw frame position into reciprocal space.
///
/// @param peak        in: dfX2D, dfY2D in raw pixels; out: the corrected position, the point (Å⁻¹,
///                    laboratory frame), dfDStar and indices of 0. All else stays.
/// @param ptCentre    direct beam on the peak's frame, raw pixels
/// @param matrixAxis  rotationZ of the axis' azimuth
/// @param matrixTilt  rotationAboutAxis of the frame's tilt
void mapPeakTo3D(Peak3D& peak, const QPointF& ptCentre, const CMatrix3& matrixAxis,
                 const CMatrix3& matrixTilt, const DataSet& dataSet, bool bApplyStretching);

/// Rewrites the mapped fields of all peaks of m_listPeakFrame, and m_peakMapping; earlier indices are
/// discarded.
///
/// Returns false with a red line, and changes nothing, when the number of frames of the peaks differs
/// from that of the shifts, or when tilt angles are missing. With a wavelength of 0 the points are not
/// numbers, and the filter below drops them; a peak on the direct beam alone still gives (0, 0, 0).
bool transformPeaksTo3D(DataSet& dataSet, const MappingParameters& parameters, CRunReport& report);

/// What transformPeaksTo3D() would map the peaks with now.
PeakMapping currentPeakMapping(const DataSet& dataSet, const MappingParameters& parameters);

/// Whether there are peaks, and shifts and tilts to map them with.
bool canMapPeaks(const DataSet& dataSet);

/// Whether the peaks are to be mapped, and can be, before their points are used: they never were since they
/// were found or loaded, or shifts, centre or geometry are others now.
bool needsMapping(const DataSet& dataSet, const MappingParameters& parameters);

/// What passes the limits: per frame (same shape as the input) and as one flat list, frame by frame.
struct PeaksShown {
    QList<QList<Peak3D>> m_listPeakFrameShown;
    QList<Peak3D> m_listPeakFlat;
};

/// Whether dfIPoint and dfDStar lie within the limits, bounds included; what is no number does not.
bool liesWithinLimits(const Peak3D& peak, const MappingParameters& parameters);

/// The peaks that lie within the limits.
PeaksShown filterPeaksShown(const QList<QList<Peak3D>>& listPeakFrame, const MappingParameters& parameters);

/// Replaces m_listPeakFrameShown by what passes the limits and returns the flat list for the raw view.
QList<Peak3D> showPeaksIn3D(DataSet& dataSet, const MappingParameters& parameters);

}  // namespace tessera
