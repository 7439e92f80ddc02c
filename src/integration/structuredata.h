// StructureData: what the files of structure solution hold, gathered from an integration.
#pragma once

#include "integration/chemicalformula.h"
#include "integration/integrationresult.h"

#include <gemmi/symmetry.hpp>

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// One measured intensity on the common scale.
struct ScaledIntensity {
    std::array<int, 3> anIndex = {};  ///< of the conventional setting
    double dfIntensity = 0;           ///< may be negative
    double dfSigma = 0;               ///< above 0
};

/// All of it belongs to the conventional setting.
struct StructureData {
    QString strName;                                 ///< of the series
    double dfWavelength = 0;                         ///< Å
    CellParameters cell;                             ///< with the exact angles and equal edges of the system
    CellParameters cellErrors;                       ///< 0: not known
    double dfVolume = 0;                             ///< Å³
    const gemmi::SpaceGroup* pSpaceGroup = nullptr;  ///< never null: an entry of gemmi's table
    bool bGroupChosen = false;  ///< true: by absences or by the user; false: of the Laue class
    ChemicalFormula formula;    ///< empty: nobody has told it
    int nUnits = 1;             ///< formulae in a cell
    bool bUnitsTold = false;    ///< false: estimated from the volume
    std::vector<ScaledIntensity> listUnmerged;  ///< without excluding flags, in the order of the passages
    std::vector<ScaledIntensity> listMerged;
    ShellQuality quality;  ///< of all shells
    QString strLaueClass;
    RotationMode rotation;
    int nCrystals = 0;  ///< that the intensities are merged from; 0: they are those of one series
    QString strChoice;  ///< which frames of the series these are; empty: all of it
    int nFrames = 0;
    double dfTiltFirst = 0;  ///< degrees
    double dfTiltLast = 0;
    int nRejected = 0;  ///< observations that have an excluding flag
};

/// What the user tells beside the measurement.
struct StructureOptions {
    QString strName;
    double dfWavelength = 0;
    ChemicalFormula formula;
    int nUnits = 0;     ///< 0: to be estimated
    int nCrystals = 0;  ///< of a result whose frames are crystals: how many are merged
    QString strChoice;  ///< which frames of the series were taken and how; empty: all as they come
};

/// Gathers. The space group is the one of the result, else the one of the Laue class without screw axes and
/// glide planes. A centrosymmetric one comes with its origin in a centre of symmetry.
StructureData structureData(const IntegrationResult& result, const StructureOptions& options);

/// The group in the setting that has the centre of symmetry in the origin; the group itself where it has
/// none.
const gemmi::SpaceGroup* withCentreInOrigin(const gemmi::SpaceGroup* pGroup);

/// Operations without centring, and without those that the inversion adds: one of each pair, the identity
/// first.
std::vector<gemmi::Op> basicOperations(const gemmi::SpaceGroup& group);

}  // namespace tessera
