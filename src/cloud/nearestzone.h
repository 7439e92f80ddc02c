// The low-index zone that a direction of view lies nearest to.
#pragma once

#include "cloud/cellframe.h"

#include <QString>

namespace tessera {

/// A direction of the lattice and how far the view is off it.
struct NearestZone {
    QString strName;         ///< "[1 1 0]", or of reciprocal space "a*", "-b*"
    DoubleVector direction;  ///< unit length, laboratory frame; on the viewer's side
    double dfOff = 0;        ///< degrees
};

/// Greatest index of the zones [u v w] that are named. Beyond, zones lie so close that the nearest one
/// tells nothing: up to 3 a cubic lattice has one within 13° of any direction.
const int g_nZoneOrder = 3;

/// The zone [u v w] with coprime indices up to g_nZoneOrder, or the axis a*, b* or c* with its sign, nearest
/// to a direction. Of those that stand within 0.05° of one another, as a and a* of an orthorhombic cell with
/// the errors of its refinement, it is the one with the least indices, those of direct space first.
///
/// @param direction  of any length but 0, laboratory frame
NearestZone nearestZone(const CCellFrame& cell, const Vec3D& direction);

/// "[1 1 0], 1.3° off" in the default locale.
QString nearestZoneText(const NearestZone& zone);

}  // namespace tessera
