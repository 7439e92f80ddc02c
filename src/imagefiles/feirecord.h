// FEI record: a record "FEI1" or "FEI2" in the extended header of an MRC file, which describes a section.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>

#include <optional>

namespace tessera {

/// The size of the records of a file, which is the first field of each, and their byte order.
struct FeiRecordSize {
    int nBytes = 0;
    bool bBigEndian = false;
};

/// Reads the size from the first 4 bytes of a record. All records of a file have the same size.
/// @param bBigEndian  byte order of the file; that of the records may differ
/// @return nothing when these bytes are no valid size in either byte order
std::optional<FeiRecordSize> feiRecordSize(const QByteArray& bytesFirst, bool bBigEndian);

/// Adds what a complete record tells to a header that already has its size and number of images.
void tellFeiRecord(const QByteArray& bytesRecord, bool bBigEndian, const QString& strKind, int nImage,
                   FrameHeader& header);

}  // namespace tessera
