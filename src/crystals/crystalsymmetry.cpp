#include "crystals/crystalsymmetry.h"

#include "integration/laueclass.h"

#include <Eigen/LU>

#include <algorithm>

namespace tessera {

namespace {

/// The reflections of all crystals, E² in place of the intensity, with the indices of the group's reduced
/// cell.
std::vector<Observation> observationsOf(const std::vector<SettingInput>& listInput,
                                        const std::vector<int>& listSetting, const CellParameters& cell)
{
    // Its columns are a*, b*, c* (Å⁻¹), as the rows of the direct basis are a, b, c.
    const Eigen::Matrix3d matReciprocal = directBasisOf(cell).inverse();
    std::vector<Observation> list;
    for (size_t n = 0; n < listInput.size(); ++n) {
        const Eigen::Matrix3i& mat = listInput[n].listSetting[size_t(listSetting[n])].matAxes;
        for (const NormalizedReflection& one : listInput[n].listReflection) {
            const Eigen::Vector3i vec = mat * Eigen::Vector3i(one.anIndex[0], one.anIndex[1], one.anIndex[2]);
            Observation observation;
            observation.anIndex = {vec[0], vec[1], vec[2]};
            observation.dfDStar = (matReciprocal * vec.cast<double>()).norm();
            observation.dfIntensity = one.dfSquare;
            observation.dfSigma = one.dfSigma;
            list.push_back(observation);
        }
    }
    return list;
}

}  // namespace

int rotationCount(const QString& strLaueClass)
{
    struct Class {
        const char* pszName;
        int nRotations;
    };
    static const Class aClass[] = {{"-1", 1},     {"2/m", 2},  {"mmm", 4},  {"-3", 3},    {"-3m", 6},
                                   {"-3m1", 6},   {"-31m", 6}, {"4/m", 4},  {"4/mmm", 8}, {"6/m", 6},
                                   {"6/mmm", 12}, {"m-3", 12}, {"m-3m", 24}};
    for (const Class& one : aClass) {
        if (strLaueClass == QLatin1String(one.pszName)) {
            return one.nRotations;
        }
    }
    return 0;
}

CrystalSymmetry symmetryOfCrystals(const std::vector<SettingInput>& listInput,
                                   const std::vector<int>& listSetting, int nMostRotations,
                                   const QString& strWish, const CellParameters& cell)
{
    const LaueProposal proposal = proposeLaueClass(observationsOf(listInput, listSetting, cell), {}, cell);
    // The candidates are in the order of likelihood, so the first that fits is the likeliest.
    const auto find = [&](auto fnFits) {
        return std::find_if(proposal.listCandidate.begin(), proposal.listCandidate.end(), fnFits);
    };
    const auto itEnd = proposal.listCandidate.end();
    auto itTaken = strWish.isEmpty() ? itEnd : find([&](const LaueCandidate& candidate) {
        const bool bEitherAxes = strWish == QLatin1String("-3m") &&
                                 candidate.strClass.startsWith(QLatin1String("-3")) &&
                                 candidate.nOperations == rotationCount(strWish);
        return candidate.strClass == strWish || bEitherAxes;
    });
    if (itTaken == itEnd) {  // no wish, or one that the lattice does not have
        itTaken = find(
            [&](const LaueCandidate& candidate) { return candidate.nOperations <= nMostRotations; });
    }
    return itTaken == itEnd ? CrystalSymmetry() : CrystalSymmetry{itTaken->strClass, itTaken->symmetry};
}

}  // namespace tessera
