// CPassageGeometry: the position of reciprocal lattice points relative to the Ewald sphere during a series.
#pragma once

#include "integration/seriesgeometry.h"

#include <array>
#include <optional>
#include <vector>

namespace tessera {

/// A crossing of the Ewald sphere by a lattice point.
struct SphereCrossing {
    double dfFrame = 0;  ///< frame number from 0; outside the series below −0.5 and from n − 0.5 on
    double dfTilt = 0;   ///< tilt at the crossing, degrees
    double dfSpeed = 0;  ///< rate of change of the excitation error, Å⁻¹ per degree of tilt, above 0
};

/// The tilt as a function of the frame number, and the resulting excitation errors of lattice points.
///
/// The tilt is interpolated linearly between frames and extrapolated beyond both ends. A frame is exposed
/// from half a frame before its number to half a frame after it. At a gap, where frames of a steady rotation
/// were left out, the frame before the gap ends half a usual step after its number, and the frame after the
/// gap begins half a step before its own. A gap is a step of more than one and a half times the median step.
/// The excitation error is 1/λ minus the distance of the point from the centre of the sphere, Å⁻¹; it is
/// positive inside the sphere.
class CPassageGeometry {
public:
    explicit CPassageGeometry(const SeriesGeometry& series);  ///< keeps a copy of the series

    const SeriesGeometry& series() const { return m_series; }  ///< the geometry of the series
    int frameCount() const { return m_series.frameCount(); }   ///< number of frames

    /// The tilt at a fractional frame number, degrees.
    double tiltAt(double dfFrame) const;

    /// The lattice point of a reflection at tilt 0, Å⁻¹.
    DoubleVector pointOf(const std::array<int, 3>& anIndex) const;

    /// The excitation error at the middle of a frame; frames outside the series are extrapolated.
    double excitationAt(const DoubleVector& point, int nFrame) const;
    /// The excitation error at the start of the exposure of a frame, which is the end of the frame before
    /// unless there is a gap.
    double excitationAtStart(const DoubleVector& point, int nFrame) const;
    /// The excitation error at the end of the exposure of a frame.
    double excitationAtEnd(const DoubleVector& point, int nFrame) const;
    /// Whether frames were left out between this frame and the next.
    bool isHoleBehind(int nFrame) const
    {
        return !m_listHole.empty() && nFrame >= 0 && nFrame + 1 < frameCount() && m_listHole[nFrame];
    }
    /// The change of the excitation error during the exposure of a frame, above 0, Å⁻¹.
    double excitationStep(const DoubleVector& point, int nFrame) const;

    /// All crossings from `nBeyond` frames before the series to `nBeyond` frames after it, in order.
    ///
    /// They are found in closed form: the height of a rotating point is A + R·cos(angle − φ), and the point
    /// is on the sphere if its height is d*²·λ/2.
    std::vector<SphereCrossing> crossings(const DoubleVector& point, int nBeyond) const;

    /// The place of a reflection on a frame of the series, raw pixels; none if it cannot fall on the detector
    /// plane.
    std::optional<FramePlace> placeOn(const std::array<int, 3>& anIndex, int nFrame) const;

    /// The d* at the corner of the frames that is farthest from the beam, Å⁻¹.
    double reach() const;

private:
    using HeightRow = std::array<double, 9>;
    double excitation(const DoubleVector& point, const HeightRow& turn) const;
    const HeightRow& turnAt(int nHalf) const { return m_listTurn[nHalf]; }
    HeightRow turnOf(double dfTilt) const;
    void findHoles();
    std::optional<double> frameWithin(double dfTilt, double dfFrom, double dfTo) const;
    bool liesBetweenEnds(double dfTilt) const;

    SeriesGeometry m_series;
    double m_dfK;
    double m_dfAxisX, m_dfAxisZ;        // direction of the rotation axis
    bool m_bOneSense = true;            // the tilts either increase or decrease throughout
    std::vector<HeightRow> m_listTurn;  // rotations at each half frame, from −0.5 to n − 0.5
    std::vector<char> m_listHole;       // whether a gap follows each frame; empty: there are none
    double m_dfHalfStep = 0;            // half the exposure of a frame beside a gap, signed degrees
};

}  // namespace tessera
