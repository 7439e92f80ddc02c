#include "integration/noisemodel.h"

#include "frames/median.h"

#include <cmath>

namespace tessera {

namespace {

struct Group {
    double dfMean = 0, dfVariance = 0, dfCount = 0;
};

/// Patches sorted by their mean, in groups of at least 30 that each span a fifth of their mean or more: the
/// few bright ones tell the gain, and would drown among the others in groups of equal number.
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
    double dfMean = 0, dfVariance = 0;  ///< a point of it
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

/// Those up to a mean, if they are three at least.
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
    // Beyond three times the darkest, the variance is that of rings and flanks more than of electrons. A line
    // that meets the axis right of the origin shows a dark level, if one that is worth the name; less of
    // it is what diffuse rings and the tails of spots add to the variance of bright patches.
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
