#include "integration/spacegroupranking.h"

#include "integration/absencelikelihood.h"
#include "integration/parityclasses.h"
#include "integration/reflectionzones.h"
#include "integration/resolutionbins.h"
#include "integration/spacegroupsettings.h"
#include "integration/unitcell.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <set>

namespace tessera {

namespace {

/// Which of the reflections ReflectionZone::listSmall of a zone are forbidden.
using Pattern = std::vector<bool>;

bool isEmpty(const Pattern& pattern)
{
    return std::none_of(pattern.begin(), pattern.end(), [](bool b) { return b; });
}

bool includes(const Pattern& whole, const Pattern& part)
{
    for (size_t n = 0; n < part.size(); ++n) {
        if (part[n] && !whole[n]) {
            return false;
        }
    }
    return true;
}

/// Sums over reflections.
struct Sums {
    int nCount = 0;
    double dfSum = 0;       ///< of E²
    double dfSquares = 0;   ///< of (E²)²
    double dfVariance = 0;  ///< of the variances of E² by the measurement

    void add(double dfESquare, double dfVarianceOfOne)
    {
        ++nCount;
        dfSum += dfESquare;
        dfSquares += dfESquare * dfESquare;
        dfVariance += dfVarianceOfOne;
    }
    void add(const Sums& other)
    {
        nCount += other.nCount;
        dfSum += other.dfSum;
        dfSquares += other.dfSquares;
        dfVariance += other.dfVariance;
    }
    double mean() const { return dfSum / nCount; }
    /// Standard error of the mean from the measurement alone.
    double errorOfMeasuring() const { return std::sqrt(dfVariance) / nCount; }
    /// Standard error of the mean from the scatter of the reflections and the measurement.
    double errorOfMean() const
    {
        const double dfSpread = std::max(0.0, dfSquares / nCount - mean() * mean());
        return std::sqrt(dfSpread / nCount + dfVariance / nCount / nCount);
    }
};

/// A reflection condition of a zone that some group of the Laue class has.
struct Condition {
    QString strText;
    Pattern pattern;
    gemmi::GroupOps ops;  ///< operations of a group that has the condition
};

/// The reflections of a zone, sorted by the conditions that forbid them.
struct ZoneData {
    ReflectionZone zone;
    std::vector<Condition> listCondition;
    std::map<std::uint64_t, Sums> mapSums;  ///< key: bit n is set if condition n forbids them
};

/// A space group in one setting.
struct Group {
    const gemmi::SpaceGroup* pGroup = nullptr;
    std::vector<int> listCondition;  ///< for each zone the index of its condition; -1: none
    double dfLogLikelihood = 0;      ///< at the end of judge() the logarithm of the probability
};

class CRanking {
public:
    CRanking(const std::vector<MergedReflection>& listMerged, const LaueCandidate& laue)
        : m_ops(laue.symmetry.ops.sym_ops.empty() ? gemmi::symops_from_hall("-P 1") : laue.symmetry.ops)
    {
        for (const ReflectionZone& zone : reflectionZones(m_ops)) {
            m_listZone.push_back({zone, {}, {}});
        }
        findGroups();
        collect(listMerged, laue.cell);
        judge();
    }

    SpaceGroupRanking ranking() const
    {
        SpaceGroupRanking ranking;
        for (const Group& group : m_listGroup) {
            SpaceGroupCandidate candidate;
            candidate.nNumber = group.pGroup->number;
            candidate.strName = QString::fromStdString(group.pGroup->xhm());
            candidate.dfLikelihood = std::exp(group.dfLogLikelihood);
            candidate.bCentric = group.pGroup->is_centrosymmetric();
            for (size_t n = 0; n < m_listZone.size(); ++n) {
                if (group.listCondition[n] >= 0) {
                    candidate.listCondition.append(
                        m_listZone[n].listCondition[size_t(group.listCondition[n])].strText);
                }
            }
            ranking.listCandidate.push_back(candidate);
        }
        for (size_t n = 0; n < m_listZone.size(); ++n) {
            for (size_t nCondition = 0; nCondition < m_listZone[n].listCondition.size(); ++nCondition) {
                ranking.listCondition.push_back(evidence(n, nCondition));
            }
        }
        return ranking;
    }

private:
    /// Finds the groups and the conditions of the zones. Of the settings of a group that have equal absences,
    /// between which the data cannot decide, only the first counts.
    void findGroups()
    {
        std::set<std::pair<int, std::vector<int>>> setSeen;
        for (const gemmi::SpaceGroup* pGroup : spaceGroupSettings(m_ops)) {
            Group group;
            group.pGroup = pGroup;
            const gemmi::GroupOps ops = pGroup->operations();
            for (ZoneData& data : m_listZone) {
                group.listCondition.push_back(conditionOf(data, ops));
            }
            if (setSeen.insert({pGroup->number, group.listCondition}).second) {
                m_listGroup.push_back(group);
            }
        }
    }

