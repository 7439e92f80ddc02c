// DM tags: reads the tags of a DM3 or DM4 file without its pixels.
#pragma once

#include "imagefiles/dm3tags.h"

#include <QFile>
#include <QString>

namespace tessera {

/// An entry of which only the first nDataSize of its nBytes bytes were read, at most nMostRead.
class DmEntry : public TagEntry {
public:
    static constexpr size_t nMostRead = 256;  ///< bytes; the longest value needed is the name of a camera

    quint64 nOffset = 0;  ///< place of the data in the file, bytes
    quint64 nBytes = 0;   ///< length of the data in the file
};

/// The tree of tags.
struct DmTags {
    int nVersion = 0;         ///< 3 or 4
    quint64 nFileSize = 0;    ///< bytes
    bool bBigEndian = false;  ///< values are big-endian; the structure always is
    TagDirectory root;
};

/// Reads the tree of an open file. Every size is checked against the file and the group around it; depth
/// and number of tags are limited as in CDm3TagParser. Of DM4 files, which give the length of each tag,
/// only the tags of images are read. Entries of an unknown form are in the tree without data.
/// @param bPixelsOnly  in DM4 files the tags about the microscope are skipped, too
/// @return false, with the reason, when the file is no valid tree or has a version other than 3 or 4
bool readDmTags(QFile& file, bool bPixelsOnly, DmTags& tags, QString& strReason);

/// The first number of an entry, or of the first entry of a group without a name; NaN where there is none.
double dmNumber(const DmTags& tags, const Tag* pTag);

/// The text of an entry; empty where there is none.
QString dmText(const DmTags& tags, const Tag* pTag);

/// The direct child with a label; null where there is none or no group.
const Tag* dmChild(const TagDirectory* pGroup, const char* pLabel);
/// The direct child with a label if it is a group; else null.
const TagDirectory* dmGroup(const TagDirectory* pGroup, const char* pLabel);

}  // namespace tessera
