// SvgPlot: curves in a frame with axes, as a drawing of SVG.
#pragma once

#include "road/htmlpage.h"

#include <QPointF>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace tessera {

struct SvgSeries {
    QString strName;                 ///< of the legend
    std::vector<QPointF> listPoint;  ///< those that are not finite leave a gap
    bool bLine = true;
    bool bPoints = false;
};

struct SvgPlot {
    QString strTitle;
    QString strX;  ///< title of the axis, with its unit
    QString strY;
    std::vector<SvgSeries> listSeries;  ///< up to four have colours of their own
    std::optional<double> dfYMin;       ///< none: by the points
    std::optional<double> dfYMax;

    bool isEmpty() const;  ///< no finite point
};

/// Ends of an axis that holds two numbers, and its ticks: multiples of 1, 2 or 5 times a power of ten.
struct AxisTicks {
    double dfLow = 0, dfHigh = 1;
    std::vector<double> listTick;
    int nDecimals = 0;
};
AxisTicks axisTicks(double dfLow, double dfHigh, int nMost);

/// Draws the plot where the page is. Lines and points have the classes "series" with "s0" to "s3", texts
/// and lines of the frame "axis" and "grid", whose colours are the page's; a drawing that stands alone has
/// shades of grey.
void drawPlot(CHtmlPage& page, const SvgPlot& plot);

/// A place of the page where units of the plot are drawn: (left, top) to (right, bottom).
struct PlotFrame {
    double dfLeft = 62, dfTop = 34, dfRight = 628, dfBottom = 256;
    double dfWidth = 640, dfHeight = 300;
};

}  // namespace tessera
