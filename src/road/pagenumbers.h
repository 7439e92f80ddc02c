// PageNumbers: the parameters on the pages of the window, and which of them the user has changed.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"
#include "road/roadoptions.h"

namespace tessera {

/// The parameters of the experiment, from the project or the user.
struct PageGeometry {
    double dfWavelength = 0;        ///< Å
    double dfPixelSize = 0;         ///< Å⁻¹
    double dfRotationAxis = 0;      ///< degrees
    bool bAxisKnown = false;        ///< whether the axis was given or found
    double dfTiltRelaxation = 0;    ///< degrees
    double dfStretchAmplitude = 0;  ///< per cent
    double dfStretchAzimuth = 0;    ///< degrees
    bool bApplyStretching = false;
    SeriesDistortion distortion;
};

/// The parameters of the experiment of a series.
PageGeometry pageGeometryOf(const SeriesData& series, const MappingParameters& mapping);

/// The parameters of all pages.
struct PageNumbers {
    PageGeometry geometry;
    PeakHuntingParameters hunting;
    MappingParameters mapping;
    PeakMergingParameters merging;
    CellHuntingParameters cell;
    IndexingParameters indexing;
};

/// Puts those parameters of the experiment into the options of a road that differ from the project file; the
/// road reads the others from the file.
/// @param file  parameters in the project file
/// @param now   parameters on the pages
void giveChangedGeometry(const PageGeometry& file, const PageGeometry& now, RoadOptions& options);

/// Puts those parameters into the options of a road that the user has changed since the last road; the road
/// determines the others itself, as before.
/// @param left  parameters as the last road left them on the pages
/// @param now   parameters on the pages
void giveChangedNumbers(const PageNumbers& left, const PageNumbers& now, RoadOptions& options);

}  // namespace tessera
