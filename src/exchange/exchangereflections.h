// ExchangeReflection: a reflection with its observed and its expected place.
#pragma once

#include "exchange/exchangegeometry.h"
#include "refinement/geometryspot.h"

#include <optional>
#include <vector>

namespace tessera {

/// A passage of a reflection through the Ewald sphere.
struct Passage {
    FramePlace place;      ///< pixels, see ExchangeGeometry
    double dfAngle = 0;    ///< degrees about the axis
    DoubleVector s1 = {};  ///< the diffracted beam, Å⁻¹
};

/// A reflection on a run of frames.
struct ExchangeReflection {
    std::array<int, 3> anIndex = {};  ///< indices in the right-handed basis
    Passage seen;                     ///< observed: the centroid of its peaks
    Passage expected;                 ///< expected by the geometry
    double dfIntensity = 0;           ///< sum of the intensities of its peaks from the peak search
    int nFirst = 0;                   ///< number of the first frame with a peak
    int nLast = 0;                    ///< number of the last frame with a peak
    int nPeaks = 0;                   ///< number of peaks
    bool bEntering = false;           ///< the reflection enters the sphere
};

/// The passage of a reflection through the sphere that is closest to an angle.
/// @return nothing where it never passes
std::optional<Passage> passageNear(const ExchangeGeometry& geometry, const std::array<int, 3>& anIndex,
                                   double dfAngle);

/// The diffracted beam to a place, Å⁻¹.
DoubleVector beamToPlace(const ExchangeGeometry& geometry, const FramePlace& place);

/// Makes one reflection for each run of frames on which it was seen, in the order of frames.
///
/// Peaks are corrected for distortions and moved to the common place of the beam, indexed again with the
/// geometry, and averaged with their intensities as weights. Peaks farther than a third of an index from a
/// lattice point are left out.
/// @param listSpot  indexed peaks, relative to `listBeam`
/// @param listBeam  direct beam on each frame to which they are relative, raw pixels
/// @param series    the series of the geometry
std::vector<ExchangeReflection> exchangeReflections(const ExchangeGeometry& geometry,
                                                    std::vector<GeometrySpot> listSpot,
                                                    const std::vector<FramePlace>& listBeam,
                                                    const SeriesGeometry& series);

/// Scatter of the observed places and angles about the expected ones.
struct Scatter {
    double dfPlace = 0;  ///< along one direction, pixels
    double dfAngle = 0;  ///< degrees
};
/// The scatter, from medians, which a few outliers do not affect.
Scatter scatterOf(const std::vector<ExchangeReflection>& listReflection);

}  // namespace tessera
