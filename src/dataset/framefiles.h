// Frame files: finds the frames of a series among the files of a folder, and their order.
#pragma once

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

namespace tessera {

/// Whether a name comes before another one when digits are compared as numbers: frame9 before frame10.
/// Names that differ only in upper or lower case or in leading zeros are in the order of their characters.
bool naturalLess(const QString& strFirst, const QString& strSecond);

/// Sorts paths by their file names with naturalLess(), equal names by their folders.
void sortFrames(QStringList& listFile);

/// The frames of files in series order, from framesOfImageFiles(), and all sections of an MRC stack if it
/// is the only file.
QStringList framesOfFiles(const QStringList& listFile);

/// The files of frames, each once, in the order of the frames. A file with many images is one file.
QStringList filesOfFrames(const QStringList& listFrame);

/// Frames of one size, in series order.
struct SizedFrames {
    QSize size;  ///< pixels; invalid where no header tells it
    QStringList listFrame;
};

/// Groups frames by their sizes in the headers, the size of the first frame first. Frames whose headers
/// tell no size are put into the largest group. For a file with many images, the first image is used.
QList<SizedFrames> framesBySize(const QStringList& listFrame);

/// Removes groups of one or two frames from framesBySize(), which are no rotation series, if there is a
/// larger group.
/// @return a line for each removed group
QStringList dropStrayFrames(QList<SizedFrames>& listSized);

/// The frames in a folder, sorted. If files have different suffixes, the most frequent one is taken, and of
/// equally frequent ones the first of frameSuffixes(). Pictures saved beside the frames are left out, and
/// so are exports of the frames, and data files that belong to a master file or to the first file of a
/// stream. Where no suffix is known, the content decides. Files with many images give all of them, see
/// framesOfFiles().
QStringList framesInFolder(const QString& strFolder);

}  // namespace tessera
