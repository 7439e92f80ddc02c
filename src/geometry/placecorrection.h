// CPlaceCorrection: undoes the distortions of the lenses at places on a frame, or applies them.
#pragma once

#include "geometry/seriesdistortion.h"

#include <QPointF>

#include <optional>

namespace tessera {

/// The stretching that the mapping is to undo.
struct Stretching {
    double dfAmplitude = 0;  ///< per cent
    double dfAzimuth = 0;    ///< degrees, as applyStretching() takes it
};

/// All distortions in the plane of the frame: the stretching by applyStretching(), and the others by
/// undistorted(). Without others the result is that of applyStretching() to the bit.
class CPlaceCorrection {
public:
    /// @param stretching  nothing where the stretching is not to be undone
    CPlaceCorrection(const std::optional<Stretching>& stretching, const SeriesDistortion& distortion);

    /// Whether there are distortions besides the stretching.
    bool hasTermsBeside() const { return m_bBeside; }

    /// Undoes the distortions of a place, in pixels relative to the direct beam; image y runs down.
    QPointF undone(const QPointF& pt) const;
    /// Applies the distortions to a place: the inverse of undone().
    /// @return nothing where the distortions are so strong that there is no such place
    std::optional<QPointF> putBack(const QPointF& pt) const;

private:
    std::optional<Stretching> m_stretching;
    bool m_bBeside;
    double m_dfRadius;
    PlaneTerms<double> m_beside;  ///< without the stretching
    PlaneTerms<double> m_all;
};

}  // namespace tessera
