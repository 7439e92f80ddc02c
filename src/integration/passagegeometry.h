// CPassageGeometry: where the points of a crystal stand to the Ewald sphere while the series turns it.
#pragma once

#include "integration/seriesgeometry.h"

#include <array>
#include <optional>
#include <vector>

namespace tessera {

/// A passage of one point through the sphere.
struct SphereCrossing {
    double dfFrame = 0;  ///< frame number from 0; below −0.5 and from n − 0.5 on outside the series
    double dfTilt = 0;   ///< degrees, there
    double dfSpeed = 0;  ///< Å⁻¹ per degree of tilt, change of the excitation error, above 0
};

/// The tilt as a function of the frame number, and with it the excitation errors of the lattice points.
///
/// Between the frames the tilt runs linearly from one to the next, beyond both ends it goes on as it began
/// and ended. A frame is exposed from half a frame before its number to half a frame after it, but for holes:
/// where frames of a steady turn were left out, half a usual step after it, and nothing up to half of one
/// before the next. A hole is a step of more than one and a half times the median. The excitation error is
/// 1/λ less the distance of the point from the sphere's centre, Å⁻¹: positive inside.
class CPassageGeometry {
public:
    explicit CPassageGeometry(const SeriesGeometry& series);

    const SeriesGeometry& series() const { return m_series; }
    int frameCount() const { return m_series.frameCount(); }

    /// Degrees, at a real frame number.
    double tiltAt(double dfFrame) const;

    /// The crystal's point of a reflection at tilt 0, Å⁻¹.
    DoubleVector pointOf(const std::array<int, 3>& anIndex) const;

    /// Excitation error at the middle of a frame; frames outside the series are extrapolated.
    double excitationAt(const DoubleVector& point, int nFrame) const;
    /// The same where frame `nFrame` begins to be exposed, which is where the one before it ends but for
    /// holes.
    double excitationAtStart(const DoubleVector& point, int nFrame) const;
    /// The same where it ends.
    double excitationAtEnd(const DoubleVector& point, int nFrame) const;
    /// Whether frames were left out between this frame and the next.
    bool isHoleBehind(int nFrame) const
    {
        return !m_listHole.empty() && nFrame >= 0 && nFrame + 1 < frameCount() && m_listHole[nFrame];
    }
    /// Its change over the exposure of the frame, above 0, Å⁻¹.
    double excitationStep(const DoubleVector& point, int nFrame) const;

    /// All passages from `nBeyond` frames before the series to as many after it, in order of the frames.
    ///
    /// In closed form: the height of a turning point is A + R·cos(angle − φ), and it lies on the sphere where
    /// that is d*²·λ/2.
    std::vector<SphereCrossing> crossings(const DoubleVector& point, int nBeyond) const;

    /// Where a reflection lies on a frame of the series, raw pixels; none where no place has it.
    std::optional<FramePlace> placeOn(const std::array<int, 3>& anIndex, int nFrame) const;

    /// The d* of what the corner of the frames that lies farthest from the beam shows, Å⁻¹.
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
    bool m_bOneSense = true;            // the tilts grow from frame to frame, or fall
    std::vector<HeightRow> m_listTurn;  // at each half frame, from −0.5 to n − 0.5
    std::vector<char> m_listHole;       // behind each frame; empty: there are none
    double m_dfHalfStep = 0;            // degrees, with the sign of the turn: of a frame beside a hole
};

}  // namespace tessera
