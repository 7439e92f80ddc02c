#include "window/frames/curveplot.h"

#include "lattice/axissearch.h"
#include "window/pages/palettecolors.h"

#include <qwt_legend.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_marker.h>
#include <qwt_symbol.h>

#include <QMouseEvent>
#include <QPen>

#include <cmath>

namespace tessera {

const double g_dfReach = 10;  // pixels between a click and its point

CurvePlot::CurvePlot(QWidget* pParent) : QwtPlot(pParent), m_pCurve(new QwtPlotCurve(QStringLiteral("Point")))
{
    setObjectName(QStringLiteral("curvePlot"));  // among the plots of other windows
    setAutoReplot(false);
    setMinimumHeight(100);
    canvas()->unsetCursor();

    setTitles(QStringLiteral("Frame No."), QStringLiteral("Intensity"));
    insertLegend(new QwtLegend, QwtPlot::TopLegend, -1.0);

    m_pCurve->setPen(QPen(Qt::red));
    m_pCurve->setRenderHint(QwtPlotItem::RenderAntialiased);
    m_pCurve->setLegendAttribute(QwtPlotCurve::LegendShowLine);
    m_pCurve->setSymbol(new QwtSymbol(QwtSymbol::Cross, Qt::NoBrush, QPen(Qt::red), QSize(10, 10)));
    m_pCurve->attach(this);
    m_pMark = new QwtPlotCurve;
    m_pMark->setItemAttribute(QwtPlotItem::Legend, false);
    m_pMark->setStyle(QwtPlotCurve::NoCurve);
    m_pMark->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, Qt::NoBrush,
                                     QPen(readableOn(palette(), Qt::blue), 2), QSize(15, 15)));
    m_pMark->setZ(m_pCurve->z() + 1);
    m_pMark->attach(this);
    canvas()->installEventFilter(this);

    auto* pGrid = new QwtPlotGrid;
    pGrid->setMajorPen(QPen(Qt::gray, 0, Qt::DotLine, Qt::SquareCap, Qt::BevelJoin));
    pGrid->setAxes(QwtPlot::xBottom, QwtPlot::yRight);
    pGrid->attach(this);
    replot();
}

void CurvePlot::setTitles(const QString& strX, const QString& strY)
{
    QwtText textX(strX);
    QFont fontTitle = textX.font();
    fontTitle.setPixelSize(12);
    fontTitle.setWeight(QFont::Bold);
    textX.setFont(fontTitle);
    setAxisTitle(QwtPlot::xBottom, textX);
    setAxisTitle(QwtPlot::yLeft, QStringLiteral("<h4>%1</h4>").arg(strY));
}

void CurvePlot::addLine(double dfX, const QPen& pen)
{
    auto* pMarker = new QwtPlotMarker;
    pMarker->setLineStyle(QwtPlotMarker::VLine);
    pMarker->setXValue(dfX);
    pMarker->setLinePen(pen);
    pMarker->attach(this);
    m_listCurveMarker.append(pMarker);
}

void CurvePlot::showAxisCurve(const AxisSearch& search)
{
    clearCurve();
    setTitles(QStringLiteral("Azimuth of the rotation axis (°)"), QStringLiteral("Sharpness"));
    setAxisScale(QwtPlot::xBottom, -180, 180, 60);
    m_nDecimals = 4;
    m_pCurve->setTitle(QStringLiteral("Sharpness of the lattice"));
    QVector<QPointF> vecPoint;
    for (const AxisSharpness& point : search.vecCurve) {
        vecPoint.append({point.dfAzimuth, point.dfSharpness});
    }
    m_pCurve->setSamples(vecPoint);
    if (search.found) {
        addLine(search.found->second.dfAzimuth, QPen(QBrush(Qt::darkCyan), 0, Qt::DotLine));
        addLine(search.found->best.dfAzimuth, QPen(QBrush(Qt::darkCyan), 2, Qt::DashLine));
    }
    replot();
}

void CurvePlot::showCurve(const QString& strTitle, const QVector<double>& vecFrame,
                          const QVector<double>& vecInt, const QList<int>& listBreak)
{
    m_pCurve->setTitle(strTitle);
    clearCurve();
    setTitles(QStringLiteral("Frame No."), QStringLiteral("Intensity"));
    setAxisAutoScale(QwtPlot::xBottom);
    m_nDecimals = 2;
    m_pCurve->setSamples(vecFrame, vecInt);
    for (double dfFrame : vecFrame) {
        if (listBreak.value(int(dfFrame) - 1) == 0) {
            continue;
        }
        // Between the last frame of one series and the first of the next.
        addLine(dfFrame - 0.5, QPen(QBrush(Qt::darkCyan), 0, Qt::DashLine));
    }
    replot();
}

void CurvePlot::markFrame(int nFrame)
{
    QVector<QPointF> vecPoint;
    for (size_t i = 0; m_nReflection >= 0 && i < m_pCurve->dataSize(); ++i) {
        if (m_pCurve->sample(int(i)).x() == nFrame + 1) {
            vecPoint.append(m_pCurve->sample(int(i)));
        }
    }
    m_pMark->setSamples(vecPoint);
    replot();
}

bool CurvePlot::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pObject == canvas() && pEvent->type() == QEvent::MouseButtonRelease && m_nReflection >= 0) {
        const auto* pMouse = static_cast<QMouseEvent*>(pEvent);
        double dfDistance = 0;
        const int nPoint = m_pCurve->closestPoint(pMouse->pos(), &dfDistance);
        if (pMouse->button() == Qt::LeftButton && nPoint >= 0 && dfDistance <= g_dfReach) {
            emit frameClicked(int(std::lround(m_pCurve->sample(nPoint).x())) - 1);
        }
    }
    return QwtPlot::eventFilter(pObject, pEvent);
}

void CurvePlot::clearCurve()
{
    m_nReflection = -1;
    m_pMark->setSamples(QVector<QPointF>());
    m_pCurve->setSamples(QVector<QPointF>());
    qDeleteAll(m_listCurveMarker);  // a marker that is deleted detaches itself from its plot
    m_listCurveMarker.clear();
    replot();
}

QString CurvePlot::text() const
{
    if (m_pCurve->dataSize() == 0) {
        return {};
    }
    QString strText;
    for (size_t i = 0; i < m_pCurve->dataSize(); ++i) {
        const QPointF ptSample = m_pCurve->sample(int(i));
        strText += QStringLiteral("%L1 \t%L2\n")
                       .arg(ptSample.x(), 8, 'f', 1)
                       .arg(ptSample.y(), 12, 'f', m_nDecimals);
    }
    return strText + QLatin1Char('\n');
}

}  // namespace tessera
