// ExchangeReflection: a reflection where it was seen, and where the geometry has it.
#pragma once

#include "exchange/exchangegeometry.h"
#include "refinement/geometryspot.h"

#include <optional>
#include <vector>

namespace tessera {

/// A passage of a reflection through the Ewald sphere: place on the frame and angle.
struct Passage {
    FramePlace place;      ///< pixels, as ExchangeGeometry has places
    double dfAngle = 0;    ///< degrees about the axis
    DoubleVector s1 = {};  ///< Å⁻¹, the diffracted beam
};

struct ExchangeReflection {
    std::array<int, 3> anIndex = {};  ///< of the right-handed basis
    Passage seen;                     ///< centroid of its peaks
    Passage expected;
    double dfIntensity = 0;  ///< sum of its peaks, as the hunt weighs them
    int nFirst = 0;          ///< numbers of the first and last frame with a peak
    int nLast = 0;
    int nPeaks = 0;
    bool bEntering = false;  ///< comes from outside the sphere
};

/// Where a reflection passes the sphere, at the passage that lies next to an angle.
/// @return none where it never does
std::optional<Passage> passageNear(const ExchangeGeometry& geometry, const std::array<int, 3>& anIndex,
                                   double dfAngle);

/// The diffracted beam that a place shows, Å⁻¹.
DoubleVector beamToPlace(const ExchangeGeometry& geometry, const FramePlace& place);

/// One reflection for each run of frames on which it was seen, in the order of frames.
///
/// Peaks are taken to the common place of the beam with distortions undone, indexed anew by the geometry, and
/// averaged by their weights. What lies further than a third of an index from a lattice point is left out.
/// @param listSpot   indexed peaks, relative to `listBeam`
/// @param listBeam   direct beam on each frame that they are relative to, raw pixels
/// @param series     of the geometry
std::vector<ExchangeReflection> exchangeReflections(const ExchangeGeometry& geometry,
                                                    std::vector<GeometrySpot> listSpot,
                                                    const std::vector<FramePlace>& listBeam,
                                                    const SeriesGeometry& series);

/// What the places and angles of the reflections scatter by about those expected.
struct Scatter {
    double dfPlace = 0;  ///< pixels, along one direction
    double dfAngle = 0;  ///< degrees
};
/// From medians, which a few strays leave alone.
Scatter scatterOf(const std::vector<ExchangeReflection>& listReflection);

}  // namespace tessera
