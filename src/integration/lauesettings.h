// Laue settings: all Laue classes that are compatible with a lattice, in all orientations of their axes.
#pragma once

#include "integration/scaling.h"
#include "lattice/latticeanalysis.h"

#include <Eigen/Dense>

#include <QString>

#include <vector>

namespace tessera {

/// A Laue class in its conventional setting.
struct LaueSetting {
    QString
        strClass;  ///< "-1" to "m-3m"; "-3m1" and "-31m" in a hexagonal lattice, "-3m" in a rhombohedral one
    ObservationSymmetry symmetry;
    CellParameters cell;  ///< has the symmetry of the lattice
    LatticeSystem system = LatticeSystem::Triclinic;
    char chCentring = 'P';
    /// The proper rotations, the identity first, as matrices on columns of indices of the primitive cell.
    std::vector<Eigen::Matrix3i> listRotation;
    /// The same rotations in the same order, as operations in the conventional setting.
    std::vector<gemmi::Op> listConventional;
};

/// All settings of a lattice.
struct LaueSettings {
    /// The settings with most rotations first; the last is always -1.
    std::vector<LaueSetting> listSetting;
    /// Transforms indices of the cell in force to those of the primitive cell; its class is -1.
    ObservationSymmetry primitive;
};

/// Finds the settings.
/// @param listType     Bravais types of the cell in force, the highest symmetry first, which limits the
///                     settings; empty: the types that fit the cell alone, taken as primitive
/// @param cellInForce  refined
LaueSettings laueSettings(const std::vector<LatticeType>& listType, const CellParameters& cellInForce);

}  // namespace tessera
