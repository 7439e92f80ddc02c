// The plot that can be saved and copied: its numbers, its files, and the axes of a picture.
#include "window/plotpanel.h"

#include <gtest/gtest.h>
#include <qwt_scale_map.h>

#include <QtTest>
#include <QtWidgets>

#include <cmath>
#include <limits>

namespace tessera {

namespace {

const double g_dfNan = std::numeric_limits<double>::quiet_NaN();

/// How many pixels of a widget are bluish.
int bluePixels(QWidget& widget, const QRect& rect)
{
    const QImage image = widget.grab().toImage();
    int n = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            n += image.pixelColor(x, y).blue() > image.pixelColor(x, y).red() + 60;
        }
    }
    return n;
}

}  // namespace

TEST(PlotPanel, NumbersComeBackFromTableAndFilesWithoutLoss)
{
    PlotPanel panel;
    panel.setTitles("Title", "Radius, px", "Residual");
    PlotSeries series{PlotSeries::Kind::LineAndPoints, "a \"b\"", {{0.1, 1e-7}, {g_dfNan, 2}, {3, 4}}};
    series.vecError = {0.5, 0.25, 1.0 / 3};
    panel.addSeries(series);
    PlotSeries arrows{PlotSeries::Kind::Arrows, "arrows", {{1, 2}, {3, 4}}};
    arrows.vecArrow = {{-0.5, 0.25}, {0, std::numeric_limits<double>::infinity()}};
    panel.addSeries(arrows);
    panel.showSeries();
    panel.copyNumbers();
    const QStringList listLine = QApplication::clipboard()->text().split('\n');
    ASSERT_EQ(listLine.size(), 5);
    EXPECT_EQ(listLine[0], "series,\"Radius, px\",Residual,error,dx,dy");
    EXPECT_EQ(listLine[1], "\"a \"\"b\"\"\",0.1,1e-07,0.5,,");
    EXPECT_EQ(listLine[2].section(',', 3, 3).toDouble(), 1.0 / 3);
    EXPECT_EQ(listLine[3], "arrows,1,2,,-0.5,0.25") << "what is no number is left out, arrow or not";

    const QTemporaryDir dir;
    ASSERT_TRUE(panel.saveSvg(dir.filePath("p.svg")));
    ASSERT_TRUE(panel.saveCsv(dir.filePath("p.csv")));
    QFile fileTable(dir.filePath("p.csv"));
    QFile filePicture(dir.filePath("p.svg"));
    ASSERT_TRUE(fileTable.open(QIODevice::ReadOnly));
    ASSERT_TRUE(filePicture.open(QIODevice::ReadOnly));
    EXPECT_EQ(fileTable.readAll(), panel.csv().toUtf8());
    EXPECT_TRUE(filePicture.readAll().contains("Radius, px"));
    QString strReason;
    EXPECT_FALSE(panel.saveSvg(dir.filePath("none/p.svg"), &strReason));
    EXPECT_TRUE(strReason.contains("none/p.svg"));
}

TEST(PlotPanel, ArrowsOfAPictureStandWhereTheyPointAtOneScale)
{
    PlotPanel panel;
    panel.resize(600, 300);
    panel.setTitles("Frame", "x, px", "y, px");
    PlotSeries arrows{PlotSeries::Kind::Arrows, "", {{50, 20}}};
    arrows.vecArrow = {{0.5, 1}};
    arrows.dfArrowScale = 40;
    arrows.color = Qt::blue;
    panel.addSeries(arrows);
    panel.setPictureAxes({100, 100});
    panel.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    panel.showSeries();
    QCoreApplication::processEvents();
    const QwtScaleMap mapX = panel.canvasMap(QwtPlot::xBottom);
    const QwtScaleMap mapY = panel.canvasMap(QwtPlot::yLeft);
    EXPECT_LT(mapY.transform(0), mapY.transform(100)) << "rows count downwards";
    EXPECT_NEAR(std::abs(mapX.pDist() / mapX.sDist()), std::abs(mapY.pDist() / mapY.sDist()), 0.02);
    // From (50, 20) to (70, 60), so to the right and down.
    const QPoint ptCanvas = panel.canvas()->pos();
    const auto place = [&](double x, double y) {
        return QPointF(mapX.transform(x), mapY.transform(y)).toPoint() + ptCanvas;
    };
    const auto pixelsNear = [&](double x, double y) {
        return bluePixels(panel, QRect(place(x, y) - QPoint(3, 3), QSize(7, 7)));
    };
    EXPECT_GT(pixelsNear(50, 20), 0);
    EXPECT_GT(pixelsNear(60, 40), 0);
    EXPECT_GT(pixelsNear(69, 58), 0);
    EXPECT_EQ(pixelsNear(40, 60), 0);
    // Sizes at which the numbers beside an axis, and by them the canvas, change to and fro.
    for (int nWidth = 240; nWidth < 420; ++nWidth) {
        panel.resize(nWidth, 500 - nWidth);
        QCoreApplication::processEvents();
    }
    const QwtScaleMap map = panel.canvasMap(QwtPlot::yLeft);
    EXPECT_LT(map.transform(0), map.transform(100));
}

}  // namespace tessera
