// CEquivalentIndices: reflections that are equivalent by the symmetry of a crystal.
#pragma once

#include <QString>

#include <gemmi/symmetry.hpp>

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

    /// Symbol of the Laue class, such as 4/mmm or -3m; empty without a crystal.
    QString laueClass() const { return m_strLaueClass; }

private:
    std::vector<gemmi::Op> m_listRotation;  ///< without translations, the inversion among them
    QString m_strLaueClass;
};

}  // namespace tessera
