#include "road/svgplot.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

bool isFinitePoint(const QPointF& pt)
{
    return std::isfinite(pt.x()) && std::isfinite(pt.y());
}

QString shortNumber(double df)
{
    return QString::number(df, 'f', 1);  // a tenth of a unit is less than a pixel
}

const char* const g_aszSeries[] = {"series s0", "series s1", "series s2", "series s3"};
const char* const g_aszPoints[] = {"points s0", "points s1", "points s2", "points s3"};
const char* const g_aszDash[] = {"", "7 3", "2 3", "9 3 2 3"};  // distinguishable without colours

enum class Writing { Across, Upwards };

/// Draws a plot on a page.
class CDrawing {
public:
    CDrawing(CHtmlPage& page, const SvgPlot& plot) : m_page(page), m_plot(plot)
    {
        const double dfHuge = std::numeric_limits<double>::infinity();
        double dfLeft = dfHuge, dfRight = -dfHuge, dfLow = dfHuge, dfHigh = -dfHuge;
        for (const SvgSeries& series : plot.listSeries) {
            for (const QPointF& pt : series.listPoint) {
                if (isFinitePoint(pt)) {
                    dfLeft = std::min(dfLeft, pt.x());
                    dfRight = std::max(dfRight, pt.x());
                    dfLow = std::min(dfLow, pt.y());
                    dfHigh = std::max(dfHigh, pt.y());
                }
            }
        }
        m_x = axisTicks(dfLeft, dfRight, 8);
        m_y = axisTicks(plot.dfYMin.value_or(dfLow), plot.dfYMax.value_or(dfHigh), 6);
    }

    void draw()
    {
        m_page.open("svg");
        m_page.attribute("xmlns", QStringLiteral("http://www.w3.org/2000/svg"));
        m_page.attribute("viewBox", QStringLiteral("0 0 %1 %2").arg(m_frame.dfWidth).arg(m_frame.dfHeight));
        m_page.attribute("role", QStringLiteral("img"));
        m_page.attribute("font-family", QStringLiteral("sans-serif"));
        m_page.attribute("font-size", 12);
        m_page.element("title", m_plot.strTitle);
        drawGrid();
        drawTitles();
        for (size_t n = 0; n < m_plot.listSeries.size(); ++n) {
            drawSeries(m_plot.listSeries[n], n);
        }
        drawLegend();
        m_page.close();
    }

private:
    double placeX(double df) const
    {
        return m_frame.dfLeft +
               (df - m_x.dfLow) / (m_x.dfHigh - m_x.dfLow) * (m_frame.dfRight - m_frame.dfLeft);
    }
    double placeY(double df) const
    {
        const double dfPlace = m_frame.dfBottom - (df - m_y.dfLow) / (m_y.dfHigh - m_y.dfLow) *
                                                      (m_frame.dfBottom - m_frame.dfTop);
        return std::clamp(dfPlace, m_frame.dfTop, m_frame.dfBottom);
    }

    void line(double dfX1, double dfY1, double dfX2, double dfY2, const char* pszClass)
    {
        m_page.open("line", pszClass);
        m_page.attribute("x1", shortNumber(dfX1));
        m_page.attribute("y1", shortNumber(dfY1));
        m_page.attribute("x2", shortNumber(dfX2));
        m_page.attribute("y2", shortNumber(dfY2));
        m_page.attribute("stroke", QStringLiteral("#bbb"));
        m_page.close();
    }

    void label(double dfX, double dfY, const QString& strText, const char* pszAnchor,
               Writing writing = Writing::Across)
    {
        m_page.open("text", "axis");
        m_page.attribute("x", shortNumber(dfX));
        m_page.attribute("y", shortNumber(dfY));
        m_page.attribute("text-anchor", QLatin1String(pszAnchor));
        if (writing == Writing::Upwards) {
            m_page.attribute("transform", QStringLiteral("rotate(-90 %1 %2)").arg(dfX).arg(dfY));
        }
        m_page.text(strText);
        m_page.close();
    }

    void drawGrid()
    {
        for (const double df : m_x.listTick) {
            line(placeX(df), m_frame.dfTop, placeX(df), m_frame.dfBottom + 4, "grid");
            label(placeX(df), m_frame.dfBottom + 17, QString::number(df, 'f', m_x.nDecimals), "middle");
        }
        for (const double df : m_y.listTick) {
            line(m_frame.dfLeft - 4, placeY(df), m_frame.dfRight, placeY(df), "grid");
            label(m_frame.dfLeft - 8, placeY(df) + 4, QString::number(df, 'f', m_y.nDecimals), "end");
        }
    }

    void drawTitles()
    {
        label((m_frame.dfLeft + m_frame.dfRight) / 2, m_frame.dfHeight - 6, m_plot.strX, "middle");
        label(14, (m_frame.dfTop + m_frame.dfBottom) / 2, m_plot.strY, "middle", Writing::Upwards);
    }

