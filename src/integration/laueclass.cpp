#include "integration/laueclass.h"

#include "integration/equivalents.h"
#include "integration/lauesettings.h"
#include "integration/mergedgroups.h"
#include "integration/rotationagreement.h"

#include "lattice/rotationgroups.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

namespace tessera {

namespace {

/// A rotation and its inverse say the same: the one that comes first stands for both.
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

struct JudgedRotation {
    RotationAgreement agreement;
    RotationDensities densities;
};
using AgreementMap = std::map<RotationKey, JudgedRotation>;

AgreementMap agreementsOf(const LaueSettings& settings, const std::vector<Observation>& listObservation)
{
    const CRotationAgreement rotations(listObservation, settings.primitive);
    AgreementMap mapAgreement;
    for (const LaueSetting& setting : settings.listSetting) {
        for (const Eigen::Matrix3i& mat : setting.listRotation) {
            const RotationKey key = keyOfPair(mat);
            if (!mat.isIdentity() && mapAgreement.count(key) == 0) {
                mapAgreement[key].agreement = rotations.agreement(mat);
            }
        }
    }
    std::vector<RotationAgreement> listAgreement;
    for (const auto& one : mapAgreement) {
        listAgreement.push_back(one.second.agreement);
    }
    const std::vector<RotationDensities> listDensity = rotationDensities(listAgreement);
    size_t nPlace = 0;
    for (auto& one : mapAgreement) {
        one.second.densities = listDensity[nPlace++];
    }
    return mapAgreement;
}

std::vector<OperationAgreement> tableOf(const LaueSetting& highest, const AgreementMap& mapAgreement)
{
    std::vector<OperationAgreement> listOperation;
    std::set<RotationKey> setDone;
    for (size_t n = 0; n < highest.listRotation.size(); ++n) {
        const RotationKey key = keyOfPair(highest.listRotation[n]);
        if (highest.listRotation[n].isIdentity() || !setDone.insert(key).second) {
            continue;
        }
        const auto& [agreement, densities] = mapAgreement.at(key);
        OperationAgreement operation;
        gemmi::Op op = highest.listConventional[n];
        op.tran = {0, 0, 0};
        operation.strOperation = QString::fromStdString(op.triplet());
        operation.nOrder = orderOf(highest.listRotation[n]);
        operation.nPairs = agreement.nPairs;
        operation.dfCorrelation = agreement.dfCorrelation;
        operation.dfR = agreement.dfR;
        operation.dfLikelihood = densities.dfHaving / (densities.dfHaving + densities.dfLacking);
        listOperation.push_back(operation);
    }
    return listOperation;
}

double logLikelihoodOf(const LaueSetting& setting, const AgreementMap& mapAgreement)
{
    std::set<RotationKey> setOwn;
    for (const Eigen::Matrix3i& mat : setting.listRotation) {
        setOwn.insert(keyOfPair(mat));
    }
    double dfSum = 0;
    for (const auto& [key, rotation] : mapAgreement) {
        dfSum += std::log(setOwn.count(key) > 0 ? rotation.densities.dfHaving : rotation.densities.dfLacking);
    }
    return dfSum;
}

LaueCandidate candidateOf(const LaueSetting& setting, double dfLogLikelihood)
{
    LaueCandidate candidate;
    candidate.strClass = setting.strClass;
    candidate.symmetry = setting.symmetry;
    candidate.cell = setting.cell;
    candidate.system = setting.system;
    candidate.chCentring = setting.chCentring;
    candidate.dfLikelihood = dfLogLikelihood;
    candidate.nOperations = int(setting.listRotation.size());
    return candidate;
}

/// Logarithms to likelihoods that come to 1.
void normalize(std::vector<LaueCandidate>& listCandidate)
{
    const double dfBest = listCandidate.front().dfLikelihood;
    double dfSum = 0;
    for (LaueCandidate& candidate : listCandidate) {
        candidate.dfLikelihood = std::exp(candidate.dfLikelihood - dfBest);
        dfSum += candidate.dfLikelihood;
    }
    for (LaueCandidate& candidate : listCandidate) {
        candidate.dfLikelihood /= dfSum;
    }
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
    const AgreementMap mapAgreement = agreementsOf(settings, listObservation);
    proposal.listOperation = tableOf(settings.listSetting.front(), mapAgreement);
    for (const LaueSetting& setting : settings.listSetting) {
        proposal.listCandidate.push_back(candidateOf(setting, logLikelihoodOf(setting, mapAgreement)));
    }
    // What the data say nothing of, they do not support: of equals the lower symmetry comes first.
    std::stable_sort(proposal.listCandidate.begin(), proposal.listCandidate.end(),
                     [](const LaueCandidate& one, const LaueCandidate& other) {
                         return one.dfLikelihood != other.dfLikelihood ? one.dfLikelihood > other.dfLikelihood
                                                                       : one.nOperations < other.nOperations;
                     });
    std::set<std::pair<QString, char>> setSeen;
    std::vector<LaueCandidate> listBest;
    for (const LaueCandidate& candidate : proposal.listCandidate) {
        if (setSeen.insert({candidate.strClass, candidate.chCentring}).second) {
            listBest.push_back(candidate);
        }
    }
    proposal.listCandidate = std::move(listBest);
    normalize(proposal.listCandidate);
    for (LaueCandidate& candidate : proposal.listCandidate) {
        putAgreement(listObservation, candidate);
    }
    return proposal;
}

}  // namespace tessera
