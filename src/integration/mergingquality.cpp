#include "integration/mergingquality.h"

#include "integration/equivalents.h"
#include "integration/mergedgroups.h"
#include "integration/possiblereflections.h"
#include "integration/unitcell.h"
#include "integration/wilsonplot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace tessera {

namespace {

const double g_dfNone = std::numeric_limits<double>::quiet_NaN();

/// Shells of equal volume of reciprocal space, from the origin to the limit.
class CShells {
public:
    CShells(double dfDMin, int nShells) : m_dfDMin(dfDMin), m_nShells(std::max(1, nShells)) {}

    int shellOf(double dfDStar) const
    {
        return std::clamp(int(std::pow(dfDStar * m_dfDMin, 3) * m_nShells), 0, m_nShells - 1);
    }
    /// d of the outer limit; that of shell -1 is not finite.
    double outerLimit(int nShell) const { return m_dfDMin * std::cbrt(double(m_nShells) / (nShell + 1)); }
    int count() const { return m_nShells; }

private:
    double m_dfDMin;
    int m_nShells;
};

ShellQuality qualityOf(const CAgreement& agreement, int nPossible)
{
    ShellQuality quality;
    quality.nObserved = agreement.observedCount();
    quality.nUnique = agreement.uniqueCount();
    quality.nPossible = nPossible;
    quality.dfCompleteness = nPossible > 0 ? double(quality.nUnique) / nPossible : g_dfNone;
    quality.dfMultiplicity = agreement.multiplicity();
    quality.dfIOverSigma = agreement.meanIOverSigma();
    quality.dfRInt = agreement.rInt();
    quality.dfRMeas = agreement.rMeas();
    quality.dfRPim = agreement.rPim();
    quality.dfCcHalf = agreement.ccHalf();
    return quality;
}

/// The frame on which a passage is complete.
int lastFrameOf(const Observation& observation, int nFrames)
{
    const double dfLast = observation.nLastFrame >= observation.nFirstFrame && observation.nLastFrame >= 0
                              ? observation.nLastFrame
                              : std::ceil(observation.dfFrame);
    return int(std::clamp(dfLast, 0.0, double(std::max(0, nFrames - 1))));
}

int middleFrameOf(const Observation& observation, int nFrames)
{
    return int(std::clamp(std::round(observation.dfFrame), 0.0, double(std::max(0, nFrames - 1))));
}

std::vector<FrameQuality> qualityByFrame(const std::vector<Observation>& listObservation,
                                         const EquivalentGroups& groups,
                                         const std::vector<MergedGroup>& listMerged, int nFrames)
{
    struct Sums {
        double dfLogScale = 0;
        double dfDeviations = 0;
        double dfMeans = 0;
        double dfIOverSigma = 0;
    };
    std::vector<FrameQuality> listFrame(size_t(std::max(0, nFrames)));
    std::vector<Sums> listSums(listFrame.size());
    for (const int n : groups.listMember) {
        const Observation& observation = listObservation[n];
        if (nFrames <= 0) {
            break;
        }
        const auto nFrame = size_t(middleFrameOf(observation, nFrames));
        const MergedGroup& merged = listMerged[size_t(groups.listGroup[n])];
        Sums& sums = listSums[nFrame];
        ++listFrame[nFrame].nObserved;
        sums.dfLogScale += std::log(std::max(observation.dfScale, std::numeric_limits<double>::min()));
        sums.dfIOverSigma += observation.corrected() / observation.correctedSigma();
        if (merged.nObserved > 1) {
            sums.dfDeviations += std::abs(observation.corrected() - merged.dfIntensity);
            sums.dfMeans += merged.dfIntensity;
        }
    }
    for (size_t n = 0; n < listFrame.size(); ++n) {
        FrameQuality& frame = listFrame[n];
        frame.dfScale = frame.nObserved > 0 ? std::exp(listSums[n].dfLogScale / frame.nObserved) : 1;
        frame.dfIOverSigma = frame.nObserved > 0 ? listSums[n].dfIOverSigma / frame.nObserved : g_dfNone;
        frame.dfRInt = listSums[n].dfMeans > 0 ? listSums[n].dfDeviations / listSums[n].dfMeans : g_dfNone;
    }
    return listFrame;
}

std::vector<double> completenessByFrame(const std::vector<Observation>& listObservation,
                                        const EquivalentGroups& groups, int nFrames, int nPossible)
{
    std::vector<double> listCompleteness(size_t(std::max(0, nFrames)), 0.0);
    if (nFrames <= 0) {
        return listCompleteness;
    }
    for (int nGroup = 0; nGroup < groups.count(); ++nGroup) {
        int nFirst = nFrames - 1;
        for (int n = groups.listStart[nGroup]; n < groups.listStart[size_t(nGroup) + 1]; ++n) {
            nFirst = std::min(nFirst, lastFrameOf(listObservation[size_t(groups.listMember[n])], nFrames));
        }
        listCompleteness[nFirst] += 1;
    }
    double dfSum = 0;
    for (double& df : listCompleteness) {
        dfSum += df;
        df = nPossible > 0 ? dfSum / nPossible : g_dfNone;
    }
    return listCompleteness;
}

/// Removes observations beyond the limit from the groups, since copying the list would be expensive.
EquivalentGroups withinLimit(const EquivalentGroups& groups, const gemmi::UnitCell& cell, double dfDMin)
{
    EquivalentGroups within;
    within.listGroup.assign(groups.listGroup.size(), -1);
    const double dfMost = 1 / (dfDMin * dfDMin) * (1 + 2e-6);
    for (size_t nGroup = 0; nGroup < size_t(groups.count()); ++nGroup) {
        const double dfSquare = cell.calculate_1_d2(groups.listIndex[nGroup]);
        if (!(dfSquare > 0) || dfSquare > dfMost) {
            continue;
        }
        within.listStart.push_back(int(within.listMember.size()));
        within.listIndex.push_back(groups.listIndex[nGroup]);
        for (int n = groups.listStart[nGroup]; n < groups.listStart[nGroup + 1]; ++n) {
            within.listMember.push_back(groups.listMember[n]);
            within.listGroup[size_t(groups.listMember[n])] = within.count() - 1;
        }
    }
    within.listStart.push_back(int(within.listMember.size()));
    return within;
}

double limitOf(const EquivalentGroups& groups, const gemmi::UnitCell& cell)
{
    double dfMost = 0;
    for (const auto& anIndex : groups.listIndex) {
        dfMost = std::max(dfMost, cell.calculate_1_d2(anIndex));
    }
    return dfMost > 0 ? 1 / std::sqrt(dfMost) : 0;
}

void putShells(const CShells& shells, const std::vector<CAgreement>& listAgreement,
               const std::vector<int>& listPossible, double dfDMax, MergingQuality& quality)
{
    for (int n = 0; n < shells.count(); ++n) {
        ShellQuality shell = qualityOf(listAgreement[n], listPossible[n]);
        shell.dfDMax = n == 0 ? std::max(dfDMax, shells.outerLimit(0)) : shells.outerLimit(n - 1);
        shell.dfDMin = shells.outerLimit(n);
        quality.listShell.push_back(shell);
    }
    quality.overall.dfDMax = quality.listShell.front().dfDMax;
    quality.overall.dfDMin = quality.listShell.back().dfDMin;
}

}  // namespace

