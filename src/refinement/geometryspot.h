// GeometrySpot: an indexed peak as the fit of the geometry sees it.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <array>
#include <optional>
#include <vector>

namespace tessera {

/// A peak on a frame with its indices.
struct GeometrySpot {
    int nFrame = 0;                       ///< from 0
    double dfTilt = 0;                    ///< degrees, of the frame, with its share of the relaxation
    FramePlace place;                     ///< measured place relative to the direct beam of its frame, pixels
    std::optional<FramePlace> finePlace;  ///< the same to fractions of a pixel, if that was measured
    std::array<int, 3> anIndex = {};      ///< h, k, l in the cell in force
    bool bIndexed = true;  ///< false: the peak has no indices yet, and gets them if the geometry predicts it
    double dfWeight = 1;   ///< intensity, above 0: weight of the spot in the distance of its chain
    int nChain = 0;        ///< number of its chain, from 0: successive frames that show the same reflection
};

/// Numbers the chains. A chain consists of peaks with the same indices whose frames follow one another by no
/// more than `nGap` frames.
/// @return the number of chains
int numberChains(std::vector<GeometrySpot>& listSpot, int nGap = 3);

/// The indices of a spot as real numbers.
inline DoubleVector realIndices(const GeometrySpot& spot)
{
    return {double(spot.anIndex[0]), double(spot.anIndex[1]), double(spot.anIndex[2])};
}

}  // namespace tessera
