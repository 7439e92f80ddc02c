// FramePicture: small pictures of frames for the report, with direct beam and peaks.
#pragma once

#include "dataset/dataset.h"
#include "road/htmlpage.h"

#include <QImage>

#include <vector>

namespace tessera {

/// Makes a grey image of 8 bits. The counts between the 1st and the 99.7th percentile are scaled by their
/// square root, so that spots are visible beside the halo of the direct beam. Images of more than 640 pixels
/// are binned by two until they are smaller.
/// @param pData  row by row; pixels that are not finite become black
/// @return a null image if no pixel is finite
QImage smallPicture(const float* pData, int nWidth, int nHeight);

/// The image as PNG in a data: URI.
QString pngUri(const QImage& image);

/// Draws a frame as SVG in raw pixels with a caption: a cross marks its direct beam, circles mark its
/// strongest thousand peaks.
/// @param dfRadius  radius of the circles, pixels
/// @return false, with nothing drawn, if the frame cannot be read
bool drawFrame(CHtmlPage& page, const SeriesData& series, int nFrame, double dfRadius);

/// The frames shown in a report, from 0: the first, the middle and the last one, without repetitions.
std::vector<int> framesShown(int nFrames);

}  // namespace tessera
