// CFrameRun: what the runs that measure again on the frames share.
#pragma once

#include "dataset/dataset.h"
#include "dataset/seriessnapshot.h"
#include "frames/framewalk.h"
#include "imaging/imgobj.h"
#include "records/runflag.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <functional>
#include <optional>

namespace tessera {

/// One run over the frames of a series under the flag m_bRunning: start line, progress, stop requests,
/// frame after frame, end line. The flag is cleared when the object goes, whichever way the run ends.
class CFrameRun {
public:
    /// @param strName  begins the lines: "%1>NAME started.", "... finished.", "... did not finish."
    CFrameRun(DataSet& dataSet, CRunReport& report, const QString& strName);
    CFrameRun(const CFrameRun&) = delete;
    CFrameRun& operator=(const CFrameRun&) = delete;

    /// Sets the flag, shows the progress and says that the run started.
    /// @return false when the flag was set: this is the stop request to the run under way, which sees the
    ///         flag cleared at the top of its next frame
    bool begin();

    /// Calls fnFrame for each frame in order until it returns false, hides the progress.
    ///
    /// A stop, be it the flag or the report's goOn(), is seen before the next frame and after the last. A
    /// frame that memory has no room for ends the walk with a red line.
    /// @return Finished if all frames were done and nobody asked the run to stop
    RunOutcome walk(const std::function<bool(int nFrame)>& fnFrame);

    /// Loads a frame into m_vecFrameImage, whose former images are freed.
    /// @return its first image; null, with red lines, when it cannot be loaded or has no image
    const CImgObj<float>* load(int nFrame);

    /// Says how the run ended, in blue or red.
    void sayEnd(const RunOutcome& outcome);
    /// Clears the flag before the object goes.
    void release() { m_flag.reset(); }

    const SeriesSnapshot& series() const { return m_series; }
    int frameCount() const { return m_series.frameCount(); }

private:
    DataSet& m_dataSet;
    CRunReport& m_report;
    QString m_strName;
    const SeriesSnapshot m_series;
    std::optional<CRunFlag> m_flag;
    CFrameWalk m_walk;
};

}  // namespace tessera