    /// The index of a group's condition in a zone, which is added to the zone if it is new; -1: none.
    static int conditionOf(ZoneData& data, const gemmi::GroupOps& ops)
    {
        const Pattern pattern = forbiddenPattern(data.zone, ops);
        if (isEmpty(pattern)) {
            return -1;
        }
        const auto it = std::find_if(
            data.listCondition.begin(), data.listCondition.end(),
            [&](const Condition& condition) { return condition.pattern == pattern; });
        if (it != data.listCondition.end()) {
            return int(it - data.listCondition.begin());
        }
        data.listCondition.push_back({conditionText(data.zone, ops), pattern, ops});
        return int(data.listCondition.size()) - 1;
    }

    /// Sums E² of the reflections of each zone. The mean intensity by which E² is normalized depends on the
    /// resolution and on the parity class. It is that of the general reflections, which only the centring can
    /// forbid.
    void collect(const std::vector<MergedReflection>& listMerged, const CellParameters& cell)
    {
        const std::optional<gemmi::UnitCell> unitCell = unitCellOf(cell);
        if (!unitCell) {
            return;
        }
        std::vector<PlaceInZone> listPlace;
        std::vector<double> listDStar;
        std::vector<double> listGeneralDStar;
        std::vector<double> listGeneral;
        std::vector<ReflectionZone> listZone;
        for (const ZoneData& data : m_listZone) {
            listZone.push_back(data.zone);
        }
        for (const MergedReflection& merged : listMerged) {
            listPlace.push_back(placeInZone(listZone, m_ops, merged.anIndex));
            listDStar.push_back(std::sqrt(unitCell->calculate_1_d2(merged.anIndex)));
            if (listPlace.back().nZone < 0 && std::isfinite(merged.dfIntensity)) {
                listGeneralDStar.push_back(listDStar.back());
                listGeneral.push_back(merged.dfIntensity);
            }
        }
        const CResolutionMean resolutionMean(listGeneralDStar, listGeneral);
        CParityClasses parities(m_ops);
        for (size_t n = 0; n < listMerged.size(); ++n) {
            if (listPlace[n].nZone < 0 && std::isfinite(listMerged[n].dfIntensity)) {
                parities.add(listMerged[n].anIndex,
                             listMerged[n].dfIntensity / resolutionMean.mean(listDStar[n]));
            }
        }
        for (size_t n = 0; n < listMerged.size(); ++n) {
            const double dfMean = resolutionMean.mean(listDStar[n]) *
                                  parities.strength(listMerged[n].anIndex);
            const double dfSigma = listMerged[n].dfSigma / dfMean;
            const double df = listMerged[n].dfIntensity / dfMean;
            if (listPlace[n].nZone >= 0 && std::isfinite(df) && std::isfinite(dfSigma)) {
                addTo(m_listZone[size_t(listPlace[n].nZone)], listPlace[n].anIndex, df, dfSigma * dfSigma);
            }
        }
    }

    /// Adds a reflection to those of its zone that the same conditions forbid.
    static void addTo(ZoneData& data, const std::array<int, 3>& anIndex, double dfESquare, double dfVariance)
    {
        std::uint64_t nMask = 0;
        for (size_t n = 0; n < data.listCondition.size() && n < 64; ++n) {
            if (data.listCondition[n].ops.is_systematically_absent(anIndex)) {
                nMask |= std::uint64_t(1) << n;
            }
        }
        data.mapSums[nMask].add(dfESquare, dfVariance);
    }

