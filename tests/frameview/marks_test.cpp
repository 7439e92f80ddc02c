#include "frameview/baseimgscene.h"
#include "frameview/baseimgview.h"
#include "frameview/circleitem.h"
#include "frameview/crossitem.h"
#include "frameview/replacemarks.h"
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
        for (int i = 0; i < 60 * 50; i++)
            if (picture.pixelColor(i % 60, i / 60) == color)
                setPixel.insert({i % 60, i / 60});
        return setPixel;
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
        m_nPaint++;
        BaseImgView::paintEvent(pEvent);
    }
};

}  // namespace

TEST_F(Marks, CrossHasItsArmsAroundTheMiddleOfThePixel)
{
    QList<CrossItem*> list;
    replaceMarks(&m_scene, list, {mark<CrossItem>({20, 30}, 5, Qt::green)});
    std::set<std::pair<int, int>> setExpected;
    for (int i = -5; i <= 5; i++) {
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
        setSector.insert(std::floor(std::atan2(pixel.second - 30, pixel.first - 20) / (M_PI / 8)));
    }
    EXPECT_GE(setSector.size(), 16u);  // closed
    replaceMarks(&m_scene, list);
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
    for (int nRound = 0; nRound < 3; nRound++) {
        QList<CrossItem*> listNew;
        for (int i = 0; i < 2000; i++)
            listNew.append(mark<CrossItem>({double(i % 60), double(i * 7 % 50)}, 5, Qt::green));
        expectOneRepaint(listNew);
    }
    EXPECT_NE(view.viewport()->grab().toImage(), pictureBefore);
    expectOneRepaint({});
    EXPECT_EQ(view.viewport()->grab().toImage(), pictureBefore);
}

}  // namespace tessera
