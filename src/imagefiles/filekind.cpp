#include "imagefiles/filekind.h"

#include "imagefiles/frameformats.h"
#include "records/regularfile.h"

#include <QFile>
#include <QtEndian>

namespace tessera {

namespace {

/// MRC files of before the year 2000 have no mark, but a length that fits their sizes to the byte.
bool isOldMrc(const QByteArray& bytesHead, qint64 nFileSize)
{
    const int nHeaderSize = 1024;
    if (bytesHead.size() < nHeaderSize)
        return false;
    const auto word = [&](int n) { return qint64(qFromLittleEndian<qint32>(bytesHead.constData() + n)); };
    const int anPixelSize[] = {1, 2, 4, 4, 8, 0, 2};
    const qint64 nX = word(0), nY = word(4), nZ = word(8), nMode = word(12), nMost = 1 << 20;
    return nX > 0 && nY > 0 && nZ > 0 && nX < nMost && nY < nMost && nZ < nMost && nMode >= 0 && nMode <= 6 &&
           nX * nY * nZ * anPixelSize[nMode] == nFileSize - nHeaderSize;
}

}  // namespace

QString misnamedHint(const QString& strFileName)
{
    QFile file(strFileName);
    QString strReason;
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason) ||
        frameFormatOf(strFileName).strName == "MRC" || !isOldMrc(file.read(1024), file.size()))
        return {};
    return QStringLiteral(" (the content is that of a MRC file; its name has to end in \".mrc\")");
}

}  // namespace tessera
