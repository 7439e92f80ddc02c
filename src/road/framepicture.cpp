#include "road/framepicture.h"

#include "frames/frameloader.h"
#include "geometry/rotationgeometry.h"

#include <QBuffer>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nLargestSide = 640;    // pixels; half of a page on a large screen
const size_t g_nMostPeaks = 1000;  // more would hide the frame, and make the page large
const double g_dfHalfPixel = 0.5;  // the centre of a pixel in SVG; on frames it is a whole number
const int g_nGreys = 64;           // more would only store noise that is not visible

/// The value below which a share of a list lies. Changes the order of the list, which must not be empty.
float percentile(std::vector<float>& listValue, double dfShare)
{
    const auto it = listValue.begin() + std::ptrdiff_t(dfShare * double(listValue.size() - 1));
    std::nth_element(listValue.begin(), it, listValue.end());
    return *it;
}

/// How many blocks a side has, the last one of which may not be full.
int blocksOf(int nPixels, int nBlock)
{
    return (nPixels + nBlock - 1) / nBlock;
}

/// The mean of the finite pixels of a block; not finite if there are none.
/// @param nX, nY  column and row of the block, counted in blocks
/// @param nBlock  side of the block, pixels
float blockMean(const float* pData, int nWidth, int nHeight, int nX, int nY, int nBlock)
{
    double dfSum = 0;
    int nCount = 0;
    for (int y = nY * nBlock; y < std::min((nY + 1) * nBlock, nHeight); ++y) {
        for (int x = nX * nBlock; x < std::min((nX + 1) * nBlock, nWidth); ++x) {
            const float f = pData[size_t(y) * size_t(nWidth) + size_t(x)];
            if (std::isfinite(f)) {
                dfSum += double(f);
                ++nCount;
            }
        }
    }
    return float(dfSum / nCount);
}

/// Draws a cross.
/// @param pt      SVG coordinates
/// @param dfSize  half the length of its lines, pixels of the frame
void drawBeam(CHtmlPage& page, const QPointF& pt, double dfSize)
{
    page.open("path", "beam");
    page.attribute("d", QStringLiteral("M%1 %2h%3M%4 %5v%3")
                            .arg(pt.x() - dfSize, 0, 'f', 1)
                            .arg(pt.y(), 0, 'f', 1)
                            .arg(2 * dfSize, 0, 'f', 1)
                            .arg(pt.x(), 0, 'f', 1)
                            .arg(pt.y() - dfSize, 0, 'f', 1));
    page.attribute("stroke", QStringLiteral("#0af"));
    page.close();
}

/// Draws circles around the strongest peaks.
/// @param dfRadius  pixels of the frame
void drawPeaks(CHtmlPage& page, QList<Peak3D> listPeak, double dfRadius)
{
    std::stable_sort(listPeak.begin(), listPeak.end(),
                     [](const Peak3D& one, const Peak3D& other) { return one.dfIPoint > other.dfIPoint; });
    page.open("g", "peaks");
    page.attribute("fill", QStringLiteral("none"));
    page.attribute("stroke", QStringLiteral("#fb0"));
    for (size_t n = 0; n < std::min(size_t(listPeak.size()), g_nMostPeaks); ++n) {
        page.open("circle");
        page.attribute("cx", QString::number(listPeak[int(n)].dfX2D + g_dfHalfPixel, 'f', 1));
        page.attribute("cy", QString::number(listPeak[int(n)].dfY2D + g_dfHalfPixel, 'f', 1));
        page.attribute("r", QString::number(dfRadius, 'f', 1));
        page.close();
    }
    page.close();
}

QString captionOf(const SeriesData& series, int nFrame)
{
    QString strText = QStringLiteral("Frame %1: %2")
                          .arg(nFrame + 1)
                          .arg(QFileInfo(series.m_listFrameFile[nFrame]).fileName());
    if (nFrame < series.m_listOverallTilt.size()) {
        strText += QStringLiteral(", tilt %1°").arg(series.m_listOverallTilt[nFrame], 0, 'f', 2);
    }
    if (nFrame < series.m_listPeakFrame.size()) {
        strText += QStringLiteral(", %1 peaks").arg(series.m_listPeakFrame[nFrame].size());
    }
    return strText;
}

}  // namespace

