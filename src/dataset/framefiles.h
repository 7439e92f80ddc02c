// Frame files: which files of a folder are the frames of a series, and in which order.
#pragma once

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

namespace tessera {

/// Whether a name stands before another one when the numbers in both count as numbers: frame9 before
/// frame10. Names that differ only in the case of letters or in leading zeros stand in the order of their
/// characters.
bool naturalLess(const QString& strFirst, const QString& strSecond);

/// Sorts paths by their file names as naturalLess() has it, those of equal names by their folders.
void sortFrames(QStringList& listFile);

/// The frames of files in series order: what framesOfImageFiles() makes of them, and all sections of a MRC
/// stack that stands alone.
QStringList framesOfFiles(const QStringList& listFile);

/// The files that frames lie in, each once, in the order of the frames: a file of many images is one.
QStringList filesOfFrames(const QStringList& listFrame);

/// Frames of one size, in series order.
struct SizedFrames {
    QSize size;  ///< pixels; not valid where no header tells it
    QStringList listFrame;
};

/// Frames by their sizes, as the headers tell, the size of the first frame first; those that do not tell are
/// among the commonest. Of a file of many images the first one tells for all.
QList<SizedFrames> framesBySize(const QStringList& listFrame);

/// Takes out of framesBySize() what is no rotation series, sizes of one or two frames, where another one is.
/// @return a line for each that was taken out
QStringList dropStrayFrames(QList<SizedFrames>& listSized);

/// The frames in a folder, sorted. Of files with different suffixes those of the commonest one, and of
/// equally common ones of the first of frameSuffixes(): pictures that were saved beside the frames are no
/// part of the series, nor is what was exported from them, nor the data files that a master or the first
/// file of a stream leads to. Where no suffix is known the content decides. Files of many images give all of
/// them, as framesOfFiles() does.
QStringList framesInFolder(const QString& strFolder);

}  // namespace tessera
