#include "frames/autothreshold.h"

#include "frames/badpixels.h"
#include "frames/bandpass.h"
#include "frames/framehunt.h"
#include "frames/median.h"
#include "frames/seriessample.h"
#include "frames/sharedpeakfilters.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace tessera {

namespace {

const int g_nFramesLookedAt = 12;
const qint64 g_nPixelsLookedAt = 60000;
const double g_dfDeviations = 8;   // fewer admit noise that spoils the merging, more lose weak reflections
const double g_dfLeastQuanta = 5;  // a peak must have at least as many counts on one place

// One pixel in so many is sampled. An odd step does not divide the usual widths, which would put all sampled
// pixels into a few columns.
qint64 sampleStep(const CImgObj<float>& img)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    return std::max<qint64>(1, nPixels / g_nPixelsLookedAt) | 1;
}

std::vector<float> samplePixels(const CImgObj<float>& img)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height(), nStep = sampleStep(img);
    std::vector<float> vec;
    for (qint64 i = 0; i < nPixels; i += nStep) {
        if (std::isfinite(img.Data()[i])) {
            vec.push_back(img.Data()[i]);
        }
    }
    return vec;
}

// The smallest difference between two pixel values of a sample: one count or one grey level, and close to 0
// for values that are no whole numbers.
double leastStep(const CImgObj<float>& imgFrame)
{
    std::vector<float> vec = samplePixels(imgFrame);
    std::sort(vec.begin(), vec.end());
    double dfStep = 0;
    for (size_t i = 1; i < vec.size(); ++i) {
        const double df = double(vec[i]) - double(vec[i - 1]);
        if (df > 0 && (dfStep == 0 || df < dfStep)) {
            dfStep = df;
        }
    }
    return dfStep;
}

// The greatest usable pixel; 0 if all are negative. Sixteen maxima are formed side by side, since in a single
// chain each comparison would have to wait for the one before it.
float greatestPixel(const CImgObj<float>& img)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    constexpr int nLanes = 16;
    float afGreatest[nLanes] = {};
    const float* p = img.Data();
    qint64 i = 0;
    for (; i + nLanes <= nPixels; i += nLanes) {
        for (int k = 0; k < nLanes; ++k) {
            const float f = isUsablePixel(p[i + k]) ? p[i + k] : 0.f;
            afGreatest[k] = f > afGreatest[k] ? f : afGreatest[k];
        }
    }
    for (; i < nPixels; ++i) {
        if (isUsablePixel(p[i])) {
            afGreatest[0] = std::max(afGreatest[0], p[i]);
        }
    }
    return *std::max_element(std::begin(afGreatest), std::end(afGreatest));
}

struct FrameNoise {
    double dfThreshold = 0;  // 0 for a blank frame, and where memory for the transform was lacking
    double dfStep = 0;       // smallest difference between pixel values
    float fGreatest = 0;     // greatest pixel value
};

FrameNoise noiseOfFrame(const CImgObj<float>& imgFrame, const PeakHuntingParameters& parameters,
                        CPeakFilters& filters, FrameHuntWork& work)
{
    // Takes the same pixels of the band-passed frame as samplePixels() does, without keeping the frame.
    const qint64 nWidth = imgFrame.Width(), nStep = sampleStep(imgFrame);
    std::vector<float> vecSample;
    qint64 nNext = 0;
    const auto sampleRow = [&](int nRow, const float* pRow) {
        for (; nNext < (nRow + 1) * nWidth; nNext += nStep) {
            if (std::isfinite(pRow[nNext - nRow * nWidth])) {
                vecSample.push_back(pRow[nNext - nRow * nWidth]);
            }
        }
    };
    if (bandPassRows(imgFrame, parameters, filters, work.fft, work.imgWork, false, sampleRow) < 0) {
        return {};
    }
    FrameNoise noise;
    noise.dfStep = leastStep(imgFrame);
    noise.fGreatest = greatestPixel(imgFrame);
    // The robust deviation is 0 where most pixels of a frame are equal; the smallest step then counts.
    noise.dfThreshold = std::max(g_dfDeviations * robustSpread(std::move(vecSample)).dfDeviation,
                                 g_dfLeastQuanta * noise.dfStep * filters.m_dfImpulse);
    return noise;
}

// A power of ten that brings the greatest pixels to some ten thousands; 1 for counts, and for values of 100
// or more, which common pictures have.
double scaleForSmallValues(double dfGreatest, double dfStep)
{
    const double dfSmall = 100, dfWanted = 4;
    if (!(dfGreatest > 0 && dfGreatest < dfSmall && dfStep < 1)) {
        return 1;
    }
    return std::pow(10.0, dfWanted - std::floor(std::log10(dfGreatest)));
}

// Rounds to the two decimals of the page; below 1, where these would be too coarse, to four digits.
double rounded(double dfThreshold)
{
    return dfThreshold >= 1 ? QString::number(dfThreshold, 'f', 2).toDouble()
                            : QString::number(dfThreshold, 'g', 4).toDouble();
}

}  // namespace

std::optional<PeakThreshold> estimatePeakThreshold(const DataSet& dataSet,
                                                   const PeakHuntingParameters& parameters,
                                                   CPeakFilters& filters, CRunReport& report, int nJobs,
                                                   SmallValues smallValues)
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
    if (!forEachSampledFrame<FrameNoise>(dataSet, g_nFramesLookedAt, nJobs, report, makeEstimate, take)) {
        return std::nullopt;
    }
    if (vecThreshold.empty()) {
        report.fail(bRead ? QStringLiteral("No peak threshold was found: the frames looked at are blank.")
                          : QStringLiteral("No peak threshold was found: no frame could be read."));
        return std::nullopt;
    }
    PeakThreshold found;
    if (smallValues == SmallValues::Scaled) {
        found.dfScale = scaleForSmallValues(double(medianOf(vecGreatest)), double(medianOf(vecStep)));
    }
    found.dfThreshold = rounded(found.dfScale * double(medianOf(vecThreshold)));
    if (found.dfScale != 1) {
        report.addMessage(QStringLiteral("The values of the frames are small: for peaks, threshold and "
                                         "intensities they are multiplied by %L1.")
                              .arg(found.dfScale),
                          Severity::Info);
    }
    report.addMessage(QStringLiteral("Peak threshold %L1 from the noise of %L2 frames.")
                          .arg(found.dfThreshold)
                          .arg(vecThreshold.size()),
                      Severity::Info);
    return found;
}

}  // namespace tessera
