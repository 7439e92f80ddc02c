#include "imagefiles/tifffile.h"

#include "imagefiles/tiffpixels.h"
#include "imagefiles/tiffseries.h"
#include "imagefiles/tifftags.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace tessera {

namespace {

/// The images of an open file.
struct Images {
    TiffSeries series;
    std::optional<TiffLayout> firstLayout;  ///< of the page of a stack in one page
    uint64_t nImages = 0;                   ///< at most as many as wanted
};

/// The layout of an image of a stack in one page: each image follows the one before it.
TiffLayout inStack(TiffLayout layout, uint64_t nImage)
{
    const uint64_t nBytes = layout.rowBytes() * uint64_t(layout.nHeight);
    for (uint64_t& nPlace : layout.vecPlace) {
        nPlace += nImage * nBytes;
    }
    return layout;
}

/// Whether the strips of a page are contiguous, so that further images can follow them.
bool isInOnePiece(const TiffLayout& layout)
{
    const uint64_t nStrip = layout.rowBytes() * uint64_t(layout.nSegmentHeight);
    for (size_t i = 1; i < layout.vecPlace.size(); ++i) {
        if (layout.vecPlace[i] != layout.vecPlace[i - 1] + nStrip) {
            return false;
        }
    }
    return layout.bPlain && !layout.bTiled && !layout.bSeparate && layout.pixels != TiffPixels::Picture;
}

/// The directory of a page; without tags where the file has changed meanwhile.
TiffDirectory pageOf(CTiffBytes& tiff, const TiffSeries& series, uint64_t nPage)
{
    return tiff.directory(series.vecPage[nPage]).value_or(TiffDirectory());
}

Images imagesOf(CTiffBytes& tiff, uint64_t nMost)
{
    Images images;
    images.series = tiffSeries(tiff, nMost);
    images.nImages = images.series.images();
    QString strReason;
    if (images.series.nInOne > 1) {
        images.firstLayout = tiffLayout(tiff, pageOf(tiff, images.series, 0), strReason);
        if (!images.firstLayout) {
            images.nImages = 1;  // reading the image will give the reason
        } else if (!isInOnePiece(*images.firstLayout)) {
            images.series.strEnd = QStringLiteral(
                                       "the text tells of %1 images, but they don't follow one another")
                                       .arg(images.series.nInOne);
            images.firstLayout.reset();
            images.nImages = 1;
        } else {
            const TiffLayout& layout = *images.firstLayout;
            const uint64_t nBytes = layout.rowBytes() * uint64_t(layout.nHeight);
            const uint64_t nWhole = (tiff.fileSize() - layout.vecPlace[0]) / nBytes;
            if (nWhole < images.nImages) {
                images.series.strEnd = QStringLiteral(
                                           "truncated: %1 bytes hold %2 of %3 images of %4 x %5 pixels")
                                           .arg(tiff.fileSize())
                                           .arg(nWhole)
                                           .arg(images.nImages)
                                           .arg(layout.nWidth)
                                           .arg(layout.nHeight);
                images.nImages = nWhole;
            }
        }
    }
    return images;
}

/// Replaces the marks of Dectris detectors by NaN: in signed counts -1 marks a gap between modules and -2 a
/// bad pixel.
void dropGaps(const TiffLayout& layout, const QByteArray& textOfPage, CImgObj<float>& image)
{
    constexpr int nSigned = 2;
    if (layout.nFormat == nSigned && textOfPage.startsWith("# ") && textOfPage.contains("Detector:")) {
        const size_t nPixels = size_t(image.Width()) * size_t(image.Height());
        std::replace_if(
            image.Data(), image.Data() + nPixels, [](float f) { return f < 0; },
            std::numeric_limits<float>::quiet_NaN());
    }
}

std::optional<TiffLayout> layoutOf(CTiffBytes& tiff, const Images& images, uint64_t nImage,
                                   QString& strReason)
{
    return images.firstLayout ? inStack(*images.firstLayout, nImage)
                              : tiffLayout(tiff, pageOf(tiff, images.series, nImage), strReason);
}

}  // namespace

