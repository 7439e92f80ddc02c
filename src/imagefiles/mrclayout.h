// MrcLayout: where the pixels of an MRC file lie and what they are, by its header and its length.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

namespace tessera {

constexpr size_t g_nMrcHeaderSize = 1024;

/// The header as its bytes tell it, and what follows from it.
///
/// The order of bytes is the one of the machine stamp; where the stamp is none, or gives a MODE that does not
/// exist, the one in which MODE and sizes are possible, else little-endian. The sections begin behind the
/// extended header, at byte 1024 + NSYMBT. A file with less than NSYMBT bytes has no extended header, and
/// neither has one that is to the byte as long as without and names no known kind of it (EXTTYP).
///
/// Rows are stored bottom up, so the first row of a section is the last row of its image. The first row is
/// on top where MAPR is -2, and in files with the records "FEI1" or "FEI2" of version 20140.
///
/// Sources: Cheng et al. (2015), J. Struct. Biol. 192, 146, and MRC2014 at www.ccpem.ac.uk; for signs of
/// MODE 0, for packed pixels and for rows on top the description of the format at bio3d.colorado.edu/imod.
struct MrcLayout {
    int32_t nX = 0, nY = 0, nZ = 0, nMode = 0;
    bool bBigEndian = false;
    int nWidth = 0;             ///< columns of the image: NX, twice that for two pixels in a byte of MODE 0
    bool bPacked = false;       ///< two pixels of 4 bits in a byte, the left one in the lower half
    bool bUnsigned = false;     ///< pixels of MODE 0 from 0 to 255, not from -128 to 127
    bool bSignGuessed = false;  ///< of MODE 0, where the header tells nothing of it
    bool bTopDown = false;      ///< the first row in the file is the first row of the image
    uint64_t nExtended = 0;     ///< bytes of the extended header

    uint64_t begin() const { return g_nMrcHeaderSize + nExtended; }
    size_t rowBytes() const;  ///< 0 for a MODE that is not read
};

/// @param pHeader    1024 bytes
/// @param nFileSize  bytes, at least as many
MrcLayout mrcLayout(const uint8_t* pHeader, uint64_t nFileSize);

/// The sections that can be read of those that are asked for.
struct MrcSections {
    int64_t nCount = 0;   ///< from the first that is asked for
    int64_t nInFile = 0;  ///< all that the file holds whole, of the NZ that it tells of
    size_t nBytes = 0;    ///< per section
};

/// @param nFirst        from 0
/// @param nMaxSections  none are read when it is below 1
/// @param strReason     why there are fewer than NZ or nMaxSections allow; else as it was
MrcSections mrcSections(const MrcLayout& layout, uint64_t nFileSize, int nFirst, int nMaxSections,
                        QString& strReason);

}  // namespace tessera
