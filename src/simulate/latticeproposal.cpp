#include "simulate/latticeproposal.h"

#include "simulate/latticematch.h"

#include <QJsonArray>

#include <algorithm>

namespace tessera {

namespace {
BravaisType readType(const QJsonObject& lattice)
{
    return {lattice[QStringLiteral("system")].toString(), lattice[QStringLiteral("centring")].toString()};
}

bool readMatrix(const QJsonValue& value, Matrix3& mat)
{
    const QJsonArray array = value.toArray();
    for (int i = 0; i < 3; ++i) {
        const QJsonArray arrayRow = array.at(i).toArray();
        if (array.size() != 3 || arrayRow.size() != 3) {
            return false;
        }
        for (int j = 0; j < 3; ++j) {
            mat[i][j] = arrayRow.at(j).toDouble();
        }
    }
    return std::abs(determinantOf(mat)) > 1e-9;
}

// Pearson's first letter, with rhombohedral lattices distinguished from the hexagonal ones.
QString systemLetter(const QString& strSymbol)
{
    return strSymbol == QLatin1String("hR") ? strSymbol : strSymbol.left(1);
}

bool spansTrueLattice(const Matrix3& matConventional, const QString& strCentring, const Matrix3& matTrue,
                      const Matrix3& matPrimitive)
{
    Matrix3 matIndices = primitiveIndicesOf(strCentring);
    const auto isSame = [&] {
        return matchLattice(matIndices * matConventional, matTrue, matPrimitive).relation ==
               LatticeMatch::Same;
    };
    if (isSame()) {
        return true;
    }
    // Hexagonal axes in the reverse setting stand turned by half a turn about c.
    for (Vector3& vec : matIndices) {
        vec = {-vec[0], -vec[1], vec[2]};
    }
    return isSame();
}
}  // namespace

LatticeProposal judgeProposal(const QJsonObject& lattice, const Matrix3* pmatFound, const Matrix3& matTrue,
                              const Matrix3& matPrimitive, const BravaisType& typeTrue)
{
    LatticeProposal proposal;
    proposal.typeTrue = typeTrue;
    proposal.typeProposed = readType(lattice);
    const QString strTrue = typeTrue.symbol(), strProposed = proposal.typeProposed.symbol();
    proposal.bRead = !proposal.typeProposed.strSystem.isEmpty() &&
                     !proposal.typeProposed.strCentring.isEmpty();
    if (!proposal.bRead) {
        return proposal;
    }
    proposal.bSystemRight = !strProposed.isEmpty() && systemLetter(strProposed) == systemLetter(strTrue);
    proposal.bCentringRight = !strProposed.isEmpty() && strProposed.right(1) == strTrue.right(1);
    const QJsonArray arrayCandidate = lattice[QStringLiteral("candidates")].toArray();
    proposal.bAmongCandidates = proposal.isRight() ||
                                std::any_of(arrayCandidate.begin(), arrayCandidate.end(),
                                            [&](const QJsonValue& value) {
                                                return readType(value.toObject()).symbol() == strTrue;
                                            });
    Matrix3 matAxes{};
    proposal.bMatrixRead = pmatFound && readMatrix(lattice[QStringLiteral("matrix")], matAxes);
    if (proposal.bMatrixRead) {
        // Reciprocal axes transform by the inverse transpose of the matrix of the direct axes.
        const Matrix3 matConventional = transposed(inverseOf(matAxes)) * *pmatFound;
        proposal.bSpans = spansTrueLattice(matConventional, proposal.typeProposed.strCentring, matTrue,
                                           matPrimitive);
    }
    return proposal;
}

}  // namespace tessera
