// Reflection zones: the planes and rows of reciprocal space in which glide planes and screw axes forbid.
#pragma once

#include <gemmi/symmetry.hpp>

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// A plane or a row through the origin that an operation of a Laue class leaves in place point by point; one
/// stands for all that the class makes equal.
struct ReflectionZone {
    QString strName;  ///< "h0l", "00l", as International Tables has it
    bool bRow = false;
    std::vector<std::array<int, 3>> listSpan;  ///< two vectors, or one, that span it
    /// Its reflections with small indices, which tell conditions apart; of a plane those on no row.
    std::vector<std::array<int, 3>> listSmall;

    bool contains(const std::array<int, 3>& anIndex) const;
};

/// The zones of a Laue class in its setting, planes before rows.
std::vector<ReflectionZone> reflectionZones(const gemmi::GroupOps& laue);

/// The zone that a reflection or one of its equivalents lies in, and that equivalent. Of a plane and a row in
/// it the row counts.
struct PlaceInZone {
    int nZone = -1;  ///< -1: a general reflection
    std::array<int, 3> anIndex = {};
};
PlaceInZone placeInZone(const std::vector<ReflectionZone>& listZone, const gemmi::GroupOps& laue,
                        const std::array<int, 3>& anIndex);

/// What a group forbids in a zone: one for each of the small reflections. What the centring forbids is false.
std::vector<bool> forbiddenPattern(const ReflectionZone& zone, const gemmi::GroupOps& group);

/// "h0l: h+l = 2n"; only the name of the zone where no form of the tables says it.
QString conditionText(const ReflectionZone& zone, const gemmi::GroupOps& group);

}  // namespace tessera
