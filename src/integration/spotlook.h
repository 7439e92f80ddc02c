// CSpotLook: measures the strong spots and the background of one frame, for learning.
#pragma once

#include "integration/expectedspots.h"
#include "integration/framecounts.h"
#include "integration/reflectionflags.h"
#include "integration/seriesframes.h"

#include <QString>

#include <vector>

namespace tessera {

/// Spots with one of these flags are not used for learning.
inline constexpr unsigned g_nUnfitFlags = FlagOffFrame | FlagMasked | FlagSaturated | FlagOverlap |
                                          FlagNotFinite | FlagBadBackground;

/// A spot that was measured on a frame.
struct LookedSpot {
    int nObservation = 0;
    FramePlace place;  ///< predicted place, raw pixels
    SpotMeasure measure;
    bool bStrong = false;  ///< strong, so that its centroid and width are known
};

/// The pixels around a strong spot, with the background subtracted.
struct SpotWindow {
    double dfX = 0, dfY = 0;  ///< centroid, raw pixels
    double dfStrength = 0;    ///< counts
    PixelWindow pixels;
};

/// The spots of a frame.
struct LookedFrame {
    QString strFault;  ///< why the frame could not be read; empty if it could
    FrameCounts counts;
    std::vector<LookedSpot> listSpot;
    std::vector<SpotWindow> listWindow;  ///< windows of the strongest spots
};

/// Measures spots frame by frame. Each thread needs one of its own.
class CSpotLook {
public:
    /// @param nHalf   pixels of the windows on either side of the centre
    /// @param nEvery  only every so many observations are measured
    CSpotLook(const CSeriesFrames& frames, const CExpectedSpots& expected, const CPassageGeometry& passages,
              const MeasureSettings& settings, int nHalf, int nEvery)
        : m_frames(frames),
          m_expected(expected),
          m_passages(passages),
          m_settings(settings),
          m_nHalf(nHalf),
          m_nEvery(nEvery)
    {}

    /// Reads a frame and measures its spots.
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
