// CAsymmetricUnit: chooses one representative of symmetry-equivalent reflections.
#pragma once

#include <gemmi/symmetry.hpp>

#include <array>
#include <vector>

namespace tessera {

/// The asymmetric unit of reciprocal space for a Laue class in a given setting: that of gemmi if its table
/// has the setting, else the equivalents that are last in the order of h, k, l.
class CAsymmetricUnit {
public:
    /// @param ops  operations of a Laue class, centring included; without operations, those of -1 are used
    explicit CAsymmetricUnit(const gemmi::GroupOps& ops);

    /// A reflection in the asymmetric unit.
    struct Image {
        std::array<int, 3> anIndex = {};
        bool bMate = false;  ///< reached only by operations of the second kind: a Friedel mate
    };
    /// The representative of a reflection.
    Image representative(const std::array<int, 3>& anIndex) const;

    /// Whether the centring forbids the reflection.
    bool isAbsent(const std::array<int, 3>& anIndex) const;

    /// The number of proper rotations that leave the reflection in place, by which its mean intensity is
    /// enhanced.
    int epsilon(const std::array<int, 3>& anIndex) const;

    /// All equivalents, Friedel mates included; one reflection may occur several times.
    std::vector<std::array<int, 3>> equivalents(const std::array<int, 3>& anIndex) const;

    /// Whether a reflection is its own representative.
    bool contains(const std::array<int, 3>& anIndex) const;

private:
    std::array<int, 3> image(const gemmi::Op::Rot& rot, const std::array<int, 3>& anIndex) const;

    gemmi::GroupOps m_ops;
    const gemmi::SpaceGroup* m_pGroup = nullptr;
    std::vector<gemmi::Op::Rot> m_listRotation;  ///< proper rotations as whole numbers
};

/// The rotation part of an operation as whole numbers; gemmi stores it in units of 1/24.
gemmi::Op::Rot wholeRotation(const gemmi::Op::Rot& rot);

}  // namespace tessera
