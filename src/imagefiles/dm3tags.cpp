#include "imagefiles/dm3tags.h"

namespace tessera {

void TagDirectory::Clear()
{
    vecChild.clear();
}

void TagEntry::Clear()
{
    nInfoCount = 0;
    vecInfo.clear();
    pData.reset();
    nDataSize = 0;
}

const TagDirectory* asGroup(const Tag* pTag)
{
    return pTag && pTag->nKind == 0 ? static_cast<const TagDirectory*>(pTag) : nullptr;
}

const TagEntry* asEntry(const Tag* pTag)
{
    return pTag && pTag->nKind == 1 ? static_cast<const TagEntry*>(pTag) : nullptr;
}

}  // namespace tessera
