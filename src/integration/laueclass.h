// LaueClass: determines the Laue class from the agreement of intensities under the rotations of the lattice.
#pragma once

#include "integration/scaling.h"
#include "lattice/latticeanalysis.h"

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// The agreement of intensities under one rotation of the lattice.
struct OperationAgreement {
    QString strOperation;      ///< "-y,x,z" of the conventional setting of the lattice
    int nOrder = 1;            ///< 2, 3, 4 or 6
    int nPairs = 0;            ///< pairs of reflections that were compared
    double dfCorrelation = 0;  ///< correlation of normalized intensities; not finite with too few pairs
    double dfR = 0;            ///< 2 sum |I1 - I2| / sum (I1 + I2)
    double dfLikelihood = 0;   ///< probability that the crystal has the rotation, 0 to 1
};

/// A Laue class that is a subgroup of the symmetry of the lattice.
struct LaueCandidate {
    QString strClass;              ///< "4/mmm", "-3m1"
    ObservationSymmetry symmetry;  ///< operations in the conventional setting
    CellParameters cell;           ///< cell in that setting
    LatticeSystem system = LatticeSystem::Triclinic;
    char chCentring = 'P';
    double dfLikelihood = 0;  ///< probability, 0 to 1; those of all candidates add up to 1
    double dfRInt = 0;
    double dfCcHalf = 0;
    int nOperations = 1;  ///< number of rotations
};

/// The result of proposeLaueClass().
struct LaueProposal {
    std::vector<OperationAgreement> listOperation;  ///< rotations of the highest symmetry of the lattice
    std::vector<LaueCandidate> listCandidate;       ///< the best first; always contains "-1"
};

/// Ranks the Laue classes of the lattice by the agreement of equivalent intensities.
/// Source: probabilities after Evans (2006), Acta Cryst. D62, 72–82.
/// @param listType     Bravais types that fit the lattice, in terms of the cell in force
/// @param cellInForce  refined
LaueProposal proposeLaueClass(const std::vector<Observation>& listObservation,
                              const std::vector<LatticeType>& listType, const CellParameters& cellInForce);

}  // namespace tessera
