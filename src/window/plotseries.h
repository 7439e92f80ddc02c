// PlotSeries: what one plot shows, as records, and as a table of numbers.
#pragma once

#include <QColor>
#include <QPointF>
#include <QString>
#include <QVector>

namespace tessera {

/// Points that are drawn alike.
struct PlotSeries {
    /// How the points of a series are drawn.
    enum class Kind {
        Line,           ///< from point to point
        Points,         ///< dots alone
        LineAndPoints,  ///< both
        Arrows          ///< from each point, see vecArrow
    };
    Kind kind = Kind::Line;
    QString strName;                 ///< of the legend and of the table; empty: not in the legend
    QVector<QPointF> vecPoint;       ///< in the units of the axes
    QVector<double> vecError = {};   ///< empty, or for each point the half length of its error bar
    QVector<QPointF> vecArrow = {};  ///< of arrows: one for each point, in the units of the axes
    double dfArrowScale = 1;         ///< how many times longer than they are arrows are drawn
    QColor color = Qt::red;
    int nPointSize = 5;  ///< pixels of the screen
};

/// A table with commas: a line of titles, then a line for each point of each series.
///
/// Columns are the name of the series, x and y under the titles of the axes, and where any series has them
/// "error", "dx" and "dy" (arrows as they are, not as they are drawn). Numbers in the C locale, as short as
/// they can be without loss; a series without errors or arrows leaves these columns empty.
QString csvOfSeries(const QString& strTitleX, const QString& strTitleY, const QVector<PlotSeries>& vecSeries);

}  // namespace tessera
