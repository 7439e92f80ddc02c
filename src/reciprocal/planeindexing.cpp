#include "reciprocal/planeindexing.h"

#include "crystal/crystalparacal.h"
#include "geometry/rotationgeometry.h"
#include "records/timestamp.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

constexpr double g_dfLeastDStar = 0.01;  // Å⁻¹
constexpr double g_dfEdge = 20.734;      // Å
constexpr int g_nMaxIndex = 9;
constexpr double g_dfStretchAmplitude = 0.79;  // per cent
constexpr double g_dfStretchAzimuth = 122.7;   // degrees
constexpr double g_dfMatch = 0.05;             // of the length
constexpr double g_dfMaxVectors = 1e6;
constexpr int g_nRowsPerMessage = 100000;

double lengthOf(const QPointF& pt)
{
    return std::sqrt(pt.x() * pt.x() + pt.y() * pt.y());
}

double reciprocalOf(double df)
{
    return df == 0 ? 0 : 1 / df;
}

void sortByLength(std::vector<QPointF>& vecPoint)
{
    std::stable_sort(vecPoint.begin(), vecPoint.end(),
                     [](const QPointF& a, const QPointF& b) { return lengthOf(a) < lengthOf(b); });
}

// Number, components by the pixel size, length and its reciprocal.
QString vectorText(int nNumber, const QPointF& pt, double dfPixelSize)
{
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(nNumber, 4)
        .arg(pt.x() / dfPixelSize, 8, 'f', 2)
        .arg(pt.y() / dfPixelSize, 8, 'f', 2)
        .arg(lengthOf(pt), 8, 'f', 4)
        .arg(reciprocalOf(lengthOf(pt)), 8, 'f', 3);
}

struct CalculatedDStar {
    int h, k, l;
    double dfDStar;
};

std::vector<CalculatedDStar> calculatedDStars()
{
    CCrystalParaCal cell;
    cell.setUnitCell(g_dfEdge, g_dfEdge, g_dfEdge, 90, 90, 90);
    std::vector<CalculatedDStar> vec;
    for (int h = 0; h <= g_nMaxIndex; ++h) {
        for (int k = h; k <= g_nMaxIndex; ++k) {
            for (int l = k; l <= g_nMaxIndex; ++l) {
                vec.push_back({h, k, l, cell.calDStar(h, k, l)});
            }
        }
    }
    return vec;
}

// Groups of vectors sorted by length: the first one left is the seed. Only vectors whose length is near the
// seed's can be near the seed, so that each round ends soon. False when the run was stopped.
bool groupVectors(const std::vector<QPointF>& vecVector, double dfTolerance, QList<PlaneGroup>& listGroup,
                  CRunReport& report)
{
    std::vector<bool> vecTaken(vecVector.size());
    for (std::size_t nSeed = 0; nSeed < vecVector.size(); ++nSeed) {
        if (vecTaken[nSeed]) {
            continue;
        }
        const QPointF ptSeed = vecVector[nSeed];
        const double dfReach = dfTolerance * lengthOf(ptSeed);
        PlaneGroup group;
        for (std::size_t n = nSeed; n < vecVector.size(); ++n) {
            const QPointF& pt = vecVector[n];
            if (n > nSeed && lengthOf(pt) > (lengthOf(ptSeed) + dfReach) * (1 + 1e-9)) {
                break;
            }
            if (vecTaken[n]) {
                continue;
            }
            const bool bNear = n == nSeed || lengthOf(pt - ptSeed) <= dfReach;
            if (!bNear && !(lengthOf(-pt - ptSeed) <= dfReach)) {
                continue;
            }
            vecTaken[n] = true;
            group.ptMean += bNear ? pt : -pt;
            ++group.nCount;
        }
        group.ptMean /= group.nCount;
        listGroup.append(group);
        if (!report.goOn()) {
            return false;
        }
    }
    return true;
}

// The rows so far as one message.
void flush(QStringList& listRow, CRunReport& report)
{
    if (!listRow.isEmpty()) {
        report.addMessage(listRow.join(QLatin1Char('\n')));
    }
    listRow.clear();
}

// The places of the peaks within the limits of d*, shortest first.
std::vector<QPointF> pointsOf(const QList<Peak3D>& listPeaks, double dfResolutionMax)
{
    std::vector<QPointF> vecPoint;
    for (const Peak3D& peak : listPeaks) {
        if (peak.dfDStar > g_dfLeastDStar && peak.dfDStar < dfResolutionMax && std::isfinite(peak.dfX2D) &&
            std::isfinite(peak.dfY2D)) {
            vecPoint.emplace_back(peak.dfX2D, peak.dfY2D);
        }
    }
    sortByLength(vecPoint);
    return vecPoint;
}

