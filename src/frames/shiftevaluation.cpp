#include "frames/shiftevaluation.h"

#include "dataset/shiftfile.h"
#include "frames/badpixels.h"
#include "frames/deferredreport.h"
#include "frames/firstimage.h"
#include "frames/frameloader.h"
#include "frames/framewalk.h"
#include "frames/gapfilling.h"
#include "frames/jobsformemory.h"
#include "frames/summedmapbeam.h"
#include "frames/wholepixels.h"
#include "imaging/acmlfft.h"
#include "imaging/complex.h"
#include "imaging/correlation.h"
#include "imaging/elementarithmetic.h"
#include "imaging/imageconversion.h"
#include "imaging/imagefilters.h"
#include "imaging/imageshifts.h"
#include "imaging/peakfit2d.h"
#include "records/runends.h"
#include "records/timestamp.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tessera {

namespace {

// Each reader keeps a whole frame in memory to cut a small region out of it. More readers than this only cost
// memory, as the files are not read faster.
const int g_nMostReaders = 4;

const int g_nLeastSide = 16;  // of the region; ring mask and peak box of the correlation must fit into it

// The fit of the direct beam leaves out pixels of the mean frame at or above this, in counts, as detectors
// may be saturated there. A camera of 16 bits does not reach it.
const double g_dfSaturation = 100000.0;
const int g_nFitHalfSize = 64;  // pixels on each side of the coarse position that the fit uses

// Directions of CAcmlFft::Transform().
const int g_nForward = -1;
const int g_nBackward = 1;

// The reference region, in raw pixels, at the same place on every frame.
struct Square {
    int nX = 0;  // left column
    int nY = 0;  // top row
    int nSide = 0;
};

// The spectrum of a frame's region, to be aligned with the others.
struct RegionFrame {
    bool bUsable = false;    // false: the reason is a line of the report
    CImgObj<COMPLEX> imgFT;  // centred layout; the low frequencies alone
    qint64 nBadPixels = 0;   // of the region
    CDeferredReport report;  // lines of the thread that read the frame, shown when its turn comes
};

// Cuts the region out of frames and transforms it. Each thread of a run has an object of its own.
class CRegionCutter {
public:
    /// @param series  must outlive the object
    CRegionCutter(const SeriesSnapshot& series, const Square& square) : m_series(series), m_square(square) {}

    /// @throw CShortMemory
    RegionFrame cut(int nFrame)
    {
        RegionFrame frame;
        try {
            CImgObj<float> imgRegion;
            if (loadRegion(nFrame, imgRegion, frame.report)) {
                transform(imgRegion, frame);
            }
        } catch (const CShortMemory&) {  // it names the file already
            throw;
        } catch (const std::bad_alloc&) {
            const std::uint64_t nBytesPerPixel = 24;  // region, spectrum, transform
            throw CShortMemory(
                QStringLiteral("%1: the reference region").arg(m_series.listFrameFile[nFrame]),
                nBytesPerPixel * std::uint64_t(m_square.nSide) * std::uint64_t(m_square.nSide));
        }
        return frame;
    }

private:
    // Fills bad pixels, transforms, and keeps the low frequencies: periods of 8 pixels and more, which hold
    // the shape of the beam and little of the noise. The zero frequency, the mean, is left out.
    void transform(CImgObj<float>& imgRegion, RegionFrame& frame)
    {
        frame.nBadPixels = fillBadPixels(imgRegion);
        const int nSide = m_square.nSide;
        if (!m_imgMask.Data()) {
            m_imgMask.Create(nSide, nSide);
            const int nInner = -1;  // leaves out the middle alone
            const int nOuter = nSide / 8;
            MakeRingMask(reinterpret_cast<char*>(m_imgMask.Data()), nSide, nSide, nInner, nOuter);
        }
        ComplexFromFloat(imgRegion, frame.imgFT);
        m_fft.Transform(frame.imgFT.Data(), nSide, nSide, g_nForward);
        ShiftCenter(frame.imgFT.Data(), nSide, nSide);
        MultiplyByMask(frame.imgFT.Data(), reinterpret_cast<const char*>(m_imgMask.Data()), nSide * nSide);
        frame.bUsable = true;
    }

