#include "crystals/crystalsettings.h"

#include "crystals/crystalsymmetry.h"
#include "crystals/settingchoices.h"
#include "imaging/sidebyside.h"
#include "integration/asymmetricunit.h"
#include "integration/resolutionbins.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

namespace tessera {

namespace {

/// The symmetry is found from so many crystals at the most, those with the most reflections. More would only
/// take memory.
constexpr size_t g_nForSymmetry = 50;

/// Of an index and its Friedel mate the one whose first number that is not 0 is positive.
std::array<int, 3> friedelIndex(std::array<int, 3> anIndex)
{
    const auto itFirst = std::find_if(anIndex.begin(), anIndex.end(), [](int n) { return n != 0; });
    if (itFirst != anIndex.end() && *itFirst < 0) {
        for (int& n : anIndex) {
            n = -n;
        }
    }
    return anIndex;
}

/// Means, weighted by 1 / sigma², of the intensities with equal indices, sorted by the indices.
std::vector<FriedelIntensity> merged(std::vector<FriedelIntensity> list)
{
    std::stable_sort(list.begin(), list.end(),
                     [](const FriedelIntensity& one, const FriedelIntensity& other) {
                         return one.anIndex < other.anIndex;
                     });
    size_t nEnd = 0;  // the means replace the front of the list, up to here
    for (size_t nFirst = 0; nFirst < list.size();) {
        double dfWeights = 0, dfWeighted = 0;
        size_t n = nFirst;
        for (; n < list.size() && list[n].anIndex == list[nFirst].anIndex; ++n) {
            const double dfWeight = 1 / (list[n].dfSigma * list[n].dfSigma);
            dfWeights += dfWeight;
            dfWeighted += dfWeight * list[n].dfIntensity;
        }
        list[nEnd++] = {list[nFirst].anIndex, dfWeighted / dfWeights, 1 / std::sqrt(dfWeights)};
        nFirst = n;
    }
    list.resize(nEnd);
    return list;
}

/// Normalizes intensities by the mean at their resolution, which is computed with the crystal's own cell.
std::vector<NormalizedReflection> normalized(const std::vector<FriedelIntensity>& list,
                                             const LatticeBasis& basis)
{
    const Eigen::Matrix3d matReciprocal = basis.inverse();
    std::vector<double> listDStar, listIntensity;
    for (const FriedelIntensity& one : list) {
        listDStar.push_back(
            (matReciprocal * Eigen::Vector3d(one.anIndex[0], one.anIndex[1], one.anIndex[2])).norm());
        listIntensity.push_back(one.dfIntensity);
    }
    const CResolutionMean resolutionMean(listDStar, listIntensity);
    // Of acentric reflections one in nine millions is above this amplitude by Wilson's distribution, e^−16.
    const double dfMost = 4;
    std::vector<NormalizedReflection> listNormalized;
    for (size_t n = 0; n < list.size(); ++n) {
        const double dfMean = resolutionMean.mean(listDStar[n]);
        NormalizedReflection one;
        one.anIndex = list[n].anIndex;
        one.dfSquare = list[n].dfIntensity / dfMean;
        one.dfSigma = list[n].dfSigma / dfMean;
        one.dfAmplitude = std::copysign(std::min(dfMost, std::sqrt(std::abs(one.dfSquare))), one.dfSquare);
        listNormalized.push_back(one);
    }
    return listNormalized;
}

/// All settings within the tolerance. A member of the group that is farther off, because other members link
/// it to the group, gets those settings that are not much worse than its best one.
std::vector<CellSetting> usableSettings(const LatticeBasis& from, const LatticeBasis& to,
                                        const CellTolerance& tolerance)
{
    std::vector<CellSetting> list = settingsBetween(from, to, tolerance);
    if (list.empty()) {
        // Both in units of the tolerance. Beyond three of them many other lattices are as close.
        const double dfNotMuchWorse = 0.5;
        const double dfMost = 3;
        const double dfWider = latticeDistance(from, to, tolerance) + dfNotMuchWorse;
        if (dfWider < dfMost) {
            list = settingsBetween(from, to, {tolerance.dfLengths * dfWider, tolerance.dfAngles * dfWider});
        }
    }
    return list;
}

/// One crystal before its setting is chosen.
struct Candidate {
    int nCrystal = 0;                           ///< place in the list of the crystals
    Eigen::Matrix3d matReduced;                 ///< from the indices of its cell to those of its reduced cell
    std::vector<FriedelIntensity> listReduced;  ///< with the indices of its reduced cell
};

/// The intensities in the setting of the group, merged under its symmetry.
/// @param list      with the indices of the crystal's reduced cell
/// @param matAxes   from these to the indices of the group's reduced cell
/// @param symmetry  from the indices of the group's reduced cell
/// @return with the indices of the group's reduced cell, of which equivalents have the same
std::vector<FriedelIntensity> underSymmetry(const std::vector<FriedelIntensity>& list,
                                            const Eigen::Matrix3i& matAxes,
                                            const ObservationSymmetry& symmetry)
{
    const CAsymmetricUnit unit(symmetry.ops);
    Eigen::Matrix3d matConventional;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            matConventional(nRow, n) = double(symmetry.anTransform[nRow][n]) / symmetry.nDenominator;
        }
    }
    const Eigen::Matrix3d matBack = matConventional.inverse();
    std::vector<FriedelIntensity> listNew = list;
    for (FriedelIntensity& one : listNew) {
        const Eigen::Vector3i vec = matAxes * Eigen::Vector3i(one.anIndex[0], one.anIndex[1], one.anIndex[2]);
        const std::array<int, 3> anConventional =
            unit.representative(conventionalIndex(symmetry, {vec[0], vec[1], vec[2]})).anIndex;
        // The way back gives whole numbers, as the conventional cell has the same lattice.
        one.anIndex = friedelIndex(wholeIndex(matBack, anConventional).value_or(one.anIndex));
    }
    return merged(std::move(listNew));
}

