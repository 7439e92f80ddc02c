// CFrameRun: what the runs that measure again on the frames share.
#pragma once

#include "dataset/dataset.h"
#include "dataset/seriessnapshot.h"
#include "frames/framewalk.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <functional>

namespace tessera {

/// One run over the frames of a series: start line, progress, stop requests, frame after frame, end line.
class CFrameRun {
public:
    /// @param strName  begins the lines: "%1>NAME started.", "... finished.", "... did not finish."
    CFrameRun(DataSet& dataSet, CRunReport& report, const QString& strName);
    CFrameRun(const CFrameRun&) = delete;
    CFrameRun& operator=(const CFrameRun&) = delete;

    /// Shows the progress and says that the run started. A report that asks for a stop here lets walk() end
    /// before its first frame.
    void begin();

    /// Calls fnFrame for each frame in order until it returns false, hides the progress.
    ///
    /// A stop is seen before the next frame and after the last. A frame that memory has no room for ends the
    /// walk with a red line.
    /// @return Finished if all frames were done and nobody asked the run to stop
    RunOutcome walk(const std::function<bool(int nFrame)>& fnFrame);

    /// Loads a frame into m_vecFrameImage, whose former images are freed.
    /// @return its first image; null, with red lines, when it cannot be loaded or has no image
    const CImgObj<float>* load(int nFrame);

    /// Says how the run ended, in blue or red.
    void sayEnd(const RunOutcome& outcome);

    const SeriesSnapshot& series() const { return m_series; }
    int frameCount() const { return m_series.frameCount(); }

private:
    DataSet& m_dataSet;
    CRunReport& m_report;
    QString m_strName;
    const SeriesSnapshot m_series;
    CFrameWalk m_walk;
    bool m_bStopped = false;
};

}  // namespace tessera
