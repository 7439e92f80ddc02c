#include "window/integration/qualityplots.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tessera {

namespace {

const QColor g_colorFirst(200, 30, 30);
const QColor g_colorSecond(30, 90, 200);
const QColor g_colorThird(20, 140, 60);

QString tr(const char* pszText)
{
    return QCoreApplication::translate("QualityPlots", pszText);
}

/// 1/d in the middle of a shell, Å⁻¹.
double middleOf(const ShellQuality& shell)
{
    const double dfInner = shell.dfDMax > 0 && std::isfinite(shell.dfDMax) ? 1 / shell.dfDMax : 0;
    return (dfInner + 1 / shell.dfDMin) / 2;
}

PlotSeries ofShells(const MergingQuality& quality, double ShellQuality::*pMember, double dfFactor,
                    const QString& strName, const QColor& color)
{
    PlotSeries series;
    series.kind = PlotSeries::Kind::LineAndPoints;
    series.strName = strName;
    series.color = color;
    for (const ShellQuality& shell : quality.listShell) {
        series.vecPoint.append({middleOf(shell), dfFactor * shell.*pMember});
    }
    return series;
}

/// One number for each frame with observations.
template <class TNumber>
PlotSeries ofFrames(const MergingQuality& quality, PlotSeries::Kind kind, const QColor& color,
                    const TNumber& fnNumber)
{
    PlotSeries series;
    series.kind = kind;
    series.color = color;
    series.nPointSize = 3;
    for (size_t n = 0; n < quality.listFrame.size(); ++n) {
        series.vecPoint.append({double(n + 1), fnNumber(n)});
    }
    return series;
}

/// The line of the overall B through the middle of the points; without points where none was fitted.
PlotSeries wilsonLine(const QVector<QPointF>& vecPoint, double dfB)
{
    PlotSeries series;
    series.color = g_colorSecond;
    if (vecPoint.isEmpty() || !std::isfinite(dfB)) {
        return series;
    }
    QPointF ptMiddle;
    for (const QPointF& pt : vecPoint) {
        ptMiddle += pt / vecPoint.size();
    }
    const auto byX = [](const QPointF& one, const QPointF& other) { return one.x() < other.x(); };
    const auto ends = std::minmax_element(vecPoint.begin(), vecPoint.end(), byX);
    for (const double dfX : {ends.first->x(), ends.second->x()}) {
        series.vecPoint.append({dfX, ptMiddle.y() - 2 * dfB * (dfX - ptMiddle.x())});
    }
    series.strName =
        QCoreApplication::translate("QualityPlots", "B = %1 Å²").arg(QLocale::system().toString(dfB, 'f', 2));
    return series;
}

QString number(double df, int nDecimals)
{
    return std::isfinite(df) ? QLocale::system().toString(df, 'f', nDecimals) : QStringLiteral("–");
}

QString agreementOf(const ShellQuality& quality)
{
    return tr("Rint %1, Rmeas %2, CC1/2 %3")
        .arg(number(quality.dfRInt, 3), number(quality.dfRMeas, 3), number(quality.dfCcHalf, 3));
}

/// How complete the series has become, and what turning further would add.
QualityPlot completenessPlot(const IntegrationResult& result)
{
    const double dfPerCent = 100;
    PlotSeries measured;
    measured.strName = tr("this series");
    measured.color = g_colorFirst;
    const std::vector<double>& listTilt = result.series.listTilt;
    const std::vector<double>& listShare = result.quality.listCompletenessByFrame;
    for (size_t n = 0; n < listShare.size() && n < listTilt.size(); ++n) {
        measured.vecPoint.append({std::abs(listTilt[n] - listTilt.front()), dfPerCent * listShare[n]});
    }
    QualityPlot plot = {QStringLiteral("completeness_by_tilt"),
                        tr("Completeness against the Turn"),
                        tr("Turn from the First Frame, °"),
                        tr("Complete, %"),
                        {measured},
                        {dfPerCent}};
    const double dfTurn = listTilt.empty() ? 0 : std::abs(listTilt.back() - listTilt.front());
    const double dfEnough = 0.999;  // of the best: the rest of half a turn adds nothing
    for (const size_t nSide : {size_t(1), size_t(2)}) {
        PlotSeries further;
        further.strName = nSide == 1 ? tr("turned on") : tr("begun earlier");
        further.color = nSide == 1 ? g_colorSecond : g_colorThird;
        double dfShown = 0;
        for (const std::array<double, 3>& adfPoint : result.forecast.listCurve) {
            if (dfShown >= dfEnough * result.forecast.dfBest) {
                break;
            }
            dfShown = adfPoint[nSide];
            further.vecPoint.append({dfTurn + adfPoint[0], dfPerCent * dfShown});
        }
        if (!further.vecPoint.isEmpty()) {
            plot.vecSeries.append(further);
        }
    }
    return plot;
}

}  // namespace

