#include "crystals/mergedjudgement.h"

#include "integration/laueclass.h"
#include "integration/reflectionflags.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace tessera {

namespace {

/// Passes only warnings: remarks of the judgement about the rotation of one crystal are not valid for many.
class CWarningsAlone : public CRunReport {
public:
    explicit CWarningsAlone(CRunReport& report) : m_report(report) {}
    void addMessage(const QString& strText, Severity severity) override
    {
        if (severity == Severity::Warning || severity == Severity::Error) {
            m_report.addMessage(strText, severity);
        }
    }
    bool goOn() override { return m_report.goOn(); }

private:
    CRunReport& m_report;
};

IntegrationResult judge(std::vector<Observation>&& listObservation, const MeanCell& cell, size_t nCrystals,
                        double dfWavelength, const CrystalMergeOptions& options, CRunReport& report)
{
    IntegratedSeries integrated;
    integrated.listObservation = std::move(listObservation);
    for (const Observation& observation : integrated.listObservation) {
        integrated.dfMaxDStar = std::max(integrated.dfMaxDStar, observation.dfDStar);
    }
    SeriesGeometry series;
    series.listTilt.assign(nCrystals, 0.0);
    series.listBeam.assign(nCrystals, FramePlace());
    series.geometry.dfWavelength = dfWavelength;
    JudgedLattice lattice;
    lattice.cell = cell.mean;
    const double dfRoot = std::sqrt(double(std::max<size_t>(nCrystals, 1)));
    std::array<double, 6> adfErrors = cell.spread.numbers();
    for (double& df : adfErrors) {
        df /= dfRoot;
    }
    lattice.cellErrors = cellOfNumbers(adfErrors);
    JudgementOptions judgement = options.judgement;
    judgement.scaling.bScale = false;
    judgement.scaling.bDecay = false;
    if (judgement.dfDMin * integrated.dfMaxDStar < 1) {
        if (judgement.dfDMin > 0) {
            report.addMessage(
                QStringLiteral("Nothing was measured beyond %1 Å: this is the limit, instead of %2 Å.")
                    .arg(1 / integrated.dfMaxDStar, 0, 'f', 3)
                    .arg(judgement.dfDMin, 0, 'f', 3));
        }
        judgement.dfDMin = 0;
    }
    CWarningsAlone warnings(report);
    IntegrationResult result = judgeIntegration(integrated, series, lattice, judgement, warnings);
    result.forecast = {};  // the forecast assumes more tilts of a single crystal
    return result;
}

/// What the crystals said before their scales: the judgement knows them as they come to it.
void judgeUnscaled(const CrystalMergeOptions& options, MergedCrystals& merged)
{
    IntegrationResult& result = merged.result;
    std::vector<Observation> list = result.integrated.listObservation;
    for (Observation& observation : list) {
        const double dfFactor = merged.listScale[observation.nFirstFrame].factor(observation.dfDStar *
                                                                                 observation.dfDStar / 4);
        observation.dfIntensity /= dfFactor;
        observation.dfSigma /= dfFactor;
        observation.dfScale = 1;
        observation.dfSigmaFactor = 1;
        observation.nFlags &= ~unsigned(FlagOutlier);
    }
    result.unscaled = judgeMerging(list, result.chosen.symmetry, result.chosen.cell,
                                   result.series.frameCount(), 1 / result.integrated.dfMaxDStar,
                                   options.judgement.nShells);
}

bool isAsked(const CrystalMergeOptions& options)
{
    return !options.judgement.strLaueClass.isEmpty() || options.judgement.nSpaceGroup > 0;
}

/// If the intensities do not have the symmetry of the class, reflections that are not equivalent are merged:
/// many are rejected as outliers, and the remaining ones agree because of that rejection.
void tellWrongClass(const IntegrationResult& result, const CrystalMergeOptions& options, CRunReport& report)
{
    const double dfMostOutliers = 0.05;  // many times what the rejection takes of Gaussian errors
    const size_t nObserved = result.integrated.listObservation.size();
    const size_t nRejected = result.scaling.listRejected.size();
    if (double(nRejected) > dfMostOutliers * double(nObserved)) {
        report.addMessage(
            QStringLiteral("%1 of %2 observations (%3 %) are rejected as outliers: the agreement "
                           "is that of the others alone, and the symmetry may be too high.")
                .arg(nRejected)
                .arg(nObserved)
                .arg(100.0 * double(nRejected) / double(nObserved), 0, 'f', 1),
            Severity::Warning);
    }
    const bool bAsked = isAsked(options);
    for (const LaueCandidate& candidate : result.laue.listCandidate) {
        if (bAsked && result.chosen.dfLikelihood < 0.01 && candidate.dfLikelihood > 0.5) {
            report.addMessage(
                QStringLiteral("The Laue class %1 that was asked for is not that of the intensities: its "
                               "likelihood is %2, that of %3 is %4.")
                    .arg(result.chosen.strClass, QString::number(result.chosen.dfLikelihood, 'g', 2),
                         candidate.strClass, QString::number(candidate.dfLikelihood, 'f', 2)),
                Severity::Warning);
        }
    }
}

/// Of each class how much likelier the single crystals are to have it than the chosen one.
struct ClassEvidence {
    int nOperations = 0;
    double dfLog = 0;  ///< logarithm of the ratio, all crystals together
    int nFor = 0;      ///< crystals of which it is twice as likely
    int nAgainst = 0;  ///< and half as likely
};

using ClassEvidences = std::map<QString, ClassEvidence>;

void addCrystal(const LaueProposal& proposal, const QString& strChosen, ClassEvidences& mapEvidence)
{
    const double dfLeast = 1e-3;  // more no single crystal is believed
    std::map<QString, double> mapLikelihood;
    for (const LaueCandidate& candidate : proposal.listCandidate) {
        // Candidates of the same class with other axes in the lattice belong to another setting.
        double& dfBest = mapLikelihood[candidate.strClass];
        dfBest = std::max({dfBest, candidate.dfLikelihood, dfLeast});
        mapEvidence[candidate.strClass].nOperations = candidate.nOperations;
    }
    const auto itChosen = mapLikelihood.find(strChosen);
    for (const auto& [strClass, dfLikelihood] : mapLikelihood) {
        const double dfLog = itChosen == mapLikelihood.end() ? 0 : std::log(dfLikelihood / itChosen->second);
        ClassEvidence& evidence = mapEvidence[strClass];
        evidence.dfLog += dfLog;
        evidence.nFor += dfLog > std::log(2.0) ? 1 : 0;
        evidence.nAgainst += dfLog < -std::log(2.0) ? 1 : 0;
    }
}

/// Crystals of both alternatives of the indices look more symmetric together than each of them is, and a
/// class that was asked for makes the alternatives one. The equivalents within single crystals tell.
void tellMixedSettings(const IntegrationResult& result, const CrystalMergeOptions& options,
                       const MergedCrystals& merged, CRunReport& report)
{
    if (!isAsked(options) || std::count(merged.listUsed.begin(), merged.listUsed.end(), 1) < 2) {
        return;
    }
    std::map<int, std::vector<Observation>> mapOfCrystal;
    for (const Observation& observation : result.integrated.listObservation) {
        mapOfCrystal[observation.nFirstFrame].push_back(observation);
        mapOfCrystal[observation.nFirstFrame].back().nFlags &= ~unsigned(FlagOutlier);
    }
    ClassEvidences mapEvidence;
    for (const auto& [nCrystal, list] : mapOfCrystal) {
        if (!report.goOn()) {
            return;
        }
        addCrystal(proposeLaueClass(list, {}, merged.cellMean), result.chosen.strClass, mapEvidence);
    }
    const double dfEnough = std::log(50.0);
    const auto itBest = std::max_element(
        mapEvidence.begin(), mapEvidence.end(),
        [](const auto& one, const auto& other) { return one.second.dfLog < other.second.dfLog; });
    if (itBest == mapEvidence.end() || itBest->second.dfLog < dfEnough ||
        itBest->second.nFor < 2 * itBest->second.nAgainst + 1 ||
        itBest->second.nOperations >= result.chosen.nOperations) {
        return;
    }
    report.addMessage(
        QStringLiteral(
            "Equivalents of the Laue class %1 that was asked for do not agree within the single crystals, "
            "whose intensities have %2: the merged intensities are means over the possible indexings.")
            .arg(result.chosen.strClass, itBest->first),
        Severity::Warning);
}

}  // namespace

void judgeMerged(const std::vector<Crystal>& listCrystal, std::vector<Observation>&& listObservation,
                 const MeanCell& cell, double dfWavelength, const CrystalMergeOptions& options,
                 CRunReport& report, MergedCrystals& merged)
{
    merged.cellMean = cell.mean;
    merged.cellSpread = cell.spread;
    merged.result = judge(std::move(listObservation), cell, merged.listSettled.size(), dfWavelength, options,
                          report);
    merged.result.cellErrors = errorsOfMean(listCrystal, merged);
    judgeUnscaled(options, merged);
    tellWrongClass(merged.result, options, report);
    tellMixedSettings(merged.result, options, merged, report);
}

}  // namespace tessera
