// Reflection zones: the planes and rows of reciprocal space in which glide planes and screw axes forbid
// reflections.
#pragma once

#include <gemmi/symmetry.hpp>

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// A plane or row through the origin that an operation of the Laue class leaves fixed point by point. It
/// represents all zones that are equivalent in the Laue class.
struct ReflectionZone {
    QString strName;                           ///< "h0l", "00l", as in International Tables
    bool bRow = false;                         ///< a row, else a plane
    std::vector<std::array<int, 3>> listSpan;  ///< the two vectors, or the one vector, that span it
    /// Reflections of the zone with small indices, by which conditions are distinguished; those of a plane
    /// are not on any row.
    std::vector<std::array<int, 3>> listSmall;

    /// Whether a reflection is in the zone.
    bool contains(const std::array<int, 3>& anIndex) const;
};

/// The zones of a Laue class in its setting, planes before rows.
std::vector<ReflectionZone> reflectionZones(const gemmi::GroupOps& laue);

/// The zone of a reflection.
struct PlaceInZone {
    int nZone = -1;                   ///< index of the zone; -1: a general reflection
    std::array<int, 3> anIndex = {};  ///< the equivalent reflection that is in the zone
};
/// Finds the zone that contains a reflection or one of its equivalents; rows take precedence over planes.
PlaceInZone placeInZone(const std::vector<ReflectionZone>& listZone, const gemmi::GroupOps& laue,
                        const std::array<int, 3>& anIndex);

/// For each reflection of listSmall, whether the space group forbids it; false for reflections that the
/// centring forbids already.
std::vector<bool> forbiddenPattern(const ReflectionZone& zone, const gemmi::GroupOps& group);

/// The reflection condition of a space group in a zone: "h0l: h+l = 2n"; just the name of the zone if no
/// condition of International Tables describes it.
QString conditionText(const ReflectionZone& zone, const gemmi::GroupOps& group);

}  // namespace tessera
