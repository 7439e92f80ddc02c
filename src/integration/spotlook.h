// CSpotLook: what one frame tells of its strong spots and of its background.
#pragma once

#include "integration/expectedspots.h"
#include "integration/framecounts.h"
#include "integration/reflectionflags.h"
#include "integration/seriesframes.h"

#include <QString>

#include <vector>

namespace tessera {

/// With one of these a spot on a frame teaches nothing.
inline constexpr unsigned g_nUnfitFlags = FlagOffFrame | FlagMasked | FlagSaturated | FlagOverlap |
                                          FlagNotFinite | FlagBadBackground;

struct LookedSpot {
    int nObservation = 0;
    FramePlace place;  ///< as predicted, raw pixels
    SpotMeasure measure;
    bool bStrong = false;  ///< its centroid and width are known
};

/// The pixels about a strong spot, without the background.
struct SpotWindow {
    double dfX = 0, dfY = 0;  ///< centroid, raw pixels
    double dfStrength = 0;    ///< counts
    int nLeft = 0, nTop = 0;
    std::vector<float> listPixel;
};

struct LookedFrame {
    QString strFault;  ///< why it was not read
    FrameCounts counts;
    std::vector<LookedSpot> listSpot;
    std::vector<SpotWindow> listWindow;  ///< of the strongest
};

/// Belongs to a thread.
class CSpotLook {
public:
    /// @param nHalf   of the windows, pixels
    /// @param nEvery  observation is looked at
    CSpotLook(const CSeriesFrames& frames, const CExpectedSpots& expected, const CPassageGeometry& passages,
              const MeasureSettings& settings, int nHalf, int nEvery)
        : m_frames(frames),
          m_expected(expected),
          m_passages(passages),
          m_settings(settings),
          m_nHalf(nHalf),
          m_nEvery(nEvery)
    {}

    LookedFrame look(int nFrame) const;

private:
    void lookAt(const ExpectedSpot& expected, int nFrame, CSpotMeasurer& measurer, LookedFrame& looked) const;

    const CSeriesFrames& m_frames;
    const CExpectedSpots& m_expected;
    const CPassageGeometry& m_passages;
    const MeasureSettings m_settings;
    const int m_nHalf;
    const int m_nEvery;
};

}  // namespace tessera
