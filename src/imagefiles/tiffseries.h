// TiffSeries: the images of a TIFF file, one page or many.
#pragma once

#include "imagefiles/tiffdirectory.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace tessera {

/// Pages that are smaller copies or masks of others are none of the images. Images are those up to the first
/// of another size than the first one's.
struct TiffSeries {
    /// Place of the directory of each image, up to as many as were asked for. A directory may have half a
    /// mebibyte, and a file many pages, so none is kept.
    std::vector<uint64_t> vecPage;
    /// Above 1: so many images stand one behind another where the only page has its first. ImageJ writes so.
    uint64_t nInOne = 1;
    QString strEnd;  ///< why there are no more, in words, where it is not that the file has no more

    uint64_t images() const { return vecPage.empty() ? 0 : vecPage.size() * nInOne; }
};

/// Goes from page to page without looking at pixels.
TiffSeries tiffSeries(CTiffBytes& tiff, uint64_t nMost);

}  // namespace tessera
