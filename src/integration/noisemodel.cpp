#include "integration/noisemodel.h"

#include "frames/median.h"

#include <cmath>

namespace tessera {

namespace {

struct Group {
    double dfMean = 0, dfVariance = 0;
};

std::vector<Group> groupsOf(const std::vector<BackgroundPatch>& listPatch)
{
    const size_t nGroups = std::min<size_t>(10, listPatch.size());
    std::vector<Group> listGroup;
    for (size_t n = 0; n < nGroups; ++n) {
        std::vector<float> listMean, listVariance;
        for (size_t i = n * listPatch.size() / nGroups; i < (n + 1) * listPatch.size() / nGroups; ++i) {
            listMean.push_back(float(listPatch[i].dfMean));
            listVariance.push_back(float(listPatch[i].dfVariance));
        }
        listGroup.push_back({double(medianOf(listMean)), double(medianOf(listVariance))});
    }
    return listGroup;
}

}  // namespace

double NoiseModel::readNoise() const
{
    return dfOffset > 0 ? std::sqrt(dfOffset) : 0;
}

NoiseModel noiseOfBackgrounds(std::vector<BackgroundPatch> listPatch)
{
    NoiseModel noise;
    std::stable_sort(listPatch.begin(), listPatch.end(),
                     [](const BackgroundPatch& one, const BackgroundPatch& other) {
                         return one.dfMean < other.dfMean;
                     });
    const std::vector<Group> listGroup = groupsOf(listPatch);
    double dfW = 0, dfX = 0, dfY = 0, dfXX = 0, dfXY = 0;
    for (const Group& group : listGroup) {
        if (group.dfVariance > 0) {
            const double dfWeight = 1 / (group.dfVariance * group.dfVariance);
            dfW += dfWeight;
            dfX += dfWeight * group.dfMean;
            dfY += dfWeight * group.dfVariance;
            dfXX += dfWeight * group.dfMean * group.dfMean;
            dfXY += dfWeight * group.dfMean * group.dfVariance;
        }
    }
    if (!(dfW > 0)) {
        return noise;
    }
    const double dfMean = dfX / dfW, dfVariance = dfY / dfW;
    const double dfSpread = dfXX / dfW - dfMean * dfMean;
    const double dfSlope = (dfXY / dfW - dfMean * dfVariance) / dfSpread;
    const bool bTells = listGroup.back().dfVariance > 1.3 * listGroup.front().dfVariance;
    if (bTells && dfSpread > 0 && dfSlope > 0) {
        noise.dfGain = dfSlope;
        noise.dfOffset = dfVariance - dfSlope * dfMean;
    } else if (dfMean > 0) {
        noise.dfGain = dfVariance / dfMean;
    } else {
        noise.dfOffset = dfVariance;
    }
    return noise;
}

}  // namespace tessera
