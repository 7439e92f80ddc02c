#include "window/crystal/residualplots.h"

#include "window/pages/controltips.h"
#include "window/plotpanel.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace tessera {

namespace {

const QColor g_colorOne(200, 40, 40);
const QColor g_colorOther(30, 90, 200);
const QColor g_colorFaintOne(235, 175, 175);
const QColor g_colorFaintOther(170, 195, 240);
const int g_nSquares = 14;  // of the arrows along the longer edge: so many do not touch
const int g_nBins = 24;

/// The scale at which the longer arrows are about as long as the squares: 1, 2 or 5 times a power of ten.
double arrowScale(const std::vector<FieldArrow>& listArrow, double dfSquare)
{
    std::vector<double> listLength;
    listLength.reserve(listArrow.size());
    for (const FieldArrow& arrow : listArrow) {
        listLength.push_back(std::hypot(arrow.ptMean.x(), arrow.ptMean.y()));
    }
    if (listLength.empty()) {
        return 1;
    }
    std::sort(listLength.begin(), listLength.end());
    const double dfLong = listLength[(listLength.size() * 9) / 10];
    if (!(dfLong > 0)) {
        return 1;
    }
    const double dfWanted = dfSquare / dfLong;
    const double dfPower = std::pow(10, std::floor(std::log10(dfWanted)));
    const double dfDigit = dfWanted / dfPower;
    return dfPower * (dfDigit >= 5 ? 5 : dfDigit >= 2 ? 2 : 1);
}

void addDots(PlotPanel& panel, const QVector<QPointF>& vecPoint, const QColor& color)
{
    PlotSeries dots{PlotSeries::Kind::Points, {}, vecPoint};
    dots.color = color;
    dots.nPointSize = 2;
    panel.addSeries(dots);
}

void addMeans(PlotPanel& panel, const QString& strName, const QVector<QPointF>& vecPoint, const QColor& color)
{
    const BinnedMeans means = binnedMeans(vecPoint, g_nBins);
    PlotSeries line{PlotSeries::Kind::LineAndPoints, strName, means.vecMean, means.vecError};
    line.color = color;
    panel.addSeries(line);
}

/// Plots two quantities against one abscissa; all dots are drawn below all means.
void showBoth(PlotPanel& panel, const QString& strOne, const QVector<QPointF>& vecOne,
              const QString& strOther, const QVector<QPointF>& vecOther)
{
    panel.clearSeries();
    panel.addLevel(0);
    addDots(panel, vecOne, g_colorFaintOne);
    addDots(panel, vecOther, g_colorFaintOther);
    addMeans(panel, strOne, vecOne, g_colorOne);
    addMeans(panel, strOther, vecOther, g_colorOther);
    panel.showSeries();
}

/// The square that the peaks lie in, where the frame is not known.
double reachOf(const std::vector<SpotResidual>& listResidual)
{
    double dfReach = 0;
    for (const SpotResidual& residual : listResidual) {
        dfReach = std::max({dfReach, std::abs(residual.place.dfX), std::abs(residual.place.dfY)});
    }
    return dfReach > 0 ? dfReach : 256;
}

void showField(PlotPanel& panel, const std::vector<SpotResidual>& listResidual, FrameBounds bounds)
{
    if (bounds.size.isEmpty()) {
        const double dfReach = reachOf(listResidual);
        bounds = {QSizeF(2 * dfReach, 2 * dfReach), QPointF(dfReach, dfReach)};
    }
    const double dfSquare = std::max(bounds.size.width(), bounds.size.height()) / g_nSquares;
    const std::vector<FieldArrow> listArrow = residualField(listResidual, dfSquare);
    PlotSeries arrows{PlotSeries::Kind::Arrows, {}, {}};
    for (const FieldArrow& arrow : listArrow) {
        arrows.vecPoint.append(arrow.ptPlace + bounds.ptCentre);
        arrows.vecArrow.append(arrow.ptMean);
    }
    arrows.dfArrowScale = arrowScale(listArrow, dfSquare);
    arrows.color = g_colorOther;
    PlotSeries beam{PlotSeries::Kind::Points, {}, {bounds.ptCentre}};
    beam.color = Qt::black;
    panel.clearSeries();
    panel.addSeries(arrows);
    if (!listResidual.empty()) {
        panel.addSeries(beam);
    }
    panel.setTitles(ResidualPlots::tr("Means by squares, %1 × enlarged")
                        .arg(QLocale::system().toString(arrows.dfArrowScale, 'g', 3)),
                    ResidualPlots::tr("x (px)"), ResidualPlots::tr("y (px)"));
    panel.setPictureAxes(bounds.size);
    panel.showSeries();
}

}  // namespace

