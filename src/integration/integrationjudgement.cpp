#include "integration/integrationjudgement.h"

#include "integration/equivalents.h"
#include "integration/framemeans.h"
#include "integration/settingcell.h"
#include "integration/wilsonplot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tessera {

namespace {

/// Resets the observations to their measured intensities with the Lorentz factor only.
std::vector<Observation> withoutScales(std::vector<Observation> listObservation)
{
    for (Observation& observation : listObservation) {
        observation.dfScale = 1;
        observation.dfSigmaFactor = 1;
        observation.nFlags &= ~unsigned(FlagOutlier);
    }
    return listObservation;
}

std::vector<Observation> withOutliers(std::vector<Observation> listObservation)
{
    for (Observation& observation : listObservation) {
        observation.nFlags &= ~unsigned(FlagOutlier);
    }
    return listObservation;
}

bool allowsGroup(const LaueCandidate& candidate, int nNumber)
{
    const SpaceGroupRanking ranking = rankSpaceGroups({}, candidate);
    return std::any_of(ranking.listCandidate.begin(), ranking.listCandidate.end(),
                       [&](const SpaceGroupCandidate& group) { return group.nNumber == nNumber; });
}

/// The requested class or space group's class, if the lattice has it; else the proposed one.
LaueCandidate chosenClass(const LaueProposal& proposal, const JudgementOptions& options, CRunReport& report)
{
    if (options.nSpaceGroup == 0 && options.strLaueClass.isEmpty()) {
        return proposal.listCandidate.front();
    }
    for (const LaueCandidate& candidate : proposal.listCandidate) {
        const bool bClass = options.strLaueClass.isEmpty() || candidate.strClass == options.strLaueClass;
        if (bClass && (options.nSpaceGroup == 0 || allowsGroup(candidate, options.nSpaceGroup))) {
            return candidate;
        }
    }
    const QString strWish = options.nSpaceGroup == 0
                                ? QStringLiteral("the Laue class %1").arg(options.strLaueClass)
                                : QStringLiteral("space group %1").arg(options.nSpaceGroup);
    report.addMessage(QStringLiteral("The lattice does not have %1: %2 is used.")
                          .arg(strWish, proposal.listCandidate.front().strClass),
                      Severity::Warning);
    return proposal.listCandidate.front();
}

/// The requested space group, or the first of the ranking. Of groups with equal absences, which the data do
/// not distinguish, a centrosymmetric one is preferred, as most crystals are centrosymmetric.
std::optional<SpaceGroupCandidate> chosenGroup(SpaceGroupRanking& ranking, int nNumber)
{
    std::vector<SpaceGroupCandidate>& list = ranking.listCandidate;
    if (list.empty()) {
        return std::nullopt;
    }
    const auto itWish = std::find_if(list.begin(), list.end(), [&](const SpaceGroupCandidate& candidate) {
        return candidate.nNumber == nNumber;
    });
    if (itWish != list.end()) {
        std::rotate(list.begin(), itWish, itWish + 1);
        return list.front();
    }
    const auto itCentric = std::find_if(list.begin(), list.end(), [&](const SpaceGroupCandidate& candidate) {
        return candidate.bCentric && candidate.dfLikelihood == list.front().dfLikelihood;
    });
    return itCentric == list.end() ? list.front() : *itCentric;
}

double leastSpeed(const std::vector<Observation>& listObservation)
{
    double dfLeast = std::numeric_limits<double>::infinity();
    for (const Observation& observation : listObservation) {
        if (isUsable(observation) && observation.dfSpeed > 0) {
            dfLeast = std::min(dfLeast, observation.dfSpeed);
        }
    }
    return std::isfinite(dfLeast) ? dfLeast : 0;
}

void judgeMerged(const JudgementOptions& options, IntegrationResult& result)
{
    const std::vector<Observation>& list = result.integrated.listObservation;
    const int nFrames = result.series.frameCount();
    const auto judge = [&](const std::vector<Observation>& listObservation) {
        return judgeMerging(listObservation, result.chosen.symmetry, result.chosen.cell, nFrames,
                            options.dfDMin, options.nShells);
    };
    result.unscaled = judge(withoutScales(list));
    result.scaled = judge(withOutliers(list));
    result.quality = judge(list);
    result.spaceGroups = rankSpaceGroups(result.quality.listMerged, result.chosen);
    result.spaceGroup = chosenGroup(result.spaceGroups, options.nSpaceGroup);
    takeWilsonPlot(result);
    result.forecast = forecastCompleteness(result.quality.listMerged, result.series, result.chosen.symmetry,
                                           result.chosen.cell, result.quality.overall.dfDMin,
                                           leastSpeed(list), options.dfGoal);
}

void tellJudgement(const IntegrationResult& result, CRunReport& report)
{
    const ShellQuality& overall = result.quality.overall;
    report.addMessage(QStringLiteral("Laue class %1 (likelihood %2): Rint %3, CC1/2 %4, completeness %5, "
                                     "multiplicity %6, I/sigma %7 to %8 Å.")
                          .arg(result.chosen.strClass)
                          .arg(result.chosen.dfLikelihood, 0, 'f', 2)
                          .arg(overall.dfRInt, 0, 'f', 3)
                          .arg(overall.dfCcHalf, 0, 'f', 3)
                          .arg(overall.dfCompleteness, 0, 'f', 3)
                          .arg(overall.dfMultiplicity, 0, 'f', 1)
                          .arg(overall.dfIOverSigma, 0, 'f', 1)
                          .arg(overall.dfDMin, 0, 'f', 2));
    QStringList listName;
    const int nMost = 5;
    for (const SpaceGroupCandidate& candidate : result.spaceGroups.listCandidate) {
        if (listName.size() < nMost) {
            listName.append(QStringLiteral("%1 (%2, %3)")
                                .arg(candidate.strName)
                                .arg(candidate.nNumber)
                                .arg(candidate.dfLikelihood, 0, 'f', 2));
        }
    }
    report.addMessage(
        QStringLiteral("Space groups by their absences: %1.").arg(listName.join(QStringLiteral(", "))));
    if (!result.forecast.strText.isEmpty()) {
        report.addMessage(result.forecast.strText);
    }
}

}  // namespace

