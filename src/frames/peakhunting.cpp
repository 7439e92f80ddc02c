#include "frames/peakhunting.h"

#include "dataset/peaklistfile.h"
#include "frames/badpixels.h"
#include "frames/deferredreport.h"
#include "frames/firstimage.h"
#include "frames/framehunt.h"
#include "frames/framewalk.h"
#include "frames/jobsformemory.h"
#include "frames/sharedpeakfilters.h"
#include "records/formerfile.h"
#include "records/runends.h"
#include "records/timestamp.h"
#include "records/whatwasthrown.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace tessera {

namespace {

// Memory in bytes per pixel: the frame and the work space of its transform, with a reserve; images that are
// handed on; and, once for the series, the filters.
const double g_dfOfWork = 4 + 8.5, g_dfOfImages = 8, g_dfOfFilters = 4.5;
// Memory of a frame alone, in bytes per pixel. While filters are made they need more, but the work space
// does not exist then.
const std::uint64_t g_nBytesPerPixel = 17;

struct HuntedFrame {
    bool bHunted = false;
    ImageList vecImage;
    FramePeaks peaks;
    CDeferredReport report;
};

// Loads single frames and finds their peaks. All threads of a run share one object.
class CFrameHunter {
public:
    CFrameHunter(const DataSet& dataSet, const PeakHuntingParameters& parameters, CPeakFilters& filters,
                 bool bKeepImages)
        : m_series(dataSet),
          m_mask(dataSet.m_maskPeakHunting),
          m_parameters(parameters),
          m_filters(filters),
          m_bKeepImages(bKeepImages)
    {}

    /// @throw CShortMemory
    HuntedFrame hunt(int nFrame, FrameHuntWork& work)
    {
        HuntedFrame frame;
        const QString& strFile = m_series.listFrameFile[nFrame];
        qint64 nPixels = 0;
        try {
            auto pImage = firstImage(m_series, nFrame, {}, frame.report, OnShortMemory::Throw);
            if (!pImage) {
                return frame;
            }
            CImgObj<float>& img = *pImage;
            frame.vecImage.push_back(std::move(pImage));
            nPixels = qint64(img.Width()) * img.Height();
            for (qint64 i = 0; m_parameters.m_dfFrameScale != 1 && i < nPixels; ++i) {
                img.Data()[i] *= float(m_parameters.m_dfFrameScale);
            }
            frame.peaks = m_filters.use(m_parameters, img.Width(), img.Height(), [&](CPeakFilters& filters) {
                return huntFrame(img, m_parameters, m_mask, filters, work);
            });
            if (!frame.peaks.bHunted) {
                frame.report.fail(QStringLiteral("%1: the frame cannot be transformed. Stop.").arg(strFile));
                return frame;
            }
            frame.bHunted = true;
            if (!m_bKeepImages) {
                frame.vecImage.clear();
            }
        } catch (const CShortMemory&) {  // it names the file already
            throw;
        } catch (const std::bad_alloc&) {
            throw CShortMemory(QStringLiteral("%1: hunting for peaks").arg(strFile),
                               g_nBytesPerPixel * std::uint64_t(nPixels));
        } catch (...) {
            frame.vecImage.clear();
            frame.report.fail(whatWasThrown());
        }
        return frame;
    }

private:
    const SeriesSnapshot m_series;
    const MaskData m_mask;
    const PeakHuntingParameters m_parameters;
    CSharedPeakFilters m_filters;
    const bool m_bKeepImages;
};

QList<Peak3D> peakRecords(const FramePeaks& peaks, int nFrame, int& nNextID)
{
    QList<Peak3D> listPeak;
    listPeak.reserve(peaks.listX.size());
    for (int i = 0; i < peaks.listX.size(); ++i) {
        Peak3D peak;
        peak.dfX2D = peaks.listX[i];
        peak.dfY2D = peaks.listY[i];
        peak.dfIPoint = peaks.listIPoint[i];
        peak.dfI2D = peaks.listI2D[i];
        peak.nFrame = nFrame;
        peak.nID = nNextID++;
        listPeak.append(peak);
    }
    return listPeak;
}

struct HuntedSeries {
    QList<QList<Peak3D>> listPeakFrame;  // of the frames before the end of the run
    RunOutcome outcome;
};

HuntedSeries huntSeries(DataSet& dataSet, const PeakHuntingParameters& parameters, CPeakFilters& filters,
                        CRunReport& report, const PeakHuntingOptions& options)
{
    HuntedSeries hunted;
    CFrameWalk walk(dataSet.m_listFrameFile.size(), StopAsked::BetweenFrames, report);
    walk.showProgress(ProgressPlace::TaskBarToo);
    if (!report.goOn()) {
        hunted.outcome.end = RunEnd::Stopped;
        return hunted;
    }
    CFrameHunter hunter(dataSet, parameters, filters, options.bKeepImages);
    const auto makeWorker = [&hunter] {
        return [&hunter, pWork = std::make_shared<FrameHuntWork>()](int nFrame) {
            return hunter.hunt(nFrame, *pWork);
        };
    };
    int nNextID = 0;
    int nNoisy = 0, nFirstNoisy = 0;
    CBadPixelLines badPixelLines;
    const auto takeOver = [&](int i, HuntedFrame& frame) {
        frame.report.sayTo(report);
        if (options.bKeepImages) {
            dataSet.m_vecFrameImage = std::move(frame.vecImage);
        }
        if (!frame.bHunted) {
            return false;
        }
        badPixelLines.add(i, frame.peaks.nBadPixels, report);
        const QList<Peak3D> listPeak = peakRecords(frame.peaks, i, nNextID);
        report.addMessage(
            QStringLiteral("%L1 peaks found on frame #%L2").arg(listPeak.size(), 4).arg(i + 1, 4),
            Severity::Info);
        hunted.listPeakFrame.append(listPeak);
        if (frame.peaks.bTooMany && ++nNoisy == 1) {
            nFirstNoisy = i + 1;
        }
        if (options.fnFrameDone) {
            options.fnFrameDone(i, listPeak);
        }
        return true;
    };
    // Made already when the noise was measured.
    const bool bFilters = filters.m_imgFilterPair.Data() != nullptr;
    const FrameMemory memory{g_dfOfWork + (options.bKeepImages ? g_dfOfImages : 0),
                             bFilters ? 0 : g_dfOfFilters};
    const int nJobs = jobsForMemory(SeriesSnapshot(dataSet), options.nJobs, memory, &report);
    hunted.outcome = walk.runAhead<HuntedFrame>(nJobs, makeWorker, takeOver);
    if (hunted.outcome.end == RunEnd::Finished && nNoisy > 0) {
        report.addMessage(
            QStringLiteral(
                "On %L1 of %L2 frames, first #%L3, more than 1 % of the pixels are peak candidates, "
                "which is noise: they have no peaks. Raise the threshold.")
                .arg(nNoisy)
                .arg(walk.frameCount())
                .arg(nFirstNoisy),
            Severity::Error);
    }
    return hunted;
}

/// Keeps a former list that has peaks when the new one has none.
/// @return false if the former list must stay in its place
bool keepFormerList(const QString& strPath, CRunReport& report, QString& strReason)
{
    const QString strKept = nameOfKept(strPath);
    switch (keepFormerFiles({strPath}, countPeaksOfFile, 0, &strReason)) {
        case FormerFiles::NoneWorthKeeping:
            return true;
        case FormerFiles::Kept:
            report.addMessage(
                QStringLiteral("No peaks were found. The former peak list is kept as %1.").arg(strKept),
                Severity::Error);
            return true;
        case FormerFiles::RicherAreKept:
            strReason = QStringLiteral(
                            "No peaks were found. The former peak list stays, as %1 keeps a longer one.")
                            .arg(strKept);
            return false;
        case FormerFiles::Failed:
            break;
    }
    return false;
}

/// @return why the file was not written; empty if it was
QString savePeakList(const DataSet& dataSet, bool bAnyPeak, CRunReport& report)
{
    const QString strPath = QFileInfo(fileOfProject(dataSet, ResultFile::Peaks)).absoluteFilePath();
    const QString strFailed = QStringLiteral("Updating peak list file failed.");
    QString strReason;
    const bool bWritten = (bAnyPeak || keepFormerList(strPath, report, strReason)) &&
                          writePeakList(dataSet, strPath, &strReason);
    if (bWritten) {
        report.addMessage(QStringLiteral("Peak list saved to %1.").arg(strPath), Severity::Info);
    } else {
        report.addMessage(strFailed, Severity::Error);
    }
    if (!strReason.isEmpty()) {
        report.addMessage(strReason, Severity::Error);
    }
    return bWritten ? QString() : strReason.isEmpty() ? strFailed : strReason;
}

}  // namespace

