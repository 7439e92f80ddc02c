#include "frames/autothreshold.h"

#include "frames/badpixels.h"
#include "frames/bandpass.h"
#include "frames/framehunt.h"
#include "frames/median.h"
#include "frames/seriessample.h"
#include "frames/sharedpeakfilters.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace tessera {

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

struct FrameNoise {
    double dfThreshold = 0;  // 0 for a blank frame and where there is no transform
    double dfStep = 0;       // least step between pixel values
    float fGreatest = 0;     // pixel
};

FrameNoise noiseOfFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                        CPeakFilters& filters, FrameHuntWork& work)
{
    if (frameSpectrum(imgFrame, work.fft, work.spectrum) < 0 ||
        !updatePeakFilters(parameters, imgFrame.Width(), imgFrame.Height(), filters) ||
        !filterSpectrum(work.spectrum, filters, work.fft, work.imgProduct, nullptr, &work.imgBandPass))
        return {};
    FrameNoise noise;
    noise.dfStep = leastStep(imgFrame);
    for (qint64 i = 0; i < qint64(imgFrame.Width()) * imgFrame.Height(); ++i)
        if (isUsablePixel(imgFrame.Data()[i]))
            noise.fGreatest = std::max(noise.fGreatest, imgFrame.Data()[i]);
    // On frames where most pixels hold nothing the deviation may vanish; the least step does not.
    noise.dfThreshold = std::max(g_dfDeviations * robustSpread(samplePixels(work.imgBandPass)).dfDeviation,
                                 g_dfLeastQuanta * noise.dfStep * impulseResponse(filters));
    return noise;
}

// A power of ten that makes the greatest pixels some ten thousands; 1 for counts, and for values that are no
// smaller than those of common pictures.
double scaleForSmallValues(double dfGreatest, double dfStep)
{
    const double dfSmall = 100, dfWanted = 4;
    if (!(dfGreatest > 0 && dfGreatest < dfSmall && dfStep < 1))
        return 1;
    return std::pow(10.0, dfWanted - std::floor(std::log10(dfGreatest)));
}

// With the two decimals of the page; below 1, where they would be too coarse, with four digits.
double rounded(double dfThreshold)
{
    return dfThreshold >= 1 ? QString::number(dfThreshold, 'f', 2).toDouble()
                            : QString::number(dfThreshold, 'g', 4).toDouble();
}

}  // namespace

bool estimatePeakThreshold(const DataSet& dataSet, const PeakHuntingParameters& parameters,
                           CPeakFilters& filters, CRunReport& report, double& dfThreshold, int nJobs,
                           double* pdfScale)
{
    CSharedPeakFilters shared(filters);
    const auto makeEstimate = [&] {
        return [&, pWork = std::make_shared<FrameHuntWork>()](const CImgObj<float>& imgFrame) {
            return shared.use(parameters, imgFrame.Width(), imgFrame.Height(), [&](CPeakFilters& fitting) {
                return noiseOfFrame(imgFrame, parameters, fitting, *pWork);
            });
        };
    };
    std::vector<float> vecThreshold, vecStep, vecGreatest;
    bool bRead = false;
    const auto take = [&](FrameNoise& noise) {
        bRead = true;
        if (noise.dfThreshold > 0) {  // not for a blank frame
            vecThreshold.push_back(float(noise.dfThreshold));
            vecStep.push_back(float(noise.dfStep));
            vecGreatest.push_back(noise.fGreatest);
        }
    };
    if (!forEachSampledFrame<FrameNoise>(dataSet, g_nFramesLookedAt, nJobs, report, makeEstimate, take))
        return false;
    if (vecThreshold.empty()) {
        report.fail(bRead ? QStringLiteral("No peak threshold was found: the frames looked at are blank.")
                          : QStringLiteral("No peak threshold was found: no frame could be read."));
        return false;
    }
    double dfScale = 1;
    if (pdfScale)
        *pdfScale = dfScale = scaleForSmallValues(double(medianOf(vecGreatest)), double(medianOf(vecStep)));
    dfThreshold = rounded(dfScale * double(medianOf(vecThreshold)));
    if (dfScale != 1)
        report.addMessage(
            QStringLiteral("The values of the frames are small: for peaks, their threshold and their "
                           "intensities they are taken times %L1.")
                .arg(dfScale),
            Severity::Info);
    report.addMessage(QStringLiteral("Peak threshold %L1 from the noise of %L2 frames.")
                          .arg(dfThreshold)
                          .arg(vecThreshold.size()),
                      Severity::Info);
    return true;
}

}  // namespace tessera
