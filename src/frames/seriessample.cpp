#include "frames/seriessample.h"

#include <QtGlobal>

std::vector<int> sampleFrameIndices(int nFrames, int nMost)
{
    std::vector<int> vecIndex;
    const int nCount = nFrames < nMost ? nFrames : nMost;
    for (int i = 0; i < nCount; ++i)
        vecIndex.push_back(nCount == 1 ? 0 : int(qint64(i) * (nFrames - 1) / (nCount - 1)));
    return vecIndex;
}
