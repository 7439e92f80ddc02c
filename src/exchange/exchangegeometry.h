// ExchangeGeometry: the geometry of a series as programs of other houses describe it.
#pragma once

#include "exchange/framenumbering.h"
#include "integration/seriesgeometry.h"

#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace tessera {

/// One flat detector, one axis, equal steps. Vectors are in the frame of imgCIF and DIALS: x to the right and
/// y up on the screen, z towards the source; the beam runs along −z.
///
/// The laboratory frame of rotationgeometry.h has its y axis downwards where this one has it upwards, with z
/// to the same side, so that the two are mirror images. A turn by −t about an axis in the one is a turn by t
/// about the mirrored axis in the other, and a basis changes its hand. To keep a*, b*, c* right-handed, as
/// these programs want it, all three are reversed where they have to be, and the indices with them.
///
/// Places are those of frames from which drift and distortion are taken out: pixels, where the middle of the
/// first pixel is 0, and image y runs down.
struct ExchangeGeometry {
    FrameNumbering numbering;
    QSize sizeFrame;                   ///< pixels
    double dfWavelength = 0;           ///< Å
    double dfPixel = 0;                ///< mm, side of a detector's pixel; the distance goes with it
    double dfDistance = 0;             ///< mm
    FramePlace beam;                   ///< direct beam on all frames
    std::vector<FramePlace> listRest;  ///< pixels, what the beam of each frame, as written, is off from it
    DoubleVector axis = {};            ///< unit vector; the crystal turns right-handed as the numbers grow
    double dfStart = 0;                ///< degrees, where the exposure of the first number begins
    double dfWidth = 0;                ///< degrees a frame, above 0
    double dfWorstAngle = 0;           ///< degrees, greatest departure of a frame from the equal steps
    std::vector<double> listAngle;     ///< degrees about the axis, in the middle of each frame
    RotationMode rotation;
    DiffractionGeometry source;  ///< what it was made of; the terms of its plane undo the distortion
    bool bCell = false;
    std::array<DoubleVector, 3> aReciprocal = {};  ///< a*, b*, c* at angle 0, Å⁻¹, right-handed
    std::array<DoubleVector, 3> aDirect = {};      ///< a, b, c likewise, Å
    bool bReversed = false;                        ///< indices are −h −k −l of those of the series

    double startOf(int nNumber) const { return dfStart + (nNumber - numbering.first()) * dfWidth; }
    /// Greatest distance of a frame's beam from the common place, pixels.
    double worstBeam() const;
    std::array<int, 3> indexOf(const std::array<int, 3>& anIndex) const;
};

/// From the laboratory frame to that of imgCIF: the rotation axis has azimuth `dfAzimuth`, degrees.
DoubleVector screenVector(const DoubleVector& vec, double dfAzimuth);

/// A vector turned right-handed about a unit vector.
DoubleVector turned(const DoubleVector& vec, const DoubleVector& axis, double dfDegrees);

/// The dual basis.
std::array<DoubleVector, 3> dualBasis(const std::array<DoubleVector, 3>& aBasis);

/// Degrees that each frame has turned, with scale and offset of the tilts.
std::vector<double> anglesOf(const SeriesGeometry& series);

/// @param listMoved  whole pixels that each frame is moved by when it is written; empty: none is
/// @param bCell      whether the basis of the series is a cell
/// @return none, with the reason, where no program could work with it, as without a turn
std::optional<ExchangeGeometry> exchangeGeometry(const SeriesGeometry& series,
                                                 const FrameNumbering& numbering,
                                                 const std::vector<FramePlace>& listMoved, bool bCell,
                                                 QString* pstrReason);

}  // namespace tessera
