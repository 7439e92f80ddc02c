#include "frames/spotcentres.h"

#include "frames/badpixels.h"
#include "frames/deferredreport.h"
#include "frames/firstimage.h"
#include "frames/framewalk.h"
#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace tessera {

namespace {

// Greatest distance of a centre from the peak, pixels. The peak search takes the highest pixel of a spot,
// which because of noise may be a neighbour of the middle one.
const double g_dfFarthest = 1.5;

/// The median of the pixels between two radii; nothing where the image cuts the ring.
std::optional<double> ringMedian(const CImgObj<float>& img, int nX, int nY, double dfInner, double dfOuter)
{
    const int nReach = int(std::ceil(dfOuter));
    if (nX < nReach || nY < nReach || nX + nReach >= img.Width() || nY + nReach >= img.Height()) {
        return std::nullopt;
    }
    std::vector<float> listValue;  // must have at least half of the pixels, as beside a gap of the detector
    size_t nRing = 0;
    for (int y = -nReach; y <= nReach; ++y) {
        for (int x = -nReach; x <= nReach; ++x) {
            const int nSquare = x * x + y * y;
            if (nSquare >= dfInner * dfInner && nSquare <= dfOuter * dfOuter) {
                const float f = viewOf(img).at(nX + x, nY + y);
                nRing += 1;
                if (isUsablePixel(f)) {
                    listValue.push_back(f);
                }
            }
        }
    }
    if (2 * listValue.size() < nRing || listValue.empty()) {
        return std::nullopt;
    }
    const auto itMiddle = listValue.begin() + std::ptrdiff_t(listValue.size() / 2);
    std::nth_element(listValue.begin(), itMiddle, listValue.end());
    return double(*itMiddle);
}

/// The centroid of the intensity above the background, relative to a centre, weighted by the Gaussian
/// around it.
std::optional<QPointF> windowedStep(const CImgObj<float>& img, const QPointF& ptCentre, double dfBackground,
                                    double dfSigma)
{
    const int nReach = int(std::ceil(3 * dfSigma));
    const int nMiddleX = int(std::lround(ptCentre.x())), nMiddleY = int(std::lround(ptCentre.y()));
    double dfSum = 0, dfSumX = 0, dfSumY = 0;
    for (int nY = nMiddleY - nReach; nY <= nMiddleY + nReach; ++nY) {
        for (int nX = nMiddleX - nReach; nX <= nMiddleX + nReach; ++nX) {
            if (nX < 0 || nY < 0 || nX >= img.Width() || nY >= img.Height()) {
                return std::nullopt;
            }
            const double dfX = nX - ptCentre.x(), dfY = nY - ptCentre.y();
            const double dfAbove = img.Data()[std::size_t(nY) * std::size_t(img.Width()) + std::size_t(nX)] -
                                   dfBackground;
            const double dfWeighted = std::exp(-(dfX * dfX + dfY * dfY) / (2 * dfSigma * dfSigma)) * dfAbove;
            dfSum += dfWeighted;
            dfSumX += dfWeighted * dfX;
            dfSumY += dfWeighted * dfY;
        }
    }
    if (!(dfSum > 0)) {
        return std::nullopt;
    }
    // Weight and spot have equal widths, so the maximum of their product is halfway between their centres.
    // Hence the factor 2.
    return QPointF(2 * dfSumX / dfSum, 2 * dfSumY / dfSum);
}

/// The peaks of a frame, moved to the centres of their spots.
struct CentredFrame {
    QList<Peak3D> listPeak;
    bool bRead = false;
    CDeferredReport report;
};

}  // namespace

std::optional<QPointF> spotCentre(const CImgObj<float>& img, const QPointF& ptPlace, double dfSigma)
{
    const int nMostSteps = 30;
    const double dfEnough = 1e-3;  // pixels, far below the error from noise
    if (!(std::abs(ptPlace.x()) < 1e6 && std::abs(ptPlace.y()) < 1e6 && dfSigma > 0)) {
        return std::nullopt;
    }
    const std::optional<double> background = ringMedian(img, int(std::lround(ptPlace.x())),
                                                        int(std::lround(ptPlace.y())), 3.5 * dfSigma,
                                                        3.5 * dfSigma + 2.5);
    if (!background) {
        return std::nullopt;
    }
    QPointF ptCentre = ptPlace;
    for (int n = 0; n < nMostSteps; ++n) {
        const std::optional<QPointF> step = windowedStep(img, ptCentre, *background, dfSigma);
        if (!step) {
            return std::nullopt;
        }
        ptCentre += *step;
        const QPointF ptMoved = ptCentre - ptPlace;
        if (!(std::hypot(ptMoved.x(), ptMoved.y()) <= g_dfFarthest)) {
            return std::nullopt;
        }
        if (std::hypot(step->x(), step->y()) < dfEnough) {
            return ptCentre;
        }
    }
    return std::nullopt;
}

RunOutcome moveToSpotCentres(const DataSet& dataSet, QVector<QList<Peak3D>>& vecPeak, double dfSigma,
                             CRunReport& report, int nJobs)
{
    const SeriesSnapshot series(dataSet);
    const int nFrames = std::min(series.frameCount(), int(vecPeak.size()));
    const QVector<QList<Peak3D>>& vecFormer = vecPeak;
    const auto makeWorker = [&] {
        return [&](int nFrame) {
            CentredFrame frame;
            frame.listPeak = vecFormer[nFrame];
            frame.bRead = frame.listPeak.isEmpty();
            const auto pImage = frame.bRead ? nullptr : firstImage(series, nFrame, {}, frame.report);
            if (pImage) {
                for (Peak3D& peak : frame.listPeak) {
                    const auto centre = spotCentre(*pImage, QPointF(peak.dfX2D, peak.dfY2D), dfSigma);
                    peak.dfX2D = centre ? centre->x() : peak.dfX2D;
                    peak.dfY2D = centre ? centre->y() : peak.dfY2D;
                }
                frame.bRead = true;
            }
            return frame;
        };
    };
    QVector<QList<Peak3D>> vecMoved;
    CFrameWalk walk(nFrames, StopAsked::BetweenFrames, report);
    walk.showProgress(ProgressPlace::TaskBarToo);
    const RunOutcome outcome = walk.runAhead<CentredFrame>(nJobs, makeWorker, [&](int, CentredFrame& frame) {
        frame.report.sayTo(report);
        vecMoved.append(frame.listPeak);
        return frame.bRead;
    });
    if (outcome.finished()) {
        vecMoved += vecPeak.mid(vecMoved.size());
        vecPeak = vecMoved;
    }
    return outcome;
}

}  // namespace tessera
