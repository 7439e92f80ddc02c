// Run parameters: the parameters of the pages as plain records, with their initial values.
#pragma once

#include "records/cellparameters.h"
#include "records/hklref.h"

#include <QList>

#include <optional>

namespace tessera {

/// Page "Peak Search". Radii in pixels of the raw frame.
struct PeakHuntingParameters {
    double m_dfPeakRadius = 5;         ///< sigma of the narrow Gaussian
    double m_dfBackgroundRadius = 10;  ///< sigma of the wide Gaussian
    double m_dfSmoothRadius = 0.5;     ///< sigma of the smoothing of the frame that intensities are read from
    double m_dfPeakThreshold = 1;      ///< least value of the band-passed image at a peak
    double m_dfFrameScale = 1;         ///< factor of all pixel values in a run; not on the page; above 1 for
                                       ///< values too small for the decimals of a peak list
    double m_dfIntegrationRadius = 15;     ///< disc, truncated to int when used
    double m_dfIntegrationBackground = 3;  ///< ring width, truncated to int when used
    bool m_bAutoRadii = false;             ///< the window measures peak and background radius before a run
};

/// Groups "Apply Stretching", "Resolution Range" and "Intensity Range" of the merging page.
/// The numbers of the stretching are in the data set.
struct MappingParameters {
    bool m_bApplyStretching = false;
    double m_dfResolutionMin = 0;  ///< Å⁻¹
    double m_dfResolutionMax = 1;  ///< Å⁻¹
    double m_dfIntensityMin = 0;   ///< of Peak3D::dfIPoint
    double m_dfIntensityMax = 32768;
};

/// Group "Peak Merging". Lengths are in pixels; in reciprocal space they are multiplied by the pixel size.
struct PeakMergingParameters {
    double m_dfMin3DDistance = 10;
    double m_dfMax2DDistance = 5;
    double m_dfMin2DLength = 0;
    double m_dfMax3DLength = 30;
    bool m_bIntegrate2D = true;              ///< "2D Integration", else "Point"
    bool m_bIntegrateThroughFrames = false;  ///< "3D Integration", else "Maximum"
};

/// How a cell is searched.
enum class CellSearchMethod {
    DifferenceVectors,  ///< from differences of merged reflections
    Directions,         ///< from Fourier sums of all peaks along directions of real space
    BestOfBoth,         ///< by both; the cell that explains more of the peaks is taken
};

/// Group "Unit Cell Range", Å.
struct CellHuntingParameters {
    double m_dfCellRangeMin = 3;
    double m_dfCellRangeMax = 30;
    CellSearchMethod m_method = CellSearchMethod::DifferenceVectors;
    bool m_bAutoRange = false;  ///< take the range from the distances of the spots instead of these numbers
};

/// Group "Peak Indexing" and the box "Reflection Grouping".
struct IndexingParameters {
    double m_dfIndexThreshold = 0.05;
    int m_nSpaceGroup = 1;  ///< 1 to 230
    bool m_bOutputIndexing = false;
    bool m_bOutputStatistics = false;
    bool m_bOutputRefinedCell = false;
};

/// Dialog of the intensity extraction. Its numbers are not stored in the settings.
struct ExtractionParameters {
    int m_nWindowRadius = 10;          ///< radius of the integration disc, pixels
    int m_nBackgroundSize = 2;         ///< width of the ring around it, pixels
    double m_dfResolutionLimit = 1.0;  ///< d*, Å⁻¹, of positions predicted from an orientation matrix
};

/// Page "Unit Cell Refinement".
struct RefinementParameters {
    double m_dfRefineIntensityLow = 100;  ///< of Peak3D::dfIPoint; the two bounds may be in either order
    double m_dfRefineIntensityHigh = 32768;
    double m_dfRefineDStarLow = 1;  ///< Å⁻¹, between the two peaks of a pair
    double m_dfRefineDStarHigh = 2;
    bool m_bRefine2D = false;
    bool m_bOutputPeakList = false;
    std::optional<CellParameters>
        m_referenceCell;           ///< the refined cell is compared with it if they are close
    QList<HKLRef> m_listExcluded;  ///< reflections that the tilt refinements leave out
};

}  // namespace tessera