BinnedMeans binnedMeans(const QVector<QPointF>& vecPoint, int nBins)
{
    BinnedMeans means;
    if (vecPoint.isEmpty()) {
        return means;
    }
    const auto range = std::minmax_element(
        vecPoint.begin(), vecPoint.end(),
        [](const QPointF& one, const QPointF& other) { return one.x() < other.x(); });
    const double dfLow = range.first->x();
    const double dfWidth = (range.second->x() - dfLow) / nBins;
    std::map<int, QVector<QPointF>> mapBin;
    for (const QPointF& pt : vecPoint) {
        const int nBin = dfWidth > 0 ? std::min(nBins - 1, int((pt.x() - dfLow) / dfWidth)) : 0;
        mapBin[nBin].append(pt);
    }
    for (const auto& [nBin, vecIn] : mapBin) {
        const int nPoints = vecIn.size();
        if (nPoints < 3) {
            continue;
        }
        QPointF ptMean;
        for (const QPointF& pt : vecIn) {
            ptMean += pt / nPoints;
        }
        double dfSquares = 0;
        for (const QPointF& pt : vecIn) {
            dfSquares += (pt.y() - ptMean.y()) * (pt.y() - ptMean.y());
        }
        means.vecMean.append(ptMean);
        means.vecError.append(std::sqrt(dfSquares / (nPoints - 1) / nPoints));
    }
    return means;
}

std::vector<FieldArrow> residualField(const std::vector<SpotResidual>& listResidual, double dfSquare)
{
    std::map<std::pair<int, int>, std::vector<const SpotResidual*>> mapSquare;
    for (const SpotResidual& residual : listResidual) {
        mapSquare[{int(std::floor(residual.place.dfX / dfSquare)),
                   int(std::floor(residual.place.dfY / dfSquare))}]
            .push_back(&residual);
    }
    std::vector<FieldArrow> listArrow;
    for (const auto& [square, listIn] : mapSquare) {
        if (listIn.size() < 3) {
            continue;
        }
        FieldArrow arrow;
        arrow.ptPlace = {(square.first + 0.5) * dfSquare, (square.second + 0.5) * dfSquare};
        for (const SpotResidual* pResidual : listIn) {
            arrow.ptMean += QPointF(pResidual->dfX, pResidual->dfY) / double(listIn.size());
        }
        listArrow.push_back(arrow);
    }
    return listArrow;
}

ResidualPlots::ResidualPlots(QWidget* pParent) : QTabWidget(pParent)
{
    m_pPlotFrame = addPlot(tr("Over the Frame"),
                           tr("Deviations of the peaks over the frame, with their directions: a pattern "
                              "around the beam is a distortion that the geometry does not include."));
    m_pPlotRadius = addPlot(tr("By Radius"), tr("Deviations of the peaks along the radius and along the "
                                                "circle, by their distance from the beam."));
    m_pPlotFrameNumber = addPlot(tr("By Frame"), tr("Deviations of the peaks of each frame along x and y: a "
                                                    "drift that the shifts have not corrected."));
    m_pPlotTilt = addPlot(tr("By Tilt"), tr("Deviations of the peaks along the beam, by the tilt: the mean "
                                            "stays near 0 if tilts and orientation are right."));
    setResiduals({}, {});
}

PlotPanel* ResidualPlots::addPlot(const QString& strTab, const QString& strTip)
{
    auto* pPanel = new PlotPanel(this);
    explainArea(pPanel, strTip);
    setTabToolTip(addTab(pPanel, strTab), strTip);
    connect(pPanel, &PlotPanel::notSaved, this, &ResidualPlots::notSaved);
    return pPanel;
}

void ResidualPlots::setResiduals(const std::vector<SpotResidual>& listResidual, const FrameBounds& bounds)
{
    showField(*m_pPlotFrame, listResidual, bounds);
    QVector<QPointF> vecRadial, vecCircle, vecX, vecY, vecAlong;
    for (const SpotResidual& residual : listResidual) {
        vecRadial.append({residual.radius(), residual.alongRadius()});
        vecCircle.append({residual.radius(), residual.alongCircle()});
        vecX.append({residual.nFrame + 1.0, residual.dfX});
        vecY.append({residual.nFrame + 1.0, residual.dfY});
        vecAlong.append({residual.dfTilt, residual.dfAlong});
    }
    m_pPlotRadius->setTitles({}, tr("Distance from the direct beam (px)"), tr("Residual (px)"));
    showBoth(*m_pPlotRadius, tr("along the radius"), vecRadial, tr("along the circle"), vecCircle);
    m_pPlotFrameNumber->setTitles({}, tr("Frame No."), tr("Residual (px)"));
    showBoth(*m_pPlotFrameNumber, tr("x, to the right"), vecX, tr("y, down"), vecY);
    m_pPlotTilt->setTitles({}, tr("Tilt (°)"), tr("Residual along the beam (px)"));
    m_pPlotTilt->clearSeries();
    m_pPlotTilt->addLevel(0);
    addDots(*m_pPlotTilt, vecAlong, g_colorFaintOther);
    addMeans(*m_pPlotTilt, tr("along the beam"), vecAlong, g_colorOther);
    m_pPlotTilt->showSeries();
}

void ResidualPlots::setFileStem(const QString& strStem)
{
    const std::pair<PlotPanel*, const char*> aPlot[] = {{m_pPlotFrame, "_residuals"},
                                                        {m_pPlotRadius, "_residuals_radius"},
                                                        {m_pPlotFrameNumber, "_residuals_frame"},
                                                        {m_pPlotTilt, "_residuals_tilt"}};
    for (const auto& [pPlot, pszEnding] : aPlot) {
        pPlot->setFileStem(strStem.isEmpty() ? QString() : strStem + QLatin1String(pszEnding));
    }
}

}  // namespace tessera