    // Returns false, with the reason in the report, if the frame cannot be loaded or does not contain the
    // region.
    bool loadRegion(int nFrame, CImgObj<float>& imgRegion, CRunReport& report) const
    {
        FrameFaults faults;
        faults.strNotLoaded = QStringLiteral("Failed to load %1. Stop.");
        const auto pImage = firstImage(m_series, nFrame, faults, report, OnShortMemory::Throw);
        if (!pImage) {
            return false;
        }
        const CImgObj<float>& imgFrame = *pImage;
        imgRegion = imgFrame.SubImage(m_square.nX, m_square.nY, m_square.nSide, m_square.nSide);
        if (!imgRegion.Data()) {
            report.fail(QStringLiteral("The reference region of %L1×%L1 pixels at (%L2, %L3) does not lie "
                                       "inside frame #%L4 of %L5×%L6 pixels (%7). Stop.")
                            .arg(m_square.nSide)
                            .arg(m_square.nX)
                            .arg(m_square.nY)
                            .arg(nFrame + 1)
                            .arg(imgFrame.Width())
                            .arg(imgFrame.Height())
                            .arg(m_series.listFrameFile[nFrame]));
            return false;
        }
        return true;
    }

    const SeriesSnapshot& m_series;
    const Square m_square;
    CImgObj<unsigned char> m_imgMask;  // made with the first frame
    CAcmlFft m_fft;
};

// The running sum of the spectra of the aligned regions.
class CRegionSum {
public:
    explicit CRegionSum(int nSide) : m_nSide(nSide) {}

    // Aligns a region with the sum and adds it.
    // @param imgFrameFT  becomes the spectrum of the aligned region
    // @return its shift against the sum, pixels; 0 for the first region, with which the sum begins; nothing
    //         where the sum or the region is blank, so that nothing can be aligned: the region is then added
    //         as it is
    std::optional<QPointF> add(CImgObj<COMPLEX>& imgFrameFT)
    {
        if (!m_imgSumFT.Data()) {
            m_imgSumFT.Copy(imgFrameFT);
            return QPointF(0, 0);
        }
        const int nCompressed = 1;  // amplitudes are compressed, else the few strongest ones rule the result
        bool bMeasured = true;
        double dfPeak = 0;
        double dfX = 0;
        double dfY = 0;
        Correlate(m_imgSumFT.Data(), imgFrameFT.Data(), m_nSide, m_nSide, nCompressed, dfPeak, dfX, dfY, true,
                  &bMeasured);
        FourierShift(imgFrameFT.Data(), m_nSide, m_nSide, -dfX, -dfY, true);
        AddComplex(m_imgSumFT.Data(), imgFrameFT.Data(), m_nSide * m_nSide);
        return bMeasured ? std::make_optional(QPointF(dfX, dfY)) : std::nullopt;
    }

    void scale(double df) { ScaleComplex(m_imgSumFT.Data(), m_nSide * m_nSide, df); }
    const CImgObj<COMPLEX>& sum() const { return m_imgSumFT; }

