#include "frameview/baseimgview.h"

#include "frameview/baseimgscene.h"
#include "tests/frameview/testscenes.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

namespace tessera {

namespace {

class View : public testing::Test {
protected:
    View()
    {
        m_scene.setShowProgress(false);
        m_scene.setImagesLimits(makeFrame(300, 200, [](int x, int) { return x; }), {{0, 255}});
        m_view.resize(150, 120);
        m_view.show();
    }
    BaseImgScene m_scene;
    BaseImgView m_view{&m_scene};
};

}  // namespace

TEST_F(View, ScaleChangesByMoreThanAThousandthOnly)
{
    QSignalSpy spy(&m_view, &BaseImgView::scaleChanged);
    m_view.setScaleFactor(4.0);
    EXPECT_EQ(m_view.scaleFactor(), 4.0);
    m_view.horizontalScrollBar()->setValue(321);
    m_view.setScaleFactor(4.0009);
    m_view.setScaleFactor(0.0);
    EXPECT_EQ(m_view.scaleFactor(), 4.0);
    EXPECT_EQ(m_view.horizontalScrollBar()->value(), 321);
    EXPECT_EQ(spy.count(), 1);
    const auto centre = [&] { return m_view.mapToScene(m_view.viewport()->rect().center()); };
    const QPointF ptCenter = centre();
    m_view.setScaleFactor(4.0011);
    m_view.setScaleFactor(8.0);
    EXPECT_EQ(spy.count(), 3);
    EXPECT_EQ(m_view.transform().m22(), 8.0);
    EXPECT_LT((centre() - ptCenter).manhattanLength(), 1);
}

TEST_F(View, WheelAsksForZoomAndScrollsNothing)
{
    const int nBar = m_view.verticalScrollBar()->value();
    for (const auto& [ptDelta, phase, nIn, nOut] : {std::tuple(QPoint(0, 1), Qt::NoScrollPhase, 1, 0),
                                                    {QPoint(0, -120), Qt::NoScrollPhase, 0, 1},
                                                    {QPoint(120, 0), Qt::NoScrollPhase, 1, 0},
                                                    {QPoint(0, 0), Qt::NoScrollPhase, 0, 1},
                                                    {QPoint(0, 0), Qt::ScrollEnd, 0, 0}}) {
        QSignalSpy spyIn(&m_view, &BaseImgView::zoomIn), spyOut(&m_view, &BaseImgView::zoomOut);
        QWheelEvent event(QPointF(50, 50), m_view.viewport()->mapToGlobal(QPoint(50, 50)), QPoint(), ptDelta,
                          Qt::NoButton, Qt::NoModifier, phase, false);
        event.ignore();
        QCoreApplication::sendEvent(m_view.viewport(), &event);
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(spyIn.count(), nIn) << ptDelta.x() << ' ' << ptDelta.y();
        EXPECT_EQ(spyOut.count(), nOut) << ptDelta.x() << ' ' << ptDelta.y();
        EXPECT_EQ(m_view.verticalScrollBar()->value(), nBar);
    }
}

TEST_F(View, SmallAnglesAddUpAndTheWheelZoomsAboutThePointer)
{
    const QPoint ptPointer(31, 97);
    const auto turn = [&](int nAngle) {
        QWheelEvent event(ptPointer, m_view.viewport()->mapToGlobal(ptPointer), QPoint(), QPoint(0, nAngle),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_view.viewport(), &event);
    };
    QSignalSpy spyIn(&m_view, &BaseImgView::zoomIn), spyOut(&m_view, &BaseImgView::zoomOut);
    for (int n = 1; n <= 24; ++n) {
        turn(15);
        ASSERT_EQ(spyIn.count(), (n + 7) / 8) << n;
    }
    for (int n = 0; n < 30; ++n) {  // fingers that lie still
        turn(n % 2 ? -3 : 3);
    }
    EXPECT_EQ(spyOut.count(), 0);
    QTest::qWait(400);
    turn(-4);  // another movement, which is seen at once
    EXPECT_EQ(spyOut.count(), 1);

    QObject::connect(&m_view, &BaseImgView::zoomIn, [&] { m_view.setScaleFactor(2 * m_view.scaleFactor()); });
    QObject::connect(&m_view, &BaseImgView::zoomOut,
                     [&] { m_view.setScaleFactor(m_view.scaleFactor() / 2); });
    m_view.setScaleFactor(2);
    m_view.centerOn(180, 70);
    const QPointF ptPlace = m_view.mapToScene(ptPointer);
    for (int nAngle : {120, 120, 120, -120, -120}) {
        turn(nAngle);
        const QPointF ptMoved = m_view.mapToScene(ptPointer) - ptPlace;
        EXPECT_LE(ptMoved.manhattanLength(), 2.0) << m_view.scaleFactor();  // a whole pixel a step
    }
    EXPECT_EQ(m_view.scaleFactor(), 4);
}

TEST_F(View, TheMenuWaitsForTheReleaseAndNotForADrag)
{
    QAction action(QStringLiteral("Show"));
    m_view.addAction(&action);
    m_view.setContextMenuPolicy(Qt::ActionsContextMenu);
    QWidget* pViewport = m_view.viewport();
    for (int nCase = 0; nCase < 4; ++nCase) {
        const bool bMenuOnPress = nCase < 2, bDrag = nCase % 2 == 1;  // the first is the platform's habit
        bool bHeld = true;
        bool bMenuWhileHeld = false;
        int nMenu = 0;
        QTimer timer;  // closes the menu that blocks
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (QWidget* pMenu = QApplication::activePopupWidget()) {
                ++nMenu;
                bMenuWhileHeld = bMenuWhileHeld || bHeld;
                pMenu->close();
            }
        });
        timer.start(5);
        const auto contextEvent = [&] {
            QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(40, 40),
                                    pViewport->mapToGlobal(QPoint(40, 40)));
            QCoreApplication::sendEvent(pViewport, &event);
        };
        sendMouse(pViewport, QEvent::MouseButtonPress, {40, 40}, Qt::RightButton, Qt::RightButton);
        if (bMenuOnPress) {
            contextEvent();
        }
        if (bDrag) {
            sendMouse(pViewport, QEvent::MouseMove, {90, 60}, Qt::NoButton, Qt::RightButton);
        }
        bHeld = false;
        sendMouse(pViewport, QEvent::MouseButtonRelease, {40, 40}, Qt::RightButton, Qt::NoButton);
        if (!bMenuOnPress) {
            contextEvent();
        }
        EXPECT_EQ(nMenu, bDrag ? 0 : 1) << nCase;
        EXPECT_FALSE(bMenuWhileHeld) << nCase;
    }
}

}  // namespace tessera
