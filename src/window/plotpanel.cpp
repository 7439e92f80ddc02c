#include "window/plotpanel.h"

#include "records/wholefile.h"

#include <qwt_interval_symbol.h>
#include <qwt_legend.h>
#include <qwt_painter.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_intervalcurve.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_renderer.h>
#include <qwt_scale_map.h>
#include <qwt_symbol.h>
#include <qwt_text.h>
#include <qwt_text_label.h>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfMmPerPixel = 25.4 / 96;  // of the saved picture: as large as on a usual screen

/// Arrows from points of the plot.
class ArrowItem : public QwtPlotItem {
public:
    explicit ArrowItem(const PlotSeries& series) : QwtPlotItem(QwtText(series.strName)), m_series(series)
    {
        setItemAttribute(QwtPlotItem::AutoScale);
        setRenderHint(QwtPlotItem::RenderAntialiased);
        setZ(20);  // as curves
    }
    int rtti() const override { return QwtPlotItem::Rtti_PlotUserItem; }
    QRectF boundingRect() const override
    {
        QRectF rect = QPolygonF(m_series.vecPoint).boundingRect();
        for (int n = 0; n < m_series.vecPoint.size(); ++n) {
            rect |= QRectF(m_series.vecPoint[n], QSizeF(0, 0)) | QRectF(tip(n), QSizeF(0, 0));
        }
        return rect;
    }
    void draw(QPainter* pPainter, const QwtScaleMap& mapX, const QwtScaleMap& mapY,
              const QRectF& /*rectCanvas*/) const override
    {
        const double dfHead = 4;  // pixels
        pPainter->setPen(QPen(m_series.color, 1));
        for (int n = 0; n < m_series.vecPoint.size(); ++n) {
            const QPointF& pt = m_series.vecPoint[n];
            const QLineF line(mapX.transform(pt.x()), mapY.transform(pt.y()), mapX.transform(tip(n).x()),
                              mapY.transform(tip(n).y()));
            pPainter->drawLine(line);
            if (line.length() < 1) {
                continue;
            }
            for (const double dfTurn : {150.0, -150.0}) {
                QLineF head = line.translated(line.dx(), line.dy());
                head.setLength(std::min(dfHead, line.length() / 2));
                head.setAngle(line.angle() + dfTurn);
                pPainter->drawLine(head);
            }
        }
    }

private:
    QPointF tip(int n) const
    {
        return m_series.vecPoint[n] + m_series.vecArrow.value(n) * m_series.dfArrowScale;
    }

    PlotSeries m_series;
};

/// The series without what cannot be drawn.
PlotSeries finiteOf(const PlotSeries& series)
{
    PlotSeries finite = series;
    finite.vecPoint.clear();
    finite.vecError.clear();
    finite.vecArrow.clear();
    const auto isFinite = [](const QPointF& pt) { return std::isfinite(pt.x()) && std::isfinite(pt.y()); };
    for (int n = 0; n < series.vecPoint.size(); ++n) {
        const double dfError = series.vecError.value(n);
        const QPointF ptArrow = series.vecArrow.value(n);
        if (!isFinite(series.vecPoint[n]) || !std::isfinite(dfError) || !isFinite(ptArrow)) {
            continue;
        }
        finite.vecPoint.append(series.vecPoint[n]);
        if (!series.vecError.isEmpty()) {
            finite.vecError.append(dfError);
        }
        if (series.kind == PlotSeries::Kind::Arrows) {
            finite.vecArrow.append(ptArrow);
        }
    }
    return finite;
}

QwtPlotCurve* curveOf(const PlotSeries& series)
{
    auto* pCurve = new QwtPlotCurve(series.strName);
    const bool bLine = series.kind != PlotSeries::Kind::Points;
    pCurve->setStyle(bLine ? QwtPlotCurve::Lines : QwtPlotCurve::NoCurve);
    pCurve->setPen(QPen(series.color, 1.5));
    pCurve->setRenderHint(QwtPlotItem::RenderAntialiased, bLine);
    if (series.kind != PlotSeries::Kind::Line) {
        const QSize size(series.nPointSize, series.nPointSize);
        // Small dots as squares: circles of 3 pixels cost far more and look alike.
        pCurve->setSymbol(new QwtSymbol(series.nPointSize > 3 ? QwtSymbol::Ellipse : QwtSymbol::Rect,
                                        QBrush(series.color), QPen(Qt::NoPen), size));
    }
    pCurve->setLegendAttribute(bLine ? QwtPlotCurve::LegendShowLine : QwtPlotCurve::LegendShowSymbol);
    pCurve->setSamples(series.vecPoint);
    return pCurve;
}

