#include "cloud/camera.h"
#include "cloud/latticegrid.h"
#include "cloud/pointgroups.h"
#include "cloud/pointsizes.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QQuaternion>

#include <cmath>
#include <limits>
#include <random>
#include <set>

namespace tessera {

namespace {

QList<Peak3D> peaksOfIntensity(const std::vector<double>& vecIntensity)
{
    QList<Peak3D> listPeak;
    for (double df : vecIntensity) {
        listPeak.append(Peak3D());
        listPeak.last().dfIPoint = df;
    }
    return listPeak;
}

const double g_dfInf = std::numeric_limits<double>::infinity(), g_dfNaN = std::nan("");

}  // namespace

TEST(PointSizes, GrowWithTheSquaredLogarithmOfIntensity)
{
    const struct {
        std::vector<double> vecIntensity, vecX;  // x = 4000 at the greatest, 1.01 at least
    } aRow[] = {{{800, 400, 0.3, 0.2, 0, -5}, {4000, 2000, 1.5, 1.01, 1.01, 1.01}},
                {{7, 7, 7}, {4000, 4000, 4000}},
                {{0, -1}, {1.01, 1.01}},
                {{-3, -2}, {1.01, 1.01}},
                {{g_dfInf, 5, g_dfNaN, -g_dfInf}, {4000, 4000, 1.01, 1.01}},
                {{1e-44, 0}, {4000, 1.01}},  // 4000 over it is beyond single precision
                {{}, {}}};
    for (const auto& row : aRow) {
        for (double dfRatio : {2.0, 0.0, 37.5}) {
            const std::vector<float> vecSize = pointSizes(peaksOfIntensity(row.vecIntensity), dfRatio);
            ASSERT_EQ(vecSize.size(), row.vecX.size());
            for (size_t i = 0; i < vecSize.size(); ++i) {
                const double df = 0.1 * dfRatio * std::pow(std::log(row.vecX[i]), 2);
                EXPECT_NEAR(vecSize[i], df, 2e-6 * std::max(df, 1.0)) << &row - aRow << ' ' << i;
                EXPECT_EQ(vecSize[i] > 0, dfRatio > 0);
            }
        }
    }
}

// The classes go from 0.5 to 40 in steps of 39.5 / 63; hidden points are in no class.
TEST(PointSizes, ComeIn64Classes)
{
    const PointSizeClasses classes = pointSizeClasses({3, 0.5, 99, 40, 13.4f, 14}, {1, 1, 0, 1, 1, 1});
    EXPECT_NEAR(classes.m_fSizeClass[21], 0.5 + 39.5 / 3, 1e-5);
    const std::pair<size_t, std::vector<int>> aClass[] = {
        {3, {0}}, {0, {1}}, {63, {3}}, {20, {4}}, {21, {5}}};
    for (const auto& row : aClass) {
        EXPECT_EQ(classes.m_pnSizeClass[row.first], row.second) << row.first;
    }
    EXPECT_EQ(pointSizeClasses({3, 3}, {1, 1}).m_pnSizeClass[0], (std::vector<int>{0, 1}));
}

namespace {

/// Five groups of random points, of which the last one is hidden, and their members by a plain count.
class PointGroups : public testing::Test {
protected:
    void SetUp() override
    {
        groups.reset(nPoints);
        expectAsCounted();
        QList<PointGroup> listGroup{{"Unlabeled", {1, 2}, Qt::white}};
        for (int k = 1; k <= 5; ++k) {
            QList<int> listPoint{-1, nPoints, 7, 7};  // strangers and a second mention
            vecTruth.push_back({7});
            for (int n = 0; n < 40; ++n) {
                listPoint.append(int(random() % nPoints));
                vecTruth.back().insert(listPoint.last());
            }
            listGroup.append({QString::number(k), listPoint, QColor::fromRgb(random() | 0xff000000), k != 5});
        }
        EXPECT_FALSE(groups.setGroups({}));
        ASSERT_TRUE(groups.setGroups(listGroup.mid(0, 4) + listGroup.mid(5)));  // group 4 comes by itself
        groups.insertGroup(4, "4", listGroup[4].listPoint, listGroup[4].color);
    }
    /// Expects of each point that it is shown where one of its groups is, in the mean of their colours or, if
    /// it is selected, in red; and in group 0 what no other one has.
    void expectAsCounted()
    {
        PointDisplay display;
        groups.makeDisplay(display);
        ASSERT_EQ(groups.groupCount(), int(vecTruth.size()));
        vecTruth[0].clear();
        for (int i = 0; i < nPoints; ++i) {
            int nHeld = 0, nShown = 0, anSum[3] = {};
            for (int k = int(vecTruth.size()) - 1; k >= 0; --k) {
                if (k == 0 && nHeld == 0) {
                    vecTruth[0].insert(i);
                }
                nHeld += int(vecTruth[k].count(i));
                if (!vecTruth[k].count(i) || !groups.visible()[k]) {
                    continue;
                }
                const QColor color = groups.colors()[k];
                ++nShown;
                anSum[0] += color.red();
                anSum[1] += color.green();
                anSum[2] += color.blue();
            }
            const bool bSelected = groups.selected().contains(i);
            ASSERT_EQ(bool(display.m_pbPointVisible[i]), nShown > 0 || bSelected) << i;
            const float afShown[3] = {display.m_pfRed[i], display.m_pfGreen[i], display.m_pfBlue[i]};
            for (int c = 0; c < 3; ++c) {
                ASSERT_FLOAT_EQ(afShown[c] * 255,
                                bSelected ? (c == 0) * 255 : anSum[c] / std::max(nShown, 1));
            }
        }
        EXPECT_EQ(groups.points()[0], QList<int>(vecTruth[0].begin(), vecTruth[0].end()));
    }

