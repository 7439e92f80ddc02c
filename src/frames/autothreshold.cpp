#include "frames/autothreshold.h"

#include "frames/bandpass.h"
#include "frames/framehunt.h"
#include "frames/median.h"
#include "frames/seriessample.h"
#include "frames/sharedpeakfilters.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

const int g_nFramesLookedAt = 12;
const qint64 g_nPixelsLookedAt = 60000;
const double g_dfDeviations = 8;   // fewer let in noise that spoils the merging, more lose weak reflections
const double g_dfLeastQuanta = 5;  // counts that must fall together to be a peak

// Pixels spread over the image. The odd step keeps them from standing in a few columns only.
std::vector<float> samplePixels(const CImgObj<float>& img)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    const qint64 nStep = std::max<qint64>(1, nPixels / g_nPixelsLookedAt) | 1;
    std::vector<float> vec;
    for (qint64 i = 0; i < nPixels; i += nStep)
        if (std::isfinite(img.Data()[i]))
            vec.push_back(img.Data()[i]);
    return vec;
}

// The least step between pixel values: one count, one grey level, or next to nothing in real numbers.
double leastStep(const CImgObj<float>& imgFrame)
{
    std::vector<float> vec = samplePixels(imgFrame);
    std::sort(vec.begin(), vec.end());
    double dfStep = 0;
    for (size_t i = 1; i < vec.size(); ++i) {
        const double df = double(vec[i]) - double(vec[i - 1]);
        if (df > 0 && (dfStep == 0 || df < dfStep))
            dfStep = df;
    }
    return dfStep;
}

// Value at its pixel of a unit impulse after the band-pass.
double impulseResponse(const CPeakFilters& filters)
{
    const CImgObj<float>& img = filters.m_imgFilterBandPass;
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    double dfSum = 0;
    for (qint64 i = 0; i < nPixels; ++i)
        dfSum += double(img.Data()[i]);
    return std::fabs(dfSum) / double(nPixels);
}

// The threshold for one frame; 0 for a blank one and where there is no transform.
double thresholdOfFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                        CPeakFilters& filters, FrameHuntWork& work)
{
    if (frameSpectrum(imgFrame, work.fft, work.spectrum) < 0 ||
        !updatePeakFilters(parameters, imgFrame.Width(), imgFrame.Height(), filters) ||
        !filterSpectrum(work.spectrum, filters, work.fft, work.imgProduct, nullptr, &work.imgBandPass))
        return 0;
    // On frames where most pixels hold nothing the deviation may vanish; the least step does not.
    return std::max(g_dfDeviations * robustSpread(samplePixels(work.imgBandPass)).dfDeviation,
                    g_dfLeastQuanta * leastStep(imgFrame) * impulseResponse(filters));
}

}  // namespace

bool estimatePeakThreshold(const DataSet& dataSet, const PeakHuntingParameters& parameters,
                           CPeakFilters& filters, CRunReport& report, double& dfThreshold, int nJobs)
{
    CSharedPeakFilters shared(filters);
    const auto makeEstimate = [&] {
        return [&, pWork = std::make_shared<FrameHuntWork>()](const CImgObj<float>& imgFrame) {
            return shared.use(parameters, imgFrame.Width(), imgFrame.Height(), [&](CPeakFilters& fitting) {
                return thresholdOfFrame(imgFrame, parameters, fitting, *pWork);
            });
        };
    };
    std::vector<float> vecThreshold;
    const auto take = [&](double& dfFrame) {
        if (dfFrame > 0)  // not for a blank frame
            vecThreshold.push_back(float(dfFrame));
    };
    if (!forEachSampledFrame<double>(dataSet, g_nFramesLookedAt, nJobs, report, makeEstimate, take))
        return false;
    if (vecThreshold.empty()) {
        report.addMessage(
            QStringLiteral("No peak threshold was found: no frame could be read, or all are blank."),
            Qt::red);
        return false;
    }
    dfThreshold = double(medianOf(vecThreshold));
    report.addMessage(QStringLiteral("Peak threshold %L1 from the noise of %L2 frames.")
                          .arg(dfThreshold)
                          .arg(vecThreshold.size()),
                      Qt::black);
    return true;
}
