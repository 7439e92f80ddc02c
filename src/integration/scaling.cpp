#include "integration/scaling.h"

#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "integration/fadedframes.h"
#include "integration/framemeans.h"
#include "integration/lorentzfactor.h"
#include "integration/outlierrejection.h"
#include "integration/scalecurves.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tessera {

namespace {

int frameOf(const Observation& observation, int nFrames)
{
    return std::clamp(int(std::lround(std::clamp(observation.dfFrame, -1.0, double(nFrames)))), 0,
                      std::max(0, nFrames - 1));
}

/// Marks the frames with observations that belong to a group.
std::vector<char> framesInUse(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                              int nFrames)
{
    std::vector<char> listUsed(size_t(std::max(0, nFrames)), 0);
    for (const int n : groups.listMember) {
        if (nFrames > 0) {
            listUsed[size_t(frameOf(listObservation[n], nFrames))] = 1;
        }
    }
    return listUsed;
}

/// Scale and decay of each frame, and the logarithm of the factor by which all scales are divided.
double putFrameScales(const ScaleCurves& curves, const std::vector<char>& listUsed, ScalingResult& result)
{
    double dfSum = 0;
    int nCount = 0;
    const double dfFirst = curves.decayB(0);
    for (size_t n = 0; n < listUsed.size(); ++n) {
        const double dfFrame = double(n);
        result.listFrameDecay[n] = curves.decayB(dfFrame) - dfFirst;
        // The decay of the first frame is common to all frames, so its value at the middle is part of the
        // scale.
        result.listFrameScale[n] = curves.scaleAtZero(dfFrame);
        if (listUsed[n]) {
            dfSum += result.listFrameScale[n];
            ++nCount;
        }
    }
    const double dfMean = nCount > 0 ? dfSum / nCount : 0;
    for (double& df : result.listFrameScale) {
        df = std::exp(df - dfMean);
    }
    return dfMean;
}

void putScales(const ScaleCurves& curves, double dfMean, std::vector<Observation>& listObservation)
{
    const double dfFirst = curves.decayB(0);
    for (Observation& observation : listObservation) {
        if (!std::isfinite(observation.dfFrame) || !std::isfinite(observation.dfDStar)) {
            continue;
        }
        // The decay is not extrapolated beyond the resolution range of the fit.
        const double dfSquare = std::min(observation.dfDStar * observation.dfDStar / 4,
                                         curves.dfMiddle + curves.dfHalfRange);
        const double dfLog = curves.scaleAtZero(observation.dfFrame) - dfMean +
                             2 * (curves.decayB(observation.dfFrame) - dfFirst) * dfSquare;
        observation.dfScale = std::exp(dfLog);
    }
}

/// Rejects observations on frames that show less than a fifth of the median frame: the crystal has left the
/// beam or is damaged, and the scale would amplify noise to the size of intensities.
void rejectFadedFrames(const std::vector<double>& listScale, const EquivalentGroups& groups,
                       std::vector<Observation>& listObservation, ScalingResult& result)
{
    const int nFrames = int(listScale.size());
    const std::vector<char> listFaded = fadedFrames(listScale, framesInUse(listObservation, groups, nFrames));
    for (size_t n = 0; n < listObservation.size(); ++n) {
        Observation& observation = listObservation[n];
        if (groups.listGroup[n] >= 0 && (observation.nFlags & FlagOutlier) == 0 &&
            listFaded[size_t(frameOf(observation, nFrames))]) {
            observation.nFlags |= FlagOutlier;
            result.listRejected.push_back(
                {int(n), 0, QStringLiteral("its frame shows less than a fifth of the median one")});
        }
    }
    std::stable_sort(result.listRejected.begin(), result.listRejected.end(),
                     [](const RejectedObservation& one, const RejectedObservation& other) {
                         return one.nObservation < other.nObservation;
                     });
}

/// Whether Friedel mates are the only equivalents.
bool isTriclinic(const ObservationSymmetry& symmetry)
{
    return symmetry.ops.sym_ops.size() <= 2;
}

void resetCorrections(std::vector<Observation>& listObservation)
{
    for (Observation& observation : listObservation) {
        observation.dfScale = 1;
        observation.dfSigmaFactor = 1;
        observation.nFlags &= ~unsigned(FlagOutlier);
    }
    applyLorentzFactor(listObservation);
}

/// Drops scale or decay if equivalents that were left out of the fit do not confirm it.
void takeChoice(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                std::optional<ScaleCurves>& curves, bool& bDecay, CRunReport& report)
{
    const ErrorModel errors = fitErrorModel(listObservation, groups, DeviationWidth::Core);
    const CurveChoice choice = chooseCurves(listObservation, groups, errors, bDecay, *curves);
    bDecay = choice.bDecay;
    curves->dfStep = choice.dfStep;
    if (!choice.bScale) {
        curves.reset();
        report.addMessage(
            QStringLiteral("Scales along the series do not improve the agreement of equivalents that were "
                           "left out of their fit: none are used."));
    }
}

std::vector<double> scalesAtMiddle(const ScaleCurves& curves, int nFrames)
{
    std::vector<double> listScale;
    listScale.reserve(size_t(std::max(0, nFrames)));
    for (int n = 0; n < nFrames; ++n) {
        listScale.push_back(std::exp(curves.scale.value(n)));
    }
    return listScale;
}

void tellScaling(const ScalingResult& result, int nKnots, CRunReport& report)
{
    if (nKnots > 0) {
        const auto [itLeast, itMost] = std::minmax_element(result.listFrameScale.begin(),
                                                           result.listFrameScale.end());
        report.addMessage(QStringLiteral("Scales of the frames: %1 to %2, from %3 observations on %4 knots.")
                              .arg(*itLeast, 0, 'f', 3)
                              .arg(*itMost, 0, 'f', 3)
                              .arg(result.nUsed)
                              .arg(nKnots));
    }
    report.addMessage(
        QStringLiteral("Error model sigma'² = A² (sigma² + (B I)²) with A = %1, B = %2; %3 outliers.")
            .arg(result.dfErrorA, 0, 'f', 3)
            .arg(result.dfErrorB, 0, 'f', 4)
            .arg(result.listRejected.size()));
}

}  // namespace