    const int nPoints = 150;
    std::mt19937 random{11};
    CPointGroups groups;
    std::vector<std::set<int>> vecTruth = std::vector<std::set<int>>(1);  ///< members of groups 1 and on
};

}  // namespace

TEST_F(PointGroups, AreSetAndInserted)
{
    EXPECT_FALSE(groups.visible()[5]);
    expectAsCounted();
    EXPECT_EQ(groups.points()[5].size(), int(vecTruth[5].size()));
}

TEST_F(PointGroups, AreHiddenAndTheirPointsSelected)
{
    EXPECT_TRUE(groups.setVisible(2, false));
    EXPECT_TRUE(groups.setVisible(0, false));
    EXPECT_TRUE(groups.setVisible(5, true));
    EXPECT_FALSE(groups.setVisible(6, false));
    EXPECT_FALSE(groups.setColor(-1, Qt::red));
    EXPECT_FALSE(groups.setLabel(6, "z"));
    groups.select({3, 140, 64, 900}, false);
    groups.select({5}, true);
    EXPECT_EQ(groups.selected(), (QList<int>{3, 5, 64, 140}));
    expectAsCounted();
}

TEST_F(PointGroups, AreMergedAndRemoved)
{
    EXPECT_FALSE(groups.mergeGroups({3, 3}));
    EXPECT_TRUE(groups.mergeGroups({5, 2}));
    vecTruth[2].insert(vecTruth[5].begin(), vecTruth[5].end());
    vecTruth.pop_back();
    expectAsCounted();
    EXPECT_TRUE(groups.removeGroups({0, 1, 3}));
    vecTruth = {{}, vecTruth[2], vecTruth[4]};
    EXPECT_EQ(groups.labels(), (QStringList{"Unlabeled", "2", "4"}));
    expectAsCounted();
}

// The points of both groups return to group 0, below the merged group.
TEST_F(PointGroups, AreMergedWithTheFirst)
{
    ASSERT_TRUE(groups.removeGroups({3, 4, 5}));
    vecTruth.resize(3);
    EXPECT_TRUE(groups.mergeGroups({2, 0}));
    EXPECT_EQ(groups.labels(), (QStringList{"Unlabeled", "Unlabeled", "1"}));
    EXPECT_TRUE(groups.points()[0].isEmpty());
    EXPECT_EQ(groups.points()[1].size(), nPoints - int(vecTruth[1].size()));
}

TEST_F(PointGroups, ANewOneHasTheSelectedAndAColourOfItsOwn)
{
    groups.reset(2);
    EXPECT_FALSE(groups.addSelectedAsNewGroup()) << "neither a colour nor a number is used up";
    for (int nGroup : {0, 1, 2}) {
        groups.select({1}, false);
        EXPECT_TRUE(groups.addSelectedAsNewGroup());
        EXPECT_TRUE(groups.selected().isEmpty());
        EXPECT_EQ(groups.labels().last(), QStringLiteral("Label%1").arg(nGroup));
        EXPECT_FALSE(groups.colors().mid(0, nGroup + 1).contains(groups.colors().last()));
    }
}

namespace {

void expectRotation(const CCamera& camera, const QQuaternion& quaternion, double dfTolerance)
{
    const QMatrix3x3 matrix = quaternion.toRotationMatrix();
    for (int n = 0; n < 9; ++n) {
        ASSERT_NEAR(camera.m_fRotation(n % 3, n / 3), matrix(n % 3, n / 3), dfTolerance) << n;
    }
}

}  // namespace

TEST(Camera, TurnsAsQuaternionsDo)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> uniform(-1.f, 1.f);
    CCamera camera;
    QQuaternion turned;
    const int nW = 611, nH = 400;
    for (int n = 0; n < 300; ++n) {
        const int nAxis = int(random() % 3);
        const float fAngle = 90 * uniform(random);
        camera.rotateAroundScreen(nAxis, fAngle);
        turned = QQuaternion::fromAxisAndAngle(nAxis == 0, nAxis == 1, nAxis == 2, fAngle) * turned;
        const int nX = int(random() % nW), nY = int(random() % nH);
        const Vec3D v1 = trackballVector(nX, nY, nW, nH), v2 = trackballVector(nX + 9, nY - 5, nW, nH);
        const QVector3D q1(v1.x, v1.y, v1.z), q2(v2.x, v2.y, v2.z);
        camera.rotateTrackball(v1, v2);
        camera.rotateTrackball(v2, v2);
        turned = QQuaternion::fromAxisAndAngle(QVector3D::crossProduct(q1, q2), (q2 - q1).length() * 60) *
                 turned;
        turned.normalize();
        expectRotation(camera, turned, 2e-4);
    }
}

