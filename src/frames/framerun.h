// CFrameRun: what the runs that measure again on the frames share.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runreport.h"

#include <QStringList>

#include <functional>

namespace tessera {

/// One run over the frames of a series under the flag m_bRunning: start line, progress, stop requests,
/// frame after frame, end line. The flag is cleared when the object goes, whichever way the run ends.
class CFrameRun {
public:
    /// @param strName  begins the lines: "%1>NAME started.", "... finished.", "... did not finish."
    CFrameRun(DataSet& dataSet, CRunReport& report, const QString& strName);
    ~CFrameRun();
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
    /// @return true if all frames were done and nobody asked the run to stop
    bool walk(const std::function<bool(int nFrame)>& fnFrame);

    /// Whether nobody asked the run to stop.
    bool isGoing() const { return m_bBegun && m_dataSet.m_bRunning; }

    /// Loads a frame into m_vecFrameImage, whose former images are freed.
    /// @return its first image; null, with red lines, when it cannot be loaded or has no image
    const CImgObj<float>* load(int nFrame);

    /// Says how the run ended, in blue or red.
    void sayEnd(bool bFinished);
    /// Clears the flag before the object goes.
    void release();

    int frameCount() const { return m_listFile.size(); }

private:
    DataSet& m_dataSet;
    CRunReport& m_report;
    QString m_strName;
    QStringList m_listFile;  // a copy: the data set may change under the run through waiting events
    bool m_bBegun = false;
};

}  // namespace tessera
