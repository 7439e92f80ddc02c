#include "integration/outlierrejection.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// Variance of a median times the number of values, relative to the variance of one.
const double g_dfMedianVariance = 1.5708;

struct Member {
    int nObservation = 0;
    double dfIntensity = 0;
    double dfSigma = 0;
};

double medianOfSorted(const std::vector<Member>& list)
{
    return (list[(list.size() - 1) / 2].dfIntensity + list[list.size() / 2].dfIntensity) / 2;
}

/// The median of a sorted list without one of its elements.
double medianOfOthers(const std::vector<Member>& list, size_t nWithout)
{
    const auto at = [&](size_t n) { return list[n < nWithout ? n : n + 1].dfIntensity; };
    const size_t nOthers = list.size() - 1;
    return (at((nOthers - 1) / 2) + at(nOthers / 2)) / 2;
}

class CRejection {
public:
    CRejection(const ErrorModel& errors, double dfLimit, std::vector<RejectedObservation>& listRejected)
        : m_errors(errors), m_dfLimit(dfLimit), m_listRejected(listRejected)
    {}

    void takeGroup(std::vector<Member> listMember)
    {
        const size_t nLarge = 200;
        std::stable_sort(listMember.begin(), listMember.end(), [](const Member& one, const Member& other) {
            return one.dfIntensity < other.dfIntensity;
        });
        if (listMember.size() == 2) {
            takePair(listMember);
        } else if (listMember.size() > nLarge) {
            takeLarge(listMember);
        } else if (listMember.size() > 2) {
            takeOneByOne(std::move(listMember));
        }
    }

private:
    void takePair(const std::vector<Member>& listMember)
    {
        const double dfMean = (listMember[0].dfIntensity + listMember[1].dfIntensity) / 2;
        const double dfVariance = m_errors.variance(listMember[0].dfSigma, dfMean) +
                                  m_errors.variance(listMember[1].dfSigma, dfMean);
        const double df = (listMember[1].dfIntensity - listMember[0].dfIntensity) / std::sqrt(dfVariance);
        if (df > 2 * m_dfLimit) {
            reject(listMember[1], df, QStringLiteral("far above its only equivalent"));
        }
    }

    void takeLarge(const std::vector<Member>& listMember)
    {
        const double dfMedian = medianOfSorted(listMember);
        for (const Member& member : listMember) {
            const double df = (member.dfIntensity - dfMedian) /
                              std::sqrt(m_errors.variance(member.dfSigma, dfMedian));
            if (std::abs(df) > m_dfLimit) {
                reject(member, df, whyOf(df, listMember.size() - 1));
            }
        }
    }

    void takeOneByOne(std::vector<Member> listMember)
    {
        for (size_t nLeft = listMember.size() / 2; nLeft > 0 && listMember.size() > 2; --nLeft) {
            size_t nWorst = 0;
            double dfWorst = 0;
            for (size_t n = 0; n < listMember.size(); ++n) {
                const double dfMedian = medianOfOthers(listMember, n);
                const double dfVariance = m_errors.variance(listMember[n].dfSigma, dfMedian) *
                                          (1 + g_dfMedianVariance / double(listMember.size() - 1));
                const double df = (listMember[n].dfIntensity - dfMedian) / std::sqrt(dfVariance);
                if (std::abs(df) > std::abs(dfWorst)) {
                    dfWorst = df;
                    nWorst = n;
                }
            }
            if (!(std::abs(dfWorst) > m_dfLimit)) {
                return;
            }
            reject(listMember[nWorst], dfWorst, whyOf(dfWorst, listMember.size() - 1));
            listMember.erase(listMember.begin() + std::ptrdiff_t(nWorst));
        }
    }

    static QString whyOf(double dfDeviation, size_t nOthers)
    {
        return QStringLiteral("%1 the median of %2 equivalents")
            .arg(dfDeviation > 0 ? QStringLiteral("above") : QStringLiteral("below"))
            .arg(nOthers);
    }

    void reject(const Member& member, double dfDeviation, const QString& strWhy)
    {
        m_listRejected.push_back({member.nObservation, dfDeviation, strWhy});
    }

    const ErrorModel& m_errors;
    double m_dfLimit;
    std::vector<RejectedObservation>& m_listRejected;
};

}  // namespace

std::vector<RejectedObservation> rejectOutliers(std::vector<Observation>& listObservation,
                                                const EquivalentGroups& groups, const ErrorModel& errors,
                                                double dfLimit)
{
    std::vector<RejectedObservation> listRejected;
    CRejection rejection(errors, dfLimit, listRejected);
    for (int nGroup = 0; nGroup < groups.count(); ++nGroup) {
        std::vector<Member> listMember;
        for (int n = groups.listStart[nGroup]; n < groups.listStart[size_t(nGroup) + 1]; ++n) {
            const int nObservation = groups.listMember[n];
            const Observation& observation = listObservation[nObservation];
            listMember.push_back({nObservation, observation.corrected(),
                                  observation.dfSigma * observation.dfLorentz * observation.dfScale});
        }
        rejection.takeGroup(std::move(listMember));
    }
    std::stable_sort(listRejected.begin(), listRejected.end(),
                     [](const RejectedObservation& one, const RejectedObservation& other) {
                         return one.nObservation < other.nObservation;
                     });
    for (Observation& observation : listObservation) {
        observation.nFlags &= ~unsigned(FlagOutlier);
    }
    for (const RejectedObservation& rejected : listRejected) {
        listObservation[rejected.nObservation].nFlags |= FlagOutlier;
    }
    return listRejected;
}

}  // namespace tessera
