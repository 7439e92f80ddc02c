#include "cloud/pointsizes.h"

#include <algorithm>
#include <cmath>

namespace tessera {

std::vector<float> pointSizes(const QList<Peak3D>& listPoint, double fRatio)
{
    std::vector<float> vecSize;
    vecSize.reserve(listPoint.size());
    float fGreatest = 0.f;
    for (const Peak3D& peak : listPoint) {
        vecSize.push_back(float(peak.dfIPoint));
        if (std::isfinite(vecSize.back())) {
            fGreatest = std::max(fGreatest, vecSize.back());
        }
    }
    const float fFactor = fGreatest > 0.f ? 4000.f / fGreatest : 0.f;
    for (float& fSize : vecSize) {
        float fX = fFactor * fSize;
        if (!(fX >= 1.01f)) {
            fX = 1.01f;
        }
        if (std::isinf(fX)) {
            fX = 4000.f;
        }
        const float fLog = float(std::log(double(fX)));
        fSize = float(fLog * fRatio * fLog * 0.1);
    }
    return vecSize;
}

PointSizeClasses pointSizeClasses(const std::vector<float>& vecSize, const std::vector<char>& vecVisible)
{
    PointSizeClasses classes;
    bool bFirst = true;
    for (size_t i = 0; i < vecSize.size(); ++i) {
        if (!vecVisible[i]) {
            continue;
        }
        classes.fSmallest = bFirst ? vecSize[i] : std::min(classes.fSmallest, vecSize[i]);
        classes.fGreatest = bFirst ? vecSize[i] : std::max(classes.fGreatest, vecSize[i]);
        bFirst = false;
    }
    const float fRange = classes.fGreatest - classes.fSmallest;
    for (int k = 0; k < 64; ++k) {
        classes.m_fSizeClass[k] = float(k) * fRange / 63.f + classes.fSmallest;
    }
    for (size_t i = 0; i < vecSize.size(); ++i) {
        if (!vecVisible[i]) {
            continue;
        }
        const float fStep = (vecSize[i] - classes.fSmallest) * 63.f / fRange;  // no number without a range
        const size_t nClass = fStep > 0.f ? size_t(std::min(fStep, 63.f)) : 0;
        classes.m_pnSizeClass[nClass].push_back(int(i));
        ++classes.m_nSizeClassCount[nClass];
    }
    return classes;
}

}  // namespace tessera
