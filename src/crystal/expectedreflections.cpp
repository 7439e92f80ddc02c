#include "crystal/expectedreflections.h"

#include "crystal/indexkey.h"
#include "geometry/angles.h"
#include "geometry/doublevector.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <vector>

namespace tessera {

namespace {

// Volume of the reciprocal cell, Å⁻³; negative for a left-handed basis.
double signedVolume(const ReciprocalBasis& basis)
{
    return dot(widened(basis.a), cross(widened(basis.b), widened(basis.c)));
}

// The tilt range less 2 degrees at both ends, in radians. For a range of less than 4 degrees the lower end is
// the greater, and no point lies inside.
struct SweptRange {
    double dfLow;
    double dfHigh;
};

SweptRange sweptRange(const QList<double>& listOverallTilt)
{
    if (listOverallTilt.isEmpty()) {
        return {0, 0};
    }
    // In single precision, as the points are.
    const float fFirst = float(listOverallTilt.first()), fLast = float(listOverallTilt.last());
    return {radians(double(std::min(fFirst, fLast)) + 2.0), radians(double(std::max(fFirst, fLast)) - 2.0)};
}

// The largest indices that are looked at: whole numbers, but kept real, as they may exceed those of int.
struct IndexBox {
    float fH, fK, fL;
};

// Twice the index at which a basis vector alone reaches d*. The factor leaves room for oblique cells, where a
// sum of basis vectors is shorter than its terms.
IndexBox indexBox(const ReciprocalBasis& basis, float fDStar)
{
    return {std::trunc(2 * fDStar / length(basis.a)), std::trunc(2 * fDStar / length(basis.b)),
            std::trunc(2 * fDStar / length(basis.c))};
}

// About how many lattice points enumeratedReflections() looks at: as many as lie inside the sphere of d*,
// which is its volume over that of the reciprocal cell, but at least one for each row of l, and no more than
// the box holds.
double pointsToLookAt(const IndexBox& box, const ReciprocalBasis& basis, float fDStar)
{
    const double dfRows = (2 * double(box.fH) + 1) * (2 * double(box.fK) + 1);
    const double dfPerRow = 2 * double(box.fL) + 1;
    const double dfInside = 4.0 / 3 * g_dfPi * std::pow(double(fDStar), 3) / std::fabs(signedVolume(basis));
    return std::min(dfRows * dfPerRow, std::max({dfInside, dfRows, dfPerRow}));
}

// The values of l for which a row of lattice points, h and k fixed, may be inside the sphere: nFrom to nTo;
// none if nFrom is the greater.
struct RowPiece {
    int nFrom = 0, nTo = -1;
};

// @param vecRow         the point with l = 0, Å⁻¹
// @param dfSquareLimit  squared radius of the sphere, Å⁻²
RowPiece pieceInside(const DoubleVector& vecRow, const DoubleVector& vecC, double dfSquareLimit, int nLMax)
{
    const double dfStep2 = dot(vecC, vecC);
    // l, as a real number, of the point of the row that is nearest to the origin, and its squared distance.
    const double dfMiddle = -dot(vecRow, vecC) / dfStep2;
    const double dfNearest2 = dot(vecRow, vecRow) - dfMiddle * dfMiddle * dfStep2;
    if (dfNearest2 > dfSquareLimit) {
        return {};
    }
    // One step more, against rounding.
    const double dfHalf = std::sqrt((dfSquareLimit - dfNearest2) / dfStep2) + 1;
    return {int(std::clamp(std::floor(dfMiddle - dfHalf), double(-nLMax), double(nLMax))),
            int(std::clamp(std::ceil(dfMiddle + dfHalf), double(-nLMax), double(nLMax)))};
}

// Walks all lattice points with d* below the effective d* of the observed reflections, in the order of
// h, k, l, and keeps those that `keep(g)` accepts, with g in Å⁻¹, laboratory frame at tilt 0.
template <class Keep>
QList<HKLRef> enumeratedReflections(const QList<Peak3D>& listPeak,
                                    const std::optional<ReciprocalBasis>& basis,
                                    const QList<double>& listOverallTilt, CRunReport& report,
                                    bool* pbComplete, const Keep& keep)
{
    QList<HKLRef> listAll;
    if (pbComplete) {
        *pbComplete = true;
    }
    const float fDStar = getEffectiveDStar(listPeak);
    const float fSquareLimit = fDStar * fDStar;
    if (listOverallTilt.isEmpty() || !basis || fDStar == 0.f) {
        return listAll;
    }

    const IndexBox box = indexBox(*basis, fDStar);
    const double dfPoints = pointsToLookAt(box, *basis, fDStar);
    if (!(dfPoints <= g_dfMaxLatticePoints)) {  // also true if it is no number
        if (pbComplete) {
            *pbComplete = false;
        }
        report.addMessage(QStringLiteral("Too many lattice points up to d* = %1 Å⁻¹ for the list of expected "
                                         "reflections: %2, the limit is %3.")
                              .arg(double(fDStar))
                              .arg(dfPoints)
                              .arg(g_dfMaxLatticePoints),
                          Severity::Error);
        return listAll;
    }
    const int nHMax = int(box.fH), nKMax = int(box.fK), nLMax = int(box.fL);

    // On each row of l only the piece inside the sphere is visited. The piece is found in double precision
    // and made larger by 1e-4 of the squared limit and one step at both ends, far more than the rounding
    // errors of the test below. So the result depends on that test alone, which is in single precision.
    const double dfWideLimit = double(fSquareLimit) * (1 + 1e-4);
    const DoubleVector vecC = widened(basis->c);
    for (int h = -nHMax; h <= nHMax; ++h) {
        const Vec3D vecH = scaled(basis->a, float(h));
        for (int k = -nKMax; k <= nKMax; ++k) {
            const Vec3D vecHK = vecH + scaled(basis->b, float(k));
            const RowPiece piece = pieceInside(widened(vecHK), vecC, dfWideLimit, nLMax);
            for (int l = piece.nFrom; l <= piece.nTo; ++l) {
                const Vec3D g = vecHK + scaled(basis->c, float(l));
                if (squaredLength(g) < fSquareLimit && keep(g)) {
                    listAll.append({h, k, l, 0.0});
                }
            }
        }
    }
    return listAll;
}

}  // namespace

float getEffectiveDStar(const QList<Peak3D>& listPeak)
{
    if (listPeak.isEmpty()) {
        return 0.f;
    }
    std::vector<double> vecDStar;
    vecDStar.reserve(listPeak.size());
    for (const Peak3D& peak : listPeak) {
        vecDStar.push_back(peak.dfDStar);
    }
    // Values that are not numbers go to the end, as `<` does not order them.
    std::stable_sort(vecDStar.begin(), vecDStar.end(),
                     [](double df1, double df2) { return std::isnan(df2) ? !std::isnan(df1) : df1 < df2; });
    return float(vecDStar[std::size_t(0.95 * double(vecDStar.size()))]);
}

QList<HKLRef> calAllReflections2(const QList<Peak3D>& listPeak, const std::optional<ReciprocalBasis>& basis,
                                 const QList<double>& listOverallTilt, CRunReport& report, bool* pbComplete)
{
    const SweptRange range = sweptRange(listOverallTilt);
    const auto isSwept = [&range](const Vec3D& g) {
        // Adding 0 turns a negative zero positive, so a point on the axis has the angle 0.
        const double dfPhi = std::atan2(double(g.z) + 0.0, double(g.y) + 0.0);
        double dfPsi = dfPhi + g_dfPi;  // the tilt that brings the other end of the line to the plane
        if (dfPsi > g_dfPi) {
            dfPsi -= 2 * g_dfPi;
        } else if (dfPsi < -g_dfPi) {
            dfPsi += 2 * g_dfPi;
        }
        return (range.dfLow < dfPhi && dfPhi < range.dfHigh) || (range.dfLow < dfPsi && dfPsi < range.dfHigh);
    };
    return enumeratedReflections(listPeak, basis, listOverallTilt, report, pbComplete, isSwept);
}

QList<HKLRef> calAllReflections(const QList<Peak3D>& listPeak, const std::optional<ReciprocalBasis>& basis,
                                const QList<double>& listOverallTilt, CRunReport& report)
{
    const SweptRange range = sweptRange(listOverallTilt);
    const double dfLow = std::tan(range.dfLow), dfHigh = std::tan(range.dfHigh);
    // For points with y < 0 the range is turned by 180 degrees, which leaves the tangents but for rounding.
    const double dfLowBack = std::tan(range.dfLow + g_dfPi), dfHighBack = std::tan(range.dfHigh + g_dfPi);
    return enumeratedReflections(listPeak, basis, listOverallTilt, report, nullptr, [=](const Vec3D& g) {
        const double dfSlope = double(g.z) / double(g.y);
        if (g.y > 0) {
            return dfLow < dfSlope && dfSlope < dfHigh;
        }
        if (g.y < 0) {
            return dfLowBack < dfSlope && dfSlope < dfHighBack;
        }
        return false;
    });
}

QList<HKLRef> missingReflections(const QList<HKLRef>& listAll, const QList<HKLRef>& listObserved)
{
    std::unordered_set<IndexKey, IndexKeyHash> setObserved(size_t(listObserved.size()));
    for (const HKLRef& hkl : listObserved) {
        setObserved.insert(indexKey(hkl));
    }
    QList<HKLRef> listMissing;
    for (const HKLRef& hkl : listAll) {
        if (setObserved.count(indexKey(hkl)) == 0) {
            listMissing.append(hkl);
        }
    }
    return listMissing;
}

}  // namespace tessera
