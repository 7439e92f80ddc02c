#include "simulate/secondlattice.h"

#include "simulate/angles.h"

#include <algorithm>

namespace tessera {

namespace {

// The axis of the turn in the laboratory frame, of any length.
Vector3 turnAxis(const QString& strAxis, const Matrix3& matFirst, CRandomSource& random)
{
    const int nAxis = turnAxisNames().indexOf(strAxis);
    if (nAxis < 0) {
        const double dfZ = 2 * random.uniform() - 1, dfAzimuth = 2 * g_dfPi * random.uniform();
        const double dfAcross = std::sqrt(1 - dfZ * dfZ);
        return {dfAcross * std::cos(dfAzimuth), dfAcross * std::sin(dfAzimuth), dfZ};
    }
    if (nAxis < 3) {
        return transposed(inverseOf(matFirst))[nAxis];
    }
    if (nAxis < 6) {
        return matFirst[nAxis - 3];
    }
    Vector3 vecAxis{};
    vecAxis[nAxis - 6] = 1;
    return vecAxis;
}
}  // namespace

QStringList turnAxisNames()
{
    return QStringLiteral("a b c a* b* c* x y z").split(QLatin1Char(' '));
}

bool parseTurn(const QString& strTurn, SimulationParameters& parameters)
{
    const QStringList listPart = strTurn.split(QLatin1Char(','));
    bool bGood = false;
    const double dfTurn = listPart.first().toDouble(&bGood);
    if (!bGood || !std::isfinite(dfTurn) || listPart.size() > 2 ||
        (listPart.size() == 2 && !turnAxisNames().contains(listPart[1]))) {
        return false;
    }
    parameters.bSecondTurned = true;
    parameters.dfSecondTurn = dfTurn;
    parameters.strSecondAxis = listPart.value(1);
    return true;
}

Matrix3 rotationAbout(const Vector3& vecAxis, double dfDegrees)
{
    const Vector3 n = (1 / lengthOf(vecAxis)) * vecAxis;
    const double c = std::cos(radians(dfDegrees)), s = std::sin(radians(dfDegrees));
    Matrix3 mat{Vector3{c, -s * n[2], s * n[1]}, Vector3{s * n[2], c, -s * n[0]},
                Vector3{-s * n[1], s * n[0], c}};
    for (size_t i = 0; i < 3; ++i) {
        mat[i] = mat[i] + (1 - c) * n[i] * n;
    }
    return mat;
}

Matrix3 secondBasis(const SimulationParameters& parameters, const Matrix3& matFirst,
                    const Matrix3& matStandard, CRandomSource& random)
{
    Matrix3 matTurn;
    if (parameters.bSecondTurned) {
        matTurn = rotationAbout(turnAxis(parameters.strSecondAxis, matFirst, random),
                                parameters.dfSecondTurn);
    } else {
        const double dfU1 = random.uniform(), dfU2 = random.uniform(), dfU3 = random.uniform();
        matTurn = orientationFromUniform(dfU1, dfU2, dfU3);
    }
    Matrix3 mat = parameters.bSecondTurned ? matFirst : matStandard;
    for (Vector3& vec : mat) {
        vec = matTurn * vec;
    }
    return mat;
}

double turnBetween(const Matrix3& matFirst, const Matrix3& matSecond)
{
    // Rows g' = R g, so that second = first times the transposed rotation.
    const Matrix3 mat = inverseOf(matFirst) * matSecond;
    const double dfCos = (mat[0][0] + mat[1][1] + mat[2][2] - 1) / 2;
    return degrees(std::acos(std::max(-1.0, std::min(1.0, dfCos))));
}

}  // namespace tessera