IntegrationResult judgeIntegration(const IntegratedSeries& integrated, const SeriesGeometry& series,
                                   const JudgedLattice& lattice, const JudgementOptions& options,
                                   CRunReport& report)
{
    IntegrationResult result;
    result.series = series;
    result.integrated = integrated;
    std::vector<Observation>& list = result.integrated.listObservation;
    const int nFrames = series.frameCount();
    scaleByFrameMeans(list, nFrames);
    result.laue = proposeLaueClass(list, lattice.listType, lattice.cell);
    result.chosen = chosenClass(result.laue, options, report);
    result.cell = result.chosen.cell;
    result.cellErrors = errorsOfSetting(result.chosen.symmetry, result.chosen.system, lattice.cell,
                                        lattice.cellErrors);
    result.scaling = scaleObservations(list, result.chosen.symmetry, nFrames, options.scaling, report);
    judgeMerged(options, result);
    if (result.quality.listMerged.empty()) {
        report.addMessage(
            QStringLiteral("No reflection was measured: there is nothing to scale or to merge."),
            Severity::Warning);
    } else {
        tellJudgement(result, report);
    }
    return result;
}

void takeWilsonPlot(IntegrationResult& result)
{
    const gemmi::SpaceGroup* pGroup = result.spaceGroup ? gemmi::find_spacegroup_by_name(
                                                              result.spaceGroup->strName.toStdString())
                                                        : nullptr;
    if (!pGroup) {
        return;
    }
    const gemmi::GroupOps ops = pGroup->operations();
    WilsonPlot plot = wilsonPlot(result.quality.listMerged, result.chosen.symmetry, result.chosen.cell, &ops);
    result.quality.listWilson = std::move(plot.listPoint);
    result.quality.dfWilsonB = plot.dfB;
}

}  // namespace tessera
