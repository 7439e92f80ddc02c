// Resolution rings: the places of a frame that have the same d*.
#pragma once

#include "dataset/dataset.h"

#include <QPointF>
#include <QPolygonF>
#include <QSize>

#include <optional>
#include <vector>

namespace tessera {

/// One ring. Round where nothing distorts the frame, else as the distortions have it.
struct ResolutionRing {
    double dfSpacing = 0;           ///< d, Å
    QPolygonF polygon;              ///< closed, raw pixels, whole numbers are centres of pixels
    std::optional<QPointF> ptText;  ///< a place of the ring on the frame; none where it passes the frame by
};

/// How far from the direct beam the flat pattern has a d*: tan 2θ / λ, with sin θ = d* λ / 2 (Bragg).
/// @return Å⁻¹; none without a wavelength, or where the beam would leave sideways (2θ of 90° and more)
std::optional<double> flatRadius(double dfDStar, double dfWavelength);

/// The spacings of the rings up to a d*: 1, 2 and 5 times powers of ten, and at the end that of the limit.
/// Those within an eighth of it from the beam have no room, nor has one next to the last.
/// @return Å, descending; empty for a limit that is not above 0
std::vector<double> ringSpacings(double dfMaxDStar);

/// The rings of a frame. The last one is at the limit or, where the frame ends before, touches its farthest
/// edge.
/// @param dfLimit  d*, Å⁻¹
/// @return empty where shifts or tilts are missing. Rings that the distortions bring onto no frame are left
///         out
std::vector<ResolutionRing> resolutionRings(const DataSet& dataSet, bool bApplyStretching, int nFrame,
                                            const QSize& sizeFrame, double dfLimit);

}  // namespace tessera
