// FrameFormat: the table of the file formats of frames.
#pragma once

#include "imagefiles/frameheader.h"
#include "imaging/imagelist.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// Bytes at a fixed place by which files of a format are recognized.
struct FileMagic {
    int nOffset;  ///< bytes from the beginning of the file
    QByteArray bytes;
};

/// A row of the table. The loader, the dialogs, "New Project", the driver and the fuzzers take from it all
/// that they know of a format.
struct FrameFormat {
    /// The name that users know. In lower case it is the name of the fuzz target and of its folder in
    /// tests/fuzzcases; the pictures share those of the last row.
    QString strName;
    /// In lower case without a dot. The first one is that of the fuzz target. The suffix decides only where
    /// the content does not.
    QStringList listSuffix;
    /// Every file of the format has one of them. MRC files from before 2000 have none.
    std::vector<FileMagic> vecMagic;

    /// Reads images of a file and appends them.
    ///
    /// A reader opens the file by openRegularFile(), as opening a pipe would wait for its writer, and
    /// checks every size against the length of the file before it allocates memory. It uses
    /// makeFileBuffer() for memory of the size of a file, convertPixels() to convert elements to float, and
    /// hasMemoryFor() before it unpacks data. Calls can run side by side, also on the same file.
    ///
    /// @param nFirst       number of the first image to be read, from 0. Skipping images before it takes no
    ///                     time that grows with their pixels. A file with no more than nFirst images is a
    ///                     failure.
    /// @param nMaxImages   how many images are read, at least 1; most runs read only one
    /// @param vecImage     takes the images, with the row on top that is on top of the screen of the
    ///                     camera; unchanged on failure. A pixel that the format marks as invalid (dead, in
    ///                     a gap, masked) is NaN; counts are whole and not scaled.
    /// @param strReason    takes what is wrong with the file, without its name, which the loader adds;
    ///                     empty if nothing is. A success with a reason means that a part of the file is
    ///                     missing.
    /// @return false when nothing can be read. For a valid header without a readable image the result may
    ///         be true, with no image and a reason.
    /// @throws std::bad_alloc when memory runs out
    bool (*fnRead)(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                   QString& strReason);

    /// Reads the header of an image, counted from 0; null for a format whose headers tell nothing. Any
    /// content is safe, also a file or an image that does not exist. The size of pixels that are not packed
    /// is given only when the file is long enough for them, as callers may use the size without reading the
    /// image.
    /// @throws std::bad_alloc when memory runs out
    FrameHeader (*fnReadHeader)(const QString& strFileName, int nImage);
};

/// All formats. When a folder has equally many frames of two suffixes, "Add Folder" of "New Project" takes
/// the suffix that is first in this table, so the formats of cameras come before pictures. The last row has
/// no suffix: it stands for files with any other suffix, which QImage may be able to read.
const std::vector<FrameFormat>& frameFormats();

/// The format of a frame, "FILE" or "FILE#12". The content decides; where it has no magic bytes or the file
/// cannot be read, the suffix decides, in upper or lower case.
const FrameFormat& frameFormatOf(const QString& strFrame);

/// The header of a frame, "FILE" or "FILE#12"; empty where its format has none or memory is short.
FrameHeader frameHeader(const QString& strFrame);

/// The suffixes of all formats, in the order of the table.
const QStringList& frameSuffixes();

/// The suffixes in the form of a file dialog: "*.dm3 *.mrc ...".
QString frameNameFilters();

}  // namespace tessera
