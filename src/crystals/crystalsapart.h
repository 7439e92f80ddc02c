// Crystals apart: those of a group whose intensities are not those of the others, though the lattice is.
#pragma once

#include "crystals/crystalsettings.h"
#include "crystals/linkage.h"

#include <QString>

#include <vector>

namespace tessera {

struct ApartCrystals {
    std::vector<QString> listReason;         ///< of each settled crystal; empty: it belongs to the others
    std::vector<std::vector<int>> listKind;  ///< places of two and more that agree among themselves alone

    bool isNone() const;
};

/// The tree of the correlations is cut where the mean correlation of normalized amplitudes falls below 0.3.
/// The branch with the most crystals stays (of equal ones that with the most reflections); the others are of
/// another compound, or share too little to tell. Of the branch that stays, those take no part whose
/// agreement with the others may be chance: by three standard deviations more than the best of so many
/// alternatives reaches.
ApartCrystals findApart(const SettledCrystals& settled, const std::vector<Joint>& listJoint);

}  // namespace tessera
