// HDF5 arrays: reads planes of HDF5 data sets, which are images, and short lists of numbers.
#pragma once

#include "imagefiles/hdf5layout.h"

#include <memory>

namespace tessera {

/// A plane: one or two axes of a data set at a fixed place along the others.
struct Hdf5Plane {
    std::vector<hsize_t> vecPlace;  ///< place along each axis; 0 along those of the plane
    int nRowAxis = -1;              ///< -1 where the plane has one row
    int nColumnAxis = -1;           ///< -1 where the plane has one column
};

/// The bytes of a plane from the file, still packed.
struct Hdf5Fetched {
    /// A chunk of the data set.
    struct Chunk {
        std::vector<hsize_t> vecPlace;  ///< place of its first element along each axis
        uint32_t nSkipped = 0;          ///< bit mask of filters that were not applied
        size_t nBegin = 0, nBytes = 0;  ///< its bytes in the buffer; none for a chunk that was never written
    };
    std::vector<Chunk> vecChunk;
    std::shared_ptr<uint8_t> pBytes;
    bool bPlane = false;  ///< the buffer is the plane, without chunks
};

/// Number of rows of a plane.
uint64_t rowsOf(const Hdf5Layout& layout, const Hdf5Plane& plane);
/// Number of columns of a plane.
uint64_t columnsOf(const Hdf5Layout& layout, const Hdf5Plane& plane);

/// Whether a plane is stored unpacked and without gaps.
bool isOnePiece(const Hdf5Layout& layout, const Hdf5Plane& plane);

/// Reads such a plane without the HDF5 library.
/// @return its bytes; null with the reason
/// @throws std::bad_alloc
std::shared_ptr<uint8_t> readPiece(const QString& strFileName, const Hdf5Layout& layout,
                                   const Hdf5Plane& plane, QString& strReason);

/// Reads the bytes of a plane and no others, after checking them against the length of the file. Needs a
/// CHdf5Lock. A plane of which nothing was ever written is a failure.
/// @throws std::bad_alloc
bool fetchPlane(hid_t idDataSet, const QString& strFileName, const Hdf5Layout& layout, const Hdf5Plane& plane,
                Hdf5Fetched& fetched, QString& strReason);

/// Unpacks the bytes of a plane. Needs no lock.
/// @return the elements row by row, in the byte order of the file; null with the reason
/// @throws std::bad_alloc
std::shared_ptr<uint8_t> unpackPlane(const Hdf5Layout& layout, const Hdf5Plane& plane,
                                     const Hdf5Fetched& fetched, QString& strReason);

/// Reads up to `nMost` numbers of a data set with one axis or none; empty when there are none or more.
/// Needs a lock.
std::vector<double> numbersIn(hid_t idWhere, const QByteArray& strPath, const QString& strFileName,
                              uint64_t nMost);

}  // namespace tessera
