#include "frames/somenames.h"

namespace tessera {

QString someNames(const QStringList& listName)
{
    const int nMost = 10;
    const QString strNames = QStringList(listName.mid(0, nMost)).join(QStringLiteral(", "));
    return listName.size() <= nMost
               ? strNames
               : QStringLiteral("%1 and %2 more").arg(strNames).arg(listName.size() - nMost);
}

}  // namespace tessera
