// What the extended header of an MRC file tells of each of its sections.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>
#include <QFile>

namespace tessera {

/// What tells the kind of an extended header: fields of the header before it.
struct MrcExtended {
    QByteArray bytesKind;     ///< EXTTYP, four characters
    quint64 nBytes = 0;       ///< NSYMBT
    int nIntegers = 0;        ///< of a section, or bytes of a section in files of SerialEM
    int nReals = 0;           ///< of a section, or flags of what it has in files of SerialEM
    int nSections = 0;        ///< NZ
    bool bBigEndian = false;  ///< of the file
};

/// Adds what the record of the section `nImage` (from 0) tells; nothing where there is none or it is damaged.
///
/// Four kinds are known: "FEI1" and "FEI2", one record of 768 or 888 bytes for each section with masks of
/// which fields are filled in; "SERI" of SerialEM, which has no more than the tilt; the older records of 128
/// bytes from microscopes of FEI; and of other files laid out after Agard the tilt, their first real number.
/// @param file  open; where it is read next is not kept
void tellMrcExtended(QFile& file, const MrcExtended& extended, int nImage, FrameHeader& header);

}  // namespace tessera