bool readTiffFrames(const QString& strFileName, int nFirst, int nMaxImages, ImageList& vecImage,
                    QString& strReason)
{
    strReason.clear();
    CTiffBytes tiff(strFileName);
    if (!tiff.open(strReason)) {
        return false;
    }
    const uint64_t nFrom = uint64_t(std::max(nFirst, 0));
    const uint64_t nMost = nFrom + uint64_t(std::max(nMaxImages, 1));
    const Images images = imagesOf(tiff, nMost);
    if (images.nImages <= nFrom) {
        strReason = images.series.strEnd.isEmpty()
                        ? QStringLiteral("image %1 of %2").arg(nFrom + 1).arg(images.nImages)
                        : images.series.strEnd;
        return false;
    }
    ImageList vecRead;
    uint64_t nPacked = 0;
    for (uint64_t i = nFrom; i < std::min(images.nImages, nMost); ++i) {
        QString strWrong;
        const std::optional<TiffLayout> layout = layoutOf(tiff, images, i, strWrong);
        // Pages with pixels of their own have together at most the bytes of the file. Pages that share
        // pixels could expand to any size.
        nPacked += layout ? layout->nPackedBytes : 0;
        if (nPacked > tiff.fileSize()) {
            strWrong = QStringLiteral("its pixels are those of other pages");
        }
        auto pImage = layout && strWrong.isEmpty() ? tiffImage(tiff, *layout, strWrong) : nullptr;
        if (!pImage) {
            strReason = i == 0 ? strWrong
                               : QStringLiteral("image %1: %2").arg(QString::number(i + 1), strWrong);
            break;
        }
        const TiffDirectory page = pageOf(tiff, images.series, images.firstLayout ? 0 : i);
        dropGaps(*layout, tiff.text(page, TiffTag::ImageDescription), *pImage);
        vecRead.push_back(std::move(pImage));
    }
    if (strReason.isEmpty() && nMost > images.nImages) {
        strReason = images.series.strEnd;
    }
    vecImage.reserve(vecImage.size() + vecRead.size());
    std::move(vecRead.begin(), vecRead.end(), std::back_inserter(vecImage));
    return !vecRead.empty();
}

FrameHeader readTiffHeader(const QString& strFileName, int nImage)
{
    FrameHeader header;
    CTiffBytes tiff(strFileName);
    QString strReason;
    if (!tiff.open(strReason)) {
        return header;
    }
    const Images images = imagesOf(tiff, std::numeric_limits<int>::max());
    header.nImages = int(std::clamp(images.nImages, uint64_t(1), uint64_t(std::numeric_limits<int>::max())));
    if (!images.series.strEnd.isEmpty()) {
        header.listDoubt.append(images.series.strEnd);
    }
    if (nImage < 0 || uint64_t(nImage) >= images.nImages) {
        return header;
    }
    const std::optional<TiffLayout> layout = layoutOf(tiff, images, uint64_t(nImage), strReason);
    if (layout) {
        header.size = layout->size();
        if (layout->nSamples > 1 && layout->pixels == TiffPixels::Counts) {
            header.listDoubt.append(
                QStringLiteral("a pixel has %1 values, of which the first is taken").arg(layout->nSamples));
        }
        if (layout->nBits == 4 && layout->pixels == TiffPixels::Counts) {
            header.listDoubt.append(
                QStringLiteral("of two pixels in a byte the first is taken from its high half, as "
                               "the format says; some cameras write the low half first"));
        }
    }
    const size_t nPage = images.firstLayout ? 0 : size_t(nImage);
    tellTiffTags(tiff, pageOf(tiff, images.series, nPage), header);
    return header;
}

}  // namespace tessera
