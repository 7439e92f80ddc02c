// MadeWith: the parameters with which the lists of a series were made.
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

// Each record has the hash of the list that it is about. If a list is replaced in another way, such as from
// a file, the hashes differ and the record does not apply, so no function has to delete it. The hashes
// depend on the content only and are the same in each run of the program; 0 is that of an empty list.

/// The hash of places and intensities of the peaks on their frames, with the one decimal of a peak list.
/// Their points of reciprocal space are not included.
quint64 printOfPeaks(const QList<QList<Peak3D>>& listPeakFrame);
/// The hash of the points of reflections with their intensities.
quint64 printOfReflections(const QList<Peak3D>& listPeak);
/// The hash of the areas of a mask.
quint64 printOfAreas(const MaskData& mask);
quint64 printOfPixels(const QList<QPoint>& listPixel);  ///< the hash of pixels in any order

/// How the peaks were found.
struct PeaksMade {
    PeakHuntingParameters hunting;  ///< parameters of the peak search
    quint64 nAreas = 0;             ///< hash of the mask
    quint64 nHotPixels = 0;         ///< hash of the repaired pixels
    quint64 nPeaks = 0;             ///< hash of the resulting peaks
};

/// How the reflections were merged.
struct MergedMade {
    std::optional<PeakMapping> mapping;       ///< mapping of the peaks
    std::optional<MappingParameters> limits;  ///< limits of the merged peaks
    PeakMergingParameters merging;            ///< parameters of the merging
    quint64 nPeaks = 0;                       ///< hash of the merged peaks
    quint64 nMerged = 0;                      ///< hash of the resulting reflections
};

/// How the cell was found.
struct CellMade {
    std::optional<PeakMapping> mapping;  ///< mapping of the peaks
    quint64 nMerged = 0;                 ///< hash of the reflections
    QList<Vec3D> listCell;               ///< the cell that was found
};

/// How the reflections were indexed.
struct IndexedMade {
    quint64 nMerged = 0;     ///< hash of the reflections
    double dfThreshold = 0;  ///< threshold of the indexing
    quint64 nIndexed = 0;    ///< hash of the indexed reflections
};

/// How results were made that depend on the mapping and the cell in force, such as a refined geometry or
/// intensities.
struct GeometryMade {
    std::optional<PeakMapping> mapping;
    QList<Vec3D> listCell;
};

/// The records of a series; those of lists that do not exist are empty.
struct MadeWith {
    std::optional<PeaksMade> peaks;
    std::optional<MappingParameters>
        limitsShown;  ///< limits of the peaks that are shown, and would be merged
    std::optional<MergedMade> merged;
    std::optional<CellMade> cell;
    std::optional<IndexedMade> indexed;
    std::optional<GeometryMade> geometry;
    std::optional<GeometryMade> integration;
};

/// Records how the peaks were found that the series has just got.
void notePeaksMade(SeriesData& series, const PeakHuntingParameters& hunting);
/// Records how the reflections were merged that the series has just got.
void noteMergedMade(SeriesData& series, const PeakMergingParameters& merging);
/// Records how the cell was found that the series has just got.
void noteCellMade(SeriesData& series);
/// Records how the reflections were indexed that the series has just got.
void noteIndexedMade(SeriesData& series, double dfThreshold);
/// The mapping and the cell in force.
GeometryMade madeWithGeometry(const SeriesData& series);

}  // namespace tessera
