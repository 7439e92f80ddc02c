// CEquivalentIndices: reflections that are equivalent by the symmetry of a crystal.
#pragma once

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// The Laue group of one of the simulated crystals.
class CEquivalentIndices {
public:
    /// @param strCrystal  empty, or of no known crystal: nothing is equivalent
    explicit CEquivalentIndices(const QString& strCrystal);

    /// The one of the equivalent indices that stands for all: the last by h, k, l.
    std::array<int, 3> standFor(const std::array<int, 3>& anIndex) const;

    /// Symbol of the Laue class, such as 4/mmm; empty without a crystal. Told by the orders of the rotations;
    /// -3m is not told by its setting.
    QString laueClass() const;

private:
    std::vector<std::array<std::array<int, 3>, 3>>
        m_listRotation;  ///< of indices as columns, inversion included
};

}  // namespace tessera
