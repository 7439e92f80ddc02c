#include "integration/laueclass.h"

#include "integration/equivalents.h"
#include "integration/lauesettings.h"
#include "integration/mergedgroups.h"
#include "integration/rotationlikelihood.h"

#include "lattice/rotationgroups.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

namespace tessera {

namespace {

/// A rotation and its inverse are equivalent; the first of them represents both.
using RotationKey = std::array<int, 9>;

RotationKey keyOf(const Eigen::Matrix3i& mat)
{
    RotationKey key = {};
    std::copy_n(mat.data(), key.size(), key.begin());
    return key;
}

RotationKey keyOfPair(const Eigen::Matrix3i& mat)
{
    const Eigen::Matrix3d matInverse = mat.cast<double>().inverse();
    return std::min(keyOf(mat), keyOf(matInverse.array().round().matrix().cast<int>()));
}

/// The rotations of all settings, each once, with their agreement.
class CRotationTable {
public:
    CRotationTable(const LaueSettings& settings, const std::vector<Observation>& listObservation)
    {
        const CRotationAgreement rotations(listObservation, settings.primitive);
        for (const LaueSetting& setting : settings.listSetting) {
            for (const Eigen::Matrix3i& mat : setting.listRotation) {
                if (!mat.isIdentity() && m_mapPlace.emplace(keyOfPair(mat), m_listAgreement.size()).second) {
                    m_listAgreement.push_back(rotations.agreement(mat));
                }
            }
        }
        m_listLikelihood.assign(m_listAgreement.size(), 0.0);
    }

    const std::vector<RotationAgreement>& agreements() const { return m_listAgreement; }
    size_t placeOf(const Eigen::Matrix3i& mat) const { return m_mapPlace.at(keyOfPair(mat)); }

    std::vector<bool> rotationsOf(const LaueSetting& setting) const
    {
        std::vector<bool> listHaving(m_listAgreement.size(), false);
        for (const Eigen::Matrix3i& mat : setting.listRotation) {
            if (!mat.isIdentity()) {
                listHaving[placeOf(mat)] = true;
            }
        }
        return listHaving;
    }

    /// Adds the likelihood of a setting to the likelihoods of its rotations.
    void addLikelihood(const LaueSetting& setting, double dfLikelihood)
    {
        const std::vector<bool> listHaving = rotationsOf(setting);
        for (size_t n = 0; n < listHaving.size(); ++n) {
            m_listLikelihood[n] += listHaving[n] ? dfLikelihood : 0;
        }
    }
    double likelihood(size_t nPlace) const { return std::min(1.0, m_listLikelihood[nPlace]); }

private:
    std::map<RotationKey, size_t> m_mapPlace;
    std::vector<RotationAgreement> m_listAgreement;
    std::vector<double> m_listLikelihood;
};

std::vector<OperationAgreement> tableOf(const LaueSetting& highest, const CRotationTable& table)
{
    std::vector<OperationAgreement> listOperation;
    std::set<size_t> setDone;
    for (size_t n = 0; n < highest.listRotation.size(); ++n) {
        if (highest.listRotation[n].isIdentity() ||
            !setDone.insert(table.placeOf(highest.listRotation[n])).second) {
            continue;
        }
        const size_t nPlace = table.placeOf(highest.listRotation[n]);
        const RotationAgreement& agreement = table.agreements()[nPlace];
        OperationAgreement operation;
        gemmi::Op op = highest.listConventional[n];
        op.tran = {0, 0, 0};
        operation.strOperation = QString::fromStdString(op.triplet());
        operation.nOrder = orderOf(highest.listRotation[n]);
        operation.nPairs = agreement.nPairs;
        operation.dfCorrelation = agreement.dfCorrelation;
        operation.dfR = agreement.dfR;
        operation.dfLikelihood = table.likelihood(nPlace);
        listOperation.push_back(operation);
    }
    return listOperation;
}

LaueCandidate candidateOf(const LaueSetting& setting, double dfLikelihood)
{
    LaueCandidate candidate;
    candidate.strClass = setting.strClass;
    candidate.symmetry = setting.symmetry;
    candidate.cell = setting.cell;
    candidate.system = setting.system;
    candidate.chCentring = setting.chCentring;
    candidate.dfLikelihood = dfLikelihood;
    candidate.nOperations = int(setting.listRotation.size());
    return candidate;
}

/// The likelihoods of all settings, normalized to a sum of 1.
std::vector<double> likelihoodsOf(const LaueSettings& settings, const CRotationTable& table)
{
    const CRotationLikelihood rotations(table.agreements());
    std::vector<double> listLikelihood;
    for (const LaueSetting& setting : settings.listSetting) {
        listLikelihood.push_back(rotations.logarithm(table.rotationsOf(setting)));
    }
    const double dfBest = *std::max_element(listLikelihood.begin(), listLikelihood.end());
    double dfSum = 0;
    for (double& df : listLikelihood) {
        df = std::exp(df - dfBest);
        dfSum += df;
    }
    for (double& df : listLikelihood) {
        df /= dfSum;
    }
    return listLikelihood;
}

/// The best setting of each class and centring, with likelihoods normalized to a sum of 1.
std::vector<LaueCandidate> bestOfEachClass(const std::vector<LaueCandidate>& listCandidate)
{
    std::set<std::pair<QString, char>> setSeen;
    std::vector<LaueCandidate> listBest;
    double dfSum = 0;
    for (const LaueCandidate& candidate : listCandidate) {
        if (setSeen.insert({candidate.strClass, candidate.chCentring}).second) {
            listBest.push_back(candidate);
            dfSum += candidate.dfLikelihood;
        }
    }
    for (LaueCandidate& candidate : listBest) {
        candidate.dfLikelihood /= dfSum;
    }
    return listBest;
}

void putAgreement(const std::vector<Observation>& listObservation, LaueCandidate& candidate)
{
    const EquivalentGroups groups = groupEquivalents(listObservation, candidate.symmetry);
    CAgreement agreement;
    for (const MergedGroup& group : mergeGroups(listObservation, groups)) {
        agreement.add(group);
    }
    candidate.dfRInt = agreement.rInt();
    candidate.dfCcHalf = agreement.ccHalf();
}

}  // namespace

LaueProposal proposeLaueClass(const std::vector<Observation>& listObservation,
                              const std::vector<LatticeType>& listType, const CellParameters& cellInForce)
{
    LaueProposal proposal;
    const LaueSettings settings = laueSettings(listType, cellInForce);
    CRotationTable table(settings, listObservation);
    const std::vector<double> listLikelihood = likelihoodsOf(settings, table);
    for (size_t n = 0; n < listLikelihood.size(); ++n) {
        table.addLikelihood(settings.listSetting[n], listLikelihood[n]);
        proposal.listCandidate.push_back(candidateOf(settings.listSetting[n], listLikelihood[n]));
    }
    proposal.listOperation = tableOf(settings.listSetting.front(), table);
    // If classes are equally likely, the lower symmetry comes first, since the data do not support the higher
    // one.
    std::stable_sort(proposal.listCandidate.begin(), proposal.listCandidate.end(),
                     [](const LaueCandidate& one, const LaueCandidate& other) {
                         return one.dfLikelihood != other.dfLikelihood ? one.dfLikelihood > other.dfLikelihood
                                                                       : one.nOperations < other.nOperations;
                     });
    proposal.listCandidate = bestOfEachClass(proposal.listCandidate);
    for (LaueCandidate& candidate : proposal.listCandidate) {
        putAgreement(listObservation, candidate);
    }
    return proposal;
}

}  // namespace tessera
