// Hdf5Series: the images of an HDF5 file, where they are stored, and their header.
#pragma once

#include "imagefiles/frameheader.h"
#include "imagefiles/hdf5array.h"
#include "imagefiles/hdf5stamp.h"

#include <memory>

namespace tessera {

/// Consecutive images of one data set.
struct Hdf5Block {
    QString strFile;     ///< path
    QByteArray strPath;  ///< path of the data set in the file
    Hdf5Layout layout;
    int nFirst = 0;      ///< number of the first image in the data set
    int nCount = 0;      ///< images
    int nNumber = 0;     ///< number that the data set gives its first image, from 1; 0 if none
    QString strMissing;  ///< why these images cannot be read; empty if they can
};

/// All images of a file.
struct Hdf5Series {
    /// The layout of the file.
    enum class Kind { PLAIN, NEXUS, VELOX, BERKELEY };

    Kind kind = Kind::PLAIN;
    std::vector<Hdf5Block> vecBlock;
    bool bFramesLast = false;  ///< images are counted by the last axis, else by all but the last two
    bool bMarked = false;      ///< the greatest number of unsigned pixels marks invalid ones
    double dfUnderload = std::numeric_limits<double>::quiet_NaN();  ///< smaller counts are no measurement
    std::vector<uint32_t> vecMasked;                                ///< masked pixels, row by row
    FrameHeader header;            ///< common to all images, with their number
    std::vector<double> vecStart;  ///< tilt at the start of each image, degrees; as many as images, or none
    double dfWidth = 0;            ///< degrees from one image to the next; 0 when unknown
    QString strTiltSource;
    QString strWidthSource;
    QByteArray strMetadata;  ///< data set with the text of each image (Velox)
    QString strReason;       ///< tells which part of the series is missing
    QDateTime timeRead;
    std::vector<Hdf5Stamp> vecStamp;
};

/// Finds the images of a file. The last few results are kept as long as none of their files changes.
/// @return null, with the reason, when there are none
std::shared_ptr<const Hdf5Series> hdf5Series(const QString& strFileName, QString& strReason);

/// The number of images of a data set, by its lengths and by what its stored bytes can contain.
int imagesIn(const Hdf5Layout& layout, bool bFramesLast);

/// The plane of an image of a data set.
Hdf5Plane planeOf(const Hdf5Layout& layout, bool bFramesLast, int nImage);

/// Determines the number of images of blocks whose file is missing, so that the following ones keep their
/// numbers. It follows from the number of the next block, from the total, or from the length of the other
/// blocks.
/// @param nTotal  total in the file; 0 when unknown
/// @return what is missing, in words. Where the number cannot be determined, the series ends there; also
///         where the images in missing files would be more than those in existing ones and 100000
QString countMissing(std::vector<Hdf5Block>& vecBlock, qint64 nTotal);

/// The path of a file that a master file names; empty, with the reason, unless it is in the folder of the
/// master or below it.
QString pathBesideMaster(const QString& strMaster, const QString& strLinked, QString& strReason);

}  // namespace tessera
