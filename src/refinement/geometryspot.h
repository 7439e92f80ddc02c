// GeometrySpot: an indexed peak as the fit of the geometry sees it.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <array>
#include <optional>
#include <vector>

namespace tessera {

struct GeometrySpot {
    int nFrame = 0;                       ///< from 0
    double dfTilt = 0;                    ///< degrees, of the frame, with its share of the relaxation
    FramePlace place;                     ///< relative to the frame's direct beam, pixels, as measured
    std::optional<FramePlace> finePlace;  ///< likewise, to fractions of a pixel, where that was measured
    std::array<int, 3> anIndex = {};      ///< h, k, l along the axes of the cell in force
    bool bIndexed = true;  ///< false: has no indices yet, and gets some where the geometry tells them
    double dfWeight = 1;   ///< intensity, above 0: its share in the place along the beam
    int nChain = 0;        ///< the run of frames that one reflection was seen on, from 0
};

/// Numbers the chains: peaks of the same indices whose frames lie no more than `nGap` apart from one to the
/// next.
/// @return how many there are
int numberChains(std::vector<GeometrySpot>& listSpot, int nGap = 3);

/// The indices of a spot as real numbers.
inline DoubleVector realIndices(const GeometrySpot& spot)
{
    return {double(spot.anIndex[0]), double(spot.anIndex[1]), double(spot.anIndex[2])};
}

}  // namespace tessera
