// Hdf5Series: where the images of an HDF5 file lie, and what it tells of all of them.
#pragma once

#include "imagefiles/frameheader.h"
#include "imagefiles/hdf5array.h"
#include "imagefiles/hdf5stamp.h"

#include <memory>

namespace tessera {

/// Images that follow each other in one data set.
struct Hdf5Block {
    QString strFile;     ///< path
    QByteArray strPath;  ///< of the data set in the file
    Hdf5Layout layout;
    int nFirst = 0;      ///< image of the data set that comes first
    int nCount = 0;      ///< images
    int nNumber = 0;     ///< that the data set gives its first image, from 1; 0 when it does not tell
    QString strMissing;  ///< why these images cannot be read; empty if they can
};

struct Hdf5Series {
    enum class Kind { PLAIN, NEXUS, VELOX, BERKELEY };

    Kind kind = Kind::PLAIN;
    std::vector<Hdf5Block> vecBlock;
    bool bFramesLast = false;  ///< the image is counted by the last axis, else by all but the last two
    bool bMarked = false;      ///< the greatest number of unsigned pixels marks those without a measurement
    double dfUnderload = std::numeric_limits<double>::quiet_NaN();  ///< counts below are no measurement
    std::vector<uint32_t> vecMasked;                                ///< pixels, row by row
    FrameHeader header;            ///< of all images alike, with their number
    std::vector<double> vecStart;  ///< degrees, where each image begins; as many as there are, or none
    double dfWidth = 0;            ///< degrees from one image to the next; 0 when not told
    QString strTiltSource;
    QString strWidthSource;
    QByteArray strMetadata;  ///< data set with a text for each image (Velox)
    QString strReason;       ///< which part of the series is missing
    QDateTime timeRead;
    std::vector<Hdf5Stamp> vecStamp;
};

/// Finds the images of a file. The last few answers are kept while none of their files changes.
/// @return null with the reason, when there are none
std::shared_ptr<const Hdf5Series> hdf5Series(const QString& strFileName, QString& strReason);

/// Images of a data set, by its lengths and by what its stored bytes can hold.
int imagesIn(const Hdf5Layout& layout, bool bFramesLast);

/// The plane of an image of a data set.
Hdf5Plane planeOf(const Hdf5Layout& layout, bool bFramesLast, int nImage);

/// Counts the images of blocks whose file is missing, so that those behind them keep their numbers: by the
/// number that the next block has, by the total, or by the length of the others.
/// @param nTotal  that the file tells; 0 when it does not
/// @return what is missing, in words; where it cannot be counted the series ends, and where more images than
///         files hold, and 100000 besides, would be in no file
QString countMissing(std::vector<Hdf5Block>& vecBlock, qint64 nTotal);

/// The path of a file that a master names; empty with the reason unless it lies in the master's folder or
/// below it.
QString pathBesideMaster(const QString& strMaster, const QString& strLinked, QString& strReason);

}  // namespace tessera
