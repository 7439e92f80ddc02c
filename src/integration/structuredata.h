// StructureData: the contents of the files for structure solution.
#pragma once

#include "integration/chemicalformula.h"
#include "integration/integrationresult.h"

#include <gemmi/symmetry.hpp>

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// An intensity on the common scale.
struct ScaledIntensity {
    std::array<int, 3> anIndex = {};  ///< of the conventional setting
    double dfIntensity = 0;           ///< may be negative
    double dfSigma = 0;               ///< above 0
};

/// Cell, symmetry, intensities and experiment, all in the conventional setting.
struct StructureData {
    QString strName;                                 ///< name of the series
    double dfWavelength = 0;                         ///< Å
    CellParameters cell;                             ///< has the exact symmetry of the lattice system
    CellParameters cellErrors;                       ///< 0: not known
    double dfVolume = 0;                             ///< Å³
    const gemmi::SpaceGroup* pSpaceGroup = nullptr;  ///< an entry of gemmi's table, not null
    bool bGroupChosen = false;  ///< the group is from absences or the user, else from the Laue class alone
    ChemicalFormula formula;    ///< empty: not known
    int nUnits = 1;             ///< formula units in a cell
    bool bUnitsTold = false;    ///< the user gave the number, else it is estimated from the volume
    std::vector<ScaledIntensity> listUnmerged;  ///< without excluding flags, in the order of the passages
    std::vector<ScaledIntensity> listMerged;
    ShellQuality quality;  ///< overall agreement
    QString strLaueClass;
    RotationMode rotation;
    int nCrystals = 0;  ///< number of merged crystals; 0: the intensities are from one series
    QString strChoice;  ///< which frames of the series were used; empty: all of them
    int nFrames = 0;
    double dfTiltFirst = 0;  ///< degrees
    double dfTiltLast = 0;
    int nRejected = 0;  ///< observations that have an excluding flag
};

/// Data that are not part of the integration result.
struct StructureOptions {
    QString strName;          ///< name of the series
    double dfWavelength = 0;  ///< Å
    ChemicalFormula formula;  ///< empty: not known
    int nUnits = 0;           ///< formula units in a cell; 0: to be estimated
    int nCrystals = 0;  ///< number of merged crystals, if the "frames" of the result are crystals; else 0
    QString strChoice;  ///< which frames of the series were used; empty: all of them
};

/// Gathers the contents of the files. The space group is that of the result, else the symmorphic group of the
/// Laue class. A centrosymmetric group is given with an inversion centre at the origin.
StructureData structureData(const IntegrationResult& result, const StructureOptions& options);

/// The setting of a group with an inversion centre at the origin; the group itself if there is no such
/// setting.
const gemmi::SpaceGroup* withCentreInOrigin(const gemmi::SpaceGroup* pGroup);

/// The operations without centring and, in a centrosymmetric group, without those related by the inversion;
/// the identity first.
std::vector<gemmi::Op> basicOperations(const gemmi::SpaceGroup& group);

}  // namespace tessera