    // The image of a spectrum in centred layout.
    std::unique_ptr<CImgObj<float>> imageOf(const CImgObj<COMPLEX>& imgCentredFT)
    {
        m_imgWork.Copy(imgCentredFT);
        ShiftCenter(m_imgWork.Data(), m_nSide, m_nSide);
        m_fft.Transform(m_imgWork.Data(), m_nSide, m_nSide, g_nBackward);
        auto pImage = std::make_unique<CImgObj<float>>();
        pImage->Create(m_nSide, m_nSide);
        const int nRealPart = 2;
        ComplexToFloat(m_imgWork.Data(), pImage->Data(), m_nSide * m_nSide, nRealPart);
        return pImage;
    }

private:
    int m_nSide;
    CAcmlFft m_fft;
    CImgObj<COMPLEX> m_imgSumFT;  // centred layout
    CImgObj<COMPLEX> m_imgWork;
};

struct MeasuredSeries {
    QList<QPointF> listShift;  // of the frames before the end of the run, pixels against the first frame
    RunOutcome outcome;
};

// Measures the shifts and adds the aligned regions up. Threads read and transform the frames ahead; they are
// added in their order, in the calling thread.
MeasuredSeries measureSeries(DataSet& dataSet, const Square& square, int nJobs, CRegionSum& sum,
                             CRunReport& report, const FnShiftFrameDone& fnFrameDone)
{
    MeasuredSeries measured;
    const SeriesSnapshot series(dataSet);
    CFrameWalk walk(series.frameCount(), StopAsked::BetweenFrames, report);
    walk.showProgress(ProgressPlace::TaskBarToo);
    const auto makeWorker = [&] {
        return [pCutter = std::make_shared<CRegionCutter>(series, square)](int nFrame) {
            return pCutter->cut(nFrame);
        };
    };
    CBadPixelLines badPixelLines;
    const auto add = [&](int i, RegionFrame& frame) {
        frame.report.sayTo(report);
        if (!frame.bUsable) {
            return false;
        }
        badPixelLines.add(i, frame.nBadPixels, report);
        const std::optional<QPointF> measuredShift = sum.add(frame.imgFT);
        if (!measuredShift) {
            report.addMessage(
                QStringLiteral("Frame #%L1 has nothing to align in the reference region; its shift is "
                               "taken as 0.")
                    .arg(i + 1),
                Severity::Error);
        }
        const QPointF ptShift = measuredShift.value_or(QPointF(0, 0));
        measured.listShift.append(ptShift);
        if (fnFrameDone) {
            releaseFrameImages(dataSet.m_vecFrameImage);
            dataSet.m_vecFrameImage.push_back(sum.imageOf(frame.imgFT));
            fnFrameDone(i, ptShift, *dataSet.m_vecFrameImage.front());
        }
        return true;
    };
    const FrameMemory memory = {sizeof(float), 0};  // the frame as it was read; the region is small beside it
    const int nReaders = jobsForMemory(series, std::min(nJobs, g_nMostReaders), memory, &report);
    measured.outcome = walk.runAhead<RegionFrame>(nReaders, makeWorker, add);
    return measured;
}

// Finds the direct beam on the sum of the aligned regions. Result in raw pixels of the first frame.
QPointF locateBeam(const Square& square, CRegionSum& sum, CRunReport& report)
{
    const double dfX = square.nX, dfY = square.nY;
    int nX = 0;  // in the region, as all positions below
    int nY = 0;
    findBeamInSummedMap(sum.sum(), nX, nY);
    report.addMessage(
        QStringLiteral("Direct beam position from summed map: (%L1, %L2)").arg(dfX + nX).arg(dfY + nY),
        Severity::Info);
    double dfFitX = nX;
    double dfFitY = nY;
    const std::vector<double> vecFit = FitPeak2D(*sum.imageOf(sum.sum()), dfFitX, dfFitY, g_nFitHalfSize,
                                                 g_dfSaturation);
    report.addMessage(
        QStringLiteral("Direct beam position from fitting of the summed map:  (%L1, %L2), err=(%L3, "
                       "%L4), code=%L5.")
            .arg(dfX + dfFitX, 8, 'f', 2)
            .arg(dfY + dfFitY, 8, 'f', 2)
            .arg(vecFit[6], 6, 'f', 3)  // standard error of x
            .arg(vecFit[8], 6, 'f', 3)  // and of y
            .arg(vecFit[10]),           // how the fit ended
        Severity::Info);
    const auto isInside = [&](double df) { return df >= 0 && df <= square.nSide; };
    if (!isInside(dfFitX) || !isInside(dfFitY)) {
        report.addMessage(
            QStringLiteral("The fit left the reference region; the position from the summed map is used."),
            Severity::Error);
        return QPointF(dfX + nX, dfY + nY);
    }
    return QPointF(dfX + dfFitX, dfY + dfFitY);
}

/// @return why the file was not written; empty if it was
QString saveShifts(const DataSet& dataSet, CRunReport& report)
{
    const QString strPath = QFileInfo(fileOfProject(dataSet, ResultFile::Shifts)).absoluteFilePath();
    const QString strFailed = QStringLiteral("Updating shift data file failed.");
    QString strReason;
    const bool bWritten = writeShiftFile(
        strPath, {dataSet.m_dfCenterX, dataSet.m_dfCenterY, dataSet.m_listShift}, &strReason);
    if (bWritten) {
        report.addMessage(QStringLiteral("Shift correction data saved to %1.").arg(strPath), Severity::Info);
    } else {
        report.addMessage(strFailed, Severity::Error);
    }
    if (!strReason.isEmpty()) {
        report.addMessage(strReason, Severity::Error);
    }
    return bWritten ? QString() : strReason.isEmpty() ? strFailed : strReason;
}

}  // namespace

