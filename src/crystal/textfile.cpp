#include "crystal/textfile.h"

namespace tessera {

bool writeTextFile(const QString& strFileName, const QString& strText, QString* pstrReason, CFileSet* pSet)
{
    return pSet ? pSet->add(strFileName, strText.toUtf8(), pstrReason)
                : writeWholeFile(strFileName, strText.toUtf8(), pstrReason);
}

}  // namespace tessera
