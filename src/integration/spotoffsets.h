// SpotOffsets: a correction of predicted places, learned from the centroids of strong spots.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <Eigen/Core>

#include <vector>

namespace tessera {

/// The offset of a strong spot from its predicted place.
struct SpotOffset {
    int nFrame = 0;
    FramePlace place;  ///< predicted place, raw pixels
    FramePlace off;    ///< centroid minus predicted place, pixels
};

/// A cubic polynomial of the place, common to all frames, plus a shift of each frame. It absorbs residual
/// lens distortions and drift. It only moves the discs in which counts are summed and is not part of the
/// geometry.
class CSpotOffsets {
public:
    CSpotOffsets() = default;  ///< corrects nothing
    /// Fits the correction robustly: spots that deviate by more than three standard deviations are rejected
    /// in rounds. With few spots the polynomial is reduced to a plane or a constant, without spots to
    /// nothing.
    /// @param dfSize  pixels by which places are divided in the polynomial
    CSpotOffsets(const std::vector<SpotOffset>& listOffset, int nFrames, double dfSize);

    /// The corrected place, raw pixels.
    FramePlace corrected(int nFrame, const FramePlace& place) const;
    /// Median of the remaining offsets in one direction, pixels.
    double rest() const { return m_dfRest; }

private:
    using Terms = Eigen::Matrix<double, 10, 1>;
    Terms termsOf(const FramePlace& place) const;
    FramePlace fieldAt(const FramePlace& place) const;

    double m_dfSize = 1;
    int m_nTerms = 0;
    Terms m_vecX = Terms::Zero(), m_vecY = Terms::Zero();
    std::vector<FramePlace> m_listFrame;
    double m_dfRest = 0;
};

}  // namespace tessera
