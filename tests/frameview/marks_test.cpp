#include "frameview/baseimgscene.h"
#include "frameview/baseimgview.h"
#include "frameview/circleitem.h"
#include "frameview/crossitem.h"
#include "frameview/markzoom.h"
#include "frameview/replacemarks.h"
#include "frameview/textitem.h"
#include "records/pi.h"
#include "tests/frameview/testscenes.h"

#include <QCoreApplication>

#include <cmath>
#include <set>

namespace tessera {

namespace {

class Marks : public testing::Test {
protected:
    Marks()
    {
        m_scene.setShowProgress(false);
        m_scene.setImagesLimits(makeFrame(60, 50, 0), {{0, 255}});
    }
    template <typename TItem>
    TItem* mark(QPointF pt, float fSize, const QColor& color)
    {
        auto* pItem = new TItem;
        pItem->setSize(fSize);
        pItem->setColor(color);
        pItem->setPenWidth(1.0);
        pItem->setPos(pt);
        return pItem;
    }
    // Pixels of a colour, (x, y).
    std::set<std::pair<int, int>> pixels(const QColor& color)
    {
        std::set<std::pair<int, int>> setPixel;
        const QImage picture = drawn(m_scene);
        for (int i = 0; i < 60 * 50; ++i) {
            if (picture.pixelColor(i % 60, i / 60) == color) {
                setPixel.insert({i % 60, i / 60});
            }
        }
        return setPixel;
    }
    // The scene eight times as large.
    QImage enlarged()
    {
        QImage picture(480, 400, QImage::Format_ARGB32);
        picture.fill(Qt::black);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        m_scene.render(&painter, picture.rect(), m_scene.sceneRect());
        return picture;
    }
    BaseImgScene m_scene;
};

class CCountingView : public BaseImgView {
public:
    using BaseImgView::BaseImgView;
    int m_nPaint = 0;

protected:
    void paintEvent(QPaintEvent* pEvent) override
    {
        ++m_nPaint;
        BaseImgView::paintEvent(pEvent);
    }
};

}  // namespace

TEST_F(Marks, CrossHasItsArmsAroundTheMiddleOfThePixel)
{
    QList<CrossItem*> list;
    replaceMarks(&m_scene, list, {mark<CrossItem>({20, 30}, 5, Qt::green)});
    std::set<std::pair<int, int>> setExpected;
    for (int i = -5; i <= 5; ++i) {
        setExpected.insert({20 + i, 30});
        setExpected.insert({20, 30 + i});
    }
    EXPECT_EQ(pixels(Qt::green), setExpected);
    list[0]->setColor(Qt::yellow);
    EXPECT_EQ(pixels(Qt::yellow), setExpected);
    replaceMarks(&m_scene, list);
    EXPECT_TRUE(pixels(Qt::yellow).empty());
}

TEST_F(Marks, CircleHasItsRadiusAroundTheMiddleOfThePixel)
{
    QList<CircleItem*> list;
    replaceMarks(&m_scene, list, {mark<CircleItem>({20, 30}, 7, Qt::green)});
    std::set<double> setSector;
    for (const auto& pixel : pixels(Qt::green)) {
        EXPECT_NEAR(std::hypot(pixel.first - 20, pixel.second - 30), 7.5, 0.75);
        setSector.insert(std::floor(std::atan2(pixel.second - 30, pixel.first - 20) / (g_dfPi / 8)));
    }
    EXPECT_GE(setSector.size(), 16u);  // closed
    replaceMarks(&m_scene, list);
}

// At 800 % a cross of arm 5 ends 40 pixels of the screen from the middle of its pixel, as its arms did at 100
// %, but they are 5 long and thin: the spot in between is free.
TEST_F(Marks, EnlargedTheyStayThinAndLetGoOfTheSpot)
{
    QList<CrossItem*> list;
    replaceMarks(&m_scene, list, {mark<CrossItem>({20, 30}, 5, Qt::green)});
    const QImage picture = enlarged();
    const QPoint ptMiddle(164, 244);  // 8 · (20.5, 30.5)
    int nReach = 0, nFree = 1000, nInRow = 0;
    for (int x = ptMiddle.x(); x < 480; ++x) {
        if (picture.pixelColor(x, ptMiddle.y()).green() < 20) {
            continue;
        }
        nReach = std::max(nReach, x - ptMiddle.x());
        nFree = std::min(nFree, x - ptMiddle.x());
        ++nInRow;
    }
    EXPECT_NEAR(nReach, 40, 1);
    EXPECT_NEAR(nFree, 35, 1);
    EXPECT_NEAR(nInRow, 5, 2);
    int nThick = 0;
    for (int y = 0; y < 400; ++y) {
        nThick += picture.pixelColor(ptMiddle.x() + 37, y).green() >= 20;
    }
    EXPECT_LE(nThick, 3);
    EXPECT_LT(picture.pixelColor(ptMiddle.x() + 37, ptMiddle.y()).green(), 230) << "faded";
    replaceMarks(&m_scene, list);
}

// The label is beside its spot, and is legible on white.
TEST_F(Marks, ALabelIsAsLargeOnTheScreenWhenEnlarged)
{
    auto* pLabel = new TextItem;
    pLabel->setText("1,2,3");
    pLabel->setPen(QPen(Qt::black, 0.2));
    pLabel->setBrushColor(Qt::green);
    pLabel->setScreenSized(4);
    pLabel->setPos(20, 30);
    m_scene.addItem(pLabel);
    m_scene.setImagesLimits(makeFrame(60, 50, 255), {{0, 255}});
    const QImage picture = enlarged();
    QRect rcDark;
    for (int i = 0; i < 480 * 400; ++i) {
        if (picture.pixelColor(i % 480, i / 480).lightness() < 100) {
            rcDark |= QRect(i % 480, i / 480, 1, 1);
        }
    }
    const QRectF rcText = QFontMetricsF(pLabel->font()).boundingRect("1,2,3");
    EXPECT_GT(rcDark.left(), 160 + 8 * 3);
    EXPECT_NEAR(rcDark.width(), rcText.width(), 6);
    EXPECT_LT(rcDark.height(), 1.5 * rcText.height());
    delete pLabel;
    EXPECT_EQ(CMarkZoom(1.0).gap(5), 0);
    EXPECT_EQ(CMarkZoom(0.25).opacity(), 1);
}

TEST_F(Marks, ThousandsOfMarksCostOneRepaintAndLeaveNothingBehind)
{
    CCountingView view(&m_scene);
    view.resize(200, 200);
    view.show();
    QCoreApplication::processEvents();
    QList<CrossItem*> list;
    const auto expectOneRepaint = [&](const QList<CrossItem*>& listNew) {
        view.m_nPaint = 0;
        replaceMarks(&m_scene, list, listNew);
        QCoreApplication::processEvents();
        EXPECT_EQ(view.m_nPaint, 1);
        EXPECT_EQ(list, listNew);
    };
    const QImage pictureBefore = view.viewport()->grab().toImage();
    for (int nRound = 0; nRound < 3; ++nRound) {
        QList<CrossItem*> listNew;
        for (int i = 0; i < 2000; ++i) {
            listNew.append(mark<CrossItem>({double(i % 60), double(i * 7 % 50)}, 5, Qt::green));
        }
        expectOneRepaint(listNew);
    }
    EXPECT_NE(view.viewport()->grab().toImage(), pictureBefore);
    expectOneRepaint({});
    EXPECT_EQ(view.viewport()->grab().toImage(), pictureBefore);
}

}  // namespace tessera
