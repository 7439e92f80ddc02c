// CSpotMeasurer: measures predicted spots on one frame.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "imaging/imgobj.h"
#include "integration/backgroundplane.h"
#include "integration/learnedprofile.h"
#include "integration/noisemodel.h"

#include <optional>
#include <vector>

namespace tessera {

/// A spot as it is expected on a frame.
struct ExpectedSpot {
    int nObservation = 0;
    FramePlace place;             ///< raw pixels
    double dfPart = 0;            ///< fraction of its rocking curve that the frame records
    double dfExcitation[3] = {};  ///< excitation error at start, middle and end of the frame, Å⁻¹
};

/// The measurement of a spot on a frame. The variances do not include the counting noise of the spot itself.
struct SpotMeasure {
    int nFrame = 0;
    double dfPart = 0;            ///< see ExpectedSpot
    double dfExcitation[3] = {};  ///< see ExpectedSpot
    double dfSum = 0;             ///< counts in the disc above the background
    double dfSumVariance = 0;     ///< counts²
    double dfInDisc = 1;          ///< fraction of the spot that is in the disc
    double dfFit = 0;             ///< counts of the whole spot by profile fitting
    double dfFitVariance = 0;     ///< counts²; 0: no fit
    double dfFitShare = 0;        ///< counts of the spot times gain times this factor add to that variance
    double dfBackground = 0;      ///< counts per pixel
    double dfVariance = 0;        ///< variance of the pixels of the background, counts²
    double dfDifference = 0;      ///< the same from differences of pixels two apart, free of curvature
    int nBackground = 0;          ///< number of pixels of the background
    double dfOffX = 0;            ///< centroid minus expected place, pixels; strong spots only
    double dfOffY = 0;            ///< centroid minus expected place, pixels; strong spots only
    double dfSigma = 0;           ///< pixels, from second moments; strong spots only
    unsigned nFlags = 0;          ///< ReflectionFlag
};

/// How spots are measured.
struct MeasureSettings {
    double dfRadius = 4;                        ///< radius of the disc, pixels
    std::optional<NoiseModel> noise;            ///< none: the variance of the background's pixels is used
    const CLearnedProfile* pProfile = nullptr;  ///< null: no profile fitting
    const std::vector<char>* pMask = nullptr;   ///< of the size of the frame, 1: masked; null: no mask
    double dfSaturation = 0;                    ///< counts; 0: no saturation
};

/// The pixels of a square window, row by row.
struct PixelWindow {
    int nLeft = 0, nTop = 0;       ///< its first pixel
    std::vector<float> listPixel;  ///< empty: there is no window
};

/// Measures the spots of frames. Each thread needs one of its own; the work space is kept from frame to
/// frame.
class CSpotMeasurer {
public:
    /// Copies the settings.
    explicit CSpotMeasurer(const MeasureSettings& settings) : m_settings(settings) {}

    /// Starts a frame, and marks the pixels in the discs of all expected spots.
    void beginFrame(const CImgObj<float>& img, const std::vector<ExpectedSpot>& listSpot);

    /// Sums and fits a spot. The weights of pixels fall from 1 to 0 over one pixel at the edge of the disc.
    SpotMeasure measure(const ExpectedSpot& spot, int nFrame);

    /// Finds centroid and width of a spot that was measured, from moments under a Gaussian window that
    /// follows the centroid.
    /// @return false if the centroid leaves the disc
    bool findCentroid(const ExpectedSpot& spot, SpotMeasure& measure) const;

    /// The pixels around a spot with the background of the last measure() subtracted, for the profile.
    /// @param nHalf  pixels of the window on either side of the centre
    /// @return an empty window if it leaves the frame or touches other spots
    PixelWindow window(const ExpectedSpot& spot, int nHalf) const;

private:
    struct DiscPixel {
        double dfX, dfY, dfCounts, dfWeight;
    };
    void claim(const FramePlace& place, double dfRadius, bool bOverlaps);
    void collect(const ExpectedSpot& spot, SpotMeasure& measure);
    double varianceOfDifferences() const;
    void sum(SpotMeasure& measure) const;
    void fit(const ExpectedSpot& spot, SpotMeasure& measure) const;

    const MeasureSettings m_settings;
    const CImgObj<float>* m_pImg = nullptr;
    std::vector<unsigned char> m_listClaim;  // per pixel: high bit: in a disc; rest: overlapping discs
    std::vector<DiscPixel> m_listDisc;
    std::vector<BackgroundPixel> m_listBackground;
    BackgroundPlane m_plane;
};

}  // namespace tessera
