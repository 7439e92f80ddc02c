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

/// Group g is bit 63 - g, so that the first hexadecimal digit holds groups 0 to 3.
/// Numbers outside 0 to 63 are dropped.
quint64 groupMask(const QList<int>& listGroup);

/// The groups of a mask, ascending; 0 gives the empty list: a peak in no group.
QList<int> groupsOfMask(quint64 nMask);

/// The mask of a text of hexadecimal digits, fewer than 16 being the low ones; 0 if it does not parse.
quint64 maskOfText(const QByteArray& strMask);

/// Mask of one peak, by frame index and place on the frame. A peak without an entry in the store
/// belongs to group 0 alone; a peak with an empty list to none.
quint64 peakGroupMask(const QVector<QVector<QList<int>>>& vecPeakGroup, int nFrame, int nPeak);

/// peakGroupMask() as 16 hexadecimal digits, upper case.
QString peakGroupMaskText(const QVector<QVector<QList<int>>>& vecPeakGroup, int nFrame, int nPeak);

/// Whether the groups were made for these peaks: the same number of frames, and on every frame the
/// same number of peaks. Groups of a former peak list are left aside by all who use them.
bool groupsMatchPeaks(const QVector<QVector<QList<int>>>& vecPeakGroup,
                      const QList<QList<Peak3D>>& listPeakFrame);

}  // namespace tessera
