// What a record "FEI1" or "FEI2" of an MRC file's extended header tells of a section.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>

namespace tessera {

/// The number of bytes of such a record, which is its first field; 0 when these 4 bytes are none in either
/// order. The records in a file are of one size.
/// @param bBigEndian  the order of the file; becomes that of the records, where it is the other
int feiRecordSize(const QByteArray& bytesFirst, bool& bBigEndian);

/// Adds what a whole record tells to a header that has its size and number of images.
void tellFeiRecord(const QByteArray& bytesRecord, bool bBigEndian, const QString& strKind, int nImage,
                   FrameHeader& header);

}  // namespace tessera
