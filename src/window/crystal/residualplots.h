// ResidualPlots: what a geometry leaves of each peak, as four plots.
#pragma once

#include "refinement/spotresiduals.h"

#include <QSizeF>
#include <QTabWidget>

#include <vector>

namespace tessera {

class PlotPanel;

/// Where the frame ends in the plots.
struct FrameBounds {
    QSizeF size;       ///< pixels; empty: not known, and the plot goes as far as the peaks do
    QPointF ptCentre;  ///< direct beam of the first frame, pixels
};

/// Tabs: arrows over the frame, residuals by the radius, by the frame and by the tilt, in pixels.
class ResidualPlots : public QTabWidget {
    Q_OBJECT

public:
    /// Empty plots.
    explicit ResidualPlots(QWidget* pParent = nullptr);

    /// Draws residuals in the place of the former ones; none: empty plots.
    void setResiduals(const std::vector<SpotResidual>& listResidual, const FrameBounds& bounds);
    /// What files of the plots are named after by the save dialogs.
    void setFileStem(const QString& strStem);

    PlotPanel* m_pPlotFrame;
    PlotPanel* m_pPlotRadius;
    PlotPanel* m_pPlotFrameNumber;
    PlotPanel* m_pPlotTilt;

signals:
    /// A file was asked for and could not be written.
    void notSaved(const QString& strReason);

private:
    PlotPanel* addPlot(const QString& strTab, const QString& strTip);
};

/// Means of points in bins.
struct BinnedMeans {
    QVector<QPointF> vecMean;  ///< (mean of x, mean of y)
    QVector<double> vecError;  ///< standard error of each mean
};
/// Means in bins of even width over x; bins of fewer than three points are left out.
/// @param vecPoint  finite
BinnedMeans binnedMeans(const QVector<QPointF>& vecPoint, int nBins);

/// The mean residual of the peaks in one square of the frame.
struct FieldArrow {
    QPointF ptPlace;  ///< middle of the square, pixels relative to the direct beam
    QPointF ptMean;   ///< pixels
};
/// The mean residuals in the squares of a grid over the frame that have at least three peaks.
/// @param dfSquare  edge of a square, pixels
std::vector<FieldArrow> residualField(const std::vector<SpotResidual>& listResidual, double dfSquare);

}  // namespace tessera
