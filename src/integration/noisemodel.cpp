#include "integration/noisemodel.h"

#include "frames/median.h"

#include <cmath>

namespace tessera {

namespace {

struct Group {
    double dfMean = 0, dfVariance = 0, dfCount = 0;
};

/// Groups of patches sorted by mean, with at least 30 patches and a range of at least a fifth of the mean. In
/// groups of equal number the few bright patches, which determine the gain, would be lost among the others.
std::vector<Group> groupsOf(const std::vector<BackgroundPatch>& listPatch)
{
    const size_t nLeast = 30;
    std::vector<Group> listGroup;
    for (size_t nFirst = 0; nFirst < listPatch.size();) {
        std::vector<float> listMean, listVariance;
        const double dfMost = listPatch[nFirst].dfMean + 0.2 * std::abs(listPatch[nFirst].dfMean);
        size_t n = nFirst;
        for (; n < listPatch.size() && (n < nFirst + nLeast || listPatch[n].dfMean < dfMost); ++n) {
            listMean.push_back(float(listPatch[n].dfMean));
            listVariance.push_back(float(listPatch[n].dfVariance));
        }
        if (listGroup.empty() || listMean.size() >= nLeast) {
            const double dfCount = double(listMean.size());
            listGroup.push_back({double(medianOf(listMean)), double(medianOf(listVariance)), dfCount});
        }
        nFirst = n;
    }
    return listGroup;
}

struct Line {
    double dfMean = 0, dfVariance = 0;  ///< mean and variance of the group
    double dfSlope = 0;
    double at(double dfCounts) const { return dfVariance + dfSlope * (dfCounts - dfMean); }
};

Line lineThrough(const std::vector<Group>& listGroup)
{
    double dfW = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0;
    for (const Group& group : listGroup) {
        if (group.dfVariance > 0) {
            const double dfWeight = group.dfCount / (group.dfVariance * group.dfVariance);
            dfW += dfWeight;
            dfX += dfWeight * group.dfMean;
            dfY += dfWeight * group.dfVariance;
            dfXX += dfWeight * group.dfMean * group.dfMean;
            dfXY += dfWeight * group.dfMean * group.dfVariance;
        }
    }
    if (!(dfW > 0)) {
        return {};
    }
    Line line{dfX / dfW, dfY / dfW, 0};
    const double dfSpread = dfXX / dfW - line.dfMean * line.dfMean;
    line.dfSlope = dfSpread > 0 ? (dfXY / dfW - line.dfMean * line.dfVariance) / dfSpread : 0;
    return line;
}

/// The groups up to a mean, if there are at least three.
std::vector<Group> upTo(const std::vector<Group>& listGroup, double dfMost)
{
    std::vector<Group> listDark;
    for (const Group& group : listGroup) {
        if (group.dfMean <= dfMost) {
            listDark.push_back(group);
        }
    }
    return listDark.size() >= 3 ? listDark : listGroup;
}

std::vector<Group> darkerHalf(const std::vector<Group>& listGroup)
{
    double dfTotal = 0, dfCount = 0;
    for (const Group& group : listGroup) {
        dfTotal += group.dfCount;
    }
    std::vector<Group> listDarker;
    for (const Group& group : listGroup) {
        if (dfCount < dfTotal / 2) {
            listDarker.push_back(group);
        }
        dfCount += group.dfCount;
    }
    return listDarker;
}

}  // namespace

double NoiseModel::readNoise() const
{
    return dfOffset > 0 ? std::sqrt(dfOffset) : 0;
}

NoiseModel noiseOfBackgrounds(std::vector<BackgroundPatch> listPatch)
{
    NoiseModel noise;
    std::stable_sort(
        listPatch.begin(), listPatch.end(),
        [](const BackgroundPatch& one, const BackgroundPatch& other) { return one.dfMean < other.dfMean; });
    std::vector<Group> listGroup = groupsOf(listPatch);
    if (listGroup.empty()) {
        return noise;
    }
    const Line line = lineThrough(upTo(listGroup, 3 * std::abs(listGroup.front().dfMean)));
    const bool bTells = listGroup.back().dfVariance > 1.2 * listGroup.front().dfVariance && line.dfSlope > 0;
    // Beyond three times the darkest level, rings and flanks contribute more to the variance than counting. A
    // line that crosses the axis at positive counts indicates a dark level if the crossing is far enough from
    // 0; a small value is caused by diffuse rings and tails of spots, which add variance to bright patches.
    const bool bDark = line.at(0) < 0;
    if (bTells && (!bDark || -line.at(0) / line.dfSlope > 0.5 * listGroup.front().dfMean)) {
        noise.dfGain = line.dfSlope;
        noise.dfOffset = line.at(0);
        return noise;
    }
    listGroup = darkerHalf(listGroup);
    const Line dark = lineThrough(listGroup);
    if (dark.dfMean > 0) {
        noise.dfGain = dark.dfVariance / dark.dfMean;
    } else {
        noise.dfOffset = dark.dfVariance;
    }
    return noise;
}

}  // namespace tessera
