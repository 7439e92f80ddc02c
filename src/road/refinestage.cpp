#include "road/stages.h"

#include "road/judgement.h"
#include "road/pairrefinement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace tessera {

namespace {

const double g_dfNoLimit = std::numeric_limits<double>::infinity();
const double g_dfShortestPair = 0.3;  ///< smallest distance of two peaks on a frame, Å⁻¹

/// The greatest diagonal of the bounding box of the peaks on one frame, pixels.
double largestExtent(const QVector<QList<Peak3D>>& vecPeak)
{
    double dfLargest = 0;
    for (const QList<Peak3D>& listPeak : vecPeak) {
        double dfLeft = g_dfNoLimit, dfRight = -g_dfNoLimit, dfTop = g_dfNoLimit, dfBottom = -g_dfNoLimit;
        for (const Peak3D& peak : listPeak) {
            dfLeft = std::min(dfLeft, peak.dfX2D);
            dfRight = std::max(dfRight, peak.dfX2D);
            dfTop = std::min(dfTop, peak.dfY2D);
            dfBottom = std::max(dfBottom, peak.dfY2D);
        }
        if (!listPeak.isEmpty()) {
            dfLargest = std::max(dfLargest, std::hypot(dfRight - dfLeft, dfBottom - dfTop));
        }
    }
    return dfLargest;
}

double medianIntensity(const QVector<QList<Peak3D>>& vecPeak)
{
    std::vector<double> vecIntensity;
    for (const QList<Peak3D>& listPeak : vecPeak) {
        for (const Peak3D& peak : listPeak) {
            vecIntensity.push_back(peak.dfIPoint);
        }
    }
    if (vecIntensity.empty()) {
        return -g_dfNoLimit;
    }
    const auto itMiddle = vecIntensity.begin() + std::ptrdiff_t(vecIntensity.size() / 2);
    std::nth_element(vecIntensity.begin(), itMiddle, vecIntensity.end());
    return *itMiddle;
}

void putInOrder(double& dfLow, double& dfHigh, const char* pszWhat, CRunReport& report)
{
    if (dfLow > dfHigh) {
        report.addMessage(QStringLiteral("Warning: the limits of %1 of the peak pairs are the wrong way "
                                         "round; they are exchanged.")
                              .arg(QLatin1String(pszWhat)),
                          Severity::Error);
        std::swap(dfLow, dfHigh);
    }
}

void choosePairLimits(RoadState& state)
{
    const RoadOptions& options = state.options;
    const QVector<QList<Peak3D>>& vecPeak = state.dataSet.m_vecPeakIndexedOnFrame;
    RefinementParameters& parameters = state.options.refinement;
    if (!options.bWindowDefaults) {
        // The fit of a spot that hardly exceeds its background is governed by the background.
        parameters.m_dfRefineIntensityLow = medianIntensity(vecPeak);
        parameters.m_dfRefineIntensityHigh = g_dfNoLimit;
        parameters.m_dfRefineDStarHigh = largestExtent(vecPeak) * state.dataSet.m_dfPixelSize;
        // Short vectors determine the cell poorly, but in a small pattern some of them are needed.
        parameters.m_dfRefineDStarLow = std::min(g_dfShortestPair, parameters.m_dfRefineDStarHigh / 3);
    }
    takeLimit(options.dfRefineIntensityLow, parameters, &RefinementParameters::m_dfRefineIntensityLow);
    takeLimit(options.dfRefineIntensityHigh, parameters, &RefinementParameters::m_dfRefineIntensityHigh);
    takeLimit(options.dfRefineDStarLow, parameters, &RefinementParameters::m_dfRefineDStarLow);
    takeLimit(options.dfRefineDStarHigh, parameters, &RefinementParameters::m_dfRefineDStarHigh);
    putInOrder(parameters.m_dfRefineIntensityLow, parameters.m_dfRefineIntensityHigh, "the intensity",
               state.report);
    putInOrder(parameters.m_dfRefineDStarLow, parameters.m_dfRefineDStarHigh, "d*", state.report);
}

QString limitText(double dfLimit)
{
    return std::isinf(dfLimit) ? QStringLiteral("any") : QString::number(dfLimit, 'f', 1);
}

void tellPairLimits(const RefinementParameters& parameters, CRunReport& report)
{
    report.addMessage(QStringLiteral("Peak pairs: d* from %1 to %2 Å⁻¹, peaks of intensities from %3 to %4.")
                          .arg(parameters.m_dfRefineDStarLow, 0, 'f', 3)
                          .arg(parameters.m_dfRefineDStarHigh, 0, 'f', 3)
                          .arg(limitText(parameters.m_dfRefineIntensityLow),
                               limitText(parameters.m_dfRefineIntensityHigh)));
}

QString cellText(const CellParameters& cell, const CellParameters& stdErr)
{
    const std::array<double, 6> adfCell = cell.numbers(), adfError = stdErr.numbers();
    static const char* const aszName[] = {"a", "b", "c", "α", "β", "γ"};
    QStringList listPart;
    for (int i = 0; i < 6; ++i) {
        listPart.append(QStringLiteral("%1=%2(%3)%4")
                            .arg(QString::fromUtf8(aszName[i]))
                            .arg(adfCell[i], 0, 'f', i < 3 ? 4 : 3)
                            .arg(adfError[i], 0, 'f', i < 3 ? 4 : 3)
                            .arg(i < 3 ? QStringLiteral(" Å") : QStringLiteral("°")));
    }
    return listPart.join(QStringLiteral(", "));
}

QString pairsText(PairPositions positions)
{
    switch (positions) {
        case PairPositions::WholePixels:
            return QStringLiteral("peak pairs at hunted positions");
        case PairPositions::SubPixels:
            return QStringLiteral("peak pairs at fitted positions");
        case PairPositions::SubPixelsConstant:
            return QStringLiteral("peak pairs at positions fitted beside a constant background");
    }
    return {};
}

StageResult refineFromPairs(RoadState& state, PairPositions positions)
{
    CRoadReport& report = state.report;
    PositionRefinementOptions fit;
    fit.nJobs = state.options.jobs();
    fit.bConstantBackground = positions == PairPositions::SubPixelsConstant;
    RefinementParameters& parameters = state.options.refinement;
    parameters.m_bRefine2D = positions != PairPositions::WholePixels;
    const DifferenceVectorRefinement found = refineCellFromPairs(state.dataSet, parameters, fit, report);
    const QString strPairs = pairsText(positions);
    if (!found.refinement) {
        return report.failed(QStringLiteral("No cell came out of the %1: %2 pairs, %3 difference vectors.")
                                 .arg(strPairs)
                                 .arg(found.nPairs)
                                 .arg(found.listDifference.size()));
    }
    report.addMessage(QStringLiteral("Cell from the %1: %2.")
                          .arg(strPairs, cellText(found.refinement->cell, found.refinement->cellStdErr)),
                      Severity::Milestone);
    judgePairs(found, strPairs, report);
    state.results.refine->listRun.append({positions, found});
    return {};
}

}  // namespace

StageResult runRefineStage(RoadState& state)
{
    beginStage(state, RoadStage::Refine);
    choosePairLimits(state);
    // The statistics of the indexing leave the last space group that they tested in force.
    state.dataSet.m_spaceGroup.setSpaceGroup(state.options.indexing.m_nSpaceGroup);
    const RefinementParameters& parameters = state.options.refinement;
    tellPairLimits(parameters, state.report);
    state.results.refine = RefineResult{parameters.m_dfRefineDStarLow, parameters.m_dfRefineDStarHigh, {}};
    QList<PairPositions> listPositions = {PairPositions::WholePixels, PairPositions::SubPixels};
    if (state.options.bConstantBackground) {
        listPositions.append(PairPositions::SubPixelsConstant);
    }
    for (const PairPositions positions : listPositions) {
        StageResult result = refineFromPairs(state, positions);
        if (!result.finished()) {
            return result;
        }
    }
    return {};
}

}  // namespace tessera
