// Slabs, the lattice behind the points, the zone in the corner, and distances by the mouse.
#include "tests/view3d/view3dtest.h"

#include <QSignalSpy>

#include <cmath>

namespace tessera {

namespace {

const QList<Vec3D> g_listCell{{0.1f, 0, 0}, {0, 0.2f, 0}, {0, 0, 0.25f}};  // 10 × 5 × 4 Å

/// How many device pixels of a colour a column of the picture has.
int countInColumn(const QImage& image, int nX, const QColor& color)
{
    int nCount = 0;
    for (int y = 0; y < image.height(); ++y) {
        nCount += image.pixelColor(nX, y) == color;
    }
    return nCount;
}

/// Whether something bright stands where the corner's lines are.
bool isCornerLit(const QImage& image)
{
    for (int x = 8; x < 60; ++x) {
        for (int y = 8; y < 24; ++y) {
            if (image.pixelColor(int(x * image.devicePixelRatio()), int(y * image.devicePixelRatio()))
                    .lightness() > 200) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

/// Points of a layer l = 1 or near it, 2, 0 and −1.
class View3DSlab : public View3D {
protected:
    void SetUp() override
    {
        View3D::SetUp();
        m_view.setPoints({peakAt(0.4f, 0, 0.25f, 5, 0), peakAt(0.8f, 0, 0.29f, 5, 1),
                          peakAt(-0.4f, 0, 0.5f, 5, 2), peakAt(-0.8f, 0, 0, 5, 3),
                          peakAt(0, 0.8f, -0.25f, 5, 4)});
        m_view.setPointAlpha(1);
    }
    /// The points that are seen.
    std::vector<int> drawn()
    {
        const QImage image = picture();
        std::vector<int> vecDrawn;
        for (int i = 0; i < m_view.points().size(); ++i) {
            const Vec3D v = m_view.points()[i].point();
            if (atScene(image, double(v.x), double(v.y)).red() > 100) {
                vecDrawn.push_back(i);
            }
        }
        return vecDrawn;
    }
    /// Those that the pointer finds.
    std::vector<int> picked()
    {
        std::vector<int> vecPicked;
        for (int i = 0; i < m_view.points().size(); ++i) {
            if (m_view.pointAt(m_view.placeOfPoint(i).toPoint()) == i) {
                vecPicked.push_back(i);
            }
        }
        return vecPicked;
    }
    /// Pixels of the ring in the column through the first point.
    int ringPixels()
    {
        return countInColumn(picture(), int(m_view.placeOfPoint(0).x() * m_view.devicePixelRatioF()),
                             Qt::yellow);
    }

    const std::vector<int> vecAll{0, 1, 2, 3, 4};
};

TEST_F(View3DSlab, IsAllThatIsDrawnAndPicked)
{
    m_view.setSlab(CloudSlab{{0, 0, 1}, 1, 0.1});
    EXPECT_EQ(drawn(), vecAll) << "without a cell nothing is hidden";
    EXPECT_EQ(picked(), vecAll);
    EXPECT_EQ(m_view.overlayLines(), QStringList("l = 1 ± 0.1: there is no cell"));
    m_view.setLattice(g_listCell);
    EXPECT_EQ(drawn(), std::vector<int>({0}));
    m_view.setSlab(CloudSlab{{0, 0, 1}, 1, 0.2});
    EXPECT_EQ(drawn(), std::vector<int>({0, 1}));
    EXPECT_EQ(picked(), std::vector<int>({0, 1}));
    EXPECT_EQ(m_view.slabLevels({0, 0, 1}), std::make_pair(-1, 2));
    // Along [1 0 4] all but the last two are in h + 4l = 12 ± 4, the first two on its edges.
    m_view.setSlab(CloudSlab{{1, 0, 4}, 10, 2.7});
    EXPECT_EQ(drawn(), std::vector<int>({0, 1}));
    m_view.setGroupVisible(0, false);
    EXPECT_EQ(drawn(), std::vector<int>());
    EXPECT_EQ(picked(), std::vector<int>());
    m_view.setGroupVisible(0, true);
    m_view.setSlab(std::nullopt);
    EXPECT_EQ(drawn(), vecAll);
}

// The view says where it is hidden.
TEST_F(View3DSlab, WhatIsSelectedStaysSo)
{
    m_view.setLattice(g_listCell);
    m_view.setSlab(CloudSlab{{0, 0, 1}, 1, 0.2});
    drag(m_view, {1, 1}, {498, 398}, Qt::ControlModifier);
    EXPECT_EQ(m_view.selectedPoints(), QList<int>({0, 1}));
    m_view.ringPoint(0);
    EXPECT_GT(ringPixels(), 0);
    m_view.setSlab(CloudSlab{{0, 0, 1}, 2, 0.2});
    EXPECT_EQ(drawn(), std::vector<int>({2}));
    EXPECT_EQ(m_view.selectedPoints(), QList<int>({0, 1}));
    EXPECT_TRUE(m_view.overlayLines().contains("l = 2 ± 0.2: 1 of 5 points; 2 of 2 selected outside"));
    EXPECT_EQ(ringPixels(), 0);
}

// [0 2 0] of l = 0 lies beside all nodes of l = 1.
TEST_F(View3DSlab, LeavesOfTheLatticeItsOwnLayer)
{
    m_view.setPoints({});
    m_view.setLattice({{0.4f, 0, 0}, {0, 0.4f, 0}, {0.1f, 0.1f, 0.25f}});
    m_view.setShowLatticePoints(true);
    m_view.setLatticeRange(1, 1, 1);
    for (int nLayer : {0, 1}) {
        m_view.setSlab(CloudSlab{{0, 0, 1}, double(nLayer), 0.2});
        const QImage image = picture();
        EXPECT_EQ(atScene(image, 0.4, 0.4), nLayer == 0 ? QColor(Qt::green) : QColor(Qt::black));
        EXPECT_EQ(atScene(image, 0.5, 0.5), nLayer == 1 ? QColor(Qt::green) : QColor(Qt::black));
    }
}

TEST_F(View3D, TheLatticeLiesBehindThePoints)
{
    m_view.setLattice({{0.8f, 0, 0}, {0, 0.8f, 0}, {0, 0, 0.25f}});
    m_view.setLatticeRange(1, 1, 0);
    m_view.setPointAlpha(1);
    m_view.setPointSizeRatio(1);
    const Peak3D node = peakAt(0.8f, 0.8f, 0, 5, 0), onLine = peakAt(-0.4f, 0.8f, 0, 5, 1);
    for (bool bPoints : {false, true}) {
        m_view.setPoints(bPoints ? QList<Peak3D>{node, onLine} : QList<Peak3D>{});
        m_view.setShowLatticePoints(true);
        m_view.setShowLatticeLines(true);
        const QImage image = picture();
        EXPECT_EQ(atScene(image, 0.8, 0.8), bPoints ? QColor(Qt::white) : QColor(Qt::green));
        EXPECT_EQ(atScene(image, 0.8, -0.8), QColor(Qt::green));
        const int nLit = brightest(image, -0.4, 0.8);
        EXPECT_NEAR(nLit, bPoints ? 3 * 255 : 127, bPoints ? 0 : 1);
    }
    // Each row of the plane hk0 is one line, however many there are; through 21 × 21 rows none shines bright.
    m_view.setPoints({});
    m_view.setShowLatticePoints(false);
    m_view.setLattice({{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.0001f}});
    m_view.setLatticeRange(9, 9, 10);
    const QImage image = picture();
    const int nRow = brightest(image, -0.45, 0.3);
    EXPECT_NEAR(nRow, 255 * 0.875, 20) << "21 lines upon one another are as bright as three";
}

TEST_F(View3D, TheZoneIsNamedAndTurnedTo)
{
    EXPECT_FALSE(isCornerLit(picture()));
    EXPECT_FALSE(m_view.zoneInView());
    m_view.turnToNearestZone();
    EXPECT_EQ(m_view.getViewDirection(), (Vec3D{0, 0, 1}));
    m_view.setLattice(g_listCell);
    m_view.rotateAroundScreenX(4);
    m_view.rotateAroundScreenZ(30);
    EXPECT_EQ(m_view.overlayLines(), QStringList("[0 0 1], 4.0° off"));
    EXPECT_TRUE(isCornerLit(picture()));
    m_view.turnToNearestZone();
    EXPECT_NEAR(m_view.getViewDirection().z, 1, 1e-6);
    // What was turned within the screen stays.
    float afRotation[16], fPanX, fPanY, fZoom;
    m_view.getCamera(afRotation, fPanX, fPanY, fZoom);
    EXPECT_NEAR(afRotation[0], std::sqrt(0.75), 1e-5);
    const Vec3D v = m_view.zoneDirection({1, -1, 2}).value_or(Vec3D());
    EXPECT_NEAR(std::hypot(v.x - 10, v.y + 5, v.z - 8), 0, 1e-5);
    m_view.setLattice({});
    EXPECT_FALSE(m_view.zoneDirection({1, 0, 0}));
    EXPECT_FALSE(isCornerLit(picture()));
}

/// Three points between which distances are measured.
class View3DDistances : public View3D {
protected:
    typedef std::array<int, 2> Pair;

    void SetUp() override
    {
        View3D::SetUp();
        m_view.setPoints(
            {peakAt(-0.8f, 0.4f, 0, 5, 0), peakAt(0.8f, 0.4f, 0, 5, 1), peakAt(0, -0.8f, 0, 5, 2)});
        m_view.setLattice(g_listCell);
        ptA = m_view.placeOfPoint(0).toPoint();
        ptB = m_view.placeOfPoint(1).toPoint();
        ptC = m_view.placeOfPoint(2).toPoint();
    }
    Pair measured() const { return m_view.measuredPoints(); }
    /// Pixels of the line across the middle of the view.
    int thickness()
    {
        return countInColumn(picture(), int(m_nW / 2. * m_view.devicePixelRatioF()), Qt::yellow);
    }

    QPoint ptA, ptB, ptC;
};

TEST_F(View3DDistances, AreMeasuredByTheMiddleButton)
{
    QSignalSpy spyText(&m_view, &ED3DWidget::textMessage);
    drag(m_view, ptA, ptB + QPoint(2, -2), {}, Qt::MiddleButton);
    EXPECT_EQ(measured(), Pair({0, 1}));
    ASSERT_EQ(spyText.count(), 1);
    const QString strText = spyText.value(0).value(0).toString();
    EXPECT_EQ(strText, "Δ=1.6000 Å⁻¹, d=0.625 Å, Δhkl=(16.00, 0.00, 0.00), 126.9° at the origin");
    EXPECT_TRUE(m_view.overlayLines().contains(strText));
    // A line of one and a half pixels, sharp on a dense screen too.
    const double dfRatio = m_view.devicePixelRatioF();
    EXPECT_GE(thickness(), int(dfRatio));
    EXPECT_LE(thickness(), 2 * dfRatio);
    EXPECT_EQ(m_view.getViewDirection(), (Vec3D{0, 0, 1}));
}

TEST_F(View3DDistances, AreNoneFromNoPointOrToNone)
{
    drag(m_view, ptA, ptB, {}, Qt::MiddleButton);
    drag(m_view, ptA, ptA, {}, Qt::MiddleButton);
    EXPECT_EQ(measured(), Pair({-1, -1}));
    drag(m_view, ptA, {250, 300}, {}, Qt::MiddleButton);
    drag(m_view, {250, 200}, ptB, {}, Qt::MiddleButton);
    EXPECT_EQ(measured(), Pair({-1, -1}));
    EXPECT_EQ(thickness(), 0);
}

// Which beside the points turns as ever, and clicks as ever.
TEST_F(View3DDistances, AreMeasuredByTheLeftButtonWhereThatIsWished)
{
    QSignalSpy spyClick(&m_view, &ED3DWidget::pointClicked);
    m_view.setMeasuring(true);
    drag(m_view, ptA, ptC, {});
    EXPECT_EQ(measured(), Pair({0, 2}));
    EXPECT_EQ(spyClick.count(), 0);
    m_view.setSlab(CloudSlab{{0, 1, 0}, -4, 0.2});
    EXPECT_EQ(m_view.overlayLines().size(), 2) << "of points that are hidden nothing is told";
    m_view.setSlab(std::nullopt);
    drag(m_view, ptB, ptB, {});
    EXPECT_EQ(spyClick.count(), 1);
    EXPECT_EQ(m_view.getViewDirection(), (Vec3D{0, 0, 1}));
    drag(m_view, {250, 200}, {300, 200}, {});
    EXPECT_NE(m_view.getViewDirection(), (Vec3D{0, 0, 1}));
    m_view.measure(0, 1);
    m_view.setPoints(m_view.points());
    EXPECT_EQ(measured(), Pair({-1, -1}));
}

TEST_F(View3DDistances, FittingShowsAllPoints)
{
    m_view.setCamera(QMatrix4x4().constData(), 0.4f, 0.3f, -1.7f);
    m_view.fitView();
    double dfFarthest = 0;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(m_view.rect().contains(m_view.placeOfPoint(i).toPoint())) << i;
        const QPointF pt = m_view.placeOfPoint(i) - QPointF(m_nW / 2., m_nH / 2.);
        dfFarthest = std::max(dfFarthest, std::hypot(pt.x(), pt.y()));
    }
    EXPECT_GT(dfFarthest, 0.9 * m_nH / 2);
}

}  // namespace tessera
