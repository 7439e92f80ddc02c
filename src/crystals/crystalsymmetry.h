// Crystal symmetry: the Laue class of crystals that are in one setting, before they are merged.
#pragma once

#include "crystals/settingchoices.h"
#include "integration/scaling.h"
#include "records/cellparameters.h"

#include <QString>

#include <vector>

namespace tessera {

/// Rotations of a Laue class, 1 to 24; 0 of any other text. "-3m" is known with and without the "1" that
/// tells how its axes lie.
int rotationCount(const QString& strLaueClass);

struct CrystalSymmetry {
    QString strLaueClass = QStringLiteral("-1");
    ObservationSymmetry symmetry;  ///< from the indices of the group's reduced cell
};

/// The class that the intensities of all crystals together are likeliest to have. No higher one is taken than
/// half of the single runs have found: crystals in unlike settings look more symmetric together than any of
/// them is.
///
/// @param listInput     with the chosen setting in front
/// @param nMostRotations  of the classes that are looked at
/// @param strWish       a class that is taken where the lattice has it; empty: none
/// @param cell          reduced, of the group
CrystalSymmetry symmetryOfCrystals(const std::vector<SettingInput>& listInput,
                                   const std::vector<int>& listSetting, int nMostRotations,
                                   const QString& strWish, const CellParameters& cell);

}  // namespace tessera
