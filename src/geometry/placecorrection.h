// CPlaceCorrection: undoes what the lenses do to the places on a frame, and puts it back.
#pragma once

#include "geometry/seriesdistortion.h"

#include <QPointF>

#include <optional>

namespace tessera {

/// The stretching that mapping is asked to undo.
struct Stretching {
    double dfAmplitude = 0;  ///< per cent
    double dfAzimuth = 0;    ///< degrees, as applyStretching() takes it
};

/// The one model of the plane: the stretching by its own formula, applyStretching(), and beside it the other
/// terms, taken at the measured place as undistorted() does. Without those the numbers are those of
/// applyStretching() alone, to the bit.
class CPlaceCorrection {
public:
    /// @param stretching  none where it is not undone
    CPlaceCorrection(const std::optional<Stretching>& stretching, const SeriesDistortion& distortion);

    /// Whether there is more than the stretching.
    bool hasTermsBeside() const { return m_bBeside; }

    /// A place without the distortions; places are pixels relative to the direct beam, image y runs down.
    QPointF undone(const QPointF& pt) const;
    /// The opposite: where a frame has what would be at `pt` without them.
    /// @return none where the distortions are so strong that no place has it
    std::optional<QPointF> putBack(const QPointF& pt) const;

private:
    std::optional<Stretching> m_stretching;
    bool m_bBeside;
    double m_dfRadius;
    PlaneTerms<double> m_beside;  ///< without the stretching
    PlaneTerms<double> m_all;
};

}  // namespace tessera
