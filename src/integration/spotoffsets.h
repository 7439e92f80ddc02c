// SpotOffsets: what strong spots lie off their predicted places by.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <Eigen/Core>

#include <vector>

namespace tessera {

/// A strong spot and the way from its predicted place to its centroid.
struct SpotOffset {
    int nFrame = 0;
    FramePlace place;  ///< raw pixels
    FramePlace off;    ///< pixels
};

/// A cubic of the place on the frame, the same on all frames, and a shift of each frame. It takes up what is
/// left of lens distortions and of the drift; it is learned from the frames and moves discs alone, and never
/// enters the geometry.
class CSpotOffsets {
public:
    CSpotOffsets() = default;
    /// Robust: in rounds, spots that lie more than three deviations off are dropped. Few spots leave a plane
    /// or a shift, none leaves nothing to correct.
    CSpotOffsets(const std::vector<SpotOffset>& listOffset, int nFrames, double dfSize);

    FramePlace corrected(int nFrame, const FramePlace& place) const;
    /// What is left in one direction after it, median, pixels.
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
