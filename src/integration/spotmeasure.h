// CSpotMeasurer: the counts of predicted spots on one frame.
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
    double dfPart = 0;            ///< of its rocking curve, that this frame records
    double dfExcitation[3] = {};  ///< Å⁻¹, where the frame begins, at its middle, where it ends
};

/// What a frame says of a spot. Variances are those without the spot itself.
struct SpotMeasure {
    int nFrame = 0;
    double dfPart = 0;
    double dfExcitation[3] = {};
    double dfSum = 0;          ///< counts in the disc above the background
    double dfSumVariance = 0;  ///< counts²
    double dfInDisc = 1;       ///< part of the spot that the disc holds
    double dfFit = 0;          ///< counts of the whole spot by the fit of the profile
    double dfFitVariance = 0;  ///< counts²; 0: no fit
    double dfFitShare = 0;     ///< what the spot's own counts times the gain add to that variance, a factor
    double dfBackground = 0;   ///< counts per pixel
    double dfVariance = 0;     ///< of the background's pixels, counts²
    double dfDifference = 0;   ///< the same from pixels two apart, without what bends the background
    int nBackground = 0;       ///< pixels that it is from
    double dfOffX = 0;         ///< centroid less place, pixels; of strong spots alone
    double dfOffY = 0;
    double dfSigma = 0;  ///< pixels, from second moments, of strong spots alone
    unsigned nFlags = 0;
};

struct MeasureSettings {
    double dfRadius = 4;              ///< pixels, of the disc
    std::optional<NoiseModel> noise;  ///< none: the pixels of the background tell
    const CLearnedProfile* pProfile = nullptr;
    const std::vector<char>* pMask = nullptr;  ///< of the frame's size, 1: masked
    double dfSaturation = 0;                   ///< counts; 0: none
};

/// Belongs to a thread; keeps its work space from frame to frame.
class CSpotMeasurer {
public:
    explicit CSpotMeasurer(const MeasureSettings& settings) : m_settings(settings) {}

    /// Notes which pixels the discs of the expected spots hold.
    void beginFrame(const CImgObj<float>& img, const std::vector<ExpectedSpot>& listSpot);

    /// Sums and fits one of them. Pixel weights of the disc fall from 1 to 0 over a pixel at its edge.
    SpotMeasure measure(const ExpectedSpot& spot, int nFrame);

    /// Centroid and width of a spot that was measured, by moments under a Gaussian window that moves with it.
    /// @return false where it drifts off its disc
    bool findCentroid(const ExpectedSpot& spot, SpotMeasure& measure) const;

    /// The pixels about a place less the background of the last measure(), for the profile.
    /// @return empty where it leaves the frame, or runs into other spots
    std::vector<float> window(const ExpectedSpot& spot, int nHalf, int& nLeft, int& nTop) const;

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
    std::vector<unsigned char> m_listClaim;  // high bit: some disc; the rest: how many that count
    std::vector<DiscPixel> m_listDisc;
    std::vector<BackgroundPixel> m_listBackground;
    BackgroundPlane m_plane;
};

}  // namespace tessera
