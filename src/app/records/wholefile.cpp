#include "app/records/wholefile.h"

#include "app/records/reason.h"

namespace {

bool fail(QSaveFile& file, QString* pstrReason)
{
    giveReason(pstrReason, file.fileName(), file.errorString());
    file.cancelWriting();
    return false;
}

}  // namespace

bool commitWhole(QSaveFile& file, QString* pstrReason)
{
    if (file.error() != QFileDevice::NoError || !file.flush()) {
        return fail(file, pstrReason);
    }
    return file.commit() || fail(file, pstrReason);
}

bool writeWholeFile(const QString& strFileName, const QByteArray& bytes, bool bText, QString* pstrReason)
{
    QSaveFile file(strFileName);
    const QIODevice::OpenMode mode = bText ? QIODevice::WriteOnly | QIODevice::Text : QIODevice::WriteOnly;
    if (strFileName.isEmpty() || !file.open(mode) || file.write(bytes) != bytes.size()) {
        return fail(file, pstrReason);
    }
    return commitWhole(file, pstrReason);
}