QwtPlotIntervalCurve* errorBarsOf(const PlotSeries& series)
{
    auto* pBars = new QwtPlotIntervalCurve;
    pBars->setStyle(QwtPlotIntervalCurve::NoCurve);
    pBars->setItemAttribute(QwtPlotItem::Legend, false);
    auto* pSymbol = new QwtIntervalSymbol(QwtIntervalSymbol::Bar);
    pSymbol->setPen(QPen(series.color, 1));
    pSymbol->setWidth(series.nPointSize);
    pBars->setSymbol(pSymbol);
    QVector<QwtIntervalSample> vecSample;
    for (int n = 0; n < series.vecPoint.size(); ++n) {
        const QPointF& pt = series.vecPoint[n];
        vecSample.append({pt.x(), pt.y() - series.vecError[n], pt.y() + series.vecError[n]});
    }
    pBars->setSamples(vecSample);
    return pBars;
}

/// A text in the font of the widget: Qwt's own is bold and larger.
QwtText textInFont(const QString& strText, QFont font, QFont::Weight weight)
{
    QwtText text(strText, QwtText::PlainText);
    font.setWeight(weight);
    text.setFont(font);
    return text;
}

}  // namespace

PlotPanel::PlotPanel(QWidget* pParent) : QwtPlot(pParent)
{
    setAutoReplot(false);
    setMinimumSize(240, 180);
    setCanvasBackground(Qt::white);
    canvas()->unsetCursor();
    canvas()->installEventFilter(this);
    plotLayout()->setAlignCanvasToScales(true);
    for (const int nAxis : {int(QwtPlot::xBottom), int(QwtPlot::yLeft)}) {
        setAxisFont(nAxis, font());
    }
    QFont fontTitle = font();  // the room of a title is that of the label's own font
    fontTitle.setBold(true);
    titleLabel()->setFont(fontTitle);
    auto* pGrid = new QwtPlotGrid;
    pGrid->setMajorPen(QPen(QColor(205, 205, 205), 0, Qt::DotLine));
    pGrid->attach(this);
}

void PlotPanel::setTitles(const QString& strTitle, const QString& strX, const QString& strY)
{
    setTitle(textInFont(strTitle, font(), QFont::Bold));
    setAxisTitle(QwtPlot::xBottom, textInFont(strX, font(), QFont::Normal));
    setAxisTitle(QwtPlot::yLeft, textInFont(strY, font(), QFont::Normal));
}

void PlotPanel::clearSeries()
{
    for (const int nRtti : {QwtPlotItem::Rtti_PlotCurve, QwtPlotItem::Rtti_PlotIntervalCurve,
                            QwtPlotItem::Rtti_PlotMarker, QwtPlotItem::Rtti_PlotUserItem}) {
        detachItems(nRtti, true);
    }
    m_vecSeries.clear();
}

void PlotPanel::addSeries(const PlotSeries& series)
{
    m_vecSeries.append(finiteOf(series));
    const PlotSeries& added = m_vecSeries.last();
    QwtPlotItem* pItem = nullptr;
    if (added.kind == PlotSeries::Kind::Arrows) {
        pItem = new ArrowItem(added);
    } else {
        pItem = curveOf(added);
    }
    pItem->setItemAttribute(QwtPlotItem::Legend, !added.strName.isEmpty());
    pItem->attach(this);
    if (!added.vecError.isEmpty()) {
        errorBarsOf(added)->attach(this);
    }
}

void PlotPanel::addLevel(double dfY)
{
    addLine(true, dfY);
}

void PlotPanel::addUpright(double dfX)
{
    addLine(false, dfX);
}

void PlotPanel::addLine(bool bLevel, double dfAt)
{
    auto* pMarker = new QwtPlotMarker;
    pMarker->setLineStyle(bLevel ? QwtPlotMarker::HLine : QwtPlotMarker::VLine);
    pMarker->setValue(dfAt, dfAt);
    pMarker->setLinePen(QPen(Qt::darkGray, 1));
    pMarker->setItemAttribute(QwtPlotItem::AutoScale, false);
    pMarker->setZ(15);  // above the grid, below the curves
    pMarker->attach(this);
}

void PlotPanel::showSeries()
{
    const auto nNamed = std::count_if(m_vecSeries.begin(), m_vecSeries.end(),
                                      [](const PlotSeries& one) { return !one.strName.isEmpty(); });
    if (nNamed > 1 && !legend()) {
        insertLegend(new QwtLegend, QwtPlot::TopLegend);
    } else if (nNamed < 2 && legend()) {
        insertLegend(nullptr);
    }
    replot();
}

void PlotPanel::setPictureAxes(const QSizeF& size)
{
    m_sizePicture = size;
    if (size.isEmpty()) {
        setAxisAutoScale(QwtPlot::xBottom);
        setAxisAutoScale(QwtPlot::yLeft);
        replot();
    } else {
        fitPicture();
    }
}

