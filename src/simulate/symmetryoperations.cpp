#include "simulate/symmetryoperations.h"

#include <QRegularExpression>

#include <algorithm>

namespace tessera {

namespace {
constexpr int g_nParts = 24;  // every translation of the 230 groups is a multiple of 1/24

SymmetryOperation product(const SymmetryOperation& a, const SymmetryOperation& b)
{
    SymmetryOperation result;
    for (int i = 0; i < 3; ++i) {
        int nShift = a.vecTranslation[i];
        for (int j = 0; j < 3; ++j) {
            nShift += a.matRotation[i][j] * b.vecTranslation[j];
            for (int k = 0; k < 3; ++k) {
                result.matRotation[i][k] += a.matRotation[i][j] * b.matRotation[j][k];
            }
        }
        result.vecTranslation[i] = ((nShift % g_nParts) + g_nParts) % g_nParts;
    }
    return result;
}

SymmetryOperation identity()
{
    SymmetryOperation operation;
    for (int i = 0; i < 3; ++i) {
        operation.matRotation[i][i] = 1;
    }
    return operation;
}
}  // namespace

bool parseTriplet(const QString& strTriplet, SymmetryOperation& operation)
{
    static const QRegularExpression term(QStringLiteral("([+-]?)(?:([xyz])|(\\d+)(?:/(\\d+))?)"));
    static const QRegularExpression whole(
        QStringLiteral("^(?:[+-]?(?:[xyz]|\\d+(?:/\\d+)?))(?:[+-](?:[xyz]|\\d+(?:/\\d+)?))*$"));
    const QStringList listPart = QString(strTriplet).remove(QLatin1Char(' ')).split(QLatin1Char(','));
    if (listPart.size() != 3) {
        return false;
    }
    SymmetryOperation result;
    for (int i = 0; i < 3; ++i) {
        if (!whole.match(listPart[i]).hasMatch()) {
            return false;
        }
        int nShift = 0;
        auto it = term.globalMatch(listPart[i]);
        while (it.hasNext()) {
            const QRegularExpressionMatch match = it.next();
            const int nSign = match.captured(1) == QLatin1String("-") ? -1 : 1;
            if (!match.captured(2).isEmpty()) {
                result.matRotation[i][match.captured(2)[0].unicode() - 'x'] += nSign;
                continue;
            }
            const int nDenominator = match.captured(4).isEmpty() ? 1 : match.captured(4).toInt();
            if (nDenominator == 0 || g_nParts % nDenominator != 0) {
                return false;
            }
            nShift += nSign * match.captured(3).toInt() * (g_nParts / nDenominator);
        }
        result.vecTranslation[i] = ((nShift % g_nParts) + g_nParts) % g_nParts;
    }
    operation = result;
    return true;
}

std::vector<SymmetryOperation> closeGroup(const QStringList& listGenerator)
{
    std::vector<SymmetryOperation> listSeed;
    for (const QString& strTriplet : listGenerator) {
        SymmetryOperation operation;
        if (!parseTriplet(strTriplet, operation)) {
            return {};
        }
        listSeed.push_back(operation);
    }
    std::vector<SymmetryOperation> listAll{identity()};
    // 192 is the largest group with its centring; what grows beyond that is no space group.
    for (size_t i = 0; i < listAll.size() && listAll.size() <= 192; ++i) {
        for (const SymmetryOperation& seed : listSeed) {
            const SymmetryOperation next = product(listAll[i], seed);
            if (std::find(listAll.begin(), listAll.end(), next) == listAll.end()) {
                listAll.push_back(next);
            }
        }
    }
    return listAll.size() <= 192 ? listAll : std::vector<SymmetryOperation>();
}

Vector3 applyOperation(const SymmetryOperation& operation, const Vector3& vecFractional)
{
    Vector3 vecResult{};
    for (int i = 0; i < 3; ++i) {
        double df = operation.vecTranslation[i] / double(g_nParts);
        for (int j = 0; j < 3; ++j) {
            df += operation.matRotation[i][j] * vecFractional[j];
        }
        vecResult[i] = df - std::floor(df);
    }
    return vecResult;
}

Matrix3 primitiveIndexBasis(const std::vector<SymmetryOperation>& listOperation)
{
    std::vector<std::array<int, 3>> listCentring;
    for (const SymmetryOperation& operation : listOperation) {
        if (operation.matRotation == identity().matRotation) {
            listCentring.push_back(operation.vecTranslation);
        }
    }
    // hkl belongs to the lattice when h·t is whole for every centring translation t. The primitive
    // cell of the reciprocal lattice is as many times the conventional one as there are such t.
    std::vector<Vector3> listPoint;
    for (int h = -3; h <= 3; ++h) {
        for (int k = -3; k <= 3; ++k) {
            for (int l = -3; l <= 3; ++l) {
                const bool bAllowed = std::all_of(
                    listCentring.begin(), listCentring.end(),
                    [&](const auto& t) { return (h * t[0] + k * t[1] + l * t[2]) % g_nParts == 0; });
                if (bAllowed && (h != 0 || k != 0 || l != 0)) {
                    listPoint.push_back({double(h), double(k), double(l)});
                }
            }
        }
    }
    std::stable_sort(listPoint.begin(), listPoint.end(),
                     [](const Vector3& a, const Vector3& b) { return lengthOf(a) < lengthOf(b); });
    const double dfVolume = double(listCentring.size());
    for (size_t i = 0; i < listPoint.size(); ++i) {
        for (size_t j = i + 1; j < listPoint.size(); ++j) {
            for (size_t k = j + 1; k < listPoint.size(); ++k) {
                const Matrix3 mat{listPoint[i], listPoint[j], listPoint[k]};
                const double dfDeterminant = determinantOf(mat);
                if (std::abs(std::abs(dfDeterminant) - dfVolume) < 1e-9) {
                    return dfDeterminant > 0 ? mat : Matrix3{mat[0], mat[2], mat[1]};
                }
            }
        }
    }
    return {Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}};
}

}  // namespace tessera
