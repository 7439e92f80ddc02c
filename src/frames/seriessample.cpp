#include "frames/seriessample.h"

#include "frames/frameloader.h"

#include <algorithm>

std::vector<int> sampledFrames(int nFrames, int nMost)
{
    const int nCount = std::min(nFrames, nMost);
    std::vector<int> vecFrame;
    vecFrame.reserve(size_t(std::max(0, nCount)));
    for (int i = 0; i < nCount; ++i)
        vecFrame.push_back(nCount == 1 ? 0 : int(qint64(i) * (nFrames - 1) / (nCount - 1)));
    return vecFrame;
}

ImageList sampledImages(const QString& strFileName, const QList<QPoint>& listHotPixel)
{
    ImageList vecImage;
    CRunReport silent;
    if (loadFirstImage(vecImage, strFileName, listHotPixel, silent) != 0 && !vecImage.empty() &&
        !vecImage.front()->Data())
        vecImage.clear();
    return vecImage;
}
