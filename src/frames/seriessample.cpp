#include "frames/seriessample.h"

#include "frames/frameloader.h"

#include <algorithm>

namespace tessera {

namespace {

const size_t g_nFramesTold = 5;

}  // namespace

std::vector<int> sampledFrames(int nFrames, int nMost)
{
    const int nCount = std::min(nFrames, nMost);
    std::vector<int> vecFrame;
    vecFrame.reserve(size_t(std::max(0, nCount)));
    for (int i = 0; i < nCount; ++i) {
        vecFrame.push_back(nCount == 1 ? 0 : int(qint64(i) * (nFrames - 1) / (nCount - 1)));
    }
    return vecFrame;
}

ImageList sampledImages(const FrameSource& source, CRunReport& report)
{
    ImageList vecImage;
    if (readFirstImage(vecImage, source, report) != 0 && !vecImage.empty() && !vecImage.front()->Data()) {
        vecImage.clear();
    }
    return vecImage;
}

void sayUnreadFrames(const std::vector<CDeferredReport>& vecUnread, CRunReport& report)
{
    for (size_t i = 0; i < std::min(vecUnread.size(), g_nFramesTold); ++i) {
        vecUnread[i].sayTo(report);
    }
    if (vecUnread.size() > g_nFramesTold) {
        report.addMessage(QStringLiteral("%L1 more of the frames looked at cannot be read.")
                              .arg(vecUnread.size() - g_nFramesTold),
                          Severity::Error);
    }
}

}  // namespace tessera
