// CurvePlot: the intensity of a reflection through the frames, as a curve.
#pragma once

#include <qwt_plot.h>

#include <QList>
#include <QString>
#include <QVector>

class QwtPlotCurve;
class QwtPlotMarker;

namespace tessera {

/// The plot of the window "Intensity": intensity against the number of the frame, from 1.
class CurvePlot : public QwtPlot {
public:
    explicit CurvePlot(QWidget* pParent = nullptr);  ///< without a curve

    /// Draws a curve in the place of the former one.
    /// @param vecFrame   numbers of frames, from 1
    /// @param vecInt     intensity on each of them
    /// @param listBreak  a flag per frame of the series; where it is not 0, a line before the frame
    ///                   tells that a beam tilt series starts
    void showCurve(const QString& strTitle, const QVector<double>& vecFrame, const QVector<double>& vecInt,
                   const QList<int>& listBreak);
    void clearCurve();  ///< takes the curve away; axes and legend stay

    /// A line per frame, number and intensity, with an empty line after the last; empty without a curve.
    QString text() const;

private:
    QwtPlotCurve* m_pCurve;
    QList<QwtPlotMarker*> m_listCurveMarker;  ///< starts of beam tilt series; owned
};

}  // namespace tessera
