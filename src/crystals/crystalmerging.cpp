#include "crystals/crystalmerging.h"

#include "crystals/crystalchoice.h"
#include "crystals/crystalsapart.h"
#include "crystals/meancell.h"
#include "crystals/mergedjudgement.h"
#include "integration/equivalents.h"
#include "integration/errormodel.h"
#include "records/runends.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The observations of the used crystals on one scale; the number of the crystal takes the place of the
/// frame.
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
        for (const ScaledIntensity& one : listCrystal[settled.nCrystal].listIntensity) {
            const auto anIndex = wholeIndex(settled.matIndices, one.anIndex);
            if (!anIndex) {
                continue;
            }
            Observation observation;
            observation.anIndex = *anIndex;
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

/// Merges, and leaves out what makes it worse, one crystal at a time.
class CChooser {
public:
    CChooser(const std::vector<Crystal>& listCrystal, const ObservationSymmetry& symmetry,
             const CrystalMergeOptions& options, CRunReport& report, MergedCrystals& merged)
        : m_listCrystal(listCrystal),
          m_symmetry(symmetry),
          m_options(options),
          m_report(report),
          m_merged(merged)
    {}

    /// @return false when the report asked to stop
    bool run()
    {
        bool bWorse = true;
        while (bWorse) {
            if (!m_report.goOn()) {
                return false;
            }
            scale();
            bWorse = leaveOutWorst();
        }
        const size_t nFirst = size_t(std::find(m_merged.listUsed.begin(), m_merged.listUsed.end(), 1) -
                                     m_merged.listUsed.begin());
        const Crystal& first = m_listCrystal[size_t(m_merged.listSettled[nFirst].nCrystal)];
        judgeMerged(m_listCrystal, std::move(m_listObservation), m_cell, first.dfWavelength, m_options,
                    m_report, m_merged);
        return m_report.goOn();
    }

private:
    void scale()
    {
        std::vector<const std::vector<FriedelIntensity>*> listMean;
        std::vector<size_t> listPlace;
        for (size_t n = 0; n < m_merged.listSettled.size(); ++n) {
            m_merged.listScale[n] = {};
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
    }

    /// @return whether there was one
    bool leaveOutWorst()
    {
        const EquivalentGroups groups = groupEquivalents(m_listObservation, m_symmetry);
        applyErrorModel(groups, fitErrorModel(m_listObservation, groups, DeviationWidth::Core),
                        m_listObservation);
        const int nCrystals = int(m_merged.listSettled.size());
        const CLeaveOneOut intensities(m_listObservation, groups, nCrystals);
        const CLeaveOneOut amplitudes(amplitudesOf(m_listObservation, groups), groups, nCrystals);
        std::vector<CLeaveOneOut::Gain> listGain(m_merged.listSettled.size(), {std::nan(""), 0});
        for (size_t n = 0; n < listGain.size(); ++n) {
            if (m_merged.listUsed[n]) {
                listGain[n] = amplitudes.gainOf(int(n));
            }
            m_merged.listGain[n] = std::isfinite(listGain[n].dfGain) ? listGain[n].dfGain : 0;
        }
        const int nWorst = m_options.bKeepAll ? -1 : harmfulCrystal(listGain);
        if (nWorst < 0 || !(intensities.ccHalfWithout(nWorst) > intensities.ccHalf())) {
            return false;
        }
        leaveOut(size_t(nWorst), intensities.ccHalf(), intensities.ccHalfWithout(nWorst));
        return true;
    }

    void leaveOut(size_t nPlace, double dfAll, double dfWithout)
    {
        LeftOutCrystal left;
        left.nCrystal = m_merged.listSettled[nPlace].nCrystal;
        left.dfBefore = dfAll;
        left.dfWithout = dfWithout;
        left.strReason = QStringLiteral(
                             "Without it CC1/2 rises from %1 to %2; its amplitudes correlate with "
                             "those of the others by %3.")
                             .arg(left.dfBefore, 0, 'f', 4)
                             .arg(left.dfWithout, 0, 'f', 4)
                             .arg(m_merged.listSettled[nPlace].dfCorrelation, 0, 'f', 2);
        m_merged.listLeftOut.push_back(left);
        m_merged.listUsed[nPlace] = 0;
    }

    const std::vector<Crystal>& m_listCrystal;
    const ObservationSymmetry& m_symmetry;
    const CrystalMergeOptions& m_options;
    CRunReport& m_report;
    MergedCrystals& m_merged;
    MeanCell m_cell;
    std::vector<Observation> m_listObservation;
};

/// What was measured twice must not count twice, nor agree with itself. Of runs that share frames the one
/// with the most is kept, of equal ones that which ended last, and of those that ended at once the first.
std::vector<int> leaveOutRepeated(const std::vector<Crystal>& listCrystal, const std::vector<int>& listMember,
                                  MergedCrystals& merged)
{
    std::vector<int> listOrder = listMember, listKept;
    std::stable_sort(listOrder.begin(), listOrder.end(), [&](int nOne, int nOther) {
        const Crystal& one = listCrystal[nOne];
        const Crystal& other = listCrystal[nOther];
        return one.frames.count() != other.frames.count() ? one.frames.count() > other.frames.count()
                                                          : one.strEnded > other.strEnded;
    });
    for (const int n : listOrder) {
        const RunFrames& frames = listCrystal[n].frames;
        const auto itOther = std::find_if(listKept.begin(), listKept.end(), [&](int nKept) {
            return isDependent(frames, listCrystal[nKept].frames);
        });
        if (itOther == listKept.end()) {
            listKept.push_back(n);
            continue;
        }
        const Crystal& other = listCrystal[*itOther];
        const bool bMore = other.frames.count() > frames.count();
        LeftOutCrystal left;
        left.nCrystal = n;
        left.strReason = QStringLiteral("It shares %1 of its %2 frames with %3/%4, which %5.")
                             .arg(sharedFrames(frames, other.frames))
                             .arg(frames.count())
                             .arg(
                                 other.strFolder, other.strName,
                                 bMore ? QStringLiteral("has more") : QStringLiteral("a later run measured"));
        merged.listLeftOut.push_back(left);
    }
    std::sort(listKept.begin(), listKept.end());
    return listKept;
}

/// Of a class that was asked for, as itself or by its space group; empty: none was.
QString wishedClass(const JudgementOptions& options)
{
    const gemmi::SpaceGroup* pGroup = options.nSpaceGroup > 0
                                          ? gemmi::find_spacegroup_by_number(options.nSpaceGroup)
                                          : nullptr;
    return options.strLaueClass.isEmpty() && pGroup ? QString::fromLatin1(pGroup->laue_str())
                                                    : options.strLaueClass;
}

/// Settled crystals of which those that stay were settled once more, without the others.
void replaceSettled(SettledCrystals&& kept, SettledCrystals& all)
{
    std::vector<int> listPlace;  // in `all`, of each of `kept`
    for (SettledCrystal& crystal : kept.listSettled) {
        const auto it = std::find_if(
            all.listSettled.begin(), all.listSettled.end(),
            [&](const SettledCrystal& other) { return other.nCrystal == crystal.nCrystal; });
        listPlace.push_back(int(it - all.listSettled.begin()));
        *it = std::move(crystal);
    }
    for (size_t i = 0; i < listPlace.size(); ++i) {
        for (size_t j = i + 1; j < listPlace.size(); ++j) {
            all.distances.set(listPlace[i], listPlace[j], kept.distances.at(int(i), int(j)));
        }
    }
    all.symmetry = kept.symmetry;
    all.strLaueClass = kept.strLaueClass;
}

/// Settles, and again without those that are apart, until none is.
/// @param merged  gets those that are used and left out
/// @return nothing when the report asked to stop
std::optional<SettledCrystals> settleGroup(const std::vector<Crystal>& listCrystal,
                                           const std::vector<int>& listMember, const CrystalGroup& group,
                                           const CrystalMergeOptions& options, CRunReport& report,
                                           MergedCrystals& merged)
{
    SettlingOptions settling;
    settling.tolerance = group.tolerance;
    settling.strLaueClass = wishedClass(options.judgement);
    settling.nJobs = options.nJobs;
    SettledCrystals settled = settleCrystals(listCrystal, listMember, group.reference, settling, report);
    for (const int n : settled.listOutside) {
        LeftOutCrystal left;
        left.nCrystal = n;
        left.strReason = QStringLiteral("No change of its axes brings its lattice to that of the group.");
        merged.listLeftOut.push_back(left);
    }
    merged.listUsed.assign(settled.listSettled.size(), 1);
    SettledCrystals part = settled;
    while (report.goOn() && !part.listSettled.empty()) {
        const ApartCrystals apart = findApart(part, averageLinkage(part.distances));
        if (apart.isNone()) {
            break;
        }
        std::vector<int> listStay;
        for (size_t n = 0; n < part.listSettled.size(); ++n) {
            const int nCrystal = part.listSettled[n].nCrystal;
            if (apart.listReason[n].isEmpty()) {
                listStay.push_back(nCrystal);
                continue;
            }
            LeftOutCrystal left;
            left.nCrystal = nCrystal;
            left.strReason = apart.listReason[n];
            merged.listLeftOut.push_back(left);
            const auto it = std::find_if(
                settled.listSettled.begin(), settled.listSettled.end(),
                [&](const SettledCrystal& crystal) { return crystal.nCrystal == nCrystal; });
            merged.listUsed[size_t(it - settled.listSettled.begin())] = 0;
        }
        for (const std::vector<int>& listKind : apart.listKind) {
            std::vector<int> list;
            list.reserve(listKind.size());
            for (const int nPlace : listKind) {
                list.push_back(part.listSettled[nPlace].nCrystal);
            }
            merged.listOtherKind.push_back(std::move(list));
        }
        part = settleCrystals(listCrystal, listStay, group.reference, settling, report);
        if (!part.listSettled.empty()) {
            replaceSettled(SettledCrystals(part), settled);
        }
    }
    if (!report.goOn()) {
        return {};
    }
    return settled;
}

}  // namespace

RunResult<MergedCrystals> mergeCrystals(const std::vector<Crystal>& listCrystal, const CrystalGroup& group,
                                        const CrystalMergeOptions& options, CRunReport& report)
{
    MergedCrystals work;
    const std::vector<int> listMember = leaveOutRepeated(listCrystal, group.listMember, work);
    std::optional<SettledCrystals> settled = settleGroup(listCrystal, listMember, group, options, report,
                                                         work);
    if (!settled) {
        return RunOutcome{RunEnd::Stopped, {}};
    }
    if (settled->listSettled.empty()) {
        return failRun(report, QStringLiteral("No crystal could be brought to the setting of its group."));
    }
    if (std::count(work.listUsed.begin(), work.listUsed.end(), 1) == 0) {
        return failRun(report, QStringLiteral("No two crystals of the group agree."));
    }
    work.listJoint = averageLinkage(settled->distances);
    work.listSettled = std::move(settled->listSettled);
    work.strSettledClass = settled->strLaueClass;
    work.listScale.assign(work.listSettled.size(), {});
    work.listGain.assign(work.listSettled.size(), 0.0);
    if (!CChooser(listCrystal, settled->symmetry, options, report, work).run()) {
        return RunOutcome{RunEnd::Stopped, {}};
    }
    if (work.result.quality.listMerged.empty()) {
        return failRun(report, QStringLiteral("No reflection was measured: there is nothing to merge."));
    }
    return work;
}

}  // namespace tessera
