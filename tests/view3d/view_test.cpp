#include "records/pi.h"
#include "tests/view3d/view3dtest.h"

#include <QAction>
#include <QColorDialog>
#include <QMenu>
#include <QSignalSpy>

#include <GL/glu.h>

#include <cmath>
#include <limits>
#include <random>

namespace tessera {

namespace {

// The cloud drawn and picked the plain way in the context of a widget, by the fixed pipeline and the matrix
// stack alone.
struct PlainCloud {
    QGLWidget& m_widget;
    const float* m_pfTurn = nullptr;  // angle and axis, pan x and y, zoom, ratio of sizes
    QList<Peak3D> m_listPoint = {};
    std::vector<QColor> m_vecColor = {};
    std::vector<GLint> m_vecBand = {};  // start and end, device pixels; empty while not picking

    QImage picture()
    {
        draw();
        return m_widget.grabFrameBuffer();
    }
    QList<int> hits(const QLine& band)
    {
        m_widget.makeCurrent();
        const int r = m_widget.devicePixelRatio();
        m_vecBand = {band.x1() * r, band.y1() * r, band.x2() * r, band.y2() * r};
        std::vector<GLuint> vecHit(size_t(m_listPoint.size()) * 4);
        glSelectBuffer(GLsizei(vecHit.size()), vecHit.data());
        glRenderMode(GL_SELECT);
        glInitNames();
        glPushName(0);
        draw();
        m_vecBand.clear();
        QList<int> listName;
        for (int i = 0, nHits = glRenderMode(GL_RENDER); i < nHits; ++i) {
            listName.append(int(vecHit[size_t(i) * 4 + 3]));
        }
        return listName;
    }
    void draw()
    {
        m_widget.makeCurrent();
        const int r = m_widget.devicePixelRatio(), w = m_widget.width() * r, h = m_widget.height() * r,
                  s = std::max(w, h);
        GLint anViewport[4] = {(w - s) / 2, (h - s) / 2, s, s};
        glViewport(anViewport[0], anViewport[1], anViewport[2], anViewport[3]);
        glClear(GL_COLOR_BUFFER_BIT);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        if (!m_vecBand.empty()) {
            gluPickMatrix((m_vecBand[0] + m_vecBand[2]) / 2,
                          2 * anViewport[1] + anViewport[3] - (m_vecBand[1] + m_vecBand[3]) / 2,
                          abs(m_vecBand[2] - m_vecBand[0]), abs(m_vecBand[3] - m_vecBand[1]), anViewport);
        }
        const float x = m_pfTurn[4], y = m_pfTurn[5], z = m_pfTurn[6];
        glOrtho(-2 - x - z, 2 - x + z, -2 - y - z, 2 - y + z, -2, 2);
        glMatrixMode(GL_MODELVIEW);
        glRotatef(m_pfTurn[0], m_pfTurn[1], m_pfTurn[2], m_pfTurn[3]);
        double dfGreatest = 0;
        for (const Peak3D& peak : m_listPoint) {
            dfGreatest = std::max(dfGreatest, peak.dfIPoint);
        }
        for (int i = 0; i < m_listPoint.size(); ++i) {
            const double dfLog = std::log(std::max(4000 / dfGreatest * m_listPoint[i].dfIPoint, 1.01));
            const QColor& color = m_vecColor[i];
            if (!color.isValid()) {
                continue;
            }
            glPointSize(float(r * 2 / std::abs(2 + z) * dfLog * m_pfTurn[7] * dfLog * 0.1));
            glColor4f(float(color.redF()), float(color.greenF()), float(color.blueF()), 0.8f);
            glLoadName(GLuint(i));
            glBegin(GL_POINTS);
            glVertex3f(m_listPoint[i].fX3D, m_listPoint[i].fY3D, m_listPoint[i].fZ3D);
            glEnd();
        }
        glLoadIdentity();
    }
};

}  // namespace

TEST_F(View3D, DrawsBackgroundAndPointsInTheirPlaces)
{
    m_view.setBackgroundColor(QColor(10, 20, 30));
    EXPECT_EQ(at(picture(), 3, 3), QColor(10, 20, 30));
    m_view.setBackgroundColor(Qt::black);
    m_view.setPoints({peakAt(0.5f, -0.3f, 1.9f, 7, 0), peakAt(-1, 0, -2.1f, 7, 1)});  // one lies behind
    EXPECT_EQ(atScene(picture(), -1, 0), QColor(Qt::black));
    m_view.setCamera(QMatrix4x4().constData(), 0, 0, std::numeric_limits<float>::infinity());
    EXPECT_EQ(atScene(picture(), 0, 0), QColor(Qt::black));
    m_view.resetView();
    m_view.setPointAlpha(0.5f);
    m_view.setPointSizeRatio(0.3 / m_view.devicePixelRatio());  // Mesa draws larger ones too bright inside
    EXPECT_NEAR(atScene(picture(), 0.5, -0.3).blue(), 127, 1);
    m_view.setPointAlpha(1.f);
    m_view.viewAlong({1, 0, 0});
    EXPECT_EQ(atScene(picture(), -1.9, -0.3), QColor(Qt::white));

    m_view.resetView();
    m_view.setAspectRatio(false);
    EXPECT_EQ(at(picture(), 312.5, 200 + 0.3 * m_nH / 4), QColor(Qt::white));
}

// Ambient light of 0.1 and, as OpenGL has it, 0.2 for all; of the others one meets the points from the front.
TEST_F(View3D, LightFallsOnThePoints)
{
    m_view.setPoints({peakAt(0.5f, -0.3f, 1.9f, 7, 0), peakAt(-1, 0, -2.1f, 7, 1)});
    m_view.setPointSizeRatio(0.3 / m_view.devicePixelRatio());
    m_view.setPointAlpha(1.f);
    m_view.setLight(true);
    m_view.setLightIntensity(0);
    EXPECT_NEAR(atScene(picture(), 0.5, -0.3).red(), 255 * (0.3 + 0.2 / std::sqrt(1.02)), 2);
}

// It lies 60 pixels from the corner and is 50 long.
TEST_F(View3D, TheCrossOfAxesTurnsCounterclockwiseWithTheScene)
{
    for (int nTurn : {0, 1}) {
        const QImage image = picture();
        int anLit[3] = {};  // of x, of y, and blue ones about the letter x
        for (int i = 5; i < 60; ++i) {
            for (int j = -8; j < 8; ++j) {
                const QPoint aPlace[] = {
                    {60 + i, m_nH - 60 + j}, {60 + j, m_nH - 60 - i}, {60 - i, m_nH - 60 + j}};
                for (int nAxis : {0, 1}) {
                    const QColor color = at(image, aPlace[nTurn + nAxis].x(), aPlace[nTurn + nAxis].y());
                    anLit[nAxis] += std::abs(j) <= 1 && color == QColor(nAxis == 0 ? Qt::red : Qt::green);
                    anLit[2] += nAxis == 0 && i > 50 && color.blue() > 150;
                }
            }
        }
        EXPECT_NEAR(anLit[0], 45, 2) << nTurn;
        EXPECT_NEAR(anLit[1], 45, 2) << nTurn;
        EXPECT_GT(anLit[2], 8) << nTurn;
        m_view.rotateAroundScreenZ(90);
    }
}

TEST_F(View3D, TheGridKeepsStillAndHasEachFifthLineBold)
{
    m_view.rotateAroundScreenZ(70);
    m_view.setShowCanvasGrid(true);
    m_view.setCanvasGridColor(QColor(0, 100, 0));
    m_view.setCanvasGridAlpha(0.4f);
    const QImage image = picture();
    EXPECT_NEAR(brightest(image, 0.5, 0.15), 60, 2);
    EXPECT_NEAR(brightest(image, -0.3, 0.15), 40, 2);
    EXPECT_EQ(brightest(image, 0.15, 0.15), 0);
}

TEST_F(View3D, TheLatticeHasItsPointsAndLinesWithinItsRange)
{
    m_view.setLattice({{0.5f, 0, 0}, {0, 0.4f, 0}, {0, 0, 0.3f}});
    m_view.setShowLatticePoints(true);
    m_view.setLatticeRange(2, 1, 0);
    QImage image = picture();
    EXPECT_EQ(atScene(image, 1, 0.4), QColor(Qt::green));
    EXPECT_EQ(atScene(image, 1, 0.8), QColor(Qt::black));
    EXPECT_EQ(brightest(image, 0.75, 0.4), 0);
    m_view.setShowLatticeLines(true);
    image = picture();
    EXPECT_NEAR(brightest(image, -0.75, 0.4), 127, 1);  // along a*
    EXPECT_NEAR(brightest(image, -0.5, 0.2), 127, 1);   // along b*
    EXPECT_EQ(atScene(image, 0.25, 0), QColor(Qt::red));
    EXPECT_EQ(brightest(image, -0.5, 0.6), 0);
    m_view.setLattice({{1, 0, 0}});
    EXPECT_EQ(atScene(picture(), 0.5, 0), QColor(Qt::black));
}

/// Two groups that overlap, and points of none that are hidden, beside the same drawn the plain way.
class View3DPlain : public View3D {
protected:
    void SetUp() override;
    /// Gives both the same camera.
    void look(const float* pfTurn)
    {
        plain.m_pfTurn = pfTurn;
        m_view.setPointSizeRatio(double(pfTurn[7]));
        m_view.setCamera(rotationMatrix(pfTurn[0], {pfTurn[1], pfTurn[2], pfTurn[3]}).data(), pfTurn[4],
                         pfTurn[5], pfTurn[6]);
    }
    /// Expects a picture that differs from the plain one by no more than rounding, the cross of axes aside.
    void expectAlike(const QImage& image, const QImage& imagePlain) const
    {
        ASSERT_EQ(image.size(), imagePlain.size());
        const int r = m_view.devicePixelRatio(), nSize = m_nW * m_nH * r * r;
        const QRect rectCross(0, (m_nH - 130) * r, 140 * r, 9999);
        int nDifferent = 0, nLit = 0;
        for (int n = 0; n < image.width() * image.height(); ++n) {
            const QPoint pt(n % image.width(), n / image.width());
            if (rectCross.contains(pt)) {
                continue;
            }
            const QColor a = image.pixelColor(pt), b = imagePlain.pixelColor(pt);
            nLit += b != QColor(Qt::black);
            nDifferent += abs(a.red() - b.red()) > 2 || abs(a.green() - b.green()) > 2 ||
                          abs(a.blue() - b.blue()) > 2;
        }
        EXPECT_LE(nDifferent, nSize / 1000);
        EXPECT_GT(nLit, nSize / 50);
    }