std::vector<QualityPlot> shellPlots(const IntegrationResult& result)
{
    const MergingQuality& quality = result.quality;
    const QString strX = tr("1/d, Å⁻¹");
    const QString strAfter = tr("after rejection");
    const QString strBefore = tr("before scaling");
    std::vector<QualityPlot> listPlot;
    listPlot.push_back({QStringLiteral("rint_by_resolution"),
                        tr("Agreement of Equivalents"),
                        strX,
                        tr("Rint"),
                        {ofShells(quality, &ShellQuality::dfRInt, 1, strAfter, g_colorFirst),
                         ofShells(result.unscaled, &ShellQuality::dfRInt, 1, strBefore, g_colorSecond)}});
    listPlot.push_back({QStringLiteral("cchalf_by_resolution"),
                        tr("Half-Set Correlation"),
                        strX,
                        tr("CC1/2"),
                        {ofShells(quality, &ShellQuality::dfCcHalf, 1, strAfter, g_colorFirst),
                         ofShells(result.unscaled, &ShellQuality::dfCcHalf, 1, strBefore, g_colorSecond)}});
    const double dfPerCent = 100;
    listPlot.push_back(
        {QStringLiteral("completeness_by_resolution"),
         tr("Completeness"),
         strX,
         tr("Complete, %"),
         {ofShells(quality, &ShellQuality::dfCompleteness, dfPerCent, QString(), g_colorFirst)},
         {dfPerCent}});
    // Reflections are visible down to about this value.
    const double dfWeak = 2;
    listPlot.push_back({QStringLiteral("isigma_by_resolution"),
                        tr("Strength"),
                        strX,
                        tr("Mean I/σ"),
                        {ofShells(quality, &ShellQuality::dfIOverSigma, 1, QString(), g_colorFirst)},
                        {dfWeak}});
    return listPlot;
}

std::vector<QualityPlot> framePlots(const IntegrationResult& result)
{
    const MergingQuality& quality = result.quality;
    const QString strX = tr("Frame No.");
    using Kind = PlotSeries::Kind;
    std::vector<QualityPlot> listPlot;
    listPlot.push_back({QStringLiteral("scale_by_frame"),
                        tr("Scale"),
                        strX,
                        tr("Scale"),
                        {ofFrames(quality, Kind::Line, g_colorFirst,
                                  [&](size_t n) { return quality.listFrame[n].dfScale; })},
                        {1}});
    const std::vector<double>& listDecay = result.scaling.listFrameDecay;
    if (std::any_of(listDecay.begin(), listDecay.end(), [](double df) { return df != 0; })) {
        const double dfNone = std::numeric_limits<double>::quiet_NaN();
        listPlot.push_back(
            {QStringLiteral("decay_by_frame"),
             tr("Decay"),
             strX,
             tr("B, Å²"),
             {ofFrames(quality, Kind::Line, g_colorSecond,
                       [&](size_t n) { return n < listDecay.size() ? listDecay[n] : dfNone; })},
             {0}});
    }
    listPlot.push_back({QStringLiteral("rint_by_frame"),
                        tr("Agreement with the Merged"),
                        strX,
                        tr("Rint"),
                        {ofFrames(quality, Kind::LineAndPoints, g_colorFirst,
                                  [&](size_t n) { return quality.listFrame[n].dfRInt; })}});
    listPlot.push_back({QStringLiteral("observations_by_frame"),
                        tr("Observations"),
                        strX,
                        tr("Observations"),
                        {ofFrames(quality, Kind::Line, g_colorThird,
                                  [&](size_t n) { return double(quality.listFrame[n].nObserved); })}});
    return listPlot;
}

std::vector<QualityPlot> seriesPlots(const IntegrationResult& result)
{
    PlotSeries wilson;
    wilson.kind = PlotSeries::Kind::Points;
    wilson.strName = tr("shells");
    wilson.color = g_colorFirst;
    for (const std::array<double, 2>& adfPoint : result.quality.listWilson) {
        if (std::isfinite(adfPoint[0]) && std::isfinite(adfPoint[1])) {
            wilson.vecPoint.append({adfPoint[0], adfPoint[1]});
        }
    }
    std::vector<QualityPlot> listPlot;
    listPlot.push_back({QStringLiteral("wilson"),
                        tr("Wilson Plot"),
                        tr("(sin θ/λ)², Å⁻²"),
                        tr("ln(I / Σf²)"),
                        {wilson, wilsonLine(wilson.vecPoint, result.quality.dfWilsonB)}});
    listPlot.push_back(completenessPlot(result));
    return listPlot;
}

QStringList summaryOf(const IntegrationResult& result)
{
    const ShellQuality& all = result.quality.overall;
    QStringList listLine;
    QString strSymmetry = tr("Laue class %1").arg(result.chosen.strClass);
    if (result.spaceGroup) {
        strSymmetry += tr(", space group %1").arg(result.spaceGroup->strName);
    }
    strSymmetry += tr("; %1 outliers, error model a = %2, b = %3")
                       .arg(QLocale::system().toString(int(result.scaling.listRejected.size())),
                            number(result.scaling.dfErrorA, 2), number(result.scaling.dfErrorB, 3));
    listLine.append(strSymmetry);
    listLine.append(tr("%1 observations of %2 reflections to %3 Å: complete to %4 %, %5-fold, I/σ %6")
                        .arg(QLocale::system().toString(all.nObserved),
                             QLocale::system().toString(all.nUnique), number(all.dfDMin, 2),
                             number(100 * all.dfCompleteness, 1), number(all.dfMultiplicity, 1),
                             number(all.dfIOverSigma, 1)));
    listLine.append(agreementOf(all) + tr(" (before scaling: %1)").arg(agreementOf(result.unscaled.overall)));
    if (!result.forecast.strText.isEmpty()) {
        listLine.append(result.forecast.strText);
    }
    return listLine;
}

}  // namespace tessera
