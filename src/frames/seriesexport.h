// exportSeries: writes one file for each frame of a series.
#pragma once

#include "dataset/seriessnapshot.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

#include <functional>

namespace tessera {

/// What an export writes, and its lines in the log.
struct SeriesExport {
    /// Takes a snapshot of the series.
    explicit SeriesExport(const DataSet& dataSet) : series(dataSet) {}

    SeriesSnapshot series;  ///< the series as it was at the start
    QString strName;        ///< name in the line of a stop: "%1>NAME stopped ..."
    QString strStartLine;   ///< with %1 for the time stamp; empty: no line
    QString strEndLine;     ///< likewise
    QString strLoadFailed;  ///< with %1 for the path of the frame
    QString strFolder;      ///< folder of the files, for a line with their number; empty: no line
    int nProgressMinimum = 0;
    bool bStopAtFailedWrite = false;  ///< end the walk with "Failed to save to file: %1"

    /// The file for a frame.
    std::function<QString(const QString& strFrameFile)> fnTarget;
    /// Writes the file, whole or not at all. The image may be changed. On failure strReason takes why.
    std::function<bool(int nFrame, CImgObj<float>& image, const QString& strTarget, QString& strReason)>
        fnWrite;
};

/// Goes through the series and writes the first image of each frame to its file.
///
/// - An export that would overwrite a frame of its own series is refused as a whole, with a red line.
/// - A frame that cannot be loaded or has no image ends the walk with a red line.
/// - Files that cannot be written are named in red at the end. Existing files are replaced.
/// - When several frames have the same file, that of the last one remains, and a red line tells so at the
///   end.
/// - When the report asks to stop, the walk ends before the next frame with a red line in place of the end
///   line. In all other cases there is an end line.
///
/// @return Finished if each frame of the series has its file; Refused where a frame would be overwritten
RunOutcome exportSeries(const SeriesExport& what, CRunReport& report);

}  // namespace tessera