// The vectors between all pairs, shortest first.
std::vector<QPointF> differencesOf(const std::vector<QPointF>& vecPoint)
{
    std::vector<QPointF> vecDifference;
    for (std::size_t i = 0; i < vecPoint.size(); ++i) {
        for (std::size_t j = i + 1; j < vecPoint.size(); ++j) {
            vecDifference.push_back(vecPoint[j] - vecPoint[i]);
        }
    }
    sortByLength(vecDifference);
    return vecDifference;
}

// One row for each d* near a length (Å⁻¹).
QStringList rowsOfMatches(double dfLength, const std::vector<CalculatedDStar>& vecCalculated)
{
    QStringList listRow;
    for (const CalculatedDStar& c : vecCalculated) {
        const double dfDifference = std::fabs(c.dfDStar - dfLength);
        if (dfDifference < g_dfMatch * dfLength) {
            listRow.append(QStringLiteral("  %1 %2 %3 %4 %5 %6")
                               .arg(c.h, 6)
                               .arg(c.k, 6)
                               .arg(c.l, 6)
                               .arg(c.dfDStar, 8, 'f', 4)
                               .arg(reciprocalOf(c.dfDStar), 8, 'f', 3)
                               .arg(dfDifference, 8, 'f', 3));
        }
    }
    return listRow;
}

// The table of the groups. False when the run was stopped.
bool tellGroups(const QList<PlaneGroup>& listGroup, const std::vector<CalculatedDStar>& vecCalculated,
                double dfPixelSize, CRunReport& report)
{
    QStringList listRow;
    qint64 nTotal = 0;
    for (int n = 0; n < listGroup.size(); ++n) {
        const QPointF pt = applyStretching(listGroup[n].ptMean, g_dfStretchAmplitude, g_dfStretchAzimuth) *
                           dfPixelSize;
        listRow.append(vectorText(n + 1, pt, dfPixelSize) +
                       QStringLiteral(" %1").arg(listGroup[n].nCount, 3));
        listRow += rowsOfMatches(lengthOf(pt), vecCalculated);
        nTotal += listGroup[n].nCount;
        if (listRow.size() >= g_nRowsPerMessage) {
            flush(listRow, report);
        }
        if (!report.goOn()) {
            return false;
        }
    }
    flush(listRow, report);
    report.addMessage(QStringLiteral("Total: %1 occ.").arg(nTotal));
    return true;
}

}  // namespace

QList<PlaneGroup> test2DIndexing(const QList<Peak3D>& listPeaks, double dfPixelSize, double dfResolutionMax,
                                 double dfBackgroundSize, CRunReport& report)
{
    const std::vector<QPointF> vecPoint = pointsOf(listPeaks, dfResolutionMax);
    report.addMessage(QStringLiteral("Total: %1 points.").arg(vecPoint.size()));
    QStringList listRow;
    for (std::size_t n = 0; n < vecPoint.size(); ++n) {
        listRow.append(vectorText(int(n) + 1, vecPoint[n], dfPixelSize));
    }
    flush(listRow, report);

    const std::vector<CalculatedDStar> vecCalculated = calculatedDStars();
    report.addMessage(QStringLiteral("Total calculated d*: %1").arg(vecCalculated.size()));

    const double dfVectors = double(vecPoint.size()) * (double(vecPoint.size()) - 1) / 2;
    if (dfVectors > g_dfMaxVectors) {
        report.addMessage(QStringLiteral("Too many difference vectors: %1, the limit is %2.")
                              .arg(dfVectors, 0, 'f', 0)
                              .arg(g_dfMaxVectors, 0, 'f', 0),
                          Severity::Error);
        return {};
    }
    const std::vector<QPointF> vecDifference = differencesOf(vecPoint);
    report.addMessage(QStringLiteral("Total: %1 difference vectors.").arg(vecDifference.size()));

    QList<PlaneGroup> listGroup;
    if (!groupVectors(vecDifference, dfBackgroundSize / 100, listGroup, report) ||
        !tellGroups(listGroup, vecCalculated, dfPixelSize, report)) {
        report.addMessage(QStringLiteral("%1>2D indexing did not finish.").arg(currentTimeStamp()),
                          Severity::Error);
        return {};
    }
    return listGroup;
}

}  // namespace tessera