RunOutcome runPeakHunting(DataSet& dataSet, const PeakHuntingParameters& parameters, CPeakFilters& filters,
                          CRunReport& report, const PeakHuntingOptions& options)
{
    if (dataSet.m_listFrameFile.isEmpty()) {
        return refuseRun(report, QStringLiteral("There are no frames to search for peaks."));
    }

    QElapsedTimer timer;
    timer.start();
    report.addMessage(QStringLiteral("%1>Peak hunting started.").arg(currentTimeStamp()),
                      Severity::Milestone);
    HuntedSeries hunted = huntSeries(dataSet, parameters, filters, report, options);
    RunOutcome& outcome = hunted.outcome;
    if (!outcome.finished()) {
        const QString strEnd = QStringLiteral("%1>Peak hunting did not finish.").arg(currentTimeStamp());
        report.addMessage(strEnd, Severity::Error);
        if (outcome.strReason.isEmpty()) {
            outcome.strReason = strEnd;
        }
        return outcome;
    }
    dataSet.m_listPeakFrame = hunted.listPeakFrame;
    dataSet.m_peakMapping.reset();
    notePeaksMade(dataSet, parameters);
    const bool bAnyPeak = std::any_of(dataSet.m_listPeakFrame.begin(), dataSet.m_listPeakFrame.end(),
                                      [](const QList<Peak3D>& listPeak) { return !listPeak.isEmpty(); });
    if (options.bSave && (bAnyPeak || options.bSaveEmpty)) {
        outcome.strReason = savePeakList(dataSet, bAnyPeak, report);
    }
    if (options.fnAfterStored) {
        options.fnAfterStored();
    }
    report.addMessage(timedEndLine(QStringLiteral("%1>Peak hunting finished in %L2 min %L3 sec."), timer),
                      Severity::Milestone);
    return outcome;
}

}  // namespace tessera
