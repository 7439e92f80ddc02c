#include "frameview/baseimgview.h"

#include "frameview/baseimgscene.h"
#include "testscenes.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

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
    const QPointF ptCenter = m_view.mapToScene(m_view.viewport()->rect().center());
    m_view.setScaleFactor(4.0011);
    m_view.setScaleFactor(8.0);
    EXPECT_EQ(spy.count(), 3);
    EXPECT_EQ(m_view.transform().m22(), 8.0);
    const QPointF ptAfter = m_view.mapToScene(m_view.viewport()->rect().center());
    EXPECT_NEAR(ptAfter.x(), ptCenter.x(), 0.5);
    EXPECT_NEAR(ptAfter.y(), ptCenter.y(), 0.5);
}

TEST_F(View, WheelAsksForZoomAndScrollsNothing)
{
    const struct {
        QPoint ptDelta;
        Qt::ScrollPhase phase;
        int nIn, nOut;
    } aRow[] = {{{0, 1}, Qt::NoScrollPhase, 1, 0},
                {{0, -120}, Qt::NoScrollPhase, 0, 1},
                {{120, 0}, Qt::NoScrollPhase, 1, 0},
                {{0, 0}, Qt::ScrollEnd, 0, 0}};
    for (const auto& row : aRow) {
        QSignalSpy spyIn(&m_view, &BaseImgView::zoomIn);
        QSignalSpy spyOut(&m_view, &BaseImgView::zoomOut);
        const int nBar = m_view.verticalScrollBar()->value();
        QWheelEvent event(QPointF(50, 50), m_view.viewport()->mapToGlobal(QPoint(50, 50)), QPoint(),
                          row.ptDelta, Qt::NoButton, Qt::NoModifier, row.phase, false);
        event.ignore();
        QCoreApplication::sendEvent(m_view.viewport(), &event);
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(spyIn.count(), row.nIn) << &row - aRow;
        EXPECT_EQ(spyOut.count(), row.nOut) << &row - aRow;
        EXPECT_EQ(m_view.verticalScrollBar()->value(), nBar);
    }
}

TEST_F(View, ReportsThePointerWithAndWithoutAButton)
{
    EXPECT_TRUE(m_view.viewport()->hasMouseTracking());
    m_view.setScaleFactor(4.0);
    QSignalSpy spy(&m_scene, &BaseImgScene::mouseMoving);
    for (Qt::MouseButton button : {Qt::NoButton, Qt::RightButton}) {
        sendMouse(m_view.viewport(), QEvent::MouseMove, m_view.mapFromScene(QPointF(150.5, 100.5)),
                  Qt::NoButton, button);
        ASSERT_EQ(spy.count(), 1);
        const QPointF pt = spy.takeFirst()[0].toPointF() - QPointF(150.5, 100.5);
        EXPECT_LT(std::max(std::fabs(pt.x()), std::fabs(pt.y())), 0.26);
    }
}

TEST_F(View, TheMenuWaitsForTheReleaseAndNotForADrag)
{
    QAction action(QStringLiteral("Show"));
    m_view.addAction(&action);
    m_view.setContextMenuPolicy(Qt::ActionsContextMenu);
    QWidget* pViewport = m_view.viewport();
    const struct {
        bool bMenuOnPress;  // the platform's habit
        bool bDrag;
    } aRow[] = {{true, false}, {true, true}, {false, false}, {false, true}};
    for (const auto& row : aRow) {
        bool bHeld = true;
        bool bMenuWhileHeld = false;
        int nMenu = 0;
        QTimer timer;  // closes the menu that blocks
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (QWidget* pMenu = QApplication::activePopupWidget()) {
                nMenu++;
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
        if (row.bMenuOnPress)
            contextEvent();
        if (row.bDrag)
            sendMouse(pViewport, QEvent::MouseMove, {90, 60}, Qt::NoButton, Qt::RightButton);
        bHeld = false;
        sendMouse(pViewport, QEvent::MouseButtonRelease, {40, 40}, Qt::RightButton, Qt::NoButton);
        if (!row.bMenuOnPress)
            contextEvent();
        EXPECT_EQ(nMenu, row.bDrag ? 0 : 1) << &row - aRow;
        EXPECT_FALSE(bMenuWhileHeld) << &row - aRow;
    }
}
