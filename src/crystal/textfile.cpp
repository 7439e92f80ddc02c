#include "crystal/textfile.h"

#include "app/records/wholefile.h"

bool writeTextFile(const QString& strFileName, const QString& strText)
{
    return writeWholeFile(strFileName, strText.toUtf8(), true);
}
