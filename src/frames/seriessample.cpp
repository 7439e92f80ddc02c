#include "frames/seriessample.h"

#include "frames/frameloader.h"

#include <algorithm>

bool forEachSampledFrame(const DataSet& dataSet, int nMost, CRunReport& report,
                         const std::function<void(const CImgObj<float>& imgFrame)>& fnFrame)
{
    const int nFrames = dataSet.m_listFrameFile.size();
    const int nCount = std::min(nFrames, nMost);
    for (int i = 0; i < nCount; ++i) {
        if (!report.goOn())
            return false;
        const int nFrame = nCount == 1 ? 0 : int(qint64(i) * (nFrames - 1) / (nCount - 1));
        ImageList vecImage;
        CRunReport silent;
        if (loadFirstImage(vecImage, dataSet.m_listFrameFile[nFrame], dataSet.m_listHotPixel, silent) != 0 &&
            !vecImage.empty() && vecImage.front()->Data())
            fnFrame(*vecImage.front());
    }
    return true;
}
