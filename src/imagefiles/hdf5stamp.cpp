#include "imagefiles/hdf5stamp.h"

#include <QFileInfo>

#include <algorithm>

namespace tessera {

Hdf5Stamp stampOf(const QString& strFile)
{
    const QFileInfo info(strFile);
    return {strFile, info.exists() ? info.size() : -1, info.exists() ? info.lastModified() : QDateTime()};
}

bool isCurrent(const std::vector<Hdf5Stamp>& vecStamp, const QDateTime& timeRead)
{
    constexpr qint64 nSettled = 2000;  // ms, time resolution of the coarsest file systems
    return std::all_of(vecStamp.begin(), vecStamp.end(), [&](const Hdf5Stamp& stamp) {
        const Hdf5Stamp now = stampOf(stamp.strFile);
        const qint64 nAge = stamp.nSize < 0 ? nSettled + 1 : stamp.time.msecsTo(timeRead);
        return now.nSize == stamp.nSize && now.time == stamp.time && (nAge > nSettled || nAge < 0);
    });
}

std::vector<Hdf5Stamp> CHdf5Faults::stampsOf(const QString& strFile)
{
    return {stampOf(strFile), stampOf(QFileInfo(strFile).absolutePath())};
}

QString CHdf5Faults::reason(const QString& strFile) const
{
    const auto it = std::find_if(m_listFault.begin(), m_listFault.end(), [&](const Fault& fault) {
        return fault.vecStamp.front().strFile == strFile;
    });
    return it != m_listFault.end() && isCurrent(it->vecStamp, it->timeRead) ? it->strReason : QString();
}

void CHdf5Faults::keep(const QString& strFile, const QDateTime& timeRead,
                       const std::vector<Hdf5Stamp>& vecStamp, const QString& strReason)
{
    constexpr size_t nMostKept = 64;
    m_listFault.remove_if([&](const Fault& fault) { return fault.vecStamp.front().strFile == strFile; });
    m_listFault.push_front({vecStamp, timeRead, strReason});
    m_listFault.resize(std::min(m_listFault.size(), nMostKept));
}

}  // namespace tessera
