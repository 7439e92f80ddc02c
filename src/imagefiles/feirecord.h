// FEI record: a record "FEI1" or "FEI2" in the extended header of an MRC file, which describes a section.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>

namespace tessera {

/// The size of a record, which is its first field; 0 when these 4 bytes are no valid size in either byte
/// order. All records of a file have the same size.
/// @param bBigEndian  byte order of the file; changed to that of the records if it differs
int feiRecordSize(const QByteArray& bytesFirst, bool& bBigEndian);

/// Adds what a complete record tells to a header that already has its size and number of images.
void tellFeiRecord(const QByteArray& bytesRecord, bool bBigEndian, const QString& strKind, int nImage,
                   FrameHeader& header);

}  // namespace tessera