/// The picture in the middle of the canvas, as large as it fits.
///
/// The width of the numbers beside an axis changes the size of the canvas, and that the numbers again: a few
/// steps come close enough. Changes of the canvas meanwhile begin no further fit.
void PlotPanel::fitPicture()
{
    if (m_sizePicture.isEmpty() || m_bFitting) {
        return;
    }
    m_bFitting = true;
    QSizeF sizeFitted;
    const int nSteps = 3;
    for (int n = 0; n < nSteps; ++n) {
        const QSizeF sizeCanvas = canvas()->contentsRect().size();
        if (sizeCanvas.isEmpty() || sizeCanvas == sizeFitted) {
            break;
        }
        sizeFitted = sizeCanvas;
        const double dfUnits = std::max(m_sizePicture.width() / sizeCanvas.width(),
                                        m_sizePicture.height() / sizeCanvas.height());  // of a pixel
        const double dfMoreX = (dfUnits * sizeCanvas.width() - m_sizePicture.width()) / 2;
        const double dfMoreY = (dfUnits * sizeCanvas.height() - m_sizePicture.height()) / 2;
        setAxisScale(QwtPlot::xBottom, -dfMoreX, m_sizePicture.width() + dfMoreX);
        setAxisScale(QwtPlot::yLeft, m_sizePicture.height() + dfMoreY, -dfMoreY);  // rows count downwards
        replot();
    }
    m_bFitting = false;
}

bool PlotPanel::eventFilter(QObject* pObject, QEvent* pEvent)
{
    const bool bDone = QwtPlot::eventFilter(pObject, pEvent);
    if (pObject == canvas() && pEvent->type() == QEvent::Resize) {
        fitPicture();
    }
    return bDone;
}

QString PlotPanel::csv() const
{
    return csvOfSeries(axisTitle(QwtPlot::xBottom).text(), axisTitle(QwtPlot::yLeft).text(), m_vecSeries);
}

bool PlotPanel::saveSvg(const QString& strFile, QString* pstrReason)
{
    // Qwt can only write files: it writes a temporary one, whose bytes are then written whole.
    const auto failed = [&] {
        if (pstrReason) {
            *pstrReason = tr("%1: the picture could not be made.").arg(strFile);
        }
        return false;
    };
    const QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("plot.svg")));
    if (!dir.isValid()) {
        return failed();
    }
    QwtPlotRenderer renderer;
    renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground);
    renderer.renderDocument(this, file.fileName(), QStringLiteral("svg"), QSizeF(size()) * g_dfMmPerPixel,
                            qRound(25.4 / g_dfMmPerPixel));
    if (!file.open(QIODevice::ReadOnly)) {
        return failed();
    }
    const QByteArray bytes = file.readAll();
    if (!bytes.trimmed().endsWith("</svg>")) {
        return failed();  // cut, as on a full disk
    }
    return writeWholeFile(strFile, bytes, pstrReason);
}

bool PlotPanel::saveCsv(const QString& strFile, QString* pstrReason) const
{
    return writeWholeFile(strFile, csv().toUtf8(), pstrReason);
}

void PlotPanel::copyPicture()
{
    QApplication::clipboard()->setPixmap(grab());
}

void PlotPanel::copyNumbers() const
{
    QApplication::clipboard()->setText(csv());
}

QString PlotPanel::askFile(const QString& strTitle, const QString& strFilter, const QString& strSuffix)
{
    QString strFile = QFileDialog::getSaveFileName(
        window(), strTitle, m_strFileStem.isEmpty() ? QString() : m_strFileStem + strSuffix, strFilter);
    if (!strFile.isEmpty() && QFileInfo(strFile).suffix().isEmpty()) {
        strFile += strSuffix;
    }
    return strFile;
}

void PlotPanel::askAndSavePicture()
{
    const QString strFile = askFile(tr("Save Picture"), tr("Pictures (*.svg)"), QStringLiteral(".svg"));
    QString strReason;
    if (!strFile.isEmpty() && !saveSvg(strFile, &strReason)) {
        emit notSaved(strReason);
    }
}

void PlotPanel::askAndSaveNumbers()
{
    const QString strFile = askFile(tr("Save Numbers"), tr("Tables (*.csv)"), QStringLiteral(".csv"));
    QString strReason;
    if (!strFile.isEmpty() && !saveCsv(strFile, &strReason)) {
        emit notSaved(strReason);
    }
}

void PlotPanel::contextMenuEvent(QContextMenuEvent* pEvent)
{
    QMenu menu(this);
    menu.addAction(tr("Copy &Picture"), this, &PlotPanel::copyPicture);
    menu.addAction(tr("Copy &Numbers"), this, &PlotPanel::copyNumbers);
    menu.addSeparator();
    menu.addAction(tr("Save P&icture..."), this, &PlotPanel::askAndSavePicture);
    menu.addAction(tr("Save N&umbers..."), this, &PlotPanel::askAndSaveNumbers);
    menu.exec(pEvent->globalPos());
}

}  // namespace tessera
