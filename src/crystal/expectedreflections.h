// Expected reflections: what a data set could have shown, and what of it was not observed.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/hklref.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

#include <optional>

namespace tessera {

/// The d* (Å⁻¹) below which 95% of the reflections lie: element trunc(0.95·n) of the sorted dfDStar. 0 for an
/// empty list.
float getEffectiveDStar(const QList<Peak3D>& listPeak);

/// Most lattice points inside the sphere of the effective d* that are enumerated: about a cubic cell of 285 Å
/// at d* = 1 Å⁻¹. More are refused, as the list alone would fill the memory.
constexpr double g_dfMaxLatticePoints = 1e8;

/// The reflections, intensity 0, with d* below getEffectiveDStar() that the rotation swept through.
///
/// The Ewald sphere is taken as its tangent plane through the origin, normal to the beam. A point meets this
/// plane at two tilts: its angle atan2(z, y) in the plane normal to the rotation axis, and 180 degrees from
/// that. It counts as swept if one of these lies inside the tilt range less 2 degrees at both ends, so that
/// points whose passage was recorded in part only are left out. The order is h, k, l ascending, l fastest.
/// The range is taken from the first and last tilt as numbers: a passage through ±180 degrees is not
/// followed.
///
/// Indices go up to twice the effective d* over the length of their basis vector, which is enough unless the
/// basis is so oblique that lattice planes are closer than half that length.
///
/// @param listPeak         reflections that were observed; only their dfDStar is used
/// @param basis            a*, b*, c* in Å⁻¹, laboratory frame at tilt 0, x along the rotation axis; none
///                         gives an empty list
/// @param listOverallTilt  degrees; an empty list gives an empty list
/// @param pbComplete       may be null; takes false if the enumeration was refused, else true
/// @return empty, with a red line in the log, when refused: for more than about g_dfMaxLatticePoints lattice
///         points and for vectors that are 0 or not finite
QList<HKLRef> calAllReflections2(const QList<Peak3D>& listPeak, const std::optional<ReciprocalBasis>& basis,
                                 const QList<double>& listOverallTilt, CRunReport& report,
                                 bool* pbComplete = nullptr);

/// The same with a test on the slope z/y of the point in place of its angle: it must lie between the tangents
/// of the ends of the range. So the range must not contain ±90 degrees. Points with y = 0 are dropped.
QList<HKLRef> calAllReflections(const QList<Peak3D>& listPeak, const std::optional<ReciprocalBasis>& basis,
                                const QList<double>& listOverallTilt, CRunReport& report);

/// The entries of `listAll` whose indices are not among those of `listObserved`, in order.
QList<HKLRef> missingReflections(const QList<HKLRef>& listAll, const QList<HKLRef>& listObserved);

}  // namespace tessera
