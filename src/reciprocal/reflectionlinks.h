// CReflectionLinks: which frame peaks a merged reflection is made of, and which reflection a frame peak is
// in.
#pragma once

#include "dataset/dataset.h"
#include "geometry/rotationgeometry.h"

#include <QHash>
#include <QPointF>

#include <vector>

namespace tessera {

/// One peak of a reflection where its frame has it.
struct FrameSpot {
    int nPeak = -1;   ///< number of the peak in m_listPeakFrame; −1 where that holds it no longer
    int nFrame = -1;  ///< from 0
    QPointF ptRaw;    ///< raw pixels of the frame, whole numbers are centres of pixels
};

/// Reflections, frame peaks and the ways between them, as the last merging left them.
///
/// It holds the lists that it was made of, which cost nothing as long as they stay, and knows by them whether
/// a data set is still the one that it was made of. Reflections go by nID, the place of their chain; frame
/// peaks by their running number over the series. A peak that has been replaced since the merging, as by
/// another hunt, belongs to no reflection, whatever its number.
class CReflectionLinks {
public:
    CReflectionLinks() = default;  ///< of an empty data set
    /// Of the lists of a series as they are now.
    explicit CReflectionLinks(const SeriesData& data);

    /// Whether peaks, chains and reflections of the data set are those that the links were made of.
    bool isOf(const SeriesData& data) const;

    /// The merged reflection, of a streak its strongest peak; null: there is none of that number. Indices are
    /// not set.
    const Peak3D* reflection(int nReflection) const;
    /// Whether a record is one of these reflections: its number, at its place.
    bool holds(const Peak3D& peakOther) const;
    /// The frame peak, raw pixels; null: there is none of that number.
    const Peak3D* peak(int nPeak) const;
    /// The reflection that a frame peak was merged into; −1: none.
    int reflectionOf(int nPeak) const { return m_hashReflection.value(nPeak, -1); }
    /// The peaks of a reflection by their frames. Without a chain the place of the reflection itself.
    std::vector<FrameSpot> spotsOf(int nReflection) const;
    /// Numbers of the peaks of some reflections, as far as they are there, ascending.
    std::vector<int> peaksOf(const std::vector<int>& vecReflection) const;

    /// The peak of a frame that is nearest to a place, −1: none within the distance.
    /// @param ptRaw   raw pixels
    /// @param dfMost  pixels
    int peakAt(int nFrame, const QPointF& ptRaw, double dfMost) const;
    /// The peaks of a frame in their order.
    std::vector<int> peaksOn(int nFrame) const;
    /// The peaks of a frame from the beam outwards, by d*.
    std::vector<int> peaksOutwards(int nFrame) const;
    /// The reflections but for the given ones, ascending; records that are none of them count for nothing.
    std::vector<int> reflectionsBut(const QList<Peak3D>& listPeak) const;

private:
    struct Place {
        int nFrame = -1;
        int nPlace = -1;
    };
    const Peak3D* linkedPeak(const Peak3D& peakOfChain) const;

    QList<QList<Peak3D>> m_listPeakFrame;
    QList<QList<Peak3D>> m_listPeakChain;
    QList<Peak3D> m_listReflection;
    BeamCentres m_centres;
    QHash<int, int> m_hashPlace;       ///< of a reflection in m_listReflection
    QHash<int, Place> m_hashPeak;      ///< of a peak in m_listPeakFrame
    QHash<int, int> m_hashReflection;  ///< of a peak
};

}  // namespace tessera
