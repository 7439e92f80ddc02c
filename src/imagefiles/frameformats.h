// FrameFormat: the table of the file formats that frames come in.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// Bytes at a fixed place by which files of a format are known.
struct FileMagic {
    int nOffset;  ///< bytes from the beginning of the file
    QByteArray bytes;
};

/// One row of the table. The loader, the dialogs, "New Project", the driver and the fuzzers take all that
/// they know of a format from it.
struct FrameFormat {
    /// As users know it. In lower case it names the format's fuzz target and its folder in tests/fuzzcases;
    /// the pictures share those of the last row.
    QString strName;
    /// In lower case, without a dot; the first of them is that of the fuzz target. They decide only where the
    /// content does not.
    QStringList listSuffix;
    /// Any of them is found in files of the format. MRC files of before the year 2000 have none.
    std::vector<FileMagic> vecMagic;

    /// Reads images of a file and appends them.
    ///
    /// A reader opens by openRegularFile(), as opening a pipe would wait for its writer, and checks every
    /// size against the file's length before it takes memory. makeFileBuffer() has memory for a whole file,
    /// convertPixels() turns its elements into float, hasMemoryFor() is asked for what packed data may grow
    /// to. Calls on different files run side by side, and so do those on one file.
    ///
    /// @param nFirst       the first image that is read, from 0; what lies before it costs nothing that grows
    ///                     with its pixels. A file with no more than nFirst images is a failure.
    /// @param nMaxImages   1 or more; images after so many are not read, as most runs use only the first
    /// @param vecImage     gets the images, each with the row on top that is on top on the camera's screen;
    ///                     unchanged on failure. A pixel that the format marks as no measurement (dead, in a
    ///                     gap, masked) is NaN; counts are whole and unscaled.
    /// @param strReason    what is wrong with the file, in words and without its name, which the loader puts
    ///                     before it; empty if nothing is. A success with a reason is a file of which a part
    ///                     is missing.
    /// @return false when there is nothing to read. A sound header without an image that can be read may
    ///         give true, with no image and a reason.
    /// @throws std::bad_alloc when memory runs out
    bool (*fnRead)(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

    /// Reads what the header tells of an image, from 0; null for a format whose files tell nothing before the
    /// image is read. Any content is safe, and so is what is no file, and an image that is not there. The
    /// size of pixels that are not packed is told only when the file has room for them, as whoever has the
    /// size may leave the image unread.
    /// @throws std::bad_alloc when memory runs out
    FrameHeader (*fnReadHeader)(const QString& strFileName, int nImage);
};

/// All formats. When a folder holds as many frames of one suffix as of another, the suffix that stands first
/// is taken ("Add Folder" of "New Project"), so the formats of cameras come before the pictures. The last row
/// has no suffix: whatever QImage reads, for files with any other.
const std::vector<FrameFormat>& frameFormats();

/// The row by which a frame is read, "FILE" or "FILE#12". The content decides; where it has no magic bytes,
/// or the file cannot be read, the suffix does, in either case of letters.
const FrameFormat& frameFormatOf(const QString& strFrame);

/// What the header of a frame tells, "FILE" or "FILE#12"; nothing where its format has none or memory is
/// short.
FrameHeader frameHeader(const QString& strFrame);

/// The suffixes of all formats, in the order of the table.
const QStringList& frameSuffixes();

/// The same as a file dialog wants them: "*.dm3 *.mrc ...".
QString frameNameFilters();

}  // namespace tessera
