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

// This trial run has its own cubic cell and its own stretching; those of the data set are not used.
constexpr double g_dfCellEdge = 20.734;        // Å
constexpr double g_dfStretchAmplitude = 0.79;  // per cent
constexpr double g_dfStretchAzimuth = 122.7;   // degrees
constexpr int g_nMaxIndex = 9;                 // of the calculated reflections
constexpr double g_dfMatch = 0.05;             // a d* this near to a length, relative to it, is listed
constexpr double g_dfLeastDStar = 0.01;        // Å⁻¹; leaves out the direct beam
constexpr double g_dfMaxVectors = 1e6;         // 1414 peaks; all vectors are held in memory
constexpr int g_nRowsPerMessage = 100000;      // bounds the length of a message of the log

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

// A row of a table: number, components divided by the pixel size, length and its reciprocal. For a vector in
// Å⁻¹ these are pixels, Å⁻¹ and Å. The points are passed in pixels, so that in their table the length is in
// pixels and the other columns have no direct meaning.
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
    double dfDStar;  // Å⁻¹
};

// One reflection of each set of equivalents of the cubic cell: 0 ≤ h ≤ k ≤ l.
std::vector<CalculatedDStar> calculatedDStars()
{
    CCrystalParaCal cell;
    cell.setUnitCell(g_dfCellEdge, g_dfCellEdge, g_dfCellEdge, 90, 90, 90);
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

// Groups vectors that are sorted by length. The first vector without a group is the seed of the next group,
// and takes all later ones without a group that are near it, or whose negatives are. A vector can be near the
// seed only if it is not much longer, so each search ends soon.
// @param dfTolerance  relative to the length of the seed
// @return false if the user stopped the run
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
            // The margin of 1e-9 keeps rounding from ending the search before the last vector that is near.
            if (n > nSeed && lengthOf(pt) > (lengthOf(ptSeed) + dfReach) * (1 + 1e-9)) {
                break;
            }
            if (vecTaken[n]) {
                continue;
            }
            const bool bNear = n == nSeed || lengthOf(pt - ptSeed) <= dfReach;
            const bool bNegativeNear = !bNear && lengthOf(-pt - ptSeed) <= dfReach;
            if (!bNear && !bNegativeNear) {
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

// Writes the collected rows as one message and empties the list.
void flush(QStringList& listRow, CRunReport& report)
{
    if (!listRow.isEmpty()) {
        report.addMessage(listRow.join(QLatin1Char('\n')));
    }
    listRow.clear();
}

// The places of the peaks within the limits of d*, in pixels of the raw frame, in the order of their
// distances from its corner (0, 0).
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

// The vectors between all pairs of points, one for each pair, shortest first.
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

// One row for each calculated d* that is near a length (Å⁻¹), to be listed under the group of this length.
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

// Writes the table of the groups.
// @return false if the user stopped the run
bool tellGroups(const QList<PlaneGroup>& listGroup, const std::vector<CalculatedDStar>& vecCalculated,
                double dfPixelSize, CRunReport& report)
{
    QStringList listRow;
    qint64 nTotal = 0;
    for (int n = 0; n < listGroup.size(); ++n) {
        // The mean vector in Å⁻¹.
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
