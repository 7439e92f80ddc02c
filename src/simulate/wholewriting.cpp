#include "simulate/wholewriting.h"

#include <QSaveFile>

namespace tessera {

QString writeWhole(const QString& strFileName, const QByteArray& bytes)
{
    // Written without a buffer, because commit() does not check whether the last buffer could be written.
    QSaveFile file(strFileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        return file.errorString();
    }
    // A disk that takes a part says nothing before the next piece, which it does not take.
    qint64 nWritten = 0;
    while (nWritten < bytes.size()) {
        const qint64 nNow = file.write(bytes.constData() + nWritten, bytes.size() - nWritten);
        if (nNow <= 0) {
            break;
        }
        nWritten += nNow;
    }
    return nWritten == bytes.size() && file.commit() ? QString() : file.errorString();
}

}  // namespace tessera
