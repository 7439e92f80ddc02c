#include "imagefiles/filekind.h"

#include "imagefiles/frameformats.h"
#include "imagefiles/mrclayout.h"
#include "records/regularfile.h"

#include <QFile>
#include <QtEndian>

namespace tessera {

namespace {

/// Whether a file can be an MRC file from before 2000. These have no magic bytes, but their length fits the
/// sizes exactly.
bool isOldMrc(const QByteArray& bytesHead, qint64 nFileSize)
{
    if (bytesHead.size() < int(g_nMrcHeaderSize) || nFileSize < bytesHead.size()) {
        return false;
    }
    const MrcLayout layout = mrcLayout(reinterpret_cast<const uint8_t*>(bytesHead.constData()),
                                       quint64(nFileSize));
    QString strReason;
    const MrcSections sections = mrcSections(layout, quint64(nFileSize), 0, layout.nZ, strReason);
    return sections.nCount > 0 && sections.nCount == layout.nZ &&
           layout.begin() + quint64(sections.nCount) * sections.nBytes == quint64(nFileSize);
}

}  // namespace

QString misnamedHint(const QString& strFileName)
{
    QFile file(strFileName);
    QString strReason;
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason) ||
        frameFormatOf(strFileName).strName == "MRC" ||
        !isOldMrc(file.read(qint64(g_nMrcHeaderSize)), file.size())) {
        return {};
    }
    return QStringLiteral(" (the content is that of a MRC file; its name has to end in \".mrc\")");
}

}  // namespace tessera
