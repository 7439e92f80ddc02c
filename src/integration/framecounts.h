// FrameCounts: statistics of the pixels of whole frames, to find blank frames, saturation and the beam's
// glow.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "imaging/imgobj.h"

#include <vector>

namespace tessera {

/// Statistics of a frame.
struct FrameCounts {
    bool bRead = false;         ///< the frame could be read
    double dfMean = 0;          ///< counts per pixel
    double dfMedian = 0;        ///< counts, over every sixteenth pixel
    float fGreatest = 0;        ///< greatest count of a pixel
    long long nAtGreatest = 0;  ///< number of pixels with this count
    long long nJustBelow = 0;   ///< number of pixels below it but above nine tenths of it
    /// Medians of rings about the direct beam, each one pixel wide, from the beam outwards.
    std::vector<float> listAround;
};

/// Computes the statistics of a frame.
/// @param beam    direct beam, raw pixels
/// @param nRings  number of rings about the beam; 0: none
FrameCounts countFrame(const CImgObj<float>& img, const FramePlace& beam, int nRings);

/// Marks frames (1) that could not be read or hardly show diffraction: both their mean and the difference of
/// mean and median are less than a quarter of the usual values of the seven frames on either side.
std::vector<char> blankFrames(const std::vector<FrameCounts>& listFrame);

/// The count from which pixels are saturated; 0 if no pixel is. The greatest count of the series is taken as
/// saturation if more pixels have it than lie just below it; on the flank of an unsaturated peak there are
/// fewer pixels the higher the count.
double saturationOf(const std::vector<FrameCounts>& listFrame);

/// The lower of two saturation levels, of which either may be 0 for none.
/// @param dfTold  from the headers of the frames
/// @param dfSeen  from the counts, see saturationOf()
double fullFrom(double dfTold, double dfSeen);

/// The radius about the direct beam, pixels, within which its flank bends the background noticeably: the mean
/// curvature over a disc of radius `dfRadius` (pixels) changes the sum over the disc by more than a standard
/// deviation.
double glowRadius(const std::vector<FrameCounts>& listFrame, double dfRadius, double dfGain);

}  // namespace tessera
