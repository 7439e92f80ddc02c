// loadFrame: loads frames of all formats.
#pragma once

#include "frames/framesource.h"
#include "imaging/imagelist.h"
#include "records/runreport.h"

#include <QList>
#include <QPoint>
#include <QString>

namespace tessera {

/// Reads one frame file and appends its images to `vecImage`.
///
/// The suffix chooses the reader (frameFormatOf()). A stack gives one image per section. Hot pixels are
/// repaired on the first image only.
///
/// A failure logs "%1: failed to load" with `strFileName` in red, and then, in red, the reason. A file that
/// can be opened but has no readable image, such as an MRC file of an unknown mode, is no failure: the
/// result is 1 without an added image, and a red line tells the reason. Of a file with a missing part the
/// rest is read, and a black line tells about it: a stack gives its complete sections, a BMP or JPEG the
/// picture with its missing part black or grey.
///
/// Calls can run side by side when each has its own list and report.
///
/// @param vecImage      takes the images; unchanged on failure. When memory runs out, all its images are
///                      freed and "Error: %1" is logged in red.
/// @param listHotPixel  column, row
/// @return 1 on success, 0 on failure
int loadFrame(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
              CRunReport& report);

/// Like loadFrame(), but reads only the first image of the file.
int loadFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report);

/// Like loadFirstImage(), for callers that can try again with more memory.
/// @throw CShortMemory when memory runs out, with `vecImage` as it was
int readFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report);

/// Like loadFrame() for a frame of a series. For a frame that is summed or binned, only the first image of
/// each file is read, and messages name the file they are about. If the files have different sizes, the
/// frame cannot be loaded.
int loadFrame(ImageList& vecImage, const FrameSource& source, CRunReport& report);
/// Like loadFirstImage() for a frame of a series.
int loadFirstImage(ImageList& vecImage, const FrameSource& source, CRunReport& report);
/// Like readFirstImage() for a frame of a series.
/// @throw CShortMemory when memory runs out, with `vecImage` as it was
int readFirstImage(ImageList& vecImage, const FrameSource& source, CRunReport& report);

/// Frees all images of the list and empties it.
void releaseFrameImages(ImageList& vecImage);

}  // namespace tessera
