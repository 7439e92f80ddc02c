#include "records/availablememory.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <algorithm>
#include <limits>

#ifdef __linux__
#include <sys/resource.h>
#endif

namespace tessera {

namespace {

const std::uint64_t g_nUnknown = std::numeric_limits<std::uint64_t>::max();

QByteArray content(const QString& strFileName)
{
    QFile file(strFileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The number that follows a name at the start of a line; g_nUnknown where there is none.
std::uint64_t valueOf(const QByteArray& bytesText, const QByteArray& bytesName)
{
    for (const QByteArray& bytesLine : bytesText.split('\n')) {
        if (bytesLine.startsWith(bytesName + ' ')) {
            bool bOk = false;
            const std::uint64_t n =
                bytesLine.mid(bytesName.size()).simplified().split(' ')[0].toULongLong(&bOk);
            return bOk ? n : g_nUnknown;
        }
    }
    return g_nUnknown;
}

/// Bytes that the limit of one group leaves; g_nUnknown without a limit.
std::uint64_t leftIn(const QString& strGroup, const char* pszLimit, const char* pszUsed,
                     const char* pszPrefix)
{
    bool bLimit = false, bUsed = false;
    const std::uint64_t nLimit = content(strGroup + '/' + pszLimit).trimmed().toULongLong(&bLimit);
    std::uint64_t nUsed = content(strGroup + '/' + pszUsed).trimmed().toULongLong(&bUsed);
    if (!bLimit || !bUsed) {
        return g_nUnknown;
    }
    const QByteArray bytesStat = content(strGroup + QStringLiteral("/memory.stat"));
    for (const char* pszCache : {"active_file", "inactive_file"}) {  // the kernel frees these when needed
        const std::uint64_t nCache = valueOf(bytesStat, QByteArray(pszPrefix) + pszCache);
        nUsed -= nCache == g_nUnknown ? 0 : std::min(nCache, nUsed);
    }
    return nLimit - std::min(nLimit, nUsed);
}

/// The least of what the limits of the group of this process and of the groups around it leave.
std::uint64_t leftInControlGroup()
{
    std::uint64_t nLeft = g_nUnknown;
    for (const QByteArray& bytesLine : content(QStringLiteral("/proc/self/cgroup")).split('\n')) {
        const bool bUnified = bytesLine.startsWith("0::");
        const int nPath = bytesLine.indexOf(':', bytesLine.indexOf(':') + 1) + 1;
        if (!bUnified && !bytesLine.left(nPath).contains(":memory:")) {
            continue;
        }
        const QString strRoot = bUnified ? QStringLiteral("/sys/fs/cgroup")
                                         : QStringLiteral("/sys/fs/cgroup/memory");
        for (QString strPath = QString::fromLocal8Bit(bytesLine.mid(nPath)); !strPath.isEmpty();
             strPath.truncate(qMax(0, strPath.lastIndexOf(QLatin1Char('/'))))) {
            nLeft = std::min(nLeft, bUnified ? leftIn(strRoot + strPath, "memory.max", "memory.current", "")
                                             : leftIn(strRoot + strPath, "memory.limit_in_bytes",
                                                      "memory.usage_in_bytes", "total_"));
        }
    }
    return nLeft;
}

}  // namespace

std::uint64_t availableMemory()
{
    const std::uint64_t nKilobytes = valueOf(content(QStringLiteral("/proc/meminfo")), "MemAvailable:");
    return std::min(nKilobytes > g_nUnknown / 1024 ? g_nUnknown : nKilobytes * 1024, leftInControlGroup());
}

std::uint64_t memoryLeftByLimits()
{
    std::uint64_t nLeft = g_nUnknown;
#ifdef __linux__
    // The kernel compares these numbers, in kilobytes, with the limits.
    const QByteArray bytesStatus = content(QStringLiteral("/proc/self/status"));
    const auto count = [&](auto resource, const char* pszUsed) {
        rlimit limit{};
        const std::uint64_t nUsed = valueOf(QByteArray(bytesStatus).replace('\t', ' '), pszUsed);
        if (getrlimit(resource, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
            nUsed < g_nUnknown / 1024) {
            nLeft = std::min(nLeft, limit.rlim_cur - std::min<std::uint64_t>(limit.rlim_cur, nUsed * 1024));
        }
    };
    count(RLIMIT_AS, "VmSize:");
    count(RLIMIT_DATA, "VmData:");
#endif
    return nLeft;
}

bool hasMemoryFor(std::uint64_t nBytes)
{
    const std::uint64_t nMargin = (std::uint64_t(256) << 20) + nBytes / 16;
    return nBytes <= g_nUnknown - nMargin && nBytes + nMargin <= availableMemory();
}

}  // namespace tessera
