// Group masks: which of the 64 user groups a peak belongs to, as a number, as text and as a list.
#pragma once

#include "records/peak3d.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVector>

namespace tessera {

/// The mask of group 0 alone, the group of all peaks.
constexpr quint64 g_nMaskOfAllPeaks = quint64(1) << 63;

/// The mask of a list of groups. Group g is bit 63 - g, so that the first hexadecimal digit stands for groups
/// 0 to 3. Numbers outside 0 to 63 are ignored.
quint64 groupMask(const QList<int>& listGroup);

/// The groups of a mask in ascending order. The list is empty for 0, the mask of a peak in no group.
QList<int> groupsOfMask(quint64 nMask);

/// Reads a mask from hexadecimal digits. Fewer than 16 digits are the low ones. 0 for any other text.
quint64 maskOfText(const QByteArray& strMask);

/// The mask of peak `nPeak` of frame `nFrame`, both from 0. A peak without an entry in the lists belongs to
/// group 0 alone, a peak with an empty list to no group.
quint64 peakGroupMask(const QVector<QVector<QList<int>>>& vecPeakGroup, int nFrame, int nPeak);

/// peakGroupMask() as 16 hexadecimal digits, upper case.
QString peakGroupMaskText(const QVector<QVector<QList<int>>>& vecPeakGroup, int nFrame, int nPeak);

/// Whether the groups were made for these peaks: the numbers of frames are the same, and on every frame the
/// numbers of peaks. Otherwise the groups belong to a former peak list and must not be used.
bool groupsMatchPeaks(const QVector<QVector<QList<int>>>& vecPeakGroup,
                      const QList<QList<Peak3D>>& listPeakFrame);

}  // namespace tessera
