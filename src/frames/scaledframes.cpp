#include "frames/scaledframes.h"

#include "frames/seriesexport.h"
#include "imagefiles/framename.h"
#include "imagefiles/mrcwriter.h"
#include "imaging/resizebicubic.h"
#include "records/availablememory.h"

#include <QFileInfo>

#include <cstdint>

namespace tessera {

namespace {

bool writeScaled(const CImgObj<float>& image, double dfScale, const QString& strTarget, QString& strReason)
{
    const double dfWidth = image.Width() * dfScale, dfHeight = image.Height() * dfScale;
    const auto fail = [&](const char* pszWhat) {
        strReason = QStringLiteral("%1: %2").arg(strTarget, QLatin1String(pszWhat));
        return false;
    };
    if (!(dfWidth >= 1 && dfHeight >= 1)) {
        return fail("no pixels are left at this scale");
    }
    CImgObj<float> imgScaled;
    if (!(dfWidth * dfHeight < 2147483647.0) ||
        !hasMemoryFor(2 * sizeof(float) * std::uint64_t(dfWidth) * std::uint64_t(dfHeight)) ||
        !imgScaled.Create(int(dfWidth), int(dfHeight))) {
        return fail("too large for the memory at this scale");
    }
    ResizeBicubic(imgScaled.Data(), imgScaled.Width(), imgScaled.Height(), image.Data(), image.Width(),
                  image.Height());
    CMrcWriter<float> writer;
    writer.open(strTarget, imgScaled.Width(), imgScaled.Height(), 1);
    writer.addSection(imgScaled.Data());
    return writer.commit(&strReason);
}

}  // namespace

QString scaledFrameFile(const QString& strFrame)
{
    return QFileInfo(frameName(strFrame).strFile).absolutePath() + QLatin1Char('/') +
           frameShortName(strFrame) + QStringLiteral("_s.mrc");
}

RunOutcome exportBinnedFrames(const DataSet& dataSet, double dfScale, CRunReport& report)
{
    SeriesExport what(dataSet);
    what.strName = QStringLiteral("Exporting scaled frames");
    what.strLoadFailed = QStringLiteral("Failed to load: %1");
    what.nProgressMinimum = 1;
    what.fnTarget = scaledFrameFile;
    what.fnWrite = [&](int, const CImgObj<float>& image, const QString& strTarget, QString& strReason) {
        return writeScaled(image, dfScale, strTarget, strReason);
    };
    return exportSeries(what, report);
}

}  // namespace tessera
