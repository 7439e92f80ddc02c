#include "records/timestamp.h"

#include <QTime>

namespace tessera {

QString currentTimeStamp()
{
    return QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
}

QString timedEndLine(const QString& strTemplate, const QElapsedTimer& timer)
{
    const qint64 nSeconds = timer.elapsed() / 1000;
    return strTemplate.arg(currentTimeStamp()).arg(nSeconds / 60).arg(nSeconds % 60);
}

}  // namespace tessera