MergingQuality judgeMerging(const std::vector<Observation>& listObservation,
                            const ObservationSymmetry& symmetry, const CellParameters& cell, int nFrames,
                            double dfDMin, int nShells)
{
    MergingQuality quality;
    const std::optional<gemmi::UnitCell> unitCell = unitCellOf(cell);
    EquivalentGroups groups = groupEquivalents(listObservation, symmetry);
    const double dfLimit = !unitCell ? 0 : dfDMin > 0 ? dfDMin : limitOf(groups, *unitCell);
    if (!(dfLimit > 0) || !std::isfinite(dfLimit)) {
        quality.overall = qualityOf({}, 0);
        quality.listFrame = qualityByFrame(listObservation, {}, {}, nFrames);
        quality.listCompletenessByFrame.assign(size_t(std::max(0, nFrames)), g_dfNone);
        quality.dfWilsonB = g_dfNone;
        return quality;
    }
    groups = withinLimit(groups, *unitCell, dfLimit);
    const std::vector<MergedGroup> listMerged = mergeGroups(listObservation, groups);
    const CShells shells(dfLimit, nShells);
    std::vector<int> listPossible(shells.count(), 0);
    int nPossible = 0;
    double dfLeast = std::numeric_limits<double>::infinity();
    forEachPossibleReflection(symmetry, cell, dfLimit, [&](const std::array<int, 3>&, double dfDStar) {
        ++listPossible[size_t(shells.shellOf(dfDStar))];
        ++nPossible;
        dfLeast = std::min(dfLeast, dfDStar);
    });
    CAgreement whole;
    std::vector<CAgreement> listAgreement(shells.count());
    for (size_t n = 0; n < listMerged.size(); ++n) {
        const double dfDStar = std::sqrt(unitCell->calculate_1_d2(groups.listIndex[n]));
        whole.add(listMerged[n]);
        listAgreement[size_t(shells.shellOf(dfDStar))].add(listMerged[n]);
        quality.listMerged.push_back(
            {groups.listIndex[n], listMerged[n].dfIntensity, listMerged[n].dfSigma, listMerged[n].nObserved});
    }
    quality.overall = qualityOf(whole, nPossible);
    putShells(shells, listAgreement, listPossible, 1 / dfLeast, quality);
    quality.listFrame = qualityByFrame(listObservation, groups, listMerged, nFrames);
    quality.listCompletenessByFrame = completenessByFrame(listObservation, groups, nFrames, nPossible);
    WilsonPlot plot = wilsonPlot(quality.listMerged, symmetry, cell);
    quality.listWilson = std::move(plot.listPoint);
    quality.dfWilsonB = plot.dfB;
    return quality;
}

}  // namespace tessera