int blockOfPicture(int nWidth, int nHeight)
{
    int nBlock = 1;
    while (blocksOf(std::max(nWidth, nHeight), nBlock) > g_nLargestSide) {
        nBlock *= 2;
    }
    return nBlock;
}

QImage smallPicture(const float* pData, int nWidth, int nHeight)
{
    const int nBlock = blockOfPicture(nWidth, nHeight);
    const int nColumns = blocksOf(nWidth, nBlock), nRows = blocksOf(nHeight, nBlock);
    std::vector<float> listPixel, listFinite;
    for (int y = 0; y < nRows; ++y) {
        for (int x = 0; x < nColumns; ++x) {
            listPixel.push_back(blockMean(pData, nWidth, nHeight, x, y, nBlock));
            if (std::isfinite(listPixel.back())) {
                listFinite.push_back(listPixel.back());
            }
        }
    }
    if (listFinite.empty()) {
        return {};
    }
    const double dfLow = double(percentile(listFinite, 0.01)), dfHigh = double(percentile(listFinite, 0.997));
    const double dfRange = dfHigh > dfLow ? dfHigh - dfLow : 1;
    QImage image(nColumns, nRows, QImage::Format_Grayscale8);
    for (int y = 0; y < nRows; ++y) {
        uchar* pLine = image.scanLine(y);
        for (int x = 0; x < nColumns; ++x) {
            const double df = (double(listPixel[size_t(y) * size_t(nColumns) + size_t(x)]) - dfLow) / dfRange;
            const double dfGrey = std::isfinite(df) ? std::sqrt(std::clamp(df, 0.0, 1.0)) : 0;
            pLine[x] = uchar(std::lround(dfGrey * (g_nGreys - 1)) * 255 / (g_nGreys - 1));
        }
    }
    return image;
}

QString pngUri(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG", 0);  // quality 0 is the strongest compression
    return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(bytes.toBase64());
}

bool drawFrame(CHtmlPage& page, const SeriesData& series, int nFrame, double dfRadius)
{
    ImageList vecImage;
    CRunReport silent;
    if (!loadFirstImage(vecImage, frameSource(series, nFrame), silent) || vecImage.empty() ||
        !vecImage.front()->Data()) {
        return false;
    }
    const int nWidth = vecImage.front()->Width(), nHeight = vecImage.front()->Height();
    const QImage image = smallPicture(vecImage.front()->Data(), nWidth, nHeight);
    if (image.isNull()) {
        return false;
    }
    // About how many pixels of the frame one pixel of the screen shows.
    const double dfUnit = double(nWidth) / g_nLargestSide;
    const QString strCaption = captionOf(series, nFrame);
    page.open("figure");
    page.open("svg");
    page.attribute("xmlns", QStringLiteral("http://www.w3.org/2000/svg"));
    page.attribute("viewBox", QStringLiteral("0 0 %1 %2").arg(nWidth).arg(nHeight));
    page.attribute("role", QStringLiteral("img"));
    page.attribute("stroke-width", 1.5 * dfUnit);
    page.element("title", strCaption);
    page.open("image");
    // Blocks that are not full reach beyond the frame, where the view box cuts them off.
    const int nBlock = blockOfPicture(nWidth, nHeight);
    page.attribute("width", image.width() * nBlock);
    page.attribute("height", image.height() * nBlock);
    page.attribute("href", pngUri(image));
    page.close();
    if (nFrame < series.m_listPeakFrame.size()) {
        // A circle around a spot leaves it free, and has at least 5 pixels of the screen, to be seen.
        drawPeaks(page, series.m_listPeakFrame[nFrame], std::max(1.5 * dfRadius, 5 * dfUnit));
    }
    if (nFrame < series.m_listShift.size()) {
        const QPointF ptBeam = frameCentre({series.m_listShift, series.m_dfCenterX, series.m_dfCenterY},
                                           nFrame);
        drawBeam(page, ptBeam + QPointF(g_dfHalfPixel, g_dfHalfPixel), 14 * dfUnit);
    }
    page.close();
    page.element("figcaption", strCaption);
    page.close();
    return true;
}

std::vector<int> framesShown(int nFrames)
{
    std::vector<int> list;
    for (const int n : {0, nFrames / 2, nFrames - 1}) {
        if (n >= 0 && n < nFrames && (list.empty() || list.back() != n)) {
            list.push_back(n);
        }
    }
    return list;
}

}  // namespace tessera
