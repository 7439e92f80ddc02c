#include "records/regularfile.h"

#include <QFileInfo>

namespace tessera {

bool openRegularFile(QFile& file, QIODevice::OpenMode mode, QString& strReason)
{
    const QFileInfo info(file.fileName());
    if (info.exists() && !info.isFile()) {
        strReason = QStringLiteral("not a file");
        return false;
    }
    if (file.open(mode)) {
        return true;
    }
    strReason = file.errorString();
    return false;
}

}  // namespace tessera
