// MadeWith: what the lists of a series were made with, where they do not tell it themselves.
#pragma once

#include "dataset/maskdata.h"
#include "dataset/peakmapping.h"
#include "records/peak3d.h"
#include "records/runparameters.h"
#include "records/vec3d.h"

#include <QList>
#include <QPoint>

#include <optional>

namespace tessera {

struct SeriesData;

// Each record has the print of the list that it is about: where a list has been replaced by other means, as
// by a file, its record is about none that is there, and nobody has to clear it. A print is a hash of
// content, the same in each run of the program; 0 is that of nothing.

/// Of the places and intensities of the peaks on their frames, to the tenths that a peak list holds; where
/// they lie in reciprocal space is not in it.
quint64 printOfPeaks(const QList<QList<Peak3D>>& listPeakFrame);
/// Of the points of reflections with their intensities.
quint64 printOfReflections(const QList<Peak3D>& listPeak);
quint64 printOfAreas(const MaskData& mask);
quint64 printOfPixels(const QList<QPoint>& listPixel);  ///< in whichever order

struct PeaksMade {
    PeakHuntingParameters hunting;
    quint64 nAreas = 0;      ///< of the mask
    quint64 nHotPixels = 0;  ///< that were repaired
    quint64 nPeaks = 0;      ///< of the list that came out
};

struct MergedMade {
    std::optional<PeakMapping> mapping;
    std::optional<MappingParameters> limits;  ///< of what was merged
    PeakMergingParameters merging;
    quint64 nPeaks = 0;   ///< that were merged
    quint64 nMerged = 0;  ///< of the reflections that came out
};

struct CellMade {
    std::optional<PeakMapping> mapping;
    quint64 nMerged = 0;    ///< of the reflections that were there
    QList<Vec3D> listCell;  ///< that was found
};

struct IndexedMade {
    quint64 nMerged = 0;  ///< of the reflections that were there
    double dfThreshold = 0;
    quint64 nIndexed = 0;  ///< of the list that came out
};

/// Of what stands on the mapping and the cell in force, as a refined geometry and intensities do.
struct GeometryMade {
    std::optional<PeakMapping> mapping;
    QList<Vec3D> listCell;
};

struct MadeWith {
    std::optional<PeaksMade> peaks;
    std::optional<MappingParameters> limitsShown;  ///< of the peaks that are shown, and merged next
    std::optional<MergedMade> merged;
    std::optional<CellMade> cell;
    std::optional<IndexedMade> indexed;
    std::optional<GeometryMade> geometry;
    std::optional<GeometryMade> integration;
};

/// Notes the numbers behind the peaks, the reflections, the cell or the indices that the series has just got.
void notePeaksMade(SeriesData& series, const PeakHuntingParameters& hunting);
void noteMergedMade(SeriesData& series, const PeakMergingParameters& merging);
void noteCellMade(SeriesData& series);
void noteIndexedMade(SeriesData& series, double dfThreshold);
GeometryMade madeWithGeometry(const SeriesData& series);

}  // namespace tessera
