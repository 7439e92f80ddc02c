// MrcLayout: the layout of the pixels of an MRC file, from its header and its length.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

namespace tessera {

constexpr size_t g_nMrcHeaderSize = 1024;

/// The header of an MRC file, and what follows from it.
///
/// The byte order is that of the machine stamp. Where the stamp is invalid, or gives a MODE that does not
/// exist, it is the order in which MODE and sizes are possible, or else little-endian. The sections begin
/// after the extended header, at byte 1024 + NSYMBT. A file with less than NSYMBT bytes has no extended
/// header, nor has a file whose length fits exactly without one and that names no known kind of it
/// (EXTTYP).
///
/// Rows are stored bottom up, so the first row of a section is the last row of its image. The first row is
/// at the top where MAPR is -2, and in files with the records "FEI1" or "FEI2" of version 20140.
///
/// Sources: Cheng et al. (2015), J. Struct. Biol. 192, 146, and MRC2014 at www.ccpem.ac.uk; for signs of
/// MODE 0, for packed pixels and for rows from the top the description of the format at
/// bio3d.colorado.edu/imod.
struct MrcLayout {
    int32_t nX = 0, nY = 0, nZ = 0, nMode = 0;
    bool bBigEndian = false;
    int nWidth = 0;          ///< columns of the image: NX, or twice that if a byte of MODE 0 has two pixels
    bool bPacked = false;    ///< a byte has two pixels of 4 bits, the left one in the lower half
    bool bUnsigned = false;  ///< pixels of MODE 0 range from 0 to 255, not from -128 to 127
    bool bSignGuessed = false;  ///< of MODE 0: the header does not tell the sign
    bool bTopDown = false;      ///< the first row in the file is the first row of the image
    uint64_t nExtended = 0;     ///< length of the extended header, bytes

    /// Place of the first section in the file, bytes.
    uint64_t begin() const { return g_nMrcHeaderSize + nExtended; }
    size_t rowBytes() const;  ///< bytes of a row; 0 for a MODE that is not read
};

/// Finds the layout of a file.
/// @param pHeader    1024 bytes
/// @param nFileSize  length of the file, at least 1024 bytes
MrcLayout mrcLayout(const uint8_t* pHeader, uint64_t nFileSize);

/// The sections that can be read.
struct MrcSections {
    int64_t nCount = 0;   ///< number of wanted sections, from the first wanted one
    int64_t nInFile = 0;  ///< number of all complete sections of the file, at most NZ
    size_t nBytes = 0;    ///< bytes of a section
};

/// Finds the sections that can be read of those wanted.
/// @param nFirst        from 0
/// @param nMaxSections  none are read when it is below 1
/// @param strReason     takes why there are fewer than NZ or nMaxSections allow; else it is unchanged
MrcSections mrcSections(const MrcLayout& layout, uint64_t nFileSize, int nFirst, int nMaxSections,
                        QString& strReason);

}  // namespace tessera
