#include "frames/seriespicture.h"

#include "dataset/seriessnapshot.h"
#include "frames/badpixels.h"
#include "frames/deferredreport.h"
#include "frames/framewalk.h"
#include "frames/seriessample.h"
#include "frames/wholepixels.h"
#include "imaging/imagelist.h"
#include "imaging/imageview.h"
#include "records/runends.h"
#include "records/whatwasthrown.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace tessera {

namespace {

struct ReadFrame {
    ImageList vecImage;  // empty if it could not be read
    CDeferredReport report;
};

class CPictureOfSeries {
public:
    CPictureOfSeries(const DataSet& dataSet, SeriesPictureKind kind, CRunReport& report)
        : m_series(dataSet), m_kind(kind), m_report(report)
    {
        m_bShifts = m_series.centres.m_listShift.size() == m_series.frameCount();
    }

    RunOutcome run(int nJobs)
    {
        if (m_series.frameCount() == 0) {
            return refuseRun(m_report, QStringLiteral("There are no frames to make a picture of."));
        }
        const auto makeWorker = [&] {
            return [&](int nFrame) {
                ReadFrame frame;
                frame.vecImage = sampledImages(frameSource(m_series, nFrame), frame.report);
                return frame;
            };
        };
        CFrameWalk walk(m_series.frameCount(), StopAsked::BeforeEachFrame, m_report);
        walk.showProgress(ProgressPlace::TaskBarToo);
        const RunOutcome outcome = walk.runAhead<ReadFrame>(nJobs, makeWorker,
                                                            [&](int nFrame, ReadFrame& frame) {
                                                                add(nFrame, frame);
                                                                return true;
                                                            });
        if (!outcome.finished()) {
            return outcome;
        }
        sayUnreadFrames(m_vecUnread, m_report);
        if (m_nFrames == 0) {
            return failRun(m_report, QStringLiteral("None of the frames can be read."));
        }
        return {};
    }

    SeriesPicture picture() const
    {
        SeriesPicture result;
        result.kind = m_kind;
        result.nFrames = m_nFrames;
        result.nLeftOut = m_series.frameCount() - m_nFrames;
        result.bDriftTakenOut = m_bShifts;
        result.image.Create(m_nWidth, m_nHeight);
        for (std::size_t i = 0; i < m_vecValue.size(); ++i) {
            result.image.Data()[i] = m_vecMeasured[i] > 0 ? float(ofPixel(i))
                                                          : std::numeric_limits<float>::quiet_NaN();
        }
        return result;
    }

private:
    double ofPixel(std::size_t i) const
    {
        switch (m_kind) {
            case SeriesPictureKind::Maximum:
                break;
            case SeriesPictureKind::Sum:
                return m_vecMeasured[i] == m_nFrames ? m_vecValue[i]
                                                     : m_vecValue[i] * m_nFrames / m_vecMeasured[i];
            case SeriesPictureKind::Mean:
                return m_vecValue[i] / m_vecMeasured[i];
        }
        return m_vecValue[i];
    }

    void add(int nFrame, const ReadFrame& frame)
    {
        if (frame.vecImage.empty()) {
            m_vecUnread.push_back(frame.report);
            return;
        }
        const CImgObj<float>& image = *frame.vecImage.front();
        if (m_nFrames == 0) {
            m_nWidth = image.Width();
            m_nHeight = image.Height();
            m_vecValue.assign(std::size_t(m_nWidth) * std::size_t(m_nHeight), 0);
            m_vecMeasured.assign(m_vecValue.size(), 0);
        }
        if (image.Width() != m_nWidth || image.Height() != m_nHeight) {
            m_report.addMessage(QStringLiteral("%1: %L2×%L3 pixels; the first frame has %L4×%L5. Left out.")
                                    .arg(m_series.listFrameFile[nFrame])
                                    .arg(image.Width())
                                    .arg(image.Height())
                                    .arg(m_nWidth)
                                    .arg(m_nHeight),
                                Severity::Error);
            return;
        }
        ++m_nFrames;
        const QPointF ptShift = m_bShifts ? m_series.centres.m_listShift[nFrame] : QPointF();
        addMoved(image, wholePixels(ptShift.x()), wholePixels(ptShift.y()));
    }

    // Adds a frame that is moved: its pixel (x + nDX, y + nDY) belongs to (x, y) of the picture.
    void addMoved(const CImgObj<float>& image, int nDX, int nDY)
    {
        const int nX0 = std::max(0, -nDX), nX1 = std::min(m_nWidth, m_nWidth - nDX);
        const int nY0 = std::max(0, -nDY), nY1 = std::min(m_nHeight, m_nHeight - nDY);
        for (int y = nY0; y < nY1; ++y) {
            const float* pSource = viewOf(image).row(y + nDY) + nDX;
            const std::size_t nRow = std::size_t(y) * std::size_t(m_nWidth);
            for (int x = nX0; x < nX1; ++x) {
                const float f = pSource[x];
                if (!isUsablePixel(f)) {
                    continue;
                }
                double& dfValue = m_vecValue[nRow + std::size_t(x)];
                int& nMeasured = m_vecMeasured[nRow + std::size_t(x)];
                if (m_kind != SeriesPictureKind::Maximum) {
                    dfValue += double(f);
                } else if (nMeasured == 0 || double(f) > dfValue) {
                    dfValue = double(f);
                }
                ++nMeasured;
            }
        }
    }

    const SeriesSnapshot m_series;
    const SeriesPictureKind m_kind;
    CRunReport& m_report;
    bool m_bShifts = false;
    int m_nFrames = 0, m_nWidth = 0, m_nHeight = 0;
    std::vector<double> m_vecValue;
    std::vector<int> m_vecMeasured;  // number of frames that have measured each pixel
    std::vector<CDeferredReport> m_vecUnread;
};

}  // namespace

RunResult<SeriesPicture> makeSeriesPicture(const DataSet& dataSet, SeriesPictureKind kind, CRunReport& report,
                                           int nJobs)
{
    try {
        CPictureOfSeries series(dataSet, kind, report);
        const RunOutcome outcome = series.run(nJobs);
        if (!outcome.finished()) {
            return outcome;
        }
        return series.picture();
    } catch (...) {
        return failRun(report, whatWasThrown());
    }
}

}  // namespace tessera
