// MRC extended header: what it tells of each section of an MRC file.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>
#include <QFile>

namespace tessera {

/// The fields of the header that determine the kind of the extended header.
struct MrcExtended {
    QByteArray bytesKind;     ///< EXTTYP, four characters
    quint64 nBytes = 0;       ///< NSYMBT
    int nIntegers = 0;        ///< integers of a section; in files of SerialEM bytes of a section
    int nReals = 0;           ///< real numbers of a section; in files of SerialEM flags of its fields
    int nSections = 0;        ///< NZ
    bool bBigEndian = false;  ///< byte order of the file
};

/// Adds to a header what the record of section `nImage` (from 0) tells; nothing where there is none or it
/// is damaged.
///
/// Four kinds are known: "FEI1" and "FEI2", a record of 768 or 888 bytes for each section, with masks of
/// the fields that are filled in; "SERI" of SerialEM, of which only the tilt is used; the older records of
/// 128 bytes of FEI microscopes; and, in other files with the layout of Agard, the tilt as the first real
/// number.
/// @param file  open; its position changes
void tellMrcExtended(QFile& file, const MrcExtended& extended, int nImage, FrameHeader& header);

}  // namespace tessera
