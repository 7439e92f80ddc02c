#include "frames/firstimage.h"

#include "frames/frameloader.h"

#include <utility>

namespace tessera {

std::unique_ptr<CImgObj<float>> firstImage(const SeriesSnapshot& series, int nFrame,
                                           const FrameFaults& faults, CRunReport& report,
                                           OnShortMemory onShortMemory)
{
    const QString& strFile = series.listFrameFile[nFrame];
    const auto fnLoad = onShortMemory == OnShortMemory::Throw ? readFirstImage : loadFirstImage;
    ImageList vecImage;
    if (!fnLoad(vecImage, strFile, series.listHotPixel, report)) {
        if (!faults.strNotLoaded.isEmpty())
            report.fail(faults.strNotLoaded.arg(strFile));
        return nullptr;
    }
    if (vecImage.empty()) {
        report.fail(QStringLiteral("No image found in %1.").arg(strFile) + faults.strThen);
        return nullptr;
    }
    return std::move(vecImage.front());
}

}  // namespace tessera
