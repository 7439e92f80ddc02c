#include "frames/intensityextraction.h"

#include "frames/badpixels.h"
#include "frames/bandpass.h"
#include "frames/framerun.h"
#include "frames/integration.h"
#include "records/runends.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace tessera {

namespace {

// Work images, kept from frame to frame.
struct SmoothingWork {
    CAcmlFft fft;
    FrameSpectrum spectrum;
    CImgObj<COMPLEX> imgProduct;
    CImgObj<float> imgSmooth;
};

// Makes the smoothed frame of the peak search, equal to the bit.
// @return the number of unusable pixels; nothing where the transform failed
std::optional<qint64> smoothFrame(const CImgObj<float>& img, const PeakHuntingParameters& hunting,
                                  CPeakFilters& filters, SmoothingWork& work)
{
    const qint64 nBad = frameSpectrum(img, work.fft, work.spectrum);
    const bool bSmoothed = nBad >= 0 && updatePeakFilters(hunting, img.Width(), img.Height(), filters) &&
                           filterSpectrum(work.spectrum, filters, work.fft, work.imgProduct, &work.imgSmooth,
                                          nullptr);
    return bSmoothed ? std::make_optional(nBad) : std::nullopt;
}

// Measures both intensities of the peaks on a smoothed frame.
// @return false if a peak is outside
bool measurePeaks(const CImgObj<float>& imgSmooth, const ExtractionParameters& parameters,
                  QList<Peak3D>& listPeak)
{
    QList<double> listX, listY;
    for (const Peak3D& peak : listPeak) {
        listX.append(peak.dfX2D);
        listY.append(peak.dfY2D);
    }
    const QList<double> listIPoint = SampleAtPositions(imgSmooth, listX, listY);
    if (listIPoint.size() < listPeak.size()) {
        return false;
    }
    std::vector<RefIntPara> vecWindow;
    MakeIntegrationWindows(listX, listY, parameters.m_nWindowRadius, parameters.m_nBackgroundSize, vecWindow);
    IntegratePeaks(imgSmooth, vecWindow);
    for (int j = 0; j < listPeak.size(); ++j) {
        listPeak[j].dfIPoint = listIPoint[j];
        listPeak[j].dfI2D = double(vecWindow[j].fIntensity);
    }
    return true;
}

/// Makes the measured peaks the merged reflections, and forgets what refers to the former ones by number.
void takeAsReflections(DataSet& dataSet, const QList<Peak3D>& listFlat)
{
    dataSet.m_listPeakMerged = listFlat;
    dataSet.m_listPeakMergedShown = listFlat;
    dataSet.m_listPeakChain.clear();
    dataSet.m_vecReflectionFrame.clear();
    dataSet.m_listReflectionIndexed.clear();
    dataSet.m_made.indexed.reset();
    if (dataSet.m_made.merged) {
        // Only the intensities have changed: results that were derived from the reflections are still
        // valid.
        const quint64 nFormer = dataSet.m_made.merged->nMerged;
        dataSet.m_made.merged->nMerged = printOfReflections(listFlat);
        if (dataSet.m_made.cell && dataSet.m_made.cell->nMerged == nFormer) {
            dataSet.m_made.cell->nMerged = dataSet.m_made.merged->nMerged;
        }
    }
}

/// Gives the peaks their former numbers again: chains and reflections stay, and the peaks keep referring to
/// theirs.
void restoreNumbers(const QVector<QList<Peak3D>>& peaksBefore, QVector<QList<Peak3D>>& peaksSorted)
{
    for (int i = 0; i < std::min(peaksSorted.size(), peaksBefore.size()); ++i) {
        for (int j = 0; j < std::min(peaksSorted[i].size(), peaksBefore[i].size()); ++j) {
            peaksSorted[i][j].nID = peaksBefore[i][j].nID;
        }
    }
}

}  // namespace

RunOutcome extractIntensity(DataSet& dataSet, QVector<QList<Peak3D>>& peaksSorted,
                            const PeakHuntingParameters& hunting, const ExtractionParameters& parameters,
                            CPeakFilters& filters, CRunReport& report, const FnFramePositions& fnFrameDone)
{
    CFrameRun run(dataSet, report, QStringLiteral("Intensity extraction"));
    if (peaksSorted.size() != run.frameCount()) {
        return refuseRun(report, QStringLiteral("Frame counts do not match."));
    }
    run.begin();
    const QVector<QList<Peak3D>> peaksBefore = peaksSorted;
    SmoothingWork work;
    QList<Peak3D> listFlat;
    CBadPixelLines badPixelLines;
    const RunOutcome outcome = run.walk([&](int nFrame) {
        const CImgObj<float>* pImage = run.load(nFrame);
        if (!pImage) {
            return false;
        }
        const std::optional<qint64> nBad = smoothFrame(*pImage, hunting, filters, work);
        if (!nBad) {
            report.fail(QStringLiteral("%1: the frame cannot be transformed. Stop.")
                            .arg(run.series().listFrameFile[nFrame]));
            return false;
        }
        badPixelLines.add(nFrame, *nBad, report);
        if (peaksSorted.size() != run.frameCount()) {
            return false;  // the list was changed while events were handled
        }
        QList<Peak3D> listPeak = peaksSorted[nFrame];
        if (!measurePeaks(work.imgSmooth, parameters, listPeak)) {
            report.fail(QStringLiteral("Some peaks are outside the frame."));
            return false;
        }
        for (Peak3D& peak : listPeak) {
            peak.nID = listFlat.size();
            listFlat.append(peak);
        }
        peaksSorted[nFrame] = listPeak;
        if (fnFrameDone) {
            fnFrameDone(nFrame, peakPositions(listPeak));
        }
        return true;
    });
    if (outcome.end == RunEnd::Finished) {
        takeAsReflections(dataSet, listFlat);
    } else {
        restoreNumbers(peaksBefore, peaksSorted);
    }
    run.sayEnd(outcome);
    return outcome;
}

}  // namespace tessera
