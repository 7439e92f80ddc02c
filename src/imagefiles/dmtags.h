// The tags of a DM3 or DM4 file read without its pixels.
#pragma once

#include "imagefiles/dm3tags.h"

#include <QFile>
#include <QString>

namespace tessera {

/// An entry of which only the beginning was read: nDataSize bytes, at most nMostRead of nBytes.
class DmEntry : public TagEntry {
public:
    static constexpr size_t nMostRead = 256;  ///< the longest of what is asked for is the name of a camera

    quint64 nOffset = 0;  ///< of the data in the file
    quint64 nBytes = 0;   ///< of them
};

/// The tree of tags.
struct DmTags {
    int nVersion = 0;         ///< 3 or 4
    quint64 nFileSize = 0;    ///< bytes
    bool bBigEndian = false;  ///< the values; the structure is so always
    TagDirectory root;
};

/// Reads the tree of an open file. Every size is checked against the file and the group around it; depth and
/// number of tags are limited as in CDm3TagParser. Of DM4 files, which tell the length of each tag, only what
/// belongs to images is read; entries of a form that is not known stand in the tree without data there.
/// @param bPixelsOnly  of DM4 files what tells of the microscope is passed over, too
/// @return false with the reason when the file is no sound tree or one of another version than 3 or 4
bool readDmTags(QFile& file, bool bPixelsOnly, DmTags& tags, QString& strReason);

/// The first number of an entry, or of the first entry of a group without a name; NaN where there is none.
double dmNumber(const DmTags& tags, const Tag* pTag);

/// The text of an entry; empty where there is none.
QString dmText(const DmTags& tags, const Tag* pTag);

/// The child with this label, not one of a child's; null without a group.
const Tag* dmChild(const TagDirectory* pGroup, const char* pLabel);
const TagDirectory* dmGroup(const TagDirectory* pGroup, const char* pLabel);

}  // namespace tessera
