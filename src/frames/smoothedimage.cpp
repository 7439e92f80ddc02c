#include "frames/smoothedimage.h"

#include "frames/bandpass.h"
#include "imagefiles/framename.h"
#include "imagefiles/mrcfile.h"

#include <QFileInfo>

namespace tessera {

bool outputSmoothedImage(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                         CPeakFilters& filters, const QString& strFileName, CRunReport& report)
{
    CAcmlFft fft;
    FrameSpectrum spectrum;
    CImgObj<COMPLEX> imgProduct;
    CImgObj<float> imgSmooth;
    if (frameSpectrum(imgFrame, fft, spectrum) < 0) {
        report.addMessage(QStringLiteral("No image is loaded."), Severity::Error);
        return false;
    }
    updatePeakFilters(parameters, imgFrame.Width(), imgFrame.Height(), filters);
    filterSpectrum(spectrum, filters, fft, imgProduct, &imgSmooth, nullptr);
    const QString strTarget = QFileInfo(frameName(strFileName).strFile).absolutePath() +
                              QStringLiteral("/N") + frameShortName(strFileName) + QStringLiteral(".mrc");
    QString strReason;
    if (!WriteMRC<float>({&imgSmooth}, strTarget, &strReason)) {
        report.addMessage(QStringLiteral("Failed to save image:%1").arg(strTarget), Severity::Error);
        report.addMessage(strReason, Severity::Error);
        return false;
    }
    return true;
}

}  // namespace tessera
