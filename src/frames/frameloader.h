// loadFrame: the one way by which frames enter memory.
#pragma once

#include "frames/framesource.h"
#include "imaging/imagelist.h"
#include "records/runreport.h"

#include <QList>
#include <QPoint>
#include <QString>

namespace tessera {

/// Reads one frame file and appends its images to `vecImage`, with the hot pixels repaired.
///
/// The suffix chooses the reader (frameFormatOf()). A stack gives one image per section, the hot pixels
/// repaired on the first alone.
///
/// A failure logs "%1: failed to load" with `strFileName` in red and then, in red, why. A file that can be
/// opened but has no image that can be read, such as an MRC file of an unknown mode, is no failure: the
/// result is 1 with no image added, and a red line says why. A file of which a part is missing gives the rest
/// and a black line: a stack its whole sections, a BMP or JPEG the picture with the missing part black or
/// grey.
///
/// Calls can run side by side when each has its own list and report.
///
/// @param vecImage      the frame's images; unchanged on failure. When memory runs out all its images
///                      are freed and "Error: %1" is logged in red.
/// @param listHotPixel  column, row
/// @return 1 on success, 0 on failure
int loadFrame(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
              CRunReport& report);

/// Same as `loadFrame`, but reads at most the first image of the file, for runs that use no other.
int loadFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report);

/// Same as `loadFirstImage`, for a caller that can try again with more room.
/// @throw CShortMemory when memory runs out, with `vecImage` as it was
int readFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report);

/// The same for a frame of a series. Of one that is summed or binned only the first image of each file
/// counts, and what is said names the file that it is about. Files of different sizes are no frame.
int loadFrame(ImageList& vecImage, const FrameSource& source, CRunReport& report);
int loadFirstImage(ImageList& vecImage, const FrameSource& source, CRunReport& report);
int readFirstImage(ImageList& vecImage, const FrameSource& source, CRunReport& report);

/// Frees all images of the list and empties it.
void releaseFrameImages(ImageList& vecImage);

}  // namespace tessera
