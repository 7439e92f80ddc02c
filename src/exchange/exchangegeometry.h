// ExchangeGeometry: the geometry of a series in the terms of other programs.
#pragma once

#include "exchange/framenumbering.h"
#include "integration/seriesgeometry.h"

#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace tessera {

/// One flat detector, one axis, equal steps. Vectors are in the frame of imgCIF and DIALS: x to the right
/// and y up on the screen, z towards the source; the beam runs along −z.
///
/// The y axis of the laboratory frame of rotationgeometry.h points downwards and that of this frame
/// upwards, while z points to the same side. So the two frames are mirror images: a rotation by −t about an
/// axis in the one is a rotation by t about the mirrored axis in the other, and a basis changes its
/// handedness. As other programs expect a right-handed basis a*, b*, c*, all three vectors and the indices
/// are reversed where necessary.
///
/// Places are those of frames without drift and distortion, in pixels, where the centre of the first pixel
/// is 0 and image y runs down.
struct ExchangeGeometry {
    FrameNumbering numbering;  ///< numbers and names of the frames
    QSize sizeFrame;           ///< pixels
    double dfWavelength = 0;   ///< Å
    /// Side of a pixel of the detector, mm. A nominal value: the patterns depend only on its ratio to the
    /// distance.
    double dfPixel = 0;
    double dfDistance = 0;  ///< camera length that gives the pixel size in Å⁻¹ with this pixel, mm
    FramePlace beam;        ///< mean place of the direct beam on the frames as they are written, pixels
    std::vector<FramePlace> listRest;  ///< beam of each written frame minus the mean place, pixels
    DoubleVector axis = {};            ///< unit vector; the rotation is right-handed for increasing numbers
    double dfStart = 0;                ///< angle at the beginning of the first exposure, degrees
    double dfWidth = 0;                ///< width of a frame, degrees, above 0
    double dfWorstAngle = 0;           ///< greatest deviation of a frame's tilt from equal steps, degrees
    std::vector<double> listAngle;     ///< angle about the axis in the middle of each exposure, degrees
    RotationMode rotation;             ///< movement during an exposure
    DiffractionGeometry source;        ///< what this was converted from; its `plane` has the distortions
    bool bCell = false;                ///< whether there is a cell; else the two bases below are all zeros
    std::array<DoubleVector, 3> aReciprocal = {};  ///< a*, b*, c* at angle 0, Å⁻¹, right-handed
    std::array<DoubleVector, 3> aDirect = {};      ///< a, b, c at angle 0, Å, right-handed
    bool bReversed = false;                        ///< indices are −h −k −l of those of the series

    /// Angle at the beginning of the exposure of the frame with a number, degrees.
    double startOf(int nNumber) const { return dfStart + (nNumber - numbering.first()) * dfWidth; }
    /// Greatest distance of the beam of a frame from the mean place, pixels.
    double worstBeam() const;
    /// The indices of a reflection of the series, reversed if the basis is.
    std::array<int, 3> indexOf(const std::array<int, 3>& anIndex) const;
};

/// Converts a vector from the laboratory frame of DiffractionGeometry, whose x is along the rotation axis, to
/// the frame of imgCIF.
/// @param dfAzimuth  azimuth of the rotation axis, degrees, counter-clockwise on the screen from 3 o'clock
DoubleVector screenVector(const DoubleVector& vec, double dfAzimuth);

/// Rotates a vector right-handed about a unit vector.
DoubleVector turned(const DoubleVector& vec, const DoubleVector& axis, double dfDegrees);

/// The dual basis: a*, b*, c* of a, b, c, and the other way round, without 2π. Not finite for coplanar
/// vectors.
std::array<DoubleVector, 3> dualBasis(const std::array<DoubleVector, 3>& aBasis);

/// The tilt of each frame, degrees, corrected by scale and offset of the refined geometry.
std::vector<double> anglesOf(const SeriesGeometry& series);

/// Converts the geometry of a series.
/// @param listMoved   whole pixels by which each frame is moved when it is written; empty: none is
/// @param bCell       whether the basis of the series is a cell
/// @param pstrReason  takes on failure the reason
/// @return nothing where no program could use it: without camera length or rotation, or where the numbers of
///         frames differ
std::optional<ExchangeGeometry> exchangeGeometry(const SeriesGeometry& series,
                                                 const FrameNumbering& numbering,
                                                 const std::vector<FramePlace>& listMoved, bool bCell,
                                                 QString* pstrReason);

}  // namespace tessera
