#include "app/records/availablememory.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <algorithm>
#include <limits>

namespace {

const std::uint64_t UNKNOWN = std::numeric_limits<std::uint64_t>::max();

QByteArray content(const QString& strFileName)
{
    QFile file(strFileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The number behind a name at the start of a line; UNKNOWN without it.
std::uint64_t valueOf(const QByteArray& bytesText, const QByteArray& bytesName)
{
    for (const QByteArray& bytesLine : bytesText.split('\n'))
        if (bytesLine.startsWith(bytesName + ' ')) {
            bool bOk = false;
            const std::uint64_t n =
                bytesLine.mid(bytesName.size()).simplified().split(' ')[0].toULongLong(&bOk);
            return bOk ? n : UNKNOWN;
        }
    return UNKNOWN;
}

std::uint64_t leftInControlGroup()
{
    for (const QByteArray& bytesLine : content(QStringLiteral("/proc/self/cgroup")).split('\n')) {
        if (!bytesLine.startsWith("0::"))
            continue;
        const QString strGroup = QStringLiteral("/sys/fs/cgroup") + QString::fromLocal8Bit(bytesLine.mid(3));
        bool bLimit = false, bUsed = false;
        const std::uint64_t nLimit = content(strGroup + "/memory.max").trimmed().toULongLong(&bLimit);
        std::uint64_t nUsed = content(strGroup + "/memory.current").trimmed().toULongLong(&bUsed);
        if (!bLimit || !bUsed)
            return UNKNOWN;
        const QByteArray bytesStat = content(strGroup + "/memory.stat");
        for (const char* pszCache : {"active_file", "inactive_file"}) {  // given back when memory runs short
            const std::uint64_t nCache = valueOf(bytesStat, pszCache);
            nUsed -= nCache == UNKNOWN ? 0 : std::min(nCache, nUsed);
        }
        return nLimit - std::min(nLimit, nUsed);
    }
    return UNKNOWN;
}

}  // namespace

std::uint64_t availableMemory()
{
    const std::uint64_t nKilobytes = valueOf(content(QStringLiteral("/proc/meminfo")), "MemAvailable:");
    return std::min(nKilobytes > UNKNOWN / 1024 ? UNKNOWN : nKilobytes * 1024, leftInControlGroup());
}

bool hasMemoryFor(std::uint64_t nBytes)
{
    const std::uint64_t nMargin = (std::uint64_t(256) << 20) + nBytes / 16;
    return nBytes <= UNKNOWN - nMargin && nBytes + nMargin <= availableMemory();
}
