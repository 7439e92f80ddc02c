// CFrameRun: a run that measures something again on the frames of a series.
#pragma once

#include "dataset/dataset.h"
#include "dataset/seriessnapshot.h"
#include "frames/framewalk.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <functional>

namespace tessera {

/// One run over the frames of a series, with its start line, progress, stop requests and end line.
class CFrameRun {
public:
    /// @param strName  name of the run in the lines "%1>NAME started.", "... finished.", "... did not
    ///                 finish."
    CFrameRun(DataSet& dataSet, CRunReport& report, const QString& strName);
    CFrameRun(const CFrameRun&) = delete;
    CFrameRun& operator=(const CFrameRun&) = delete;

    /// Shows the progress and logs the start of the run. If the report asks to stop here, walk() will end
    /// before its first frame.
    void begin();

    /// Calls fnFrame for each frame in order until it returns false, and then hides the progress.
    ///
    /// Stop requests are handled before each frame and after the last one. If memory runs out, a red line
    /// is logged and the walk ends.
    /// @return Finished if all frames were done and the user did not stop the run
    RunOutcome walk(const std::function<bool(int nFrame)>& fnFrame);

    /// Loads a frame into m_vecFrameImage, whose former images are freed.
    /// @return its first image; null, with red lines, when it cannot be loaded or has no image
    const CImgObj<float>* load(int nFrame);

    /// Logs how the run ended, in blue or red.
    void sayEnd(const RunOutcome& outcome);

    /// The series as it was at the start of the run.
    const SeriesSnapshot& series() const { return m_series; }
    /// Number of frames.
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
