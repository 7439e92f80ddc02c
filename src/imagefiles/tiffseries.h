// TiffSeries: the images of a TIFF file, one page or many.
#pragma once

#include "imagefiles/tiffdirectory.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace tessera {

/// The images of a file, up to the first one that differs in size from the first. Pages that are reduced
/// copies or masks of others are no images.
struct TiffSeries {
    /// The places of the directories of the images, at most as many as wanted. The directories are not
    /// kept, as a file may have many pages, and a directory may have half a mebibyte.
    std::vector<uint64_t> vecPage;
    /// Above 1 where the only page is followed by this many images in all, which have no pages. ImageJ
    /// writes such files.
    uint64_t nInOne = 1;
    QString strEnd;  ///< why the series ends, if not because the file has no further image

    /// Number of images.
    uint64_t images() const { return vecPage.empty() ? 0 : vecPage.size() * nInOne; }
};

/// Goes through the pages without reading pixels. Of the last few files with many pages their places are
/// remembered until the file changes: each frame of a series is read by a call of its own, which would begin
/// at the first page again. Calls can run side by side.
TiffSeries tiffSeries(CTiffBytes& tiff, uint64_t nMost);

}  // namespace tessera
