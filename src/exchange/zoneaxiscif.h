// The list of intensities by frames that programs of dynamical refinement read (.cif_pets).
#pragma once

#include "exchange/virtualframes.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// A frame of reference with the rotation axis along +x, or in the x–z plane near it, z towards the source,
/// y as a right-handed frame has it: that of ExchangeGeometry turned about the beam.
///
/// The matrix UB has a*, b*, c* as its columns, Å⁻¹, right-handed, in the frame at angle 0. The orientation
/// of a frame is Rz(omega)·Rx(alpha)·Ry(beta)·UB.
struct ZoneAxisFrame {
    std::array<double, 3> aZone = {};  ///< u v w: to the source along the direct axes, the largest is ±1
    double dfAlpha = 0, dfBeta = 0, dfOmega = 0;  ///< degrees
};

/// a*, b*, c* of the conventional setting of an integration in that frame.
/// @param bReversed  whether all three were reversed to be right-handed, and indices are to be with them
std::array<DoubleVector, 3> zoneAxisBasis(const IntegrationResult& result, bool& bReversed);

/// The orientation at an angle about the axis.
/// @param dfOutOfPlane  degrees, of the axis towards +z
ZoneAxisFrame zoneAxisFrame(const std::array<DoubleVector, 3>& aReciprocal, double dfOutOfPlane,
                            double dfAngle);

/// One block: cell, matrix, one row for each virtual frame and one for each observation in it, with its
/// intensity as it was summed (counts, without Lorentz factor and scale).
/// Source: the file as DIALS writes it; it belongs to no dictionary.
QByteArray zoneAxisCif(const IntegrationResult& result, const VirtualFrameOptions& options);

}  // namespace tessera