    /// The reflections of a zone that no group forbids, to which the others are compared. Empty if they are
    /// too few or not positive in sum: then the reference is the mean E² of general reflections, 1.
    static Sums referenceOf(const ZoneData& data)
    {
        const auto it = data.mapSums.find(0);
        const int nFewest = 3;
        if (it == data.mapSums.end() || it->second.nCount < nFewest || !(it->second.dfSum > 0)) {
            return {};
        }
        return it->second;
    }

    /// Gives each group its probability. Reflections that the same conditions forbid are one observation: the
    /// ratio of their mean E² to the reference, probable for a group by whether it forbids them. All groups
    /// have the same prior probability.
    void judge()
    {
        for (size_t n = 0; n < m_listZone.size(); ++n) {
            const Sums reference = referenceOf(m_listZone[n]);
            const double dfReference = reference.nCount > 0 ? reference.mean() : 1;
            for (const auto& [nMask, sums] : m_listZone[n].mapSums) {
                if (nMask == 0) {
                    continue;
                }
                const AbsenceRatio ratio = {sums.nCount, reference.nCount, sums.mean() / dfReference,
                                            sums.errorOfMeasuring() / dfReference};
                const double dfForbidden = std::log(densityOfForbidden(ratio));
                const double dfAllowed = std::log(densityOfAllowed(ratio));
                for (Group& group : m_listGroup) {
                    const int nCondition = group.listCondition[n];
                    const bool bForbidden = nCondition >= 0 && nCondition < 64 &&
                                            ((nMask >> nCondition) & 1) != 0;
                    group.dfLogLikelihood += bForbidden ? dfForbidden : dfAllowed;
                }
            }
        }
        std::stable_sort(m_listGroup.begin(), m_listGroup.end(), [](const Group& one, const Group& other) {
            return one.dfLogLikelihood != other.dfLogLikelihood ? one.dfLogLikelihood > other.dfLogLikelihood
                                                                : one.pGroup->number < other.pGroup->number;
        });
        // The sum of all likelihoods, relative to the greatest, so that none of them overflows.
        double dfSum = 0;
        for (const Group& group : m_listGroup) {
            dfSum += std::exp(group.dfLogLikelihood - m_listGroup.front().dfLogLikelihood);
        }
        const double dfWhole = m_listGroup.empty() ? 0
                                                   : m_listGroup.front().dfLogLikelihood + std::log(dfSum);
        for (Group& group : m_listGroup) {
            group.dfLogLikelihood -= dfWhole;
        }
    }

    /// A group counts for a condition if its own condition in the zone forbids at least the same reflections.
    ConditionEvidence evidence(size_t nZone, size_t nCondition) const
    {
        const ZoneData& data = m_listZone[nZone];
        ConditionEvidence evidence;
        evidence.strCondition = data.listCondition[nCondition].strText;
        Sums forbidden;
        Sums allowed;
        for (const auto& [nMask, sums] : data.mapSums) {
            (((nMask >> nCondition) & 1) != 0 ? forbidden : allowed).add(sums);
        }
        evidence.nForbidden = forbidden.nCount;
        const double dfNone = std::numeric_limits<double>::quiet_NaN();
        evidence.dfRatio = dfNone;
        evidence.dfRatioError = dfNone;
        if (forbidden.nCount > 0 && allowed.nCount > 0 && allowed.dfSum > 0) {
            evidence.dfRatio = forbidden.mean() / allowed.mean();
            evidence.dfRatioError = std::hypot(forbidden.errorOfMean(),
                                               evidence.dfRatio * allowed.errorOfMean()) /
                                    allowed.mean();
        }
        for (const Group& group : m_listGroup) {
            const int nOwn = group.listCondition[nZone];
            if (nOwn >= 0 &&
                includes(data.listCondition[nOwn].pattern, data.listCondition[nCondition].pattern)) {
                evidence.dfLikelihood += std::exp(group.dfLogLikelihood);
            }
        }
        evidence.dfLikelihood = std::min(1.0, evidence.dfLikelihood);
        return evidence;
    }

    gemmi::GroupOps m_ops;
    std::vector<ZoneData> m_listZone;
    std::vector<Group> m_listGroup;
};

}  // namespace

SpaceGroupRanking rankSpaceGroups(const std::vector<MergedReflection>& listMerged, const LaueCandidate& laue)
{
    return CRanking(listMerged, laue).ranking();
}

}  // namespace tessera
