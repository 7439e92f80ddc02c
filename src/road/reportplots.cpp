#include "road/reportplots.h"

#include "refinement/geometryofseries.h"
#include "refinement/spotresiduals.h"

#include <cmath>
#include <limits>

namespace tessera {

namespace {

const QString g_strFrame = QStringLiteral("frame");

/// The middle of a shell in 1/d; the inner limit of the first shell may be infinite in d.
double middleOf(const ShellQuality& shell)
{
    const double dfInner = std::isfinite(shell.dfDMax) && shell.dfDMax > 0 ? 1 / shell.dfDMax : 0;
    return (dfInner + 1 / shell.dfDMin) / 2;
}

template <typename FnValue>
SvgSeries shellSeries(const QString& strName, const IntegrationResult& result, FnValue fnValue)
{
    SvgSeries series{strName, {}, true, true};
    for (const ShellQuality& shell : result.quality.listShell) {
        series.listPoint.emplace_back(middleOf(shell), fnValue(shell));
    }
    return series;
}

SvgSeries residualsByFrame(const QString& strName, const std::vector<SpotResidual>& listResidual, int nFrames)
{
    std::vector<double> listSum(nFrames, 0), listCount(size_t(nFrames), 0);
    for (const SpotResidual& residual : listResidual) {
        if (residual.nFrame >= 0 && residual.nFrame < nFrames) {
            listSum[residual.nFrame] += residual.dfX * residual.dfX + residual.dfY * residual.dfY;
            listCount[residual.nFrame] += 2;  // in one direction, like the rms in the log
        }
    }
    SvgSeries series{strName, {}, true, false};
    for (int n = 0; n < nFrames; ++n) {  // a frame without spots gives 0/0, a gap in the curve
        series.listPoint.emplace_back(n + 1, std::sqrt(listSum[n] / listCount[n]));
    }
    return series;
}

}  // namespace

SvgPlot driftPlot(const SeriesData& series)
{
    SvgPlot plot{
        QStringLiteral("Drift of the direct beam"), g_strFrame, QStringLiteral("shift / px"), {}, {}, {}};
    plot.listSeries = {{QStringLiteral("x"), {}}, {QStringLiteral("y"), {}}};
    for (int n = 0; n < series.m_listShift.size(); ++n) {
        plot.listSeries[0].listPoint.emplace_back(n + 1, series.m_listShift[n].x());
        plot.listSeries[1].listPoint.emplace_back(n + 1, series.m_listShift[n].y());
    }
    return plot;
}

SvgPlot peaksPlot(const SeriesData& series)
{
    SvgPlot plot{QStringLiteral("Peaks on the frames"), g_strFrame, QStringLiteral("peaks"), {}, 0.0, {}};
    plot.listSeries = {{QStringLiteral("peaks"), {}}};
    for (int n = 0; n < series.m_listPeakFrame.size(); ++n) {
        plot.listSeries[0].listPoint.emplace_back(n + 1, series.m_listPeakFrame[n].size());
    }
    return plot;
}

SvgPlot residualsPlot(const RoadState& state)
{
    SvgPlot plot{QStringLiteral("Residuals of the refined geometry"),
                 g_strFrame,
                 QStringLiteral("rms / px"),
                 {},
                 0.0,
                 {}};
    const std::optional<GeometryRefinement>& refinement = state.results.geometry;
    if (!refinement || !refinement->done()) {
        return plot;
    }
    const std::vector<GeometrySpot> listSpot = spotsOfModel(geometrySpots(state.dataSet), refinement->before,
                                                            refinement->best());
    const int nFrames = state.dataSet.m_listFrameFile.size();
    plot.listSeries = {
        residualsByFrame(QStringLiteral("after"), spotResiduals(listSpot, refinement->best().geometry),
                         nFrames),
        residualsByFrame(QStringLiteral("before"), spotResiduals(listSpot, refinement->before), nFrames)};
    return plot;
}

SvgPlot agreementPlot(const IntegrationResult& result)
{
    SvgPlot plot{QStringLiteral("Agreement by resolution"),
                 QStringLiteral("1/d / Å⁻¹"),
                 QStringLiteral("Rint, CC1/2"),
                 {},
                 0.0,
                 1.0};
    plot.listSeries = {
        shellSeries(QStringLiteral("Rint"), result, [](const ShellQuality& shell) { return shell.dfRInt; }),
        shellSeries(QStringLiteral("CC1/2"), result,
                    [](const ShellQuality& shell) { return shell.dfCcHalf; })};
    return plot;
}

SvgPlot completenessPlot(const IntegrationResult& result)
{
    SvgPlot plot{QStringLiteral("Completeness by resolution"),
                 QStringLiteral("1/d / Å⁻¹"),
                 QStringLiteral("per cent"),
                 {},
                 0.0,
                 100.0};
    plot.listSeries = {shellSeries(QStringLiteral("completeness"), result,
                                   [](const ShellQuality& shell) { return 100 * shell.dfCompleteness; })};
    return plot;
}

SvgPlot scalePlot(const IntegrationResult& result)
{
    SvgPlot plot{QStringLiteral("Scale of the frames"), g_strFrame, QStringLiteral("scale"), {}, 0.0, {}};
    plot.listSeries = {{QStringLiteral("scale"), {}}};
    const std::vector<double>& listScale = result.scaling.listFrameScale;
    for (size_t n = 0; n < listScale.size(); ++n) {
        plot.listSeries[0].listPoint.emplace_back(double(n + 1), listScale[n]);
    }
    return plot;
}

}  // namespace tessera
