#include "crystals/crystalsettings.h"

#include "crystals/cellsettings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace tessera {

namespace {

/// Below so many common reflections a correlation says nothing on which setting is right.
constexpr int g_nFewCommon = 10;

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

/// Sums with weights 1 / sigma² by index.
class CMeans {
public:
    void add(const std::array<int, 3>& anIndex, double dfIntensity, double dfSigma)
    {
        Sums& sums = m_map[anIndex];
        const double dfWeight = 1 / (dfSigma * dfSigma);
        sums.dfWeighted += dfWeight * dfIntensity;
        sums.dfWeight += dfWeight;
    }
    std::vector<FriedelIntensity> take() const
    {
        std::vector<FriedelIntensity> list;
        list.reserve(m_map.size());
        for (const auto& [anIndex, sums] : m_map) {
            list.push_back({anIndex, sums.dfWeighted / sums.dfWeight, 1 / std::sqrt(sums.dfWeight)});
        }
        return list;
    }

private:
    struct Sums {
        double dfWeighted = 0;
        double dfWeight = 0;
    };
    std::map<std::array<int, 3>, Sums> m_map;
};

/// Pairs of what two sorted lists have in common.
std::vector<std::array<double, 2>> commonPairs(const std::vector<FriedelIntensity>& first,
                                               const std::vector<FriedelIntensity>& second)
{
    std::vector<std::array<double, 2>> listPair;
    auto it = second.begin();
    for (const FriedelIntensity& intensity : first) {
        while (it != second.end() && it->anIndex < intensity.anIndex) {
            ++it;
        }
        if (it != second.end() && it->anIndex == intensity.anIndex) {
            listPair.push_back({intensity.dfIntensity, it->dfIntensity});
        }
    }
    return listPair;
}

std::vector<FriedelIntensity> inSetting(const std::vector<FriedelIntensity>& list, const Eigen::Matrix3i& mat)
{
    std::vector<FriedelIntensity> listNew = list;
    for (FriedelIntensity& intensity : listNew) {
        const Eigen::Vector3i vec = mat * Eigen::Vector3i(intensity.anIndex[0], intensity.anIndex[1],
                                                          intensity.anIndex[2]);
        intensity.anIndex = friedelIndex({vec[0], vec[1], vec[2]});
    }
    std::sort(listNew.begin(), listNew.end(), [](const FriedelIntensity& one, const FriedelIntensity& other) {
        return one.anIndex < other.anIndex;
    });
    return listNew;
}

/// A crystal in each of its settings.
struct Choices {
    Eigen::Matrix3d matReduced;            ///< to the indices of its reduced cell
    std::vector<CellSetting> listSetting;  ///< on to those of the group
    std::vector<std::vector<FriedelIntensity>> listInSetting;
    int nChosen = -1;  ///< not settled yet

    const std::vector<FriedelIntensity>& chosen() const { return listInSetting[size_t(nChosen)]; }
};

/// The mean of all that are settled but one; each on the scale of its own mean intensity.
std::vector<FriedelIntensity> meanOfOthers(const std::vector<Choices>& listChoices, size_t nLeftOut)
{
    CMeans means;
    for (size_t n = 0; n < listChoices.size(); ++n) {
        if (n == nLeftOut || listChoices[n].nChosen < 0) {
            continue;
        }
        double dfSum = 0;
        for (const FriedelIntensity& intensity : listChoices[n].chosen()) {
            dfSum += std::abs(intensity.dfIntensity);
        }
        const double dfMean = dfSum / double(listChoices[n].chosen().size());
        for (const FriedelIntensity& intensity : listChoices[n].chosen()) {
            if (dfMean > 0) {
                means.add(intensity.anIndex, intensity.dfIntensity / dfMean, intensity.dfSigma / dfMean);
            }
        }
    }
    return means.take();
}

/// What one crystal makes of the others.
struct Comparison {
    int nBest = -1;
    IntensityCorrelation best;
    double dfSecond = 0;
    int nMostCommon = 0;
};

Comparison compare(const Choices& choices, const std::vector<FriedelIntensity>& others)
{
    Comparison comparison;
    double dfBest = -std::numeric_limits<double>::infinity(), dfSecond = dfBest;
    for (size_t n = 0; n < choices.listInSetting.size(); ++n) {
        const IntensityCorrelation correlation = correlationOf(choices.listInSetting[n], others);
        comparison.nMostCommon = std::max(comparison.nMostCommon, correlation.nCommon);
        const double df = correlation.nCommon < g_nFewCommon ? -1 : correlation.dfCorrelation;
        if (df > dfBest) {
            dfSecond = dfBest;
            dfBest = df;
            comparison.nBest = int(n);
            comparison.best = correlation;
        } else {
            dfSecond = std::max(dfSecond, df);
        }
    }
    comparison.dfSecond = std::isfinite(dfSecond) ? dfSecond : 0;
    return comparison;
}

size_t greatest(const std::vector<Choices>& listChoices)
{
    size_t nGreatest = 0;
    for (size_t n = 1; n < listChoices.size(); ++n) {
        if (listChoices[n].listInSetting.front().size() >
            listChoices[nGreatest].listInSetting.front().size()) {
            nGreatest = n;
        }
    }
    return nGreatest;
}

/// Settles one after the other, that which shares most with the settled ones first.
bool settleAll(std::vector<Choices>& listChoices, CRunReport& report)
{
    listChoices[greatest(listChoices)].nChosen = 0;
    for (size_t nRound = 1; nRound < listChoices.size(); ++nRound) {
        if (!report.goOn()) {
            return false;
        }
        const std::vector<FriedelIntensity> others = meanOfOthers(listChoices, listChoices.size());
        size_t nNext = 0;
        Comparison next;
        next.nMostCommon = -1;
        for (size_t n = 0; n < listChoices.size(); ++n) {
            if (listChoices[n].nChosen < 0) {
                const Comparison comparison = compare(listChoices[n], others);
                if (comparison.nMostCommon > next.nMostCommon) {
                    next = comparison;
                    nNext = n;
                }
            }
        }
        listChoices[nNext].nChosen = next.nBest;
    }
    return true;
}

/// Tries each against all others until nothing changes.
bool improveAll(std::vector<Choices>& listChoices, CRunReport& report)
{
    const int nMostRounds = 20;  // a handful is usual
    bool bChanged = true;
    for (int nRound = 0; bChanged && nRound < nMostRounds; ++nRound) {
        bChanged = false;
        for (size_t n = 0; n < listChoices.size(); ++n) {
            if (!report.goOn()) {
                return false;
            }
            const Comparison comparison = compare(listChoices[n], meanOfOthers(listChoices, n));
            if (comparison.best.nCommon >= g_nFewCommon && comparison.nBest != listChoices[n].nChosen) {
                listChoices[n].nChosen = comparison.nBest;
                bChanged = true;
            }
        }
    }
    return true;
}

}  // namespace