TEST(Camera, LooksAlongADirectionByTheShortestTurn)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> uniform(-1.f, 1.f);
    CCamera camera;
    for (int n = 0; n < 50; ++n) {
        const Vec3D v{uniform(random), uniform(random), 0.05f * uniform(random)};
        camera.viewAlong(v);
        EXPECT_LT(length(camera.viewDirection() - scaled(v, 1 / length(v))), 1e-6);
        expectRotation(camera, QQuaternion::rotationTo({v.x, v.y, v.z}, {0, 0, 1}), 1e-5);
    }
    const QMatrix4x4 before = camera.m_fRotation;
    camera.viewAlong({0, 0, 0});
    camera.viewAlong({float(g_dfNaN), 0, 1});
    camera.rotateAroundScreen(1, g_dfInf);
    EXPECT_EQ(camera.m_fRotation, before);
    camera.viewAlong({0, 0, -0.2f});  // no axis to turn about
    EXPECT_EQ(camera.m_fRotation, QMatrix4x4());
}

TEST(Camera, TheTrackballIsAHemisphereOverTheView)
{
    const struct {
        int nX, nY;
        Vec3D vec;
        double dfLength;
    } aPlace[] = {{100, 50, {0, 0, 1}, 1},
                  {0, 0, {-1, 1, 0}, M_SQRT2},
                  {150, 50, {0.5f, 0, M_SQRT1_2}, std::sqrt(0.75)}};  // half way to the right: cos 45°
    for (const auto& place : aPlace) {
        EXPECT_LT(length(trackballVector(place.nX, place.nY, 200, 100) -
                         scaledDouble(place.vec, 1 / place.dfLength)),
                  1e-6);
    }
}

TEST(Camera, NoZoomTurnsThePictureRound)
{
    for (float fStep : {0.05f, 0.24f, 3.f}) {
        CCamera camera;
        camera.m_fPanX = 0.5f;
        camera.changeZoom(-0.25f);
        EXPECT_EQ(camera.m_fZoom, -0.25f) << "a step is what the mouse makes it while there is room";
        float fScale = camera.projection()(0, 0);
        for (int n = 0; n < 60; ++n) {
            camera.changeZoom(-fStep);
            ASSERT_GE(camera.projection()(0, 0), fScale) << n;
            fScale = camera.projection()(0, 0);
            ASSERT_FALSE(camera.isFlat());
        }
        EXPECT_GT(camera.sizeFactor(), 500) << "as far in as is of use";
        camera.changeZoom(1);
        EXPECT_NEAR(camera.m_fViewBound + camera.m_fZoom, 1, 0.01);
        camera.setZoom(-3);
        EXPECT_GT(camera.projection()(0, 0), 0);
        const float fZoom = camera.m_fZoom;
        for (const float f : {std::numeric_limits<float>::quiet_NaN(), float(g_dfInf)}) {
            camera.setZoom(f);
            camera.changeZoom(f);
            EXPECT_EQ(camera.m_fZoom, fZoom) << f;
        }
    }
}

const ReciprocalBasis g_basis{{0.09f, 0.01f, 0}, {0.02f, -0.11f, 0.03f}, {0, 0.01f, 0.13f}};

TEST(LatticeGrid, HasThePointsAndLinesOfItsRange)
{
    const ReciprocalBasis& basis = g_basis;
    const CCamera camera;
    const int anSmall[3] = {2, 3, 0}, anGreat[3] = {60, 50, 40}, anNone[3] = {0, -4, 0};
    const LatticeGrid grid = makeLatticeGrid(basis, anSmall, 2.f, camera);
    EXPECT_EQ(grid.vecPoint.size(), 35u);
    EXPECT_EQ(grid.vecLine[2].size(), 70u);
    EXPECT_LT(length(grid.vecLine[0][1] - grid.vecLine[0][0] + scaled(basis.a, 8)), 1e-6);  // +H to -H
    EXPECT_EQ(makeLatticeGrid(basis, anNone, 1.f, camera).vecPoint.size(), 1u);
    const ReciprocalBasis endless{basis.a, basis.b, {float(g_dfInf), 0, 0}};
    EXPECT_TRUE(makeLatticeGrid(endless, anGreat, 1.f, camera).vecPoint.empty());
}

