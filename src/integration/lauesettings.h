// Laue settings: every Laue class that a lattice can carry, in each way that its axes can lie.
#pragma once

#include "integration/scaling.h"
#include "lattice/latticeanalysis.h"

#include <Eigen/Dense>

#include <QString>

#include <vector>

namespace tessera {

/// A Laue class in its conventional setting.
struct LaueSetting {
    QString strClass;  ///< "-1" to "m-3m"; "-3m1" and "-31m" of a hexagonal lattice, "-3m" of R
    ObservationSymmetry symmetry;
    CellParameters cell;  ///< with the symmetry of the lattice
    LatticeSystem system = LatticeSystem::Triclinic;
    char chCentring = 'P';
    /// The proper rotations, the identity first: on columns of indices of the primitive cell, and, of the
    /// same order, as gemmi has them in the conventional setting.
    std::vector<Eigen::Matrix3i> listRotation;
    std::vector<gemmi::Op> listConventional;
};

/// All settings of a lattice, and the primitive cell that their rotations are for.
struct LaueSettings {
    /// The more rotations the earlier; the last is -1, always there.
    std::vector<LaueSetting> listSetting;
    ObservationSymmetry
        primitive;  ///< from indices of the cell in force to those of the primitive cell, in -1
};

/// @param listType     of the cell in force, the highest symmetry first: nothing higher is taken; empty: what
///                     the cell alone fits, taken as a primitive one
/// @param cellInForce  refined
LaueSettings laueSettings(const std::vector<LatticeType>& listType, const CellParameters& cellInForce);

}  // namespace tessera
