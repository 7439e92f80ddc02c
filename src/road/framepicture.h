// FramePicture: a frame as a small picture for a report, with its direct beam and its peaks.
#pragma once

#include "dataset/dataset.h"
#include "road/htmlpage.h"

#include <QImage>

#include <vector>

namespace tessera {

/// Grey bytes between the 1st and the 99.7th percentile, by the square root, as spots are faint beside the
/// halo of the direct beam.
/// Frames above 640 pixels are halved, by means of whole blocks, until they are not.
/// @param pData  row by row; what is not finite is black
/// @return a null image without a finite pixel
QImage smallPicture(const float* pData, int nWidth, int nHeight);

/// A PNG of the image as the text of a data: URI.
QString pngUri(const QImage& image);

/// Draws a frame of the series as an SVG in raw pixels, with a cross at its direct beam and rings round the
/// strongest thousand of its peaks, and the caption below.
/// @return false, with nothing drawn, where the frame cannot be read
bool drawFrame(CHtmlPage& page, const SeriesData& series, int nFrame, double dfRadius);

/// The frames that a report shows: the first, the middle and the last one, each once; from 0.
std::vector<int> framesShown(int nFrames);

}  // namespace tessera
