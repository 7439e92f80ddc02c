// LaueClass: which of the symmetry operations of the lattice the intensities have.
#pragma once

#include "integration/scaling.h"
#include "lattice/latticeanalysis.h"

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// How the intensities agree under one operation of the lattice.
struct OperationAgreement {
    QString strOperation;  ///< "-y,x,z" of the conventional setting of the lattice
    int nOrder = 1;        ///< 2, 3, 4, 6
    int nPairs = 0;
    double dfCorrelation = 0;  ///< of the normalized intensities; not finite where there are too few pairs
    double dfR = 0;            ///< sum |I1 - I2| / sum (I1 + I2) · 2
    double dfLikelihood = 0;   ///< 0 to 1, that the crystal has it
};

/// A Laue class that is a subgroup of the symmetry of the lattice.
struct LaueCandidate {
    QString strClass;              ///< "4/mmm", "-3m1"
    ObservationSymmetry symmetry;  ///< its conventional setting
    CellParameters cell;           ///< of that setting
    LatticeSystem system = LatticeSystem::Triclinic;
    char chCentring = 'P';
    double dfLikelihood = 0;  ///< 0 to 1, all candidates together 1
    double dfRInt = 0;
    double dfCcHalf = 0;
    int nOperations = 1;  ///< rotations
};

struct LaueProposal {
    std::vector<OperationAgreement> listOperation;  ///< of the highest symmetry of the lattice
    std::vector<LaueCandidate> listCandidate;       ///< the best first; never empty: "-1" is always there
};

/// Source: the likelihoods after Evans (2006), Acta Cryst. D62, 72–82.
/// @param listType  Bravais types that the lattice fits, seen from the cell in force, of its refined cell
LaueProposal proposeLaueClass(const std::vector<Observation>& listObservation,
                              const std::vector<LatticeType>& listType, const CellParameters& cellInForce);

}  // namespace tessera
