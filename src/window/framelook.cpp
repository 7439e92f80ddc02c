#include "window/framelook.h"

#include "dataset/dataset.h"
#include "frames/autoregion.h"
#include "frames/directbeamfit.h"
#include "frames/displaylimits.h"
#include "frames/frameloader.h"
#include "imaging/contrast.h"
#include "imaging/imageview.h"
#include "records/whatwasthrown.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tessera {

namespace {

constexpr int g_nShownSide = 512;  // pixels: more than the dialog has room for
// Pixels from the place where the beam was found within which a fit is still one of the beam.
constexpr double g_dfGreatestMove = 30;

class CStopReport : public CRunReport {
public:
    explicit CStopReport(const std::atomic<bool>& bStop) : m_bStop(bStop) {}
    void addMessage(const QString& strText, Severity severity) override
    {
        if (severity == Severity::Error && m_strError.isEmpty()) {
            m_strError = strText;
        }
    }
    bool goOn() override { return !m_bStop; }
    QString m_strError;

private:
    const std::atomic<bool>& m_bStop;
};

/// The contrast limits with which the window first shows a frame; the whole range if none can be determined.
DisplayLimits contrastOf(const CImgObj<float>& image)
{
    if (const auto limits = displayLimits(image, brightestDisc(image))) {
        return *limits;
    }
    DisplayLimits limits{0, 1};
    autoContrastLimits(image.Data(), image.Width() * image.Height(), &limits.dfLow, &limits.dfHigh);
    return limits;
}

/// Reduces an image; each pixel of the result is the maximum of a block, so that small spots remain visible.
QImage shownImage(const CImgObj<float>& image)
{
    const int nWidth = image.Width(), nHeight = image.Height();
    const int nBlock = std::max(1, (std::max(nWidth, nHeight) + g_nShownSide - 1) / g_nShownSide);
    const auto [dfLow, dfHigh] = contrastOf(image);
    const double dfRange = std::max(dfHigh - dfLow, 1e-30);
    QImage shown((nWidth + nBlock - 1) / nBlock, (nHeight + nBlock - 1) / nBlock, QImage::Format_Grayscale8);
    for (int y = 0; y < shown.height(); ++y) {
        uchar* pLine = shown.scanLine(y);
        for (int x = 0; x < shown.width(); ++x) {
            float fMost = -INFINITY;
            for (int r = y * nBlock; r < std::min(nHeight, (y + 1) * nBlock); ++r) {
                const float* pRow = viewOf(image).row(r);
                for (int c = x * nBlock; c < std::min(nWidth, (x + 1) * nBlock); ++c) {
                    fMost = std::max(fMost, pRow[c]);  // a pixel without a number never wins
                }
            }
            const double dfShare = std::clamp((double(fMost) - dfLow) / dfRange, 0.0, 1.0);
            pLine[x] = uchar(std::lround(255 * std::sqrt(dfShare)));  // weak spots beside the beam
        }
    }
    return shown;
}

std::optional<QPointF> beamOf(const QString& strFrame, CRunReport& report)
{
    DataSet dataSet;
    dataSet.m_listFrameFile = QStringList(strFrame);
    dataSet.m_listOverallTilt = dataSet.m_listStageTilt = dataSet.m_listBeamTilt = QList<double>{0};
    const std::optional<QRect> rcRegion = findBeamRegion(dataSet, report);
    if (!rcRegion) {
        return {};
    }
    QPointF ptBeam = rcRegion->center();
    dataSet.m_dfCenterX = ptBeam.x();
    dataSet.m_dfCenterY = ptBeam.y();
    fitDirectBeam(dataSet, report, [&](const DirectBeamOnFrame& beam) {
        const QPointF ptMove = beam.ptFitted - beam.ptExpected;
        if (std::hypot(ptMove.x(), ptMove.y()) <= g_dfGreatestMove) {
            ptBeam = beam.ptFitted;
        }
    });
    return ptBeam;
}

}  // namespace

FrameLook lookAtFrame(const QString& strFrame, const std::atomic<bool>& bStop)
{
    FrameLook look;
    CStopReport report(bStop);
    try {
        ImageList vecImage;
        if (loadFirstImage(vecImage, strFrame, {}, report) != 1 || vecImage.empty()) {
            look.strProblem = report.m_strError.isEmpty() ? strFrame : report.m_strError;
            return look;
        }
        look.size = QSize(vecImage.front()->Width(), vecImage.front()->Height());
        look.image = shownImage(*vecImage.front());
        look.ptBeam = beamOf(strFrame, report);
    } catch (...) {
        look.strProblem = whatWasThrown();
    }
    return look;
}

}  // namespace tessera
