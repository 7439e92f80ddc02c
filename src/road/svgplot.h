// SvgPlot: a plot of curves with axes, drawn as SVG.
#pragma once

#include "road/htmlpage.h"

#include <QPointF>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace tessera {

/// A curve of a plot.
struct SvgSeries {
    QString strName;                 ///< name in the legend
    std::vector<QPointF> listPoint;  ///< points that are not finite leave a gap
    bool bLine = true;               ///< draw a line through the points
    bool bPoints = false;            ///< draw the points
};

/// A plot.
struct SvgPlot {
    QString strTitle;
    QString strX;                       ///< title of the horizontal axis, with its unit
    QString strY;                       ///< title of the vertical axis, with its unit
    std::vector<SvgSeries> listSeries;  ///< the first four have distinct colours
    std::optional<double> dfYMin;       ///< none: from the points
    std::optional<double> dfYMax;       ///< none: from the points

    bool isEmpty() const;  ///< whether there is no finite point
};

/// The range and the ticks of an axis.
struct AxisTicks {
    double dfLow = 0, dfHigh = 1;
    std::vector<double> listTick;
    int nDecimals = 0;  ///< decimals of the labels
};
/// Chooses ticks at multiples of 1, 2 or 5 times a power of ten, and a range that includes two numbers.
/// @param nMost  greatest number of ticks
AxisTicks axisTicks(double dfLow, double dfHigh, int nMost);

/// Draws a plot at the end of a page. Lines and points have the classes "series" and "s0" to "s3", texts and
/// lines of the frame "axis" and "grid"; the style sheet of the page gives them colours. Without a style
/// sheet they are grey.
void drawPlot(CHtmlPage& page, const SvgPlot& plot);

/// Size of a drawing, and the area of its curves, in SVG units.
struct PlotFrame {
    double dfLeft = 62, dfTop = 34, dfRight = 628, dfBottom = 256;
    double dfWidth = 640, dfHeight = 300;
};

}  // namespace tessera
