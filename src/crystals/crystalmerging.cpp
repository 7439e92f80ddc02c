#include "crystals/crystalmerging.h"

#include "crystal/cellarithmetic.h"
#include "integration/equivalents.h"
#include "integration/mergedgroups.h"
#include "records/runends.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The cells of the used crystals in the setting of the group.
struct MeanCell {
    CellParameters mean;
    CellParameters spread;
    LatticeBasis basis;  ///< rows of the mean, a along x
};

/// Rows a, b, c of a crystal in the setting of the group.
LatticeBasis basisInSetting(const Crystal& crystal, const SettledCrystal& settled)
{
    const ReducedCell reduced = reducedCell(crystal.cell, crystal.chCentring);
    // Axes transform as their indices do: first to the reduced cell, then to the setting.
    return (settled.matIndices * reduced.matIndices.inverse()) * reduced.basis;
}

CellParameters cellFrom(const std::array<double, 6>& adf)
{
    return {adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]};
}

MeanCell meanCell(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged)
{
    std::array<double, 6> adfMean = {}, adfSquare = {};
    int nUsed = 0;
    for (size_t n = 0; n < merged.listSettled.size(); ++n) {
        if (!merged.listUsed[n]) {
            continue;
        }
        ++nUsed;
        const SettledCrystal& settled = merged.listSettled[n];
        const std::array<double, 6> adf =
            cellOf(basisInSetting(listCrystal[size_t(settled.nCrystal)], settled)).numbers();
        for (size_t i = 0; i < adf.size(); ++i) {  // Welford's sums
            const double dfOff = adf[i] - adfMean[i];
            adfMean[i] += dfOff / nUsed;
            adfSquare[i] += dfOff * (adf[i] - adfMean[i]);
        }
    }
    for (double& df : adfSquare) {
        df = nUsed > 1 ? std::sqrt(df / (nUsed - 1)) : 0;
    }
    MeanCell cell;
    cell.mean = cellFrom(adfMean);
    cell.spread = cellFrom(adfSquare);
    cell.basis = directBasisOf(cell.mean);
    return cell;
}

/// The observations of the used crystals on one scale; each crystal stands for a frame.
std::vector<Observation> observationsOf(const std::vector<Crystal>& listCrystal, const MergedCrystals& merged,
                                        const LatticeBasis& basis)
{
    const Eigen::Matrix3d matReciprocal = basis.inverse();
    std::vector<Observation> list;
    for (size_t n = 0; n < merged.listSettled.size(); ++n) {
        if (!merged.listUsed[n]) {
            continue;
        }
        const SettledCrystal& settled = merged.listSettled[n];
        for (const ScaledIntensity& one : listCrystal[size_t(settled.nCrystal)].listIntensity) {
            Observation observation;
            if (!wholeIndex(settled.matIndices, one.anIndex, observation.anIndex)) {
                continue;
            }
            const double dfSquare = squareOf(observation.anIndex, matReciprocal);
            const double dfFactor = merged.listScale[n].factor(dfSquare);
            observation.dfFrame = double(n);
            observation.nFirstFrame = int(n);
            observation.nLastFrame = int(n);
            observation.dfDStar = 2 * std::sqrt(dfSquare);
            observation.dfIntensity = one.dfIntensity * dfFactor;
            observation.dfSigma = one.dfSigma * dfFactor;
            list.push_back(observation);
        }
    }
    return list;
}

double ccHalf(const std::vector<Observation>& listObservation, const ObservationSymmetry& symmetry)
{
    CAgreement agreement;
    for (const MergedGroup& group :
         mergeGroups(listObservation, groupEquivalents(listObservation, symmetry))) {
        agreement.add(group);
    }
    return agreement.ccHalf();
}

std::vector<Observation> without(const std::vector<Observation>& listObservation, size_t nCrystal)
{
    std::vector<Observation> list;
    std::copy_if(listObservation.begin(), listObservation.end(), std::back_inserter(list),
                 [&](const Observation& observation) { return observation.nFirstFrame != int(nCrystal); });
    return list;
}

double median(std::vector<double> list)
{
    const auto itMiddle = list.begin() + std::ptrdiff_t(list.size() / 2);
    std::nth_element(list.begin(), itMiddle, list.end());
    return *itMiddle;
}

