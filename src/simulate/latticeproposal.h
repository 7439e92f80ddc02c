// LatticeProposal: the system and centring that a driver's summary proposes, judged by the truth.
#pragma once

#include "simulate/bravaistype.h"

#include <QJsonObject>

namespace tessera {

/// The judgement of the object "lattice" of a summary: system and centring, the matrix from the indexed to
/// the conventional direct axes (rows), and candidates of the same form.
struct LatticeProposal {
    bool bRead = false;  ///< there is such an object, with a system and a centring
    BravaisType typeTrue;
    BravaisType typeProposed;
    bool bSystemRight = false;
    bool bCentringRight = false;    ///< whatever the system, and in any setting: A and I are monoclinic C
    bool bAmongCandidates = false;  ///< the right type is the proposed one or one of the candidates
    bool bMatrixRead = false;
    bool bSpans = false;  ///< the conventional cell, centred as told, spans the true lattice
    bool isRight() const { return bRead && bSystemRight && bCentringRight; }  ///< system and centring
};

/// Judges a proposal.
/// @param lattice       the object; may be empty
/// @param pmatFound     the indexed reciprocal basis in the rows, which the matrix belongs to; null without a
/// cell
/// @param matTrue, matPrimitive  as of matchLattice()
LatticeProposal judgeProposal(const QJsonObject& lattice, const Matrix3* pmatFound, const Matrix3& matTrue,
                              const Matrix3& matPrimitive, const BravaisType& typeTrue);

}  // namespace tessera
