// Zone axis CIF: the list of intensities by frames for programs of dynamical refinement (.cif_pets).
#pragma once

#include "exchange/virtualframes.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// The orientation of a virtual frame. The frame of reference has the rotation axis along +x, or close to
/// it in the x–z plane, and z towards the source, and is right-handed. It is that of ExchangeGeometry
/// rotated about the beam.
///
/// The columns of the matrix UB are a*, b*, c*, Å⁻¹, right-handed, at angle 0. The orientation of a frame
/// is Rz(omega)·Rx(alpha)·Ry(beta)·UB.
struct ZoneAxisFrame {
    std::array<double, 3> aZone = {};  ///< u v w towards the source along the direct axes; the largest is ±1
    double dfAlpha = 0, dfBeta = 0, dfOmega = 0;  ///< degrees
};

/// A right-handed basis for zone axis frames.
struct ZoneAxisBasis {
    std::array<DoubleVector, 3> aReciprocal = {};  ///< a*, b*, c*, Å⁻¹
    bool bReversed = false;                        ///< all three were reversed, and so must be the indices
};

/// The conventional setting of an integration in the frame of ZoneAxisFrame.
ZoneAxisBasis zoneAxisBasis(const IntegrationResult& result);

/// The orientation at an angle about the axis.
/// @param dfOutOfPlane  angle of the axis towards +z, degrees
ZoneAxisFrame zoneAxisFrame(const std::array<DoubleVector, 3>& aReciprocal, double dfOutOfPlane,
                            double dfAngle);

/// The text of the file, one block: cell, matrix, one row for each virtual frame, and one for each
/// observation in it with its summed intensity (counts, without Lorentz factor and scale).
/// Source: the files that DIALS writes; no dictionary defines them.
QByteArray zoneAxisCif(const IntegrationResult& result, const VirtualFrameOptions& options);

}  // namespace tessera