ObservationSymmetry friedelAlone()
{
    ObservationSymmetry symmetry;
    symmetry.ops = gemmi::symops_from_hall("-P 1");
    return symmetry;
}

/// The median of the numbers of rotations in the Laue classes that the runs on single crystals have found,
/// the lower one of two; 1 if no run has found a class.
int usualRotations(const std::vector<Crystal>& listCrystal, const std::vector<Candidate>& listCandidate)
{
    std::vector<int> list;
    for (const Candidate& candidate : listCandidate) {
        const int nRotations = rotationCount(listCrystal[candidate.nCrystal].strLaueClass);
        if (nRotations > 0) {
            list.push_back(nRotations);
        }
    }
    if (list.empty()) {
        return 1;
    }
    std::sort(list.begin(), list.end());
    return list[(list.size() - 1) / 2];
}

/// The Laue class by the crystals with the most reflections, which are brought to one setting first, with no
/// symmetry but Friedel's; none if the report asked to stop. Crystals that share too little take no part.
std::optional<CrystalSymmetry> firstSymmetry(const std::vector<SettingInput>& listInput, int nMostRotations,
                                             const LatticeBasis& reference, const SettlingOptions& options,
                                             CRunReport& report)
{
    std::vector<size_t> listOrder(listInput.size());
    std::iota(listOrder.begin(), listOrder.end(), size_t(0));
    std::stable_sort(listOrder.begin(), listOrder.end(), [&](size_t one, size_t other) {
        return listInput[one].listReflection.size() > listInput[other].listReflection.size();
    });
    listOrder.resize(std::min(listOrder.size(), g_nForSymmetry));
    // Back to the order of the crystals, which decides between equals later on.
    std::sort(listOrder.begin(), listOrder.end());
    std::vector<SettingInput> listSome;
    listSome.reserve(listOrder.size());
    for (const size_t n : listOrder) {
        listSome.push_back(listInput[n]);
    }
    CSettingChoices choices(friedelAlone(), listSome);
    if (!choices.settle(report)) {
        return std::nullopt;
    }
    std::vector<SettingInput> listSettled;
    std::vector<int> listSetting;
    for (size_t n = 0; n < listSome.size(); ++n) {
        if (choices.isSettled(n)) {
            listSettled.push_back(std::move(listSome[n]));
            listSetting.push_back(choices.settingOf(n));
        }
    }
    return symmetryOfCrystals(listSettled, listSetting, nMostRotations, options.strLaueClass,
                              cellOf(reference));
}

/// The distances of SettledCrystals::distances.
CDistances distancesOf(const CSettingChoices& choices, const std::vector<SettledCrystal>& listSettled,
                       int nJobs)
{
    const int nCount = int(listSettled.size());
    CDistances distances(nCount);
    const auto work = [&](int i) {
        for (int j = i + 1; j < nCount; ++j) {
            const SettingAgreement two = choices.agreementOf(size_t(i), size_t(j));
            // What two crystals correlate by if they have nothing in common but the mean of the others.
            const double dfExpected = std::max(0.0, listSettled[i].dfCorrelation) *
                                      std::max(0.0, listSettled[j].dfCorrelation);
            const double df = std::max(0.0, (two.nCommon * two.dfCorrelation + g_nFewCommon * dfExpected) /
                                                (two.nCommon + g_nFewCommon));
            distances.set(i, j, std::sqrt(1 - df * df));
        }
    };
    sideBySide(nCount, nJobs, [&]() -> FnPiece { return work; });
    return distances;
}

SettledCrystal settledOf(const CSettingChoices& choices, size_t nPlace, const Candidate& candidate,
                         const SettingInput& input, const ObservationSymmetry& symmetry)
{
    const Eigen::Matrix3i& matAxes = input.listSetting[size_t(choices.settingOf(nPlace))].matAxes;
    const SettingAgreement agreement = choices.agreementOf(nPlace);
    SettledCrystal settled;
    settled.nCrystal = candidate.nCrystal;
    settled.matIndices = matAxes.cast<double>() * candidate.matReduced;
    settled.listMean = underSymmetry(candidate.listReduced, matAxes, symmetry);
    settled.dfCorrelation = agreement.dfCorrelation;
    settled.dfSecond = agreement.dfSecond;
    settled.nCommon = agreement.nCommon;
    settled.nAlternatives = choices.alternativeCount(nPlace);
    settled.nAlternative = choices.alternativeOf(nPlace);
    settled.bBySharing = choices.isSettled(nPlace);
    return settled;
}

}  // namespace