    void drawSeries(const SvgSeries& series, size_t n)
    {
        const size_t nLook = n % std::size(g_aszSeries);
        if (series.bLine) {
            drawLine(series, nLook);
        }
        if (series.bPoints) {
            m_page.open("g", g_aszPoints[nLook]);
            for (const QPointF& pt : series.listPoint) {
                if (isFinitePoint(pt)) {
                    m_page.open("circle");
                    m_page.attribute("cx", shortNumber(placeX(pt.x())));
                    m_page.attribute("cy", shortNumber(placeY(pt.y())));
                    m_page.attribute("r", QStringLiteral("2.6"));
                    m_page.close();
                }
            }
            m_page.close();
        }
    }

    void drawLine(const SvgSeries& series, size_t nLook)
    {
        QString strPath;
        bool bGap = true;
        for (const QPointF& pt : series.listPoint) {
            if (isFinitePoint(pt)) {
                strPath += (bGap ? QLatin1Char('M') : QLatin1Char('L')) + shortNumber(placeX(pt.x())) +
                           QLatin1Char(' ') + shortNumber(placeY(pt.y()));
            }
            bGap = !isFinitePoint(pt);
        }
        m_page.open("path", g_aszSeries[nLook]);
        m_page.attribute("d", strPath);
        dash(nLook);
        m_page.close();
    }

    void dash(size_t nLook)
    {
        m_page.attribute("fill", QStringLiteral("none"));
        m_page.attribute("stroke", QStringLiteral("#444"));
        m_page.attribute("stroke-width", QStringLiteral("1.6"));
        if (nLook > 0) {
            m_page.attribute("stroke-dasharray", QLatin1String(g_aszDash[nLook]));
        }
    }

    /// The legend: a row of names above the frame, each after a sample of its line.
    void drawLegend()
    {
        double dfX = m_frame.dfLeft;
        for (size_t n = 0; n < m_plot.listSeries.size() && m_plot.listSeries.size() > 1; ++n) {
            const QString& strName = m_plot.listSeries[n].strName;
            const size_t nLook = n % std::size(g_aszSeries);
            m_page.open("path", g_aszSeries[nLook]);
            m_page.attribute("d", QStringLiteral("M%1 18h26").arg(shortNumber(dfX)));
            dash(nLook);
            m_page.close();
            label(dfX + 32, 22, strName, "start");
            dfX += 32 + 7.0 * strName.size() + 20;  // letters of size 12 are 7 wide on average
        }
    }

    CHtmlPage& m_page;
    const SvgPlot& m_plot;
    PlotFrame m_frame;
    AxisTicks m_x, m_y;
};

}  // namespace

bool SvgPlot::isEmpty() const
{
    return std::none_of(listSeries.begin(), listSeries.end(), [](const SvgSeries& series) {
        return std::any_of(series.listPoint.begin(), series.listPoint.end(), isFinitePoint);
    });
}

AxisTicks axisTicks(double dfLow, double dfHigh, int nMost)
{
    AxisTicks ticks;
    if (!std::isfinite(dfLow) || !std::isfinite(dfHigh) || dfHigh < dfLow) {
        dfLow = 0;
        dfHigh = 1;
    }
    // Equal numbers, or numbers that differ only by rounding, still need a range.
    const double dfLeast = std::max(std::abs(dfLow), std::abs(dfHigh)) * 1e-9;
    if (dfHigh - dfLow <= dfLeast) {
        const double dfRoom = std::max(0.5, dfLeast * 10);
        dfLow -= dfRoom;
        dfHigh += dfRoom;
    }
    const double dfRough = (dfHigh - dfLow) / std::max(1, nMost);
    const double dfPower = std::pow(10.0, std::floor(std::log10(dfRough)));
    double dfStep = 10 * dfPower;
    for (const double dfFactor : {1.0, 2.0, 5.0}) {
        if (dfFactor * dfPower >= dfRough * (1 - 1e-9)) {
            dfStep = dfFactor * dfPower;
            break;
        }
    }
    const double dfFirst = std::floor(dfLow / dfStep + 1e-9), dfLast = std::ceil(dfHigh / dfStep - 1e-9);
    const int nTicks = int(std::lround(dfLast - dfFirst)) + 1;  // about nMost at most
    for (int i = 0; i < nTicks; ++i) {
        ticks.listTick.push_back((dfFirst + i) * dfStep);
    }
    ticks.dfLow = dfFirst * dfStep;
    ticks.dfHigh = dfLast * dfStep;
    ticks.nDecimals = int(std::clamp(std::ceil(-std::log10(dfStep) - 1e-9), 0.0, 6.0));
    return ticks;
}

void drawPlot(CHtmlPage& page, const SvgPlot& plot)
{
    CDrawing(page, plot).draw();
}

}  // namespace tessera
