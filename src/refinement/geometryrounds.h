// Rounds of the refinement: which peaks take part, with which indices.
#pragma once

#include "refinement/framedrift.h"
#include "refinement/geometrysolver.h"

#include <optional>
#include <vector>

namespace tessera {

/// How far off a peak may be.
struct SpotLimits {
    double dfIndex = 0;  ///< the worst index of the mean of a chain, from a whole number
    double dfPlane = 0;  ///< pixels, in the frame's plane
    double dfAlong = 0;  ///< pixels, of a chain along the beam, times its weight
};

/// The peaks of a refinement and what of them is in use.
struct GeometryWork {
    std::vector<GeometrySpot> listSpot;  ///< with the indices of the last round, freed of the drift
    std::vector<GeometrySpot> listRest;  ///< those without indices, freed of the drift too
    std::vector<int> listUsed;           ///< ascending
    std::vector<int> listNear;           ///< near a whole triple of indices in the last round, ascending
    std::vector<FramePlace> listDrift;   ///< pixels, of each frame's beam beside the centre; empty for none
    DiffractionGeometry fixed;           ///< what is not fitted; the rest of it is not read
    double dfAzimuthZero = 0;            ///< degrees, that the ellipse counts from
    int nJobs = 1;                       ///< threads

    CGeometryResiduals residuals() const { return {listSpot, listUsed, fixed, dfAzimuthZero, nJobs}; }
    /// Those of the used spots whose frames have an odd (1) or even (0) number.
    CGeometryResiduals residualsOfHalf(int nHalf) const;
    DiffractionGeometry geometryOf(const GeometryFit& fit) const;
    /// The same with the fine places of the spots that have one.
    GeometryWork withFinePlaces() const;
    /// Frees the places of another drift, in the place of the one in force.
    void setDrift(std::vector<FramePlace> listNew);
    /// The same with the places as they were measured.
    GeometryWork withoutDrift() const;
};

/// What is left of the distance of each peak near whole indices from where a fit expects it, with the drift
/// in force put back.
std::vector<FrameDistance> frameDistances(const GeometryWork& work, const GeometryFit& fit);

/// Indexes the chains anew with the geometry of a fit and chooses the spots that lie within four standard
/// deviations, which are estimated from the medians.
/// @return the limits that were used
SpotLimits chooseSpots(GeometryWork& work, const GeometryFit& fit, double dfIndexTolerance);

/// Takes those of the spots without indices that lie where a reflection is expected, among the others: within
/// the limits in the plane, and along the beam as near as the spots in use lie each by itself.
/// @return how many
int joinSpots(GeometryWork& work, const GeometryFit& fit, const SpotLimits& limits);

/// The spots that lie within limits, each chain with the indices next to it, ascending.
std::vector<int> spotsWithin(const GeometryWork& work, const GeometryFit& fit, const SpotLimits& limits);

}  // namespace tessera