ScalingResult scaleObservations(std::vector<Observation>& listObservation,
                                const ObservationSymmetry& symmetry, int nFrames,
                                const ScalingOptions& options, CRunReport& report)
{
    ScalingResult result;
    result.listFrameScale.assign(size_t(std::max(0, nFrames)), 1.0);
    result.listFrameDecay.assign(size_t(std::max(0, nFrames)), 0.0);
    resetCorrections(listObservation);
    const EquivalentGroups groups = groupEquivalents(listObservation, symmetry, options.mates);
    std::optional<ScaleCurves> curves;
    bool bDecay = options.bDecay;
    if (options.bScale && isTriclinic(symmetry)) {
        result.listFrameScale = frameMeanScales(listObservation, nFrames);
        putFrameScales(result.listFrameScale, listObservation);
    } else if (options.bScale) {
        curves = emptyScaleCurves(listObservation, groups, nFrames);
        if (!curves) {
            report.addMessage(QStringLiteral("Too few equivalent observations for scales along the series."));
        } else {
            takeChoice(listObservation, groups, curves, bDecay, report);
        }
    }
    const std::vector<char> listUsed = framesInUse(listObservation, groups, nFrames);
    // Initially, an error of a tenth of the intensity keeps strong reflections from dominating.
    ErrorModel errors = {1, 0.1};
    const int nRounds = 4;
    for (int nRound = 0; nRound < nRounds && report.goOn(); ++nRound) {
        if (curves) {
            result.nUsed = fitScaleCurves(listObservation, groups, errors, bDecay, *curves);
            putScales(*curves, putFrameScales(*curves, listUsed, result), listObservation);
        }
        errors = fitErrorModel(listObservation, groups, DeviationWidth::Core);
        if (options.dfRejection > 0) {
            result.listRejected = rejectOutliers(listObservation, groups, errors, options.dfRejection);
        }
    }
    if (options.dfRejection > 0 && nFrames > 0) {
        rejectFadedFrames(curves ? scalesAtMiddle(*curves, nFrames) : result.listFrameScale, groups,
                          listObservation, result);
    }
    errors = fitErrorModel(listObservation, groups);
    applyErrorModel(groups, errors, listObservation);
    result.dfErrorA = errors.dfA;
    result.dfErrorB = errors.dfB;
    tellScaling(result, curves ? curves->scale.coefficientCount() : 0, report);
    return result;
}

}  // namespace tessera
