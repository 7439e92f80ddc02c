// CurvePlot: the intensity of a reflection through the frames, as a curve.
#pragma once

#include <qwt_plot.h>

#include <QList>
#include <QString>
#include <QVector>

class QPen;
class QwtPlotCurve;
class QwtPlotMarker;

namespace tessera {

struct AxisSearch;

/// The plot of the window "Intensity": intensity against the number of the frame, from 1; or, after a search
/// for the rotation axis, sharpness of the lattice against the azimuth.
class CurvePlot : public QwtPlot {
    Q_OBJECT

public:
    explicit CurvePlot(QWidget* pParent = nullptr);  ///< without a curve

    /// Draws a curve in the place of the former one.
    /// @param vecFrame   numbers of frames, from 1
    /// @param vecInt     intensity on each of them
    /// @param listBreak  a flag per frame of the series; where it is not 0, a line before the frame
    ///                   tells that a beam tilt series starts
    void showCurve(const QString& strTitle, const QVector<double>& vecFrame, const QVector<double>& vecInt,
                   const QList<int>& listBreak);
    /// Says whose curve is drawn, until another one is; −1: of no reflection.
    void setReflection(int nReflection) { m_nReflection = nReflection; }
    int reflection() const { return m_nReflection; }  ///< its number
    /// Rings the point of a frame, from 0; −1: none.
    void markFrame(int nFrame);
    /// Draws the sharpness of the lattice for each azimuth of the rotation axis, in the place of the former
    /// curve, with a line at the axis that was found and a thinner one at the second maximum.
    void showAxisCurve(const AxisSearch& search);
    void clearCurve();  ///< takes the curve away; axes and legend stay

    /// A line per point, number of the frame and intensity or azimuth and sharpness, with an empty line after
    /// the last; empty without a curve.
    QString text() const;

signals:
    /// A point of a reflection's curve was clicked.
    /// @param nFrame  from 0
    void frameClicked(int nFrame);

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    void setTitles(const QString& strX, const QString& strY);
    void addLine(double dfX, const QPen& pen);

    QwtPlotCurve* m_pCurve;
    QwtPlotCurve* m_pMark;                    ///< a ring around one point
    int m_nReflection = -1;                   ///< whose curve it is
    int m_nDecimals = 2;                      ///< of the ordinate, as text
    QList<QwtPlotMarker*> m_listCurveMarker;  ///< starts of beam tilt series, or axes; owned
};

}  // namespace tessera
