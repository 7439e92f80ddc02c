// FrameFormat: the table of the file formats that frames come in.
#pragma once

#include "imaging/imagelist.h"

#include <QByteArray>
#include <QSize>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// What a frame file tells before its pixels are converted.
struct FrameHeader {
    QSize size;              ///< of the first image, pixels; not valid when only reading the image can tell
    double dfKilovolts = 0;  ///< accelerating voltage, kV; 0 when not told
    double dfPixelSize = 0;  ///< in reciprocal space, Å⁻¹; 0 when not told
};

/// Bytes at a fixed place by which files of a format are known.
struct FileMagic {
    int nOffset;  ///< bytes from the beginning of the file
    QByteArray bytes;
};

/// One row of the table. The loader, the dialogs, "New Project" and the fuzzers take all that they know of a
/// format from it.
struct FrameFormat {
    /// As users know it. In lower case it names the format's fuzz target and its folder in tests/fuzzcases;
    /// the pictures share those of the last row.
    QString strName;
    /// In lower case, without a dot. They alone decide which row reads a file.
    QStringList listSuffix;
    /// Any of them is found in files of the format. MRC files of before the year 2000 have none.
    std::vector<FileMagic> vecMagic;

    /// Reads the first images of a file and appends them.
    ///
    /// A reader opens by openRegularFile(), as opening a pipe would wait for its writer, and checks every
    /// size against the file's length before it takes memory. makeFileBuffer() has memory for a whole file,
    /// convertPixels() turns its elements into float, hasMemoryFor() is asked for what packed data may grow
    /// to. Calls on different files run side by side.
    ///
    /// @param nMaxImages  1 or more; images after so many are not read, as most runs use only the first
    /// @param vecImage    gets the images, each with its first row on top; unchanged on failure
    /// @param strReason   what is wrong with the file, in words and without its name, which the loader puts
    ///                    before it; empty if nothing is. A success with a reason is a file of which a part
    ///                    is missing.
    /// @return false when there is nothing to read. A sound header without an image that can be read may
    ///         give true, with no image and a reason.
    /// @throws std::bad_alloc when memory runs out
    bool (*fnRead)(const QString& strFileName, int nMaxImages, ImageList& vecImage, QString& strReason);

    /// Reads what the header tells; null for a format whose files tell nothing before the image is read.
    /// Any content is safe, and so is what is no file. The size of pixels that are not packed is told only
    /// when the file has room for them, as whoever has the size may leave the image unread.
    /// @throws std::bad_alloc when memory runs out
    FrameHeader (*fnReadHeader)(const QString& strFileName);
};

/// All formats. When a folder holds as many frames of one suffix as of another, the suffix that stands first
/// is taken ("Add Folder" of "New Project"), so the formats of cameras come before the pictures. The last row
/// has no suffix: whatever QImage reads, for files with any other.
const std::vector<FrameFormat>& frameFormats();

/// The row by which a file is read. Its suffix decides, in either case of letters.
const FrameFormat& frameFormatOf(const QString& strFileName);

/// The suffixes of all formats, in the order of the table.
const QStringList& frameSuffixes();

/// The same as a file dialog wants them: "*.dm3 *.mrc ...".
QString frameNameFilters();

}  // namespace tessera