    PlainCloud plain{m_view};
};

const float g_aafTurn[3][8] = {
    {0, 0, 0, 1, 0, 0, 0, 2}, {70, 1, 2, -1, 0.3f, -0.2f, -1.2f, 1}, {200, 0, 1, 1, 0, 0, 3, 5}};

void View3DPlain::SetUp()
{
    View3D::SetUp();
    if (IsSkipped()) {
        return;
    }
    picture();  // makes the drawing state
    std::mt19937 random(17);
    std::normal_distribution<float> normal(0.f, 0.7f);
    QList<int> listEven, listThird;
    for (int i = 0; i < 4000; ++i) {
        const float x = normal(random), y = normal(random), z = normal(random);
        plain.m_listPoint.append(peakAt(x, y, z, std::exp(2.0 * normal(random)), i));
        if (i % 2 == 0) {
            listEven.append(i);
        }
        if (i % 3 == 0) {
            listThird.append(i);
        }
        plain.m_vecColor.push_back(i % 3 != 0   ? i % 2 == 0 ? QColor(Qt::red) : QColor()
                                     : i % 2 == 0 ? QColor(127, 127, 0)
                                                : QColor(Qt::green));
    }
    m_view.setPoints(plain.m_listPoint);
    m_view.insertPointGroup(1, "even", listEven, Qt::red);
    m_view.insertPointGroupById(2, "third", listThird, Qt::green);
    m_view.setGroupVisible(0, false);
}

TEST_F(View3DPlain, DrawsAsThePlainWayDoes)
{
    for (const auto& afTurn : g_aafTurn) {
        look(afTurn);
        const QImage expected = plain.picture();
        for (bool bPlain : {false, true}) {
            SCOPED_TRACE(testing::Message() << "turned by " << afTurn[0] << ", plain: " << bPlain);
            m_view.setPlainDrawing(bPlain);
            expectAlike(picture(), expected);
        }
    }
}

TEST_F(View3DPlain, PicksAsThePlainWayDoes)
{
    for (const auto& afTurn : g_aafTurn) {
        look(afTurn);
        picture();
        for (const QLine& band : {QLine(100, 90, 333, 251), QLine(301, 250, 200, 199),
                                  QLine(250, 10, 251, 390), QLine(0, 0, 499, 399)}) {
            drag(m_view, band.p1(), band.p2(), Qt::ControlModifier);
            const QList<int> listHit = plain.hits(band);
            EXPECT_EQ(m_view.selectedPoints(), listHit) << band.x2();
            EXPECT_TRUE(!listHit.isEmpty() || band.dx() == 1);
        }
        m_view.clearSelection();
    }
}

/// Three points, at (250 + 125·x, 200 - 125·y) of the widget.
class View3DPoints : public View3D {
protected:
    void SetUp() override
    {
        View3D::SetUp();
        QList<Peak3D> listPeak{peakAt(0, 0, 0, 1, 5), peakAt(0.8f, 0, 0.5f, 1, 9),
                               peakAt(0.8f, 0.08f, 0, 1234.5, 2500)};
        listPeak[2].nFrame = 11;
        listPeak[2].dfX2D = 1024.5;
        listPeak[2].dfY2D = 3;
        m_view.setPoints(listPeak);
        Peak3D indexed = listPeak[2];
        indexed.setHKL(1, -2, 3.456);
        m_view.setIndices({indexed});
        m_view.setPointSizeRatio(0.3 / m_view.devicePixelRatio());
    }
};

TEST_F(View3DPoints, ABandSelectsAndTellsWhatItPicked)
{
    QSignalSpy spyText(&m_view, &ED3DWidget::textMessage),
        spyData(&m_view, &ED3DWidget::pointDisplayDataChanged),
        spySelection(&m_view, &ED3DWidget::selectionChanged);
    const char* pcThird =
        "ID=2,500, h.k.l.=(1.00,-2.00,3.46),xyz=[0.80000,0.08000,0.00000]; I=1,234.5, "
        "d=1.244, No.frame=12, xy=(1,024.5,3)";
    const Qt::KeyboardModifiers control = Qt::ControlModifier, both = control | Qt::ShiftModifier;
    const struct {
        QPoint ptFrom, ptTo;
        Qt::KeyboardModifiers modifiers, modifiersAtRelease;
        QList<int> listSelected;
        const char* pcText;  // null: nothing happens
    } aRow[] = {{{360, 230}, {240, 195}, control, control, {0, 1}, "2 selected"},
                {{345, 185}, {355, 195}, control, both, {0, 1, 2}, pcThird},  // counts this pick alone
                {{240, 180}, {260, 180}, control, control, {0, 1, 2}, nullptr},
                {{250, 180}, {250, 250}, control, control, {0, 1, 2}, nullptr},
                {{100, 100}, {140, 140}, both, control, {}, "0 selected"},
                {{0, 0}, {499, 399}, control, control, {0, 1, 2}, "3 selected"}};
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    for (const auto& row : aRow) {
        spyText.clear();
        spyData.clear();
        spySelection.clear();
        drag(m_view, row.ptFrom, row.ptTo, row.modifiers, Qt::LeftButton, row.modifiersAtRelease);
        EXPECT_EQ(m_view.selectedPoints(), row.listSelected) << &row - aRow;
        const int nExpected = row.pcText ? 1 : 0;
        EXPECT_EQ(spyData.count(), nExpected);
        EXPECT_EQ(spySelection.count(), nExpected);
        ASSERT_EQ(spyText.count(), nExpected);
        EXPECT_EQ(spyText.value(0).value(0).toString(), QString(row.pcText));
    }
    EXPECT_EQ(atScene(picture(), 0.8, 0.08), QColor(204, 0, 0));
}

TEST_F(View3DPoints, TheBandHasYellowDashesWhileItIsDrawn)
{
    mouse(m_view, QEvent::MouseButtonPress, {300, 100}, Qt::LeftButton, Qt::ControlModifier);
    mouse(m_view, QEvent::MouseMove, {420, 160}, Qt::LeftButton, Qt::ControlModifier);
    for (int nExpected : {60, 0}) {
        const QImage image = picture();
        int nYellow = 0;
        for (int n = 0; n < 360; ++n) {
            nYellow += at(image, 300 + n / 3, 159 + n % 3) == QColor(204, 204, 0);
        }
        EXPECT_NEAR(nYellow, nExpected, nExpected / 10);
        mouse(m_view, QEvent::MouseButtonRelease, {420, 160}, Qt::LeftButton, Qt::ControlModifier);
    }
}

TEST_F(View3DPoints, KeysMakeAGroupOfTheSelectedAndADoubleClickDropsThem)
{
    drag(m_view, {0, 0}, {300, 399}, Qt::ControlModifier);
    QTest::keyClick(&m_view, Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(m_view.groupLabels().size(), 1);
    QTest::keyClick(&m_view, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&m_view, Qt::Key_A, Qt::ControlModifier);  // nothing is selected any more
    EXPECT_EQ(m_view.groupPoints(), (QList<QList<int>>{{1, 2}, {0}}));
    drag(m_view, {0, 0}, {499, 399}, Qt::ControlModifier);
    mouse(m_view, QEvent::MouseButtonDblClick, {10, 10}, Qt::LeftButton, Qt::NoModifier);
    EXPECT_TRUE(m_view.selectedPoints().isEmpty());
    EXPECT_EQ(m_view.groupLabels().size(), 2);
}

TEST_F(View3DPoints, ADragTurnsTheSceneAsABallUnderTheHand)
{
    mouse(m_view, QEvent::MouseButtonPress, {250, 200}, Qt::LeftButton, Qt::NoModifier);
    EXPECT_EQ(m_view.cursor().shape(), Qt::CrossCursor);
    mouse(m_view, QEvent::MouseMove, {375, 200}, Qt::LeftButton, Qt::NoModifier);
    // From (0, 0, 1) to the unit vector along (1/2, 0, cos 45°), by 60 degrees a unit of their distance.
    const double dfX = 0.5 / std::sqrt(0.75), dfZ = std::sqrt(0.5 / 0.75);
    const double dfAngle = g_dfPi / 3 * std::hypot(dfX, 1 - dfZ);
    EXPECT_NEAR(m_view.getViewDirection().x, -std::sin(dfAngle), 1e-6);
    EXPECT_NEAR(m_view.getViewDirection().z, std::cos(dfAngle), 1e-6);
    mouse(m_view, QEvent::MouseButtonRelease, {375, 200}, Qt::LeftButton, Qt::NoModifier);
    EXPECT_EQ(m_view.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(View3DPoints, ShiftMovesRightButtonAndWheelZoom)
{
    float afRotation[16], fPanX, fPanY, fZoom;
    drag(m_view, {10, 10}, {60, 30}, Qt::ShiftModifier);
    drag(m_view, {10, 10}, {99, 50}, Qt::NoModifier, Qt::RightButton);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    drag(m_view, {10, 10}, {10, 11}, Qt::NoModifier, Qt::RightButton);  // a click of an unsteady hand
    auto* pMenu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(pMenu);
    ASSERT_EQ(pMenu->actions(), m_view.actions());
    pMenu->close();
    QWheelEvent wheel({9, 9}, {9, 9}, {}, {0, 240}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&m_view, &wheel);
    m_view.setPoints({});  // the camera outlives the points
    m_view.getCamera(afRotation, fPanX, fPanY, fZoom);
    EXPECT_FLOAT_EQ(fPanX, 0.3f);
    EXPECT_FLOAT_EQ(fPanY, -0.15f);
    EXPECT_NEAR(fZoom, 3 * 40 / 400. - 240 / 400., 1e-6);
}

TEST_F(View3D, ColoursOfItsMenuAreTakenOrLeft)
{
    m_view.setShowCanvasGrid(true);
    m_view.setCanvasGridAlpha(1);
    QColor aColor[] = {Qt::black, Qt::white};
    for (int i : {0, 1}) {
        for (bool bTaken : {false, true}) {
            EXPECT_EQ(m_view.actions()[i]->text(), i == 0 ? "Background Color..." : "Canvas Grid Color...");
            m_view.actions()[i]->trigger();
            auto* pDialog = m_view.findChild<QColorDialog*>();
            ASSERT_TRUE(pDialog);
            ASSERT_EQ(pDialog->currentColor(), aColor[i]);
            pDialog->setCurrentColor(QColor(40 * i + 10, 90, 200));
            bTaken ? pDialog->accept() : pDialog->reject();
            QCoreApplication::sendPostedEvents(pDialog, QEvent::DeferredDelete);
            if (bTaken) {
                aColor[i] = QColor(40 * i + 10, 90, 200);
            }
            EXPECT_EQ(at(picture(), 256, 206), aColor[0]);
            EXPECT_EQ(at(picture(), 256, 200), aColor[1]);
        }
    }
}

// Runs on a platform without OpenGL too: there it is the view of a machine that has none.
class View3DAnywhere : public testing::Test {
protected:
    void SetUp() override
    {
        view.resize(301, 222);
        view.setPoints({peakAt(fNaN, 0, 0, fNaN, 0), peakAt(fInf, 0, 0, fInf, 2000000000),
                        peakAt(0, 0, 0, -fInf, 3), peakAt(1e30f, 0, 0, 0, 3), peakAt(0.1f, 0, 0, 5, 4)});
    }
    void show()
    {
        view.update();
        view.show();
        QTest::qWait(30);
        EXPECT_EQ(view.grabFrameBuffer().isNull(), !view.isValid());
        EXPECT_FALSE(view.grab().isNull());
        EXPECT_EQ(spyFailed.count(), view.isValid() ? 0 : 1);
    }

    const float fInf = std::numeric_limits<float>::infinity(), fNaN = std::nanf("");
    ED3DWidget view;
    QSignalSpy spyFailed{&view, &ED3DWidget::contextFailed};
};

TEST_F(View3DAnywhere, StandsStrangeNumbers)
{
    view.insertPointGroupById(1, "ids", {2000000000, -1, 3, 77}, Qt::cyan);
    EXPECT_EQ(view.groupPoints()[1], (QList<int>{1, 3}));
    view.setLattice({{0.1f, 0, 0}, {0.1f, 0, 0}, {0, fNaN, 0.1f}});
    view.setLatticeRange(1000, -7, 1000);
    view.setShowLatticePoints(true);
    view.setShowLatticeLines(true);
    show();
    for (double dfRatio : {0.0, -3.0, 1e300, double(fInf), double(fNaN)}) {
        view.setPointSizeRatio(dfRatio);
        view.calPointSizes();
        show();
    }
    view.setLight(true);
    view.rotateAroundScreenX(30);
    view.setCamera(QMatrix4x4().constData(), 1e38f, -1e38f, fInf);
    show();
    view.resetView();
    for (int nSide : {1, 300}) {
        view.resize(nSide, nSide);
        show();
    }
}

TEST_F(View3DAnywhere, PicksAndDropsPointsWithAndWithoutAContext)
{
    view.resize(300, 300);
    show();
    view.setPointSizeRatio(2);
    drag(view, {150, 140}, {170, 160}, Qt::ControlModifier);
    EXPECT_EQ(view.selectedPoints(), (QList<int>{2, 4}));
    view.setDisplayMode(nullptr);
    EXPECT_TRUE(view.selectedPoints().isEmpty());
    view.setPoints({peakAt(0, 0, 0, 1, 1), peakAt(0, 0, 0, 1, -1)});  // a negative nID: refused
    EXPECT_TRUE(view.points().isEmpty());
    EXPECT_EQ(view.groupLabels(), QStringList("Unlabeled"));
    show();
}

}  // namespace tessera
