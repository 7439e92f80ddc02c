// FrameSource: the files and the arithmetic that one frame of a series comes from.
#pragma once

#include "dataset/seriessnapshot.h"

#include <QList>
#include <QPoint>
#include <QString>
#include <QStringList>

namespace tessera {

/// One frame: a file, or the sum of several; of pixels as they are, or of blocks of them.
struct FrameSource {
    QStringList listFile;        ///< one, or as many as are summed; what is said names the first
    QList<QPoint> listHotPixel;  ///< repaired on what comes out: column, row
    int nBin = 1;                ///< pixels along the side of a block that becomes one
    QList<QPoint> listRawPixel;  ///< hot pixels that are repaired before that
    double dfSaturation = 0;     ///< counts of a pixel of the files that are not to be trusted; 0: not told

    bool isPlain() const { return listFile.size() == 1 && nBin == 1; }
};

FrameSource frameSource(const SeriesSnapshot& series, int nFrame);
FrameSource frameSource(const SeriesData& series, int nFrame);

}  // namespace tessera
