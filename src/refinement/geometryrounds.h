// Rounds of the refinement: the choice of the peaks that take part, and of their indices.
#pragma once

#include "refinement/framedrift.h"
#include "refinement/geometrysolver.h"

#include <optional>
#include <vector>

namespace tessera {

/// How far a peak may lie from its expected place and still take part.
struct SpotLimits {
    double dfIndex = 0;  ///< greatest distance of the mean indices of a chain from whole numbers
    double dfPlane = 0;  ///< pixels, in the plane of the frame
    double dfAlong = 0;  ///< pixels, of a chain along the beam, times g_dfWeightAlongBeam
};

/// The peaks of a refinement and which of them are in use.
struct GeometryWork {
    std::vector<GeometrySpot> listSpot;  ///< peaks with the indices of the last round, corrected for drift
    std::vector<GeometrySpot> listRest;  ///< peaks without indices, corrected for drift
    std::vector<int> listUsed;           ///< indices into listSpot of the peaks in use, ascending
    std::vector<int> listNear;           ///< peaks that were near whole indices in the last round, ascending
    std::vector<FramePlace> listDrift;   ///< pixels, drift of each frame without the centre; empty: none
    DiffractionGeometry fixed;           ///< supplies the quantities that are never fitted
    double dfAzimuthZero = 0;            ///< degrees, azimuth from which the ellipse is counted
    int nJobs = 1;                       ///< threads

    /// The residuals of the spots in use.
    CGeometryResiduals residuals() const { return {listSpot, listUsed, fixed, dfAzimuthZero, nJobs}; }
    /// The residuals of the spots in use on frames with an even (nHalf = 0) or odd (1) number.
    CGeometryResiduals residualsOfHalf(int nHalf) const;
    /// The geometry that the numbers of a fit describe.
    DiffractionGeometry geometryOf(const GeometryFit& fit) const;
    /// A copy that uses the subpixel places of the spots that have one.
    GeometryWork withFinePlaces() const;
    /// Replaces the drift for which the places are corrected.
    void setDrift(std::vector<FramePlace> listNew);
    /// A copy with the places as they were measured.
    GeometryWork withoutDrift() const;
};

/// The distance of each peak near whole indices from the place that a fit expects, before the correction for
/// drift.
std::vector<FrameDistance> frameDistances(const GeometryWork& work, const GeometryFit& fit);

/// Indexes the chains anew with the geometry of a fit and selects the spots within four standard deviations,
/// which are estimated from medians.
/// @param dfIndexTolerance  greatest distance of the mean indices of a chain from whole numbers
/// @return the limits that were applied
SpotLimits chooseSpots(GeometryWork& work, const GeometryFit& fit, double dfIndexTolerance);

/// Adds spots without indices that lie where a reflection is expected to the spots in use: within the limits
/// in the plane of the frame, and along the beam no farther off than single spots in use are.
/// @return the number of spots that were added
int joinSpots(GeometryWork& work, const GeometryFit& fit, const SpotLimits& limits);

/// The spots within the limits, in ascending order; each chain is given the nearest whole indices.
std::vector<int> spotsWithin(const GeometryWork& work, const GeometryFit& fit, const SpotLimits& limits);

}  // namespace tessera
