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

QString unreadTiff(const QByteArray& bytesFile)
{
    const bool bBig = bytesFile.startsWith(QByteArray("MM\0*", 4));
    if (!bBig && !bytesFile.startsWith(QByteArray("II*\0", 4)))
        return {};
    // Numbers at places that a damaged file may put anywhere; 0 beyond its end.
    const auto number = [&](qint64 nPlace, int nBytes) -> qint64 {
        if (nPlace < 0 || nPlace + nBytes > bytesFile.size())
            return 0;
        const char* p = bytesFile.constData() + nPlace;
        if (nBytes == 2)
            return bBig ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
        return bBig ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
    };
    const qint64 nDirectory = number(4, 4), nEntries = number(nDirectory, 2);
    qint64 nBits = 1, nFormat = 1;
    for (qint64 i = 0; i < nEntries; ++i) {
        const qint64 nEntry = nDirectory + 2 + 12 * i;
        // Of one or two samples the numbers stand in the entry, of more at the place that it names.
        const qint64 nPlace = number(nEntry + 4, 4) > 2 ? number(nEntry + 8, 4) : nEntry + 8;
        if (number(nEntry, 2) == 258)  // BitsPerSample
            nBits = number(nPlace, 2);
        else if (number(nEntry, 2) == 339)  // SampleFormat
            nFormat = number(nPlace, 2);
    }
    const char* const pszFormat = nFormat == 3                   ? "floating point"
                                  : nFormat == 5 || nFormat == 6 ? "complex"
                                                                 : "";
    if (nBits <= 16 && !*pszFormat)
        return {};
    return QStringLiteral("TIFF of %1 bits a sample%2; whole numbers of up to 16 bits are read")
        .arg(QString::number(nBits),
             *pszFormat ? QStringLiteral(", ") + QLatin1String(pszFormat) : QString());
}

}  // namespace tessera
