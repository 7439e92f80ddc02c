#include "integration/sectionplane.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

namespace tessera {

namespace {

const int g_nMostZone = 20;
const int g_nMostLayer = 999;

QString layerText(const QString& strLetters, int nAxis, int nLayer)
{
    return strLetters.left(nAxis) + QString::number(nLayer) + strLetters.mid(nAxis + 1);
}

std::optional<SectionPlane> layerOfAxis(const QString& strText)
{
    const QString strLetters = QStringLiteral("hkl");
    for (int nAxis = 0; nAxis < 3; ++nAxis) {
        const QString strFront = strLetters.left(nAxis), strBack = strLetters.mid(nAxis + 1);
        if (strText.size() < 3 || !strText.startsWith(strFront) || !strText.endsWith(strBack)) {
            continue;
        }
        bool bNumber = false;
        const QString strLayer = strText.mid(nAxis, strText.size() - 2);
        const int nLayer = strLayer.toInt(&bNumber);
        if (bNumber && !strLayer.startsWith(QLatin1Char('+')) && std::abs(nLayer) <= g_nMostLayer) {
            return axisPlane(nAxis, nLayer);
        }
    }
    return {};
}

std::optional<SectionPlane> layerOfZone(const QString& strText, QString* pstrReason)
{
    static const QRegularExpression expression(
        QStringLiteral("^\\[\\s*(-?\\d{1,2})\\s+(-?\\d{1,2})\\s+(-?\\d{1,2})\\s*\\](?:=(-?\\d{1,3}))?$"));
    const QRegularExpressionMatch match = expression.match(strText);
    if (!match.hasMatch()) {
        return {};
    }
    SectionPlane plane;
    int nDivisor = 0;
    for (int n = 0; n < 3; ++n) {
        plane.anZone[n] = match.captured(n + 1).toInt();
        nDivisor = std::gcd(nDivisor, plane.anZone[n]);
    }
    plane.nLayer = match.captured(4).toInt();
    const auto tooLarge = [](int n) { return std::abs(n) > g_nMostZone; };
    if (nDivisor != 1 || std::any_of(plane.anZone.begin(), plane.anZone.end(), tooLarge)) {
        if (pstrReason) {
            *pstrReason = QStringLiteral(
                              "%1: u, v and w have to be without a common factor and from -%2 to %2")
                              .arg(strText)
                              .arg(g_nMostZone);
        }
        return {};
    }
    plane.strName =
        QStringLiteral("[%1 %2 %3]").arg(plane.anZone[0]).arg(plane.anZone[1]).arg(plane.anZone[2]);
    if (plane.nLayer != 0) {
        plane.strName += QStringLiteral("=%1").arg(plane.nLayer);
    }
    return plane;
}

double length(const DoubleVector& v)
{
    return std::sqrt(dot(v, v));
}

DoubleVector combined(const std::array<DoubleVector, 3>& aVector, const std::array<int, 3>& anFactor)
{
    DoubleVector sum = {0, 0, 0};
    for (size_t n = 0; n < 3; ++n) {
        for (size_t i = 0; i < 3; ++i) {
            sum[i] += anFactor[n] * aVector[n][i];
        }
    }
    return sum;
}

DoubleVector scaledTo(const DoubleVector& v, double dfFactor)
{
    return {v[0] * dfFactor, v[1] * dfFactor, v[2] * dfFactor};
}

/// Whether two vectors span the lattice of a zone: their cross product is then the zone axis, not a multiple.
bool spans(const std::array<int, 3>& a, const std::array<int, 3>& b, const std::array<int, 3>& anZone)
{
    const std::array<int, 3> anProduct = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                                          a[0] * b[1] - a[1] * b[0]};
    return anProduct == anZone || anProduct == std::array<int, 3>{-anZone[0], -anZone[1], -anZone[2]};
}

/// The two shortest lattice vectors that span a zone; their first nonzero index is positive.
void chooseAxes(const SectionPlane& plane, const SectionBasis& basis, SectionFrame& frame)
{
    const auto& [u, v, w] = plane.anZone;
    // (v, -u, 0) and its permutations are in the zone, which bounds the indices of the shortest vectors.
    const int nMost = std::max({std::abs(u), std::abs(v), std::abs(w), 2});
    std::vector<std::pair<double, std::array<int, 3>>> listVector;
    for (int h = 0; h <= nMost; ++h) {
        for (int k = h > 0 ? -nMost : 0; k <= nMost; ++k) {
            for (int l = h > 0 || k > 0 ? -nMost : 1; l <= nMost; ++l) {
                if (u * h + v * k + w * l == 0) {
                    listVector.push_back({length(combined(basis, {h, k, l})), {h, k, l}});
                }
            }
        }
    }
    // Lengths that are equal by symmetry differ by rounding; the order of the indices decides then.
    const double dfAlike = 1 - 1e-6;
    std::stable_sort(listVector.begin(), listVector.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    for (size_t i = 0; i < listVector.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (spans(listVector[j].second, listVector[i].second, plane.anZone)) {
                const bool bKeep = listVector[j].first < dfAlike * listVector[i].first ||
                                   listVector[j].second > listVector[i].second;
                frame.anFirst = listVector[bKeep ? j : i].second;
                frame.anSecond = listVector[bKeep ? i : j].second;
                return;
            }
        }
    }
}

}  // namespace

