// CAsymmetricUnit: one reflection that stands for all its equivalents.
#pragma once

#include <gemmi/symmetry.hpp>

#include <array>
#include <vector>

namespace tessera {

/// The asymmetric unit of reciprocal space of a Laue class in a given setting: gemmi's where its table has
/// the setting, else the equivalent that is last in the order of h, k, l.
class CAsymmetricUnit {
public:
    /// @param ops  of a Laue class, centring included; empty ones are taken as those of -1
    explicit CAsymmetricUnit(const gemmi::GroupOps& ops);

    struct Image {
        std::array<int, 3> anIndex = {};
        bool bMate = false;  ///< reached by operations of the second kind alone: Friedel's mate
    };
    Image representative(const std::array<int, 3>& anIndex) const;

    /// Not a point of the lattice, as the centring has it.
    bool isAbsent(const std::array<int, 3>& anIndex) const;

    /// How many of the proper rotations leave the reflection where it is: its mean intensity is so much
    /// larger.
    int epsilon(const std::array<int, 3>& anIndex) const;

    /// All equivalents, Friedel's mates among them; the same one may come more than once.
    std::vector<std::array<int, 3>> equivalents(const std::array<int, 3>& anIndex) const;

    bool contains(const std::array<int, 3>& anIndex) const;

private:
    std::array<int, 3> image(const gemmi::Op::Rot& rot, const std::array<int, 3>& anIndex) const;

    gemmi::GroupOps m_ops;
    const gemmi::SpaceGroup* m_pGroup = nullptr;
    std::vector<gemmi::Op::Rot> m_listRotation;  ///< proper ones, in whole numbers
};

/// The rotation part of an operation in whole numbers, where gemmi counts in 24ths.
gemmi::Op::Rot wholeRotation(const gemmi::Op::Rot& rot);

}  // namespace tessera