std::optional<std::array<int, 3>> wholeIndex(const Eigen::Matrix3d& mat, const std::array<int, 3>& anIndex)
{
    const Eigen::Vector3d vec = mat * Eigen::Vector3d(anIndex[0], anIndex[1], anIndex[2]);
    // Centrings make indices that are off by a half or a third; what is less comes from rounding.
    const double dfWhole = 0.01;
    std::array<int, 3> anNew = {};
    for (int n = 0; n < 3; ++n) {
        anNew[n] = int(std::lround(vec[n]));
        if (std::abs(vec[n] - anNew[n]) > dfWhole) {
            return {};
        }
    }
    return anNew;
}

std::vector<FriedelIntensity> friedelMerged(const std::vector<ScaledIntensity>& list,
                                            const Eigen::Matrix3d& matIndices)
{
    std::vector<FriedelIntensity> listNew;
    listNew.reserve(list.size());
    for (const ScaledIntensity& intensity : list) {
        if (const auto anIndex = wholeIndex(matIndices, intensity.anIndex)) {
            listNew.push_back({friedelIndex(*anIndex), intensity.dfIntensity, intensity.dfSigma});
        }
    }
    return merged(std::move(listNew));
}

IntensityCorrelation correlationOf(const std::vector<FriedelIntensity>& first,
                                   const std::vector<FriedelIntensity>& second)
{
    std::vector<std::array<double, 2>> listPair;  // of the indices that both lists have, which are sorted
    auto it = second.begin();
    for (const FriedelIntensity& intensity : first) {
        while (it != second.end() && it->anIndex < intensity.anIndex) {
            ++it;
        }
        if (it != second.end() && it->anIndex == intensity.anIndex) {
            listPair.push_back({intensity.dfIntensity, it->dfIntensity});
        }
    }
    IntensityCorrelation result;
    result.nCommon = int(listPair.size());
    if (listPair.size() < 3) {
        return result;
    }
    double dfMeanX = 0, dfMeanY = 0;
    for (const auto& [dfX, dfY] : listPair) {
        dfMeanX += dfX;
        dfMeanY += dfY;
    }
    dfMeanX /= double(listPair.size());
    dfMeanY /= double(listPair.size());
    double dfXX = 0, dfYY = 0, dfXY = 0;
    for (const auto& [dfX, dfY] : listPair) {
        dfXX += (dfX - dfMeanX) * (dfX - dfMeanX);
        dfYY += (dfY - dfMeanY) * (dfY - dfMeanY);
        dfXY += (dfX - dfMeanX) * (dfY - dfMeanY);
    }
    if (dfXX > 0 && dfYY > 0) {
        result.dfCorrelation = dfXY / std::sqrt(dfXX * dfYY);
    }
    return result;
}

SettledCrystals settleCrystals(const std::vector<Crystal>& listCrystal, const std::vector<int>& listMember,
                               const LatticeBasis& reference, const SettlingOptions& options,
                               CRunReport& report)
{
    SettledCrystals result;
    std::vector<Candidate> listCandidate;
    std::vector<SettingInput> listInput;
    for (const int nCrystal : listMember) {
        const Crystal& crystal = listCrystal[nCrystal];
        const ReducedCell reduced = reducedCell(crystal.cell, crystal.chCentring);
        SettingInput input;
        input.listSetting = usableSettings(reduced.basis, reference, options.tolerance);
        Candidate candidate = {nCrystal, reduced.matIndices,
                               friedelMerged(crystal.listIntensity, reduced.matIndices)};
        if (input.listSetting.empty() || candidate.listReduced.empty()) {  // another lattice, or no data
            result.listOutside.push_back(nCrystal);
            continue;
        }
        input.listReflection = normalized(candidate.listReduced, reduced.basis);
        listInput.push_back(std::move(input));
        listCandidate.push_back(std::move(candidate));
    }
    if (listInput.empty()) {
        return result;
    }
    // First the symmetry, then the settings of all crystals under it: with equivalents merged, crystals with
    // few reflections share more.
    const std::optional<CrystalSymmetry> symmetry = firstSymmetry(
        listInput, usualRotations(listCrystal, listCandidate), reference, options, report);
    if (!symmetry) {
        return {};
    }
    result.strLaueClass = symmetry->strLaueClass;
    result.symmetry = symmetry->symmetry;
    CSettingChoices choices(result.symmetry, listInput);
    if (!choices.settle(report)) {
        return {};
    }
    for (size_t n = 0; n < listInput.size(); ++n) {
        result.listSettled.push_back(settledOf(choices, n, listCandidate[n], listInput[n], result.symmetry));
    }
    result.distances = distancesOf(choices, result.listSettled, options.nJobs);
    return result;
}

}  // namespace tessera