SectionPlane axisPlane(int nAxis, int nLayer)
{
    SectionPlane plane;
    plane.anZone = {0, 0, 0};
    plane.anZone[nAxis] = 1;
    plane.nLayer = nLayer;
    plane.strName = layerText(QStringLiteral("hkl"), nAxis, nLayer);
    return plane;
}

std::optional<SectionPlane> sectionPlane(const QString& strText, QString* pstrReason)
{
    const QString strName = strText.trimmed();
    if (pstrReason) {
        *pstrReason = QStringLiteral(
                          "%1: not a plane such as hk0, h0l, 0kl, hk1, h-2l, or [u v w] and [u v w]=n")
                          .arg(strText);
    }
    if (const std::optional<SectionPlane> plane = layerOfAxis(strName)) {
        return plane;
    }
    return layerOfZone(strName, pstrReason);
}

QString sectionFileWord(const SectionPlane& plane)
{
    if (!plane.strName.startsWith(QLatin1Char('['))) {
        return plane.strName;
    }
    return QStringLiteral("uvw_%1_%2_%3_layer_%4")
        .arg(plane.anZone[0])
        .arg(plane.anZone[1])
        .arg(plane.anZone[2])
        .arg(plane.nLayer);
}

std::optional<SectionFrame> sectionFrame(const SectionPlane& plane, const SectionBasis& basis)
{
    const double dfVolume = dot(basis[0], cross(basis[1], basis[2]));
    // The zone axis in direct space; the distance of the plane from the origin is n over its length.
    const std::array<DoubleVector, 3> aDirect = {scaledTo(cross(basis[1], basis[2]), 1 / dfVolume),
                                                 scaledTo(cross(basis[2], basis[0]), 1 / dfVolume),
                                                 scaledTo(cross(basis[0], basis[1]), 1 / dfVolume)};
    const DoubleVector vecZone = combined(aDirect, plane.anZone);
    const double dfLength = length(vecZone);
    if (!std::isfinite(dfLength) || !(dfLength > 0)) {
        return {};
    }
    SectionFrame frame;
    frame.vecNormal = scaledTo(vecZone, 1 / dfLength);
    frame.dfSpacing = 1 / dfLength;
    frame.dfHeight = plane.nLayer / dfLength;
    if (plane.strName.startsWith(QLatin1Char('['))) {
        chooseAxes(plane, basis, frame);
    } else {
        frame.anFirst = plane.anZone[0] != 0 ? std::array<int, 3>{0, 1, 0} : std::array<int, 3>{1, 0, 0};
        frame.anSecond = plane.anZone[2] != 0 ? std::array<int, 3>{0, 1, 0} : std::array<int, 3>{0, 0, 1};
    }
    const DoubleVector vecFirst = combined(basis, frame.anFirst);
    frame.vecRight = scaledTo(vecFirst, 1 / length(vecFirst));
    frame.vecUp = cross(frame.vecNormal, frame.vecRight);
    if (dot(frame.vecUp, combined(basis, frame.anSecond)) < 0) {
        frame.vecUp = scaledTo(frame.vecUp, -1);
    }
    return frame;
}

DoubleVector pointOnSection(const SectionFrame& frame, double dfRight, double dfUp)
{
    DoubleVector point;
    for (size_t n = 0; n < 3; ++n) {
        point[n] = dfRight * frame.vecRight[n] + dfUp * frame.vecUp[n] + frame.dfHeight * frame.vecNormal[n];
    }
    return point;
}

}  // namespace tessera
