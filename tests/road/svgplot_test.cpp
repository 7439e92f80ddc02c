// Plots as SVG: the positions of points agree with the labels of the axes.
#include "road/svgplot.h"
#include "tests/printtexts.h"

#include <QMap>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tessera {

namespace {

struct Drawn {
    QMap<double, double> mapX, mapY;  ///< number of a label to its place
    QList<QPointF> listPoint;
    int nPieces = 0;  ///< of lines
};

Drawn drawn(const SvgPlot& plot)
{
    CHtmlPage page("t", "");
    drawPlot(page, plot);
    QXmlStreamReader xml(page.end());
    Drawn result;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const QXmlStreamAttributes at = xml.attributes();
        const auto number = [&at](const char* psz) { return at.value(QLatin1String(psz)).toDouble(); };
        if (xml.name() == QLatin1String("circle")) {
            result.listPoint.append({number("cx"), number("cy")});
        }
        if (xml.name() == QLatin1String("path")) {
            result.nPieces += at.value("d").toString().count('M');
        }
        if (xml.name() == QLatin1String("text") && !at.hasAttribute("transform")) {
            const double dfX = number("x"), dfY = number("y");
            const bool bOfY = at.value("text-anchor") == QLatin1String("end");
            bool bNumber = false;
            const double df = xml.readElementText().toDouble(&bNumber);
            if (bNumber) {
                (bOfY ? result.mapY : result.mapX)[df] = bOfY ? dfY - 4 : dfX;  // middle of the digits
            }
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return result;
}

/// The number at a place, by the first and the last label.
double numberAt(const QMap<double, double>& map, double dfPlace)
{
    const double dfFrom = map.first(), dfTo = map.last();
    return map.firstKey() + (dfPlace - dfFrom) / (dfTo - dfFrom) * (map.lastKey() - map.firstKey());
}

}  // namespace

TEST(SvgPlot, PointsLieWhereTheLabelsHaveThem)
{
    const double dfNone = std::numeric_limits<double>::quiet_NaN();
    SvgPlot plot{"t", "x", "y", {}, {}, {}};
    const std::vector<QPointF> listPoint = {{1, -0.37}, {17.5, 0.81}, {40, dfNone}, {77, 0.02}, {113, -0.11}};
    plot.listSeries = {{"s", listPoint, true, true}};
    const Drawn result = drawn(plot);
    ASSERT_EQ(result.listPoint.size(), 4);
    EXPECT_EQ(result.nPieces, 2);  // the gap
    int n = 0;
    for (const QPointF& pt : listPoint) {
        if (std::isfinite(pt.y())) {
            EXPECT_NEAR(numberAt(result.mapX, result.listPoint[n].x()), pt.x(), 0.05);
            EXPECT_NEAR(numberAt(result.mapY, result.listPoint[n].y()), pt.y(), 0.001);
            ++n;
        }
    }
    EXPECT_TRUE(SvgPlot().isEmpty());
    plot.listSeries = {{"s", {{1, dfNone}}, true, true}};
    EXPECT_TRUE(plot.isEmpty());
    drawn(plot);
}

TEST(SvgPlot, TicksAreRoundNumbersThatHoldTheirRange)
{
    const double dfNone = std::numeric_limits<double>::infinity();
    const double aRange[][2] = {{0, 1},           {-3.2, 7.9},      {1e-7, 2e-7},   {5, 5},
                                {0, 0},           {-1e9, 1e9},      {0.999, 1.001}, {1, 113},
                                {1e15, 1e15 + 4}, {dfNone, -dfNone}};
    for (const auto& range : aRange) {
        const AxisTicks ticks = axisTicks(range[0], range[1], 6);
        ASSERT_GE(ticks.listTick.size(), 2) << range[0];
        ASSERT_LE(ticks.listTick.size(), 9) << range[0];
        EXPECT_EQ(ticks.listTick.front(), ticks.dfLow);
        EXPECT_TRUE(ticks.dfHigh > ticks.dfLow);
        if (std::isfinite(range[0])) {
            EXPECT_LE(ticks.dfLow, range[0]) << range[0];
            EXPECT_GE(ticks.dfHigh, range[1]) << range[0];
        }
    }
    const AxisTicks ticks = axisTicks(1, 113, 8);
    EXPECT_EQ(ticks.listTick, (std::vector<double>{0, 20, 40, 60, 80, 100, 120}));
}

TEST(HtmlPage, NoTextEndsOrBreaksIt)
{
    QString strHostile = "</style><script>alert(1)</script>\x01\x1f & \" ' ";
    strHostile += QChar(0xd800);
    strHostile += QChar(0xffff);
    CHtmlPage page(strHostile, "p { margin: 0; }");
    page.element("p", strHostile);
    page.open("p");
    page.attribute("title", strHostile);
    page.close();
    page.table({strHostile}, {{strHostile}}, strHostile);
    const QByteArray bytes = page.end();
    EXPECT_FALSE(bytes.contains("<script"));
    QXmlStreamReader xml(bytes);
    int nTexts = 0;
    while (!xml.atEnd()) {
        nTexts += xml.readNext() == QXmlStreamReader::Characters && xml.text().contains("<script>");
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    EXPECT_EQ(nTexts, 5);
}

}  // namespace tessera
