#include "frames/firstimage.h"

#include "frames/frameloader.h"

#include <utility>

namespace tessera {

std::unique_ptr<CImgObj<float>> firstImage(const SeriesSnapshot& series, int nFrame,
                                           const FrameFaults& faults, CRunReport& report,
                                           OnShortMemory onShortMemory)
{
    const QString& strFile = series.listFrameFile[nFrame];
    const FrameSource source = frameSource(series, nFrame);
    ImageList vecImage;
    const int nLoaded = onShortMemory == OnShortMemory::Throw ? readFirstImage(vecImage, source, report)
                                                              : loadFirstImage(vecImage, source, report);
    if (nLoaded == 0) {
        if (!faults.strNotLoaded.isEmpty()) {
            report.fail(faults.strNotLoaded.arg(strFile));
        }
        return nullptr;
    }
    if (vecImage.empty()) {
        report.fail(QStringLiteral("No image found in %1.").arg(strFile) + faults.strThen);
        return nullptr;
    }
    return std::move(vecImage.front());
}

}  // namespace tessera
