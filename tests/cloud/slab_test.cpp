// Indices, slabs, zones, distances and the fitting zoom of the 3D view.
#include "cloud/cloudfit.h"
#include "cloud/cloudslab.h"
#include "cloud/latticegrid.h"
#include "cloud/nearestzone.h"
#include "cloud/pointpair.h"
#include "records/pi.h"

#include <gtest/gtest.h>

#include <QVector3D>

#include <cmath>
#include <limits>
#include <random>

namespace tessera {

namespace {

const ReciprocalBasis g_box{{0.1f, 0, 0}, {0, 0.2f, 0}, {0, 0, 0.25f}};  // 10 × 5 × 4 Å

// A triclinic cell in any orientation, its edges some 5 to 30 Å.
ReciprocalBasis randomBasis(std::mt19937& random)
{
    std::uniform_real_distribution<float> side(0.03f, 0.2f), skew(-0.02f, 0.02f), angle(0, 360);
    const QMatrix4x4 m = rotationMatrix(double(angle(random)), {skew(random), skew(random), 0.01f});
    const auto turned = [&m](const Vec3D& v) {
        return Vec3D{m(0, 0) * v.x + m(0, 1) * v.y + m(0, 2) * v.z,
                     m(1, 0) * v.x + m(1, 1) * v.y + m(1, 2) * v.z,
                     m(2, 0) * v.x + m(2, 1) * v.y + m(2, 2) * v.z};
    };
    return {turned({side(random), skew(random), skew(random)}),
            turned({skew(random), side(random), skew(random)}),
            turned({skew(random), skew(random), side(random)})};
}

QVector3D asQt(const Vec3D& v)
{
    return {v.x, v.y, v.z};
}

double degreesBetween(const QVector3D& a, const QVector3D& b)
{
    const QVector3D normal = QVector3D::crossProduct(a, b);
    return std::atan2(double(normal.length()), double(QVector3D::dotProduct(a, b))) * 180 / g_dfPi;
}

Peak3D peakAt(const Vec3D& place)
{
    Peak3D peak;
    peak.setPoint(place);
    return peak;
}

}  // namespace

TEST(Directions, AreReadInEachWayOfWritingAndRefusedInWords)
{
    const struct {
        const char* pszText;
        std::array<int, 3> anIndex;  // 0 0 0: refused
        const char* pszReason = "";
    } aRow[] = {{"1 1 0", {1, 1, 0}},
                {" [1-10] ", {1, -1, 0}},
                {"110", {1, 1, 0}},
                {"-1-1+2", {-1, -1, 2}},
                {"[ 12, -3 ;4 ]", {12, -3, 4}},
                {"[1 \u22121 0]", {1, -1, 0}},
                {"", {}, "three whole numbers"},
                {"1 1", {}, "three whole numbers"},
                {"1 1 0 0", {}, "three whole numbers"},
                {"1100", {}, "three whole numbers"},
                {"1-1 0", {}, "three whole numbers"},
                {"1 a 0", {}, "three whole numbers"},
                {"1.5 0 0", {}, "three whole numbers"},
                {"[110", {}, "bracket"},
                {"(110)", {}, "plane"},
                {"0 -0 0", {}, "no direction"},
                {"100 0 0", {}, "beyond 99"},
                {"99999999999 0 1", {}, "beyond 99"}};
    for (const auto& row : aRow) {
        QString strReason;
        const auto read = readDirection(QString::fromUtf8(row.pszText), &strReason);
        EXPECT_EQ(read.value_or(std::array<int, 3>{}), row.anIndex) << row.pszText;
        EXPECT_TRUE(strReason.contains(row.pszReason)) << qPrintable(strReason);
        EXPECT_EQ(read.has_value(), strReason.isEmpty()) << row.pszText;
    }
}

TEST(Layers, AreReadAndNamed)
{
    EXPECT_EQ(readLayer(" k ", nullptr), (std::array<int, 3>{0, 1, 0}));
    EXPECT_EQ(readLayer("[11-2]", nullptr), (std::array<int, 3>{1, 1, -2}));
    EXPECT_FALSE(readLayer("m", nullptr));
    EXPECT_EQ(slabName({{0, 0, 1}, 2, 0.2}), "l = 2 ± 0.2");
    EXPECT_EQ(slabName({{-2, 1, -1}, -0.5, 0.1}), "-2h + k - l = -0.5 ± 0.1");
}

TEST(Slabs, HoldThePointsOfTheirLayerWhateverTheCell)
{
    std::mt19937 random(5);
    std::uniform_int_distribution<int> index(-4, 4);
    std::uniform_real_distribution<double> off(-0.45, 0.45);
    for (int nCell = 0; nCell < 20; ++nCell) {
        const ReciprocalBasis basis = randomBasis(random);
        const auto cell = CCellFrame::of(basis);
        ASSERT_TRUE(cell);
        const CloudSlab slab{{index(random), index(random), 1 + index(random) * index(random)}, 1, 0.25};
        QList<Peak3D> listPoint;
        std::vector<double> vecTruth;  // u·h + v·k + w·l
        for (int i = 0; i < 300; ++i) {
            const double h = index(random) + off(random), k = index(random) + off(random),
                         l = index(random) + off(random);
            const QVector3D v = float(h) * asQt(basis.a) + float(k) * asQt(basis.b) +
                                float(l) * asQt(basis.c);
            listPoint.append(peakAt({v.x(), v.y(), v.z()}));
            vecTruth.push_back(slab.anDirection[0] * h + slab.anDirection[1] * k + slab.anDirection[2] * l);
            EXPECT_NEAR(cell->indicesOf(listPoint.last().point())[1], k, 1e-4);
        }
        const std::vector<char> vecInside = pointsInSlab(listPoint, *cell, slab);
        for (size_t i = 0; i < vecTruth.size(); ++i) {
            if (std::abs(std::abs(vecTruth[i] - 1) - 0.25) > 1e-3) {  // single precision decides nearer ones
                EXPECT_EQ(bool(vecInside[i]), std::abs(vecTruth[i] - 1) < 0.25) << vecTruth[i];
            }
        }
        const auto [nLeast, nGreatest] = slabLevels(listPoint, *cell, slab.anDirection);
        EXPECT_NEAR(nLeast, *std::min_element(vecTruth.begin(), vecTruth.end()), 0.501);
        EXPECT_NEAR(nGreatest, *std::max_element(vecTruth.begin(), vecTruth.end()), 0.501);
    }
}

TEST(Slabs, HoldNoPointsThatAreNoNumbersAndNoneWithoutACell)
{
    const auto box = CCellFrame::of(g_box);
    const float fNaN = std::nanf(""), fFar = 1e30f;
    const QList<Peak3D> listStrange{peakAt({0, 0, fNaN}), peakAt({0, 0, fFar}), peakAt({0, 0, -0.5f})};
    EXPECT_EQ(pointsInSlab(listStrange, *box, {{0, 0, 1}, -2, 0.1}), (std::vector<char>{0, 0, 1}));
    EXPECT_EQ(slabLevels(listStrange, *box, {0, 0, 1}), std::make_pair(-2, -2));
    EXPECT_EQ(slabLevels({}, *box, {0, 0, 1}), std::make_pair(0, 0));
    for (const ReciprocalBasis& bad : {ReciprocalBasis{{1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, ReciprocalBasis{},
                                       ReciprocalBasis{{fNaN, 0, 0}, {0, 1, 0}, {0, 0, 1}}}) {
        EXPECT_FALSE(CCellFrame::of(bad));
    }
}

// Of two lines the one along b* is shown, as it is in the layer; the one along c* is not, as its ends are
// outside.
TEST(Slabs, HoldLinesThatLieInTheirLayer)
{
    const auto box = CCellFrame::of(g_box);
    const std::vector<Vec3D> vecLine{{0, -0.4f, 0.25f}, {0, 0.4f, 0.25f}, {0, 0, 0.25f}, {0, 0, 0.5f}};
    EXPECT_EQ(placesInSlab(vecLine, 2, *box, {{0, 0, 1}, 1, 0.1}),
              (std::vector<Vec3D>{vecLine[0], vecLine[1]}));
}

namespace {

/// A direct-space direction.
QVector3D direct(const ReciprocalBasis& basis, int u, int v, int w)
{
    const QVector3D aStar = asQt(basis.a), bStar = asQt(basis.b), cStar = asQt(basis.c);
    const float fVolume = QVector3D::dotProduct(aStar, QVector3D::crossProduct(bStar, cStar));
    return (float(u) * QVector3D::crossProduct(bStar, cStar) +
            float(v) * QVector3D::crossProduct(cStar, aStar) +
            float(w) * QVector3D::crossProduct(aStar, bStar)) /
           fVolume;
}

/// The least angle between a view and the directions that have names, degrees.
double leastAngle(const ReciprocalBasis& basis, const QVector3D& view)
{
    double dfLeast = 180;
    for (int i = 0; i < 343; ++i) {
        if (i != 171) {  // [0 0 0]
            dfLeast = std::min(dfLeast,
                               degreesBetween(view, direct(basis, i / 49 - 3, i / 7 % 7 - 3, i % 7 - 3)));
        }
    }
    for (const Vec3D& v : {basis.a, basis.b, basis.c}) {
        dfLeast = std::min({dfLeast, degreesBetween(view, asQt(v)), degreesBetween(view, -asQt(v))});
    }
    return dfLeast;
}

/// The direction that a zone's name stands for, null for none.
QVector3D directionNamed(const ReciprocalBasis& basis, const QString& strName)
{
    if (const auto anIndex = readDirection(strName, nullptr)) {
        return direct(basis, (*anIndex)[0], (*anIndex)[1], (*anIndex)[2]);
    }
    const bool bBack = strName.startsWith('-');
    const int nAxis = QStringList{"a*", "b*", "c*"}.indexOf(strName.mid(bBack ? 1 : 0));
    return nAxis < 0 ? QVector3D() : (bBack ? -1.f : 1.f) * asQt(basis.vectors()[nAxis]);
}

}  // namespace

TEST(NearestZone, IsThatOfABruteSearch)
{
    std::mt19937 random(8);
    std::normal_distribution<float> normal;
    double dfFarthestCubic = 0;
    for (int n = 0; n < 400; ++n) {
        const ReciprocalBasis basis = n % 4 == 0 ? ReciprocalBasis{{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}}
                                                 : randomBasis(random);
        const Vec3D view{normal(random), normal(random), normal(random)};
        const NearestZone zone = nearestZone(*CCellFrame::of(basis), view);
        EXPECT_NEAR(zone.dfOff, leastAngle(basis, asQt(view)), 0.051);
        const QVector3D named = directionNamed(basis, zone.strName);
        EXPECT_NEAR(degreesBetween(asQt(view), named), zone.dfOff, 1e-3) << qPrintable(zone.strName);
        if (n % 4 == 0) {
            dfFarthestCubic = std::max(dfFarthestCubic, zone.dfOff);
        }
    }
    EXPECT_LT(dfFarthestCubic, 13);
}

TEST(NearestZone, HasAName)
{
    const struct {
        Vec3D view;
        const char* pszText;
    } aRow[] = {{{0, 0, -3}, "[0 0 -1], 0.0° off"},  // which is -c* as well
                {{0.01f, 0.005f, 0}, "[1 1 0], 0.0° off"},
                {{1, std::tan(float(g_dfPi / 60)), 0}, "[1 0 0], 3.0° off"}};
    for (const auto& row : aRow) {
        EXPECT_EQ(nearestZoneText(nearestZone(*CCellFrame::of(g_box), row.view)), row.pszText);
    }
    // Monoclinic, β = 100°: a and a* lie 10° apart and each has its name.
    const float fSine = float(std::sin(g_dfPi / 18)), fCosine = float(std::cos(g_dfPi / 18));
    const auto monoclinic = CCellFrame::of(
        ReciprocalBasis{{0.1f, 0, 0}, {0, 0.1f, 0}, {0.1f * fSine, 0, 0.1f * fCosine}});
    EXPECT_EQ(nearestZone(*monoclinic, {1, 0, 0}).strName, "a*");
    EXPECT_EQ(nearestZone(*monoclinic, {-fCosine, 0, fSine}).strName, "[-1 0 0]");
    EXPECT_NEAR(nearestZone(*monoclinic, {-fCosine, 0, fSine}).dfOff, 0, 1e-4);
}

TEST(PointPairs, AreMeasuredAsByHand)
{
    const PointPair pair = measurePair({0.3f, 0, 0}, {0, 0.4f, 0}, CCellFrame::of(g_box));
    EXPECT_NEAR(pair.dfDelta, 0.5, 1e-7);
    EXPECT_NEAR(*pair.spacing, 2, 1e-6);
    EXPECT_NEAR(*pair.angle, 90, 1e-6);
    EXPECT_NEAR((*pair.deltaIndices)[0], -3, 1e-6);
    EXPECT_NEAR((*pair.deltaIndices)[1], 2, 1e-6);
    EXPECT_EQ(pairText(pair), "Δ=0.5000 Å⁻¹, d=2.000 Å, Δhkl=(-3.00, 2.00, 0.00), 90.0° at the origin");
    const PointPair small = measurePair({1, 0, 0}, {1, 1e-4f, 0}, std::nullopt);
    EXPECT_NEAR(*small.angle, std::atan(1e-4) * 180 / g_dfPi, 1e-9);
    EXPECT_FALSE(small.deltaIndices);
    EXPECT_EQ(pairText(measurePair({}, {}, std::nullopt)), "Δ=0.0000 Å⁻¹");
}

TEST(Camera, FitsTheCloud)
{
    std::mt19937 random(2);
    std::normal_distribution<float> normal;
    for (const float fScale : {0.02f, 0.3f, 1.2f}) {
        CloudVertices vertices;
        for (int i = 0; i < 500; ++i) {
            vertices.vecVertex.push_back(
                {fScale * normal(random), fScale * normal(random), 0, 1, 1, 1, 1, 1});
        }
        for (const auto& [nWidth, nHeight, bKeep] :
             {std::make_tuple(900, 600, true), std::make_tuple(500, 1000, true),
              std::make_tuple(900, 600, false)}) {
            CCamera camera;
            camera.setZoom(*zoomToFit(vertices, camera, nWidth, nHeight, bKeep));
            // Of the half height or width of the widget, in the view's coordinates.
            const double dfReachX = bKeep ? double(nWidth) / std::max(nWidth, nHeight) : 1;
            const double dfReachY = bKeep ? double(nHeight) / std::max(nWidth, nHeight) : 1;
            double dfGreatest = 0;
            for (int nTurn = 0; nTurn < 36; ++nTurn) {
                camera.rotateAroundScreen(2, 10);
                const QMatrix4x4 m = camera.projection() * camera.m_fRotation;
                for (const CloudVertex& v : vertices.vecVertex) {
                    dfGreatest = std::max({dfGreatest,
                                           std::abs(m(0, 0) * v.x + m(0, 1) * v.y + m(0, 3)) / dfReachX,
                                           std::abs(m(1, 0) * v.x + m(1, 1) * v.y + m(1, 3)) / dfReachY});
                }
            }
            EXPECT_LT(dfGreatest, 1);
            EXPECT_GT(dfGreatest, 0.9);
        }
        EXPECT_FALSE(zoomToFit({}, CCamera(), 100, 100, true));
    }
}

TEST(Camera, TurnsOnTheShortestWay)
{
    std::mt19937 random(2);
    std::normal_distribution<float> normal;
    for (int i = 0; i < 50; ++i) {
        CCamera camera;
        camera.rotateAroundScreen(i % 3, 7.0 * i);
        const QMatrix4x4 before = camera.m_fRotation;
        const Vec3D v = i == 0 ? Vec3D{0, 0, -1} : Vec3D{normal(random), normal(random), normal(random)};
        const double dfOff = degreesBetween(asQt(v), asQt(camera.viewDirection()));
        camera.turnTowards(v);
        EXPECT_LT(degreesBetween(asQt(v), asQt(camera.viewDirection())), 0.02);
        double dfTrace = 0;  // of the turn: 1 + 2·cos of its angle
        for (int n = 0; n < 9; ++n) {
            dfTrace += double(before(n % 3, n / 3)) * double(camera.m_fRotation(n % 3, n / 3));
        }
        EXPECT_NEAR(dfTrace, 1 + 2 * std::cos(dfOff * g_dfPi / 180), 1e-4);
        camera.turnTowards({});
        EXPECT_LT(degreesBetween(asQt(v), asQt(camera.viewDirection())), 0.02);
    }
}

TEST(LatticeGrid, ManyLinesAreFaintAndTheirRowsAlike)
{
    EXPECT_EQ(latticeLineAlpha(1), 0.5f);
    EXPECT_EQ(latticeLineAlpha(9), 0.5f);
    for (int nRow : {4, 9, 21, 40}) {
        double dfThrough = 1;  // light that a row of lines lets through
        for (int i = 0; i < nRow; ++i) {
            dfThrough *= 1 - double(latticeLineAlpha(size_t(nRow * nRow)));
        }
        EXPECT_NEAR(dfThrough, 0.125, 1e-5) << nRow;
    }
    EXPECT_EQ(latticeLineAlpha(100000), 0.05f);
}

}  // namespace tessera
