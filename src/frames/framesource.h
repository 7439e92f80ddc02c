// FrameSource: the files of one frame of a series, and how they are summed and binned.
#pragma once

#include "dataset/seriessnapshot.h"

#include <QList>
#include <QPoint>
#include <QString>
#include <QStringList>

namespace tessera {

/// The source of one frame: a file or the sum of several ones, with single pixels or blocks of pixels.
struct FrameSource {
    QStringList listFile;        ///< one file, or those that are summed; messages name the first
    QList<QPoint> listHotPixel;  ///< hot pixels to be repaired on the result: column, row
    int nBin = 1;                ///< side in pixels of a block that becomes one pixel
    QList<QPoint> listRawPixel;  ///< hot pixels to be repaired on each file before summing
    double dfSaturation = 0;     ///< counts from which a pixel of a file is saturated; 0: unknown

    /// Whether the frame is one file without binning.
    bool isPlain() const { return listFile.size() == 1 && nBin == 1; }
};

/// The source of a frame, counted from 0.
FrameSource frameSource(const SeriesSnapshot& series, int nFrame);
/// Does the same.
FrameSource frameSource(const SeriesData& series, int nFrame);

}  // namespace tessera
