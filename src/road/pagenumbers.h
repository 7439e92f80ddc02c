// PageNumbers: the numbers of the pages that a road starts from, and which of them the user has changed.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "road/roadoptions.h"

namespace tessera {

/// What the experiment is known by, as the project or the user has it.
struct PageGeometry {
    double dfWavelength = 0;    ///< Å
    double dfPixelSize = 0;     ///< Å⁻¹
    double dfRotationAxis = 0;  ///< degrees
    bool bAxisKnown = false;
    double dfTiltRelaxation = 0;    ///< degrees
    double dfStretchAmplitude = 0;  ///< per cent
    double dfStretchAzimuth = 0;    ///< degrees
    bool bApplyStretching = false;
    SeriesDistortion distortion;
};

PageGeometry pageGeometryOf(const SeriesData& series, const MappingParameters& mapping);

struct PageNumbers {
    PageGeometry geometry;
    PeakHuntingParameters hunting;
    MappingParameters mapping;
    PeakMergingParameters merging;
    CellHuntingParameters cell;
    IndexingParameters indexing;
};

/// Gives a road the geometry that differs from that of the project file: the rest it reads there itself.
/// @param file  what the file has
void giveChangedGeometry(const PageGeometry& file, const PageGeometry& now, RoadOptions& options);

/// Gives a road the numbers of the pages that differ from those that a former road left there; the others it
/// finds itself, as before.
void giveChangedNumbers(const PageNumbers& left, const PageNumbers& now, RoadOptions& options);

}  // namespace tessera
