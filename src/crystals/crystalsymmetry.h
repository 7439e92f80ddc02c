// Crystal symmetry: the Laue class of crystals that are in one setting, before they are merged.
#pragma once

#include "crystals/settingchoices.h"
#include "integration/scaling.h"
#include "records/cellparameters.h"

#include <QString>

#include <vector>

namespace tessera {

/// The number of proper rotations of a Laue class, the identity included: 1 to 24, or 0 for a text that names
/// no class. Besides "-3m1" and "-31m", which tell how the twofold axes lie, "-3m" is known.
int rotationCount(const QString& strLaueClass);

/// A Laue class, and the transformation to the setting of its operations.
struct CrystalSymmetry {
    QString strLaueClass = QStringLiteral("-1");
    ObservationSymmetry symmetry;  ///< from the indices of the group's reduced cell
};

/// The Laue class that the intensities of all crystals together are likeliest to have, among those with at
/// most nMostRotations. Such a limit is needed, as crystals that are put together in different settings look
/// more symmetric than any of them is.
///
/// @param listInput       the crystals, each with the settings that it may have
/// @param listSetting     of each crystal the place of the chosen setting in its list
/// @param nMostRotations  number of rotations that the class may have at the most, such as half of the single
///                        runs have found; does not limit strWish
/// @param strWish         a class that is taken where the lattice allows it, whatever the intensities say, or
///                        empty. "-3m" stands for "-3m1" or "-31m", the likelier one
/// @param cell            reduced cell of the group
CrystalSymmetry symmetryOfCrystals(const std::vector<SettingInput>& listInput,
                                   const std::vector<int>& listSetting, int nMostRotations,
                                   const QString& strWish, const CellParameters& cell);

}  // namespace tessera
