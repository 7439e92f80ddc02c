#include "crystal/textfile.h"

#include <QByteArray>
#include <QSaveFile>

bool writeTextFile(const QString& strFileName, const QString& strText)
{
    if (strFileName.isEmpty())
        return false;
    QSaveFile file(strFileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Truncate))
        return false;
    const QByteArray baText = strText.toUtf8();
    if (file.write(baText) != baText.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
