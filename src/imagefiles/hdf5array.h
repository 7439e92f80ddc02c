// Planes of HDF5 data sets: the elements of one image, and small lists of numbers.
#pragma once

#include "imagefiles/hdf5layout.h"

#include <memory>

namespace tessera {

/// One or two axes of a data set, at fixed places of the others.
struct Hdf5Plane {
    std::vector<hsize_t> vecPlace;  ///< along each axis; 0 along those of the plane
    int nRowAxis = -1;              ///< -1: there is one row
    int nColumnAxis = -1;           ///< -1: there is one column
};

/// What was read from the file for a plane, still packed.
struct Hdf5Fetched {
    struct Chunk {
        std::vector<hsize_t> vecPlace;  ///< of its first element
        uint32_t nSkipped = 0;          ///< filters that were not applied
        size_t nBegin = 0, nBytes = 0;  ///< in the buffer; no bytes for one that was never written
    };
    std::vector<Chunk> vecChunk;
    std::shared_ptr<uint8_t> pBytes;
    bool bPlane = false;  ///< the buffer is the plane
};

uint64_t rowsOf(const Hdf5Layout& layout, const Hdf5Plane& plane);
uint64_t columnsOf(const Hdf5Layout& layout, const Hdf5Plane& plane);

/// Whether a plane lies in the file as it is, without gaps.
bool isOnePiece(const Hdf5Layout& layout, const Hdf5Plane& plane);

/// Reads such a plane, without HDF5. @return its bytes; null with the reason
/// @throws std::bad_alloc
std::shared_ptr<uint8_t> readPiece(const QString& strFileName, const Hdf5Layout& layout,
                                   const Hdf5Plane& plane, QString& strReason);

/// Reads the bytes of a plane, and no others, after they are checked against the file's length; needs a
/// CHdf5Lock. A plane of which nothing was ever written is a failure.
/// @throws std::bad_alloc
bool fetchPlane(hid_t idDataSet, const QString& strFileName, const Hdf5Layout& layout, const Hdf5Plane& plane,
                Hdf5Fetched& fetched, QString& strReason);

/// Unpacks what was fetched; needs no lock.
/// @return the elements row by row, as bytes in the order of the file; null with the reason
/// @throws std::bad_alloc
std::shared_ptr<uint8_t> unpackPlane(const Hdf5Layout& layout, const Hdf5Plane& plane,
                                     const Hdf5Fetched& fetched, QString& strReason);

/// Up to `nMost` numbers of a data set with one axis or none; empty when there are none or more. Needs a
/// lock.
std::vector<double> numbersIn(hid_t idWhere, const QByteArray& strPath, const QString& strFileName,
                              uint64_t nMost);

}  // namespace tessera
