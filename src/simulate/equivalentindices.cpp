#include "simulate/equivalentindices.h"

#include "simulate/crystalstructures.h"
#include "simulate/symmetryoperations.h"

#include <algorithm>

namespace tessera {

namespace {
using Rotation = std::array<std::array<int, 3>, 3>;

int determinant(const Rotation& m)
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}
}  // namespace

CEquivalentIndices::CEquivalentIndices(const QString& strCrystal)
{
    const CrystalStructure* pStructure = findCrystalStructure(strCrystal);
    if (!pStructure) {
        return;
    }
    for (const SymmetryOperation& operation : closeGroup(pStructure->listGenerator)) {
        for (int nSign : {1, -1}) {  // Friedel's law
            Rotation rotation{};
            for (size_t i = 0; i < 3; ++i) {
                for (size_t j = 0; j < 3; ++j) {
                    rotation[j][i] = nSign * operation.matRotation[i][j];
                }
            }
            if (std::find(m_listRotation.begin(), m_listRotation.end(), rotation) == m_listRotation.end()) {
                m_listRotation.push_back(rotation);
            }
        }
    }
}

std::array<int, 3> CEquivalentIndices::standFor(const std::array<int, 3>& anIndex) const
{
    std::array<int, 3> anBest = anIndex;
    for (const Rotation& rotation : m_listRotation) {
        std::array<int, 3> anTurned{};
        for (size_t i = 0; i < 3; ++i) {
            for (size_t j = 0; j < 3; ++j) {
                anTurned[i] += rotation[i][j] * anIndex[j];
            }
        }
        anBest = std::max(anBest, anTurned);
    }
    return anBest;
}

QString CEquivalentIndices::laueClass() const
{
    // The trace of a proper rotation tells its order: -1, 0, 1, 2 are 2, 3, 4, 6.
    size_t nProper = 0;
    bool b3 = false, b4 = false, b6 = false;
    for (const Rotation& rotation : m_listRotation) {
        if (determinant(rotation) > 0) {
            const int nTrace = rotation[0][0] + rotation[1][1] + rotation[2][2];
            ++nProper;
            b3 = b3 || nTrace == 0;
            b4 = b4 || nTrace == 1;
            b6 = b6 || nTrace == 2;
        }
    }
    switch (nProper) {
        case 1:
            return QStringLiteral("-1");
        case 2:
            return QStringLiteral("2/m");
        case 3:
            return QStringLiteral("-3");
        case 4:
            return b4 ? QStringLiteral("4/m") : QStringLiteral("mmm");
        case 6:
            return b6 ? QStringLiteral("6/m") : QStringLiteral("-3m");
        case 8:
            return QStringLiteral("4/mmm");
        case 12:
            return b6 ? QStringLiteral("6/mmm") : QStringLiteral("m-3");
        case 24:
            return b3 && b4 ? QStringLiteral("m-3m") : QString();
        default:
            return QString();
    }
}

}  // namespace tessera
