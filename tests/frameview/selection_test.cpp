#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "tests/frameview/testscenes.h"

#include <QSignalSpy>

#include <algorithm>

namespace tessera {

namespace {

class Selection : public testing::Test {
protected:
    Selection()
    {
        m_scene.setShowProgress(false);
        for (int n : {0, 64, 128, 256, 512, 1024}) {
            m_scene.addSelectionRect(n, n);
        }
        m_view.resize(600, 600);
        m_view.setDragMode(QGraphicsView::ScrollHandDrag);
        QObject::connect(&m_view, &BaseImgView::scaleChanged, &m_scene, &OriginalImgScene::updateViewScale);
        m_view.show();
    }
    void showFrame(int w, int h) { m_scene.setImagesLimits(makeFrame(w, h, 0), {{0, 255}}); }
    // Presses at one place of the frame, moves to the other in steps and lets go.
    void drag(QPointF ptFrom, QPointF ptTo)
    {
        QWidget* pViewport = m_view.viewport();
        const QPoint ptStart = m_view.mapFromScene(ptFrom);
        const QPoint ptEnd = m_view.mapFromScene(ptTo);
        sendMouse(pViewport, QEvent::MouseButtonPress, ptStart, Qt::LeftButton, Qt::LeftButton);
        for (int i = 1; i <= 7; ++i) {
            sendMouse(pViewport, QEvent::MouseMove, ptStart + (ptEnd - ptStart) * i / 7, Qt::NoButton,
                      Qt::LeftButton);
        }
        sendMouse(pViewport, QEvent::MouseButtonRelease, ptEnd, Qt::LeftButton, Qt::NoButton);
    }

    OriginalImgScene m_scene;
    BaseImgView m_view{&m_scene};
};

}  // namespace

TEST_F(Selection, PresetsStartCentredAndKeepTheirOwnPlaces)
{
    showFrame(512, 400);
    m_scene.setSelectionIndex(1);
    EXPECT_EQ(m_scene.selectionRect(), QRectF(224, 168, 64, 64));
    drag({256, 200}, {156, 250});
    EXPECT_EQ(m_scene.selectionRect(), QRectF(124, 218, 64, 64));
    m_scene.setSelectionIndex(2);
    EXPECT_EQ(m_scene.selectionRect(), QRectF(192, 136, 128, 128));
    drag({256, 200}, {266, 190});
    m_scene.setSelectionIndex(0);
    EXPECT_EQ(m_scene.selectionRect(), QRectF());
    m_scene.setSelectionIndex(1);
    EXPECT_EQ(m_scene.selectionRect(), QRectF(124, 218, 64, 64));
    showFrame(512, 400);  // another frame of the series
    m_scene.setSelectionIndex(2);
    EXPECT_EQ(m_scene.selectionRect(), QRectF(202, 126, 128, 128));
    showFrame(600, 600);  // another series: all presets but the one in force are centred anew
    m_scene.setSelectionIndex(1);
    EXPECT_EQ(m_scene.selectionRect(), QRectF(268, 268, 64, 64));
    showFrame(601, 303);  // the middle of an odd frame is no corner of a pixel
    m_scene.setSelectionIndex(2);
    EXPECT_EQ(m_scene.selectionRect(), QRectF(236, 87, 128, 128));
}

TEST_F(Selection, APresetLargerThanTheFrameCannotBeChosen)
{
    showFrame(512, 512);
    m_scene.setSelectionIndex(3);
    EXPECT_EQ(drawn(m_scene).pixelColor(128, 256), QColor(Qt::yellow));
    m_scene.setSelectionIndex(5);
    EXPECT_EQ(m_scene.selectionIndex(), 0);
    EXPECT_NE(drawn(m_scene).pixelColor(128, 256), QColor(Qt::yellow));
    m_scene.setSelectionIndex(4);
    EXPECT_EQ(m_scene.selectionRect(), QRectF(0, 0, 512, 512));  // covers the frame
    showFrame(512, 511);                                         // no longer has room for it
    EXPECT_EQ(m_scene.selectionRect(), QRectF());
}

TEST_F(Selection, DraggedPastAnyEdgeItStaysInsideInWholePixels)
{
    const QPointF aTarget[] = {{-300, 128}, {700, 128}, {128, -300}, {128, 700}, {-90, -90}, {400, 350}};
    const QRectF rectFrame(0, 0, 256, 300);
    for (double dfScale : {1.0, 2.0, 8.0, 0.5}) {
        for (const QPointF& ptTarget : aTarget) {
            showFrame(10, 10);  // forgets the place
            showFrame(256, 300);
            m_scene.setSelectionIndex(1);
            m_view.setScaleFactor(dfScale);
            m_view.centerOn(128, 150);
            QSignalSpy spy(&m_scene, &OriginalImgScene::selRectPosChanged);
            drag({128, 150}, ptTarget);
            ASSERT_GT(spy.count(), 0);
            for (const QList<QVariant>& listArgument : spy) {
                const QRectF rect = listArgument[0].toRectF();
                EXPECT_TRUE(rectFrame.contains(rect))
                    << rect.x() << ' ' << rect.y() << " at scale " << dfScale;
                EXPECT_EQ(rect, QRectF(rect.toRect()));
                EXPECT_EQ(rect.size(), QSizeF(64, 64));
            }
            const QPointF ptEnd = spy.last()[0].toRectF().topLeft();
            const QPointF ptWanted(std::clamp(ptTarget.x() - 32, 0., 192.),
                                   std::clamp(ptTarget.y() - 32, 0., 236.));
            EXPECT_LT((ptEnd - ptWanted).manhattanLength(), dfScale < 1 ? 4 : 2);
            if (ptWanted.x() != 96) {  // stopped by the edge, half a pixel from the grid
                EXPECT_EQ(ptEnd.x(), ptWanted.x());
            }
            EXPECT_EQ(m_scene.selectionRect(), spy.last()[0].toRectF());
            m_scene.setSelectionIndex(0);
        }
    }
}

TEST_F(Selection, TheFrameOfTheRectangleIsOneScreenPixelWide)
{
    showFrame(256, 256);
    m_scene.setSelectionIndex(1);
    for (double dfScale : {8.0, 4.0, 1.0}) {
        m_view.setScaleFactor(dfScale);
        m_view.centerOn(96, 128);  // the left edge
        const QImage picture = m_view.viewport()->grab().toImage();
        const int nY = picture.height() / 2 + int(20 * dfScale);
        int nYellow = 0;
        for (int x = 0; x < picture.width() / 2 + 30; ++x) {
            nYellow += picture.pixelColor(x, nY) == QColor(Qt::yellow);
        }
        EXPECT_NEAR(nYellow, picture.devicePixelRatio(), 0.5) << dfScale;
    }
}

}  // namespace tessera
