// FramePicture: small pictures of frames for the report, with direct beam and peaks.
#pragma once

#include "dataset/dataset.h"
#include "road/htmlpage.h"

#include <QImage>

#include <vector>

namespace tessera {

/// Makes a grey image of 8 bits. Black is the 1st and white the 99.7th percentile of the counts. Between them
/// the grey goes by the square root, so that spots are visible beside the halo of the direct beam. An image
/// whose longer side exceeds 640 pixels is reduced by a power of 2 to at most that, by means of blocks of
/// pixels; the blocks at the right and lower edge may have fewer.
/// @param pData  row by row; pixels that are not finite become black
/// @return a null image if no pixel is finite
QImage smallPicture(const float* pData, int nWidth, int nHeight);
/// How many pixels of a frame along a side are one pixel of its smallPicture().
int blockOfPicture(int nWidth, int nHeight);

/// The image as PNG in a URI of the scheme "data", for a page without other files.
QString pngUri(const QImage& image);

/// Draws a frame as SVG with a caption: a cross marks its direct beam, circles mark its strongest thousand
/// peaks. The coordinates are raw pixels plus 0.5, as SVG counts from the corner of the first pixel, and
/// places on frames from its centre.
/// @param nFrame    number of the frame, from 0
/// @param dfRadius  radius of a peak, pixels; the circles are wider by a half, and not too small to be seen
/// @return false, with nothing drawn, if the frame cannot be read or has no finite pixel
bool drawFrame(CHtmlPage& page, const SeriesData& series, int nFrame, double dfRadius);

/// The numbers of the frames shown in a report, from 0: the first, the middle and the last one, without
/// repetitions.
std::vector<int> framesShown(int nFrames);

}  // namespace tessera