IntegrationResult judge(const std::vector<Observation>& listObservation, const MeanCell& cell,
                        size_t nCrystals, double dfWavelength, const CrystalMergeOptions& options,
                        CRunReport& report)
{
    IntegratedSeries integrated;
    integrated.listObservation = listObservation;
    for (const Observation& observation : listObservation) {
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
    lattice.cellErrors = cellFrom(adfErrors);
    JudgementOptions judgement = options.judgement;
    judgement.scaling.bScale = false;
    judgement.scaling.bDecay = false;
    IntegrationResult result = judgeIntegration(integrated, series, lattice, judgement, report);
    result.forecast = {};  // it tells of more tilts of one crystal
    return result;
}

/// The tree of the correlations.
std::vector<Joint> treeOf(const std::vector<SettledCrystal>& listSettled)
{
    const int nCount = int(listSettled.size());
    const int nFew = 10;  // common reflections, that tell nothing
    CDistances distances(nCount);
    for (int i = 0; i < nCount; ++i) {
        for (int j = i + 1; j < nCount; ++j) {
            const IntensityCorrelation one = correlationOf(listSettled[size_t(i)].listMean,
                                                           listSettled[size_t(j)].listMean);
            const double df = one.nCommon < nFew ? 0 : std::max(0.0, one.dfCorrelation);
            distances.set(i, j, std::sqrt(1 - df * df));
        }
    }
    return averageLinkage(distances);
}

/// Merges, and leaves out what makes it worse, one crystal at a time.
class CChooser {
public:
    CChooser(const std::vector<Crystal>& listCrystal, const CrystalMergeOptions& options, CRunReport& report,
             MergedCrystals& merged)
        : m_listCrystal(listCrystal), m_options(options), m_report(report), m_merged(merged)
    {}

    /// @return false when the report asked to stop
    bool run()
    {
        while (m_report.goOn()) {
            scaleAndJudge();
            if (m_options.bKeepAll || !leaveOutWorst()) {
                return m_report.goOn();
            }
        }
        return false;
    }

private:
    void scaleAndJudge()
    {
        std::vector<const std::vector<FriedelIntensity>*> listMean;
        std::vector<size_t> listPlace;
        for (size_t n = 0; n < m_merged.listSettled.size(); ++n) {
            if (m_merged.listUsed[n]) {
                listMean.push_back(&m_merged.listSettled[n].listMean);
                listPlace.push_back(n);
            }
        }
        m_cell = meanCell(m_listCrystal, m_merged);
        const std::vector<CrystalScale> listScale = scaleCrystals(listMean, m_cell.basis);
        for (size_t n = 0; n < listPlace.size(); ++n) {
            m_merged.listScale[listPlace[n]] = listScale[n];
        }
        m_listObservation = observationsOf(m_listCrystal, m_merged, m_cell.basis);
        m_merged.cellMean = m_cell.mean;
        m_merged.cellSpread = m_cell.spread;
        const Crystal& first = m_listCrystal[size_t(m_merged.listSettled.front().nCrystal)];
        CRunReport silent;
        m_merged.result = judge(m_listObservation, m_cell, m_merged.listSettled.size(), first.dfWavelength,
                                m_options, silent);
    }

    bool leaveOutWorst()
    {
        const ObservationSymmetry& symmetry = m_merged.result.chosen.symmetry;
        const double dfAll = ccHalf(m_listObservation, symmetry);
        std::vector<double> listGain;
        std::vector<size_t> listPlace;
        for (size_t n = 0; n < m_merged.listSettled.size() && m_report.goOn(); ++n) {
            m_merged.listGain[n] = 0;
            if (m_merged.listUsed[n]) {
                const double dfWithout = ccHalf(without(m_listObservation, n), symmetry);
                m_merged.listGain[n] = std::isfinite(dfWithout) && std::isfinite(dfAll)
                                           ? fisher(dfAll) - fisher(dfWithout)
                                           : 0;
                listGain.push_back(m_merged.listGain[n]);
                listPlace.push_back(n);
            }
        }
        const size_t nLeast = 3;
        if (listGain.size() <= nLeast) {
            return false;
        }
        const double dfMiddle = median(listGain);
        std::vector<double> listOff;
        for (const double df : listGain) {
            listOff.push_back(std::abs(df - dfMiddle));
        }
        const double dfSigma = 1.4826 * median(listOff);  // of a normal distribution
        const auto itWorst = std::min_element(listGain.begin(), listGain.end());
        // Three standard deviations: one in 700 by chance. Below a hundredth of Fisher's z nobody sees it.
        if (*itWorst > -0.01 || *itWorst > dfMiddle - 3 * dfSigma) {
            return false;
        }
        leaveOut(listPlace[size_t(itWorst - listGain.begin())], dfAll, *itWorst);
        return true;
    }

    void leaveOut(size_t nPlace, double dfAll, double dfGain)
    {
        LeftOutCrystal left;
        left.nCrystal = m_merged.listSettled[nPlace].nCrystal;
        left.dfBefore = dfAll;
        left.dfWithout = std::tanh(std::atanh(dfAll) - dfGain);
        left.strReason = QStringLiteral(
                             "Without it CC1/2 rises from %1 to %2; its intensities correlate with "
                             "those of the others by %3.")
                             .arg(left.dfBefore, 0, 'f', 3)
                             .arg(left.dfWithout, 0, 'f', 3)
                             .arg(m_merged.listSettled[nPlace].dfCorrelation, 0, 'f', 2);
        m_merged.listLeftOut.push_back(left);
        m_merged.listUsed[nPlace] = 0;
    }

    /// Fisher's z, in which differences of correlations near 1 can be compared with those of others.
    static double fisher(double dfCorrelation)
    {
        const double dfNearOne = 0.9999;
        return std::atanh(std::clamp(dfCorrelation, -dfNearOne, dfNearOne));
    }

    const std::vector<Crystal>& m_listCrystal;
    const CrystalMergeOptions& m_options;
    CRunReport& m_report;
    MergedCrystals& m_merged;
    MeanCell m_cell;
    std::vector<Observation> m_listObservation;
};

}  // namespace

RunOutcome mergeCrystals(const std::vector<Crystal>& listCrystal, const CrystalGroup& group,
                         const CrystalMergeOptions& options, CRunReport& report, MergedCrystals& merged)
{
    MergedCrystals work;
    work.listSettled = settleCrystals(listCrystal, group.listMember, group.reference, report);
    if (!report.goOn()) {
        return {RunEnd::Stopped, {}};
    }
    if (work.listSettled.empty()) {
        return failRun(report, QStringLiteral("No crystal could be brought to the setting of its group."));
    }
    work.listUsed.assign(work.listSettled.size(), 1);
    work.listScale.assign(work.listSettled.size(), {});
    work.listGain.assign(work.listSettled.size(), 0.0);
    work.listJoint = treeOf(work.listSettled);
    if (!CChooser(listCrystal, options, report, work).run()) {
        return {RunEnd::Stopped, {}};
    }
    if (work.result.quality.listMerged.empty()) {
        return failRun(report, QStringLiteral("No reflection was measured: there is nothing to merge."));
    }
    merged = std::move(work);
    return {};
}

}  // namespace tessera
