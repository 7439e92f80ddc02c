#include "batch/standardoutput.h"

#include <QStringList>

#include <cerrno>
#include <cstdio>

namespace tessera {

bool isStandardOutput(const QString& strFileName)
{
    static const QStringList listName = {QStringLiteral("-"), QStringLiteral("/dev/stdout"),
                                         QStringLiteral("/dev/fd/1"), QStringLiteral("/proc/self/fd/1")};
    return listName.contains(strFileName);
}

QString printToStandardOutput(const QByteArray& bytes)
{
    const bool bPrinted = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) ==
                              size_t(bytes.size()) &&
                          std::fflush(stdout) == 0;
    return bPrinted || errno == EPIPE ? QString()
                                      : QStringLiteral("standard output: %1").arg(qt_error_string(errno));
}

}  // namespace tessera
