// exportSeries: the walk over a series that writes one file per frame.
#pragma once

#include "dataset/seriessnapshot.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QString>

#include <functional>

namespace tessera {

/// What distinguishes one such export from another.
struct SeriesExport {
    explicit SeriesExport(const DataSet& dataSet) : series(dataSet) {}

    SeriesSnapshot series;
    QString strName;        ///< begins the line of a stop: "%1>NAME stopped ..."
    QString strStartLine;   ///< with a place for the time stamp; empty: none
    QString strEndLine;     ///< likewise
    QString strLoadFailed;  ///< with a place for the frame's path
    QString strFolder;      ///< of all files, said at the end with their number; empty: not said
    int nProgressMinimum = 0;
    bool bStopAtFailedWrite = false;  ///< with "Failed to save to file: %1"

    /// The file that a frame gives.
    std::function<QString(const QString& strFrameFile)> fnTarget;
    /// Writes it, whole or not at all; the image may be changed. On failure the reason tells why.
    std::function<bool(int nFrame, CImgObj<float>& image, const QString& strTarget, QString& strReason)>
        fnWrite;
};

/// Walks the series from frame to frame and writes the first image of each to its file.
///
/// - An export that would overwrite a frame of its own series is refused as a whole, with a red line.
/// - A frame that can't be loaded, or has no image, ends the walk with a red line.
/// - Files that can't be written are told in red at the end, by name. Existing files are replaced.
/// - When several frames give one name, the last one's file stays, and a red line says so at the end.
/// - When the report asks for a stop, the walk ends before the next frame, with a red line in the place of
///   the end line. In all other cases the end line comes.
///
/// @return Finished if each frame of the series has its file now; Refused where a frame would be overwritten
RunOutcome exportSeries(const SeriesExport& what, CRunReport& report);

}  // namespace tessera
