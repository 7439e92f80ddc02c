// FrameCounts: what the pixels of the frames count as a whole: blank frames, saturation, the beam's glow.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "imaging/imgobj.h"

#include <vector>

namespace tessera {

struct FrameCounts {
    bool bRead = false;
    double dfMean = 0;    ///< counts per pixel
    double dfMedian = 0;  ///< of a sixteenth of the pixels
    float fGreatest = 0;
    long long nAtGreatest = 0;  ///< pixels that count as much
    long long nJustBelow = 0;   ///< and those above nine tenths of it
    std::vector<float>
        listAround;  ///< median of rings about the beam, one pixel wide, from its place outwards
};

/// @param nRings  how many rings are looked at; 0: none
FrameCounts countFrame(const CImgObj<float>& img, const FramePlace& beam, int nRings);

/// 1 for each frame that was not read, or that shows next to no diffraction: neither its mean nor what the
/// mean lies above the median by comes to a quarter of what the seven frames on either side have.
std::vector<char> blankFrames(const std::vector<FrameCounts>& listFrame);

/// From how many counts on a pixel is full; 0 where none is. Full pixels share the greatest number of the
/// series, and are more than those just below it: the flank of a peak has more pixels the lower it gets.
double saturationOf(const std::vector<FrameCounts>& listFrame);

/// The lower one of what is told and what the counts show; either may be 0, for none.
double fullFrom(double dfTold, double dfSeen);

/// Radius about the direct beam, pixels, within which its flank bends the background more than the noise
/// hides: the mean curvature over a disc of `dfRadius` pixels changes its sum by more than a standard
/// deviation.
double glowRadius(const std::vector<FrameCounts>& listFrame, double dfRadius, double dfGain);

}  // namespace tessera