RunOutcome runShiftEvaluation(DataSet& dataSet, const QRectF& rcRegion, CRunReport& report,
                              const ShiftEvaluationOptions& options, const FnShiftFrameDone& fnFrameDone)
{
    report.addMessage(QStringLiteral("Reference region: (%L1, %L2) %L3×%L4")
                          .arg(rcRegion.x())
                          .arg(rcRegion.y())
                          .arg(rcRegion.width())
                          .arg(rcRegion.height()),
                      Severity::Info);
    const int nFrames = dataSet.m_listFrameFile.size();
    if (nFrames == 0) {
        return {RunEnd::Refused, {}};
    }
    // NaN becomes -1, which is outside every frame.
    const auto edge = [](double df) { return std::isnan(df) ? -1 : wholePixels(df); };
    Square square{edge(rcRegion.x()), edge(rcRegion.y()), edge(rcRegion.width())};
    if (square.nSide < g_nLeastSide) {
        return refuseRun(
            report,
            QStringLiteral("The reference region must have at least %L1 pixels a side.").arg(g_nLeastSide));
    }
    if (square.nSide % 2 != 0) {
        --square.nSide;
        report.addMessage(QStringLiteral("The side must be even: %L1 pixels are used.").arg(square.nSide),
                          Severity::Info);
    }

    QElapsedTimer timer;
    timer.start();
    report.addMessage(QStringLiteral("%1>Image shift evaluation started.").arg(currentTimeStamp()),
                      Severity::Milestone);
    CRegionSum sum(square.nSide);
    const MeasuredSeries measured = measureSeries(dataSet, square, options.nJobs, sum, report, fnFrameDone);
    const QList<QPointF>& listShift = measured.listShift;
    const bool bReachedEnd = measured.outcome.end == RunEnd::Finished;
    if (!bReachedEnd) {
        report.addMessage(QStringLiteral("%1>Image shift evaluation ended after %L2 of %L3 frames.")
                              .arg(currentTimeStamp())
                              .arg(listShift.size())
                              .arg(nFrames),
                          Severity::Error);
    }
    if (measured.outcome.end == RunEnd::Stopped || (!bReachedEnd && !options.bKeepPartial)) {
        return measured.outcome;
    }
    dataSet.m_listShift = listShift;  // also an empty one, if the first frame could not be used
    if (listShift.isEmpty()) {
        return measured.outcome;
    }
    // The mean of the series. That of a part of it comes out lower, which moves no maximum.
    sum.scale(1.0 / nFrames);
    const QPointF ptBeam = locateBeam(square, sum, report);
    dataSet.m_dfCenterX = ptBeam.x();
    dataSet.m_dfCenterY = ptBeam.y();
    RunOutcome outcome = measured.outcome;
    const QString strUnsaved = options.bSave ? saveShifts(dataSet, report) : QString();
    if (outcome.finished()) {
        outcome.strReason = strUnsaved;
    }
    report.addMessage(
        timedEndLine(QStringLiteral("%1>Image shift evaluation finished in %L2 min %L3 sec."), timer),
        Severity::Milestone);
    return outcome;
}

}  // namespace tessera
