// CAsymmetricUnit: chooses one representative of symmetry-equivalent reflections.
#pragma once

#include <gemmi/symmetry.hpp>

#include <array>
#include <vector>

namespace tessera {

/// The asymmetric unit of reciprocal space for a Laue class in a given setting: that of gemmi if gemmi's
/// table of space groups has the setting. Else the unit consists of the greatest reflection of each set of
/// equivalents, compared by h, then by k, then by l.
class CAsymmetricUnit {
public:
    /// @param ops  operations of a Laue class, without screw or glide parts, and its centring vectors; where
    ///             there are no operations, those of -1 are used
    explicit CAsymmetricUnit(const gemmi::GroupOps& ops);

    /// A reflection in the asymmetric unit.
    struct Image {
        std::array<int, 3> anIndex = {};
        bool bMate = false;  ///< no proper rotation brings the reflection here, only one of its Friedel mate
    };
    /// The representative of a reflection.
    Image representative(const std::array<int, 3>& anIndex) const;

    /// Whether the centring forbids the reflection.
    bool isAbsent(const std::array<int, 3>& anIndex) const;

    /// The number of proper rotations that leave the reflection in place. In a crystal with these rotations
    /// and without mirror planes its mean intensity is greater by this factor than that of a general
    /// reflection.
    int epsilon(const std::array<int, 3>& anIndex) const;

    /// All equivalents, Friedel mates included; one on a symmetry element occurs several times.
    std::vector<std::array<int, 3>> equivalents(const std::array<int, 3>& anIndex) const;

    /// Whether a reflection is its own representative.
    bool contains(const std::array<int, 3>& anIndex) const;

private:
    /// The index that a rotation brings a reflection to.
    std::array<int, 3> image(const gemmi::Op::Rot& rot, const std::array<int, 3>& anIndex) const;

    gemmi::GroupOps m_ops;
    const gemmi::SpaceGroup* m_pGroup = nullptr;  ///< of these operations; null: gemmi has no such setting
    std::vector<gemmi::Op::Rot> m_listRotation;   ///< proper rotations as whole numbers
};

/// The rotation part of an operation as whole numbers; gemmi stores it in units of 1/24.
gemmi::Op::Rot wholeRotation(const gemmi::Op::Rot& rot);

}  // namespace tessera
