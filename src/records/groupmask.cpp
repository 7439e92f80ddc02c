#include "records/groupmask.h"

namespace tessera {

quint64 groupMask(const QList<int>& listGroup)
{
    quint64 nMask = 0;
    for (int nGroup : listGroup) {
        if (nGroup >= 0 && nGroup < 64) {
            nMask |= quint64(1) << (63 - nGroup);
        }
    }
    return nMask;
}

QList<int> groupsOfMask(quint64 nMask)
{
    QList<int> listGroup;
    for (int nGroup = 0; nMask != 0; ++nGroup, nMask <<= 1) {
        if (nMask & g_nMaskOfAllPeaks) {
            listGroup.append(nGroup);
        }
    }
    return listGroup;
}

quint64 maskOfText(const QByteArray& strMask)
{
    bool bOk = false;
    const quint64 nMask = strMask.toULongLong(&bOk, 16);
    return bOk ? nMask : 0;
}

quint64 peakGroupMask(const QVector<QVector<QList<int>>>& vecPeakGroup, int nFrame, int nPeak)
{
    if (nFrame < 0 || nFrame >= vecPeakGroup.size() || nPeak < 0 || nPeak >= vecPeakGroup[nFrame].size()) {
        return g_nMaskOfAllPeaks;
    }
    return groupMask(vecPeakGroup[nFrame][nPeak]);
}

QString peakGroupMaskText(const QVector<QVector<QList<int>>>& vecPeakGroup, int nFrame, int nPeak)
{
    const quint64 nMask = peakGroupMask(vecPeakGroup, nFrame, nPeak);
    return QString::asprintf("%08X%08X", uint(nMask >> 32), uint(nMask & 0xFFFFFFFFu));
}

bool groupsMatchPeaks(const QVector<QVector<QList<int>>>& vecPeakGroup,
                      const QList<QList<Peak3D>>& listPeakFrame)
{
    if (vecPeakGroup.size() != listPeakFrame.size()) {
        return false;
    }
    for (int nFrame = 0; nFrame < listPeakFrame.size(); ++nFrame) {
        if (vecPeakGroup[nFrame].size() != listPeakFrame[nFrame].size()) {
            return false;
        }
    }
    return true;
}

}  // namespace tessera