bool wholeIndex(const Eigen::Matrix3d& mat, const std::array<int, 3>& anIndex, std::array<int, 3>& anNew)
{
    const Eigen::Vector3d vec = mat * Eigen::Vector3d(anIndex[0], anIndex[1], anIndex[2]);
    const double dfWhole = 0.01;  // of sums of halves and thirds
    for (int n = 0; n < 3; ++n) {
        anNew[size_t(n)] = int(std::lround(vec[n]));
        if (std::abs(vec[n] - anNew[size_t(n)]) > dfWhole) {
            return false;
        }
    }
    return true;
}

std::vector<FriedelIntensity> friedelMerged(const std::vector<ScaledIntensity>& list,
                                            const Eigen::Matrix3d& matIndices)
{
    CMeans means;
    std::array<int, 3> anIndex = {};
    for (const ScaledIntensity& intensity : list) {
        if (wholeIndex(matIndices, intensity.anIndex, anIndex)) {
            means.add(friedelIndex(anIndex), intensity.dfIntensity, intensity.dfSigma);
        }
    }
    return means.take();
}

IntensityCorrelation correlationOf(const std::vector<FriedelIntensity>& first,
                                   const std::vector<FriedelIntensity>& second)
{
    const std::vector<std::array<double, 2>> listPair = commonPairs(first, second);
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

std::vector<SettledCrystal> settleCrystals(const std::vector<Crystal>& listCrystal,
                                           const std::vector<int>& listMember, const LatticeBasis& reference,
                                           CRunReport& report)
{
    std::vector<Choices> listChoices;
    std::vector<int> listPlace;
    for (const int nCrystal : listMember) {
        const Crystal& crystal = listCrystal[size_t(nCrystal)];
        const ReducedCell reduced = reducedCell(crystal.cell, crystal.chCentring);
        Choices choices;
        choices.matReduced = reduced.matIndices;
        choices.listSetting = settingsBetween(reduced.basis, reference);
        const std::vector<FriedelIntensity> list = friedelMerged(crystal.listIntensity, reduced.matIndices);
        if (choices.listSetting.empty() || list.empty()) {
            continue;
        }
        for (const CellSetting& setting : choices.listSetting) {
            choices.listInSetting.push_back(inSetting(list, setting.matAxes));
        }
        listChoices.push_back(std::move(choices));
        listPlace.push_back(nCrystal);
    }
    std::vector<SettledCrystal> listSettled;
    if (listChoices.empty() || !settleAll(listChoices, report) || !improveAll(listChoices, report)) {
        return listSettled;
    }
    for (size_t n = 0; n < listChoices.size(); ++n) {
        const Choices& choices = listChoices[n];
        const Comparison comparison = compare(choices, meanOfOthers(listChoices, n));
        SettledCrystal settled;
        settled.nCrystal = listPlace[n];
        settled.matIndices = choices.listSetting[size_t(choices.nChosen)].matAxes.cast<double>() *
                             choices.matReduced;
        settled.listMean = choices.chosen();
        settled.dfCorrelation = comparison.best.dfCorrelation;
        settled.dfSecond = comparison.dfSecond;
        settled.nCommon = comparison.best.nCommon;
        listSettled.push_back(std::move(settled));
    }
    return listSettled;
}

}  // namespace tessera