TEST(LatticeGrid, HasAllThatCanBeSeenOfAGreatRange)
{
    const ReciprocalBasis& basis = g_basis;
    const int anGreat[3] = {60, 50, 40};
    const Vec3D a = basis.a, b = basis.b, c = basis.c;
    CCamera camera;
    camera.viewAlong({1, 2, 3});
    camera.m_fPanX = -1.1f;
    camera.m_fZoom = -1.2f;
    const QMatrix4x4 m = camera.projection() * camera.m_fRotation;
    std::set<std::vector<long>> setDrawn;
    const auto key = [](const Vec3D& v) {
        return std::vector<long>{std::lround(v.x * 1e4), std::lround(v.y * 1e4), std::lround(v.z * 1e4)};
    };
    for (const Vec3D& v : makeLatticeGrid(basis, anGreat, 1.f, camera).vecPoint) {
        setDrawn.insert(key(v));
    }
    size_t nSeen = 0;
    for (int n = 0; n < 121 * 101 * 81; ++n) {
        const int h = n / 8181 - 60, k = n / 81 % 101 - 50, l = n % 81 - 40;
        const Vec3D v = scaled(a, h) + scaled(b, k) + scaled(c, l);
        bool bSeen = true;
        for (int r = 0; r < 3; ++r) {
            bSeen = bSeen && std::abs(m(r, 0) * v.x + m(r, 1) * v.y + m(r, 2) * v.z + m(r, 3)) < 1.f;
        }
        nSeen += bSeen;
        if (bSeen) {
            ASSERT_TRUE(setDrawn.count(key(v))) << h << ' ' << k << ' ' << l;
        }
    }
    EXPECT_GT(nSeen, 5000u);
    EXPECT_LT(setDrawn.size(), 2 * nSeen);
}

// Of a basis that spans a plane, or of which two vectors are parallel, the corners of the view volume have no
// indices: those along the third vector are 0/0.
TEST(LatticeGrid, OfAFlatBasisHasAllThatCanBeSeen)
{
    const Vec3D a = g_basis.a, b = g_basis.b;
    const int anGreat[3] = {60, 50, 40};
    const LatticeGrid grid = makeLatticeGrid({a, b, a}, anGreat, 1.f, CCamera());
    for (int k = -15; k <= 15; ++k) {  // ±1.7 Å⁻¹, within the view volume
        const Vec3D vec = scaled(b, float(k));
        EXPECT_TRUE(std::any_of(grid.vecPoint.begin(), grid.vecPoint.end(), [&](const Vec3D& one) {
            return length(one - vec) < 1e-5;
        })) << k;
    }
}

// A cube of 0.05 1/Å fills the view volume at range 40; of a dense or flat lattice not all can be drawn.
TEST(LatticeGrid, HasNeverLessOfAGreaterRange)
{
    const Vec3D a = g_basis.a, b = g_basis.b, c = g_basis.c;
    const QList<ReciprocalBasis> listDense{{{0.05f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.05f}},
                                           {{0.008f, 0, 0}, {0.001f, 0.009f, 0}, {0, 0, 0.005f}},
                                           {a, b, c},
                                           {a, b, scaled(c, 0.01f)},
                                           {a, b, a}};
    for (const ReciprocalBasis& dense : listDense) {
        LatticeGrid smaller;
        for (int n : {33, 40, 41, 62, 63, 150, 159, 1000}) {
            const int anRange[3] = {n, n, n};
            QElapsedTimer timer;
            timer.start();
            const LatticeGrid grid = makeLatticeGrid(dense, anRange, 1.f, CCamera());
            EXPECT_LT(timer.elapsed(), 3000);
            if (&dense == &listDense[0] && n <= 40) {
                EXPECT_EQ(grid.vecPoint.size(), std::pow(2 * n + 1, 3));
                EXPECT_EQ(grid.vecLine[1].size(), 2 * std::pow(2 * n + 1, 2));
            }
            EXPECT_GE(grid.vecPoint.size(), smaller.vecPoint.size()) << n;
            EXPECT_GE(grid.vecLine[2].size(), smaller.vecLine[2].size()) << n;
            EXPECT_LE(grid.vecPoint.size(), size_t(g_nMostLatticePoints));
            EXPECT_LE(grid.vecLine[2].size(), 2u * g_nMostLatticeLines);
            smaller = grid;
        }
    }
}

}  // namespace tessera
