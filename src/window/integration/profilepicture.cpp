#include "window/integration/profilepicture.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nGap = 2;  // pixels between the windows

/// Whether a pixel of a window, counted row by row, is on its border.
bool isRim(int nPixel, int nSide)
{
    const int x = nPixel % nSide;
    const int y = nPixel / nSide;
    return x == 0 || y == 0 || x == nSide - 1 || y == nSide - 1;
}

/// The counts that are drawn black and white: the median of the rims, which are background for the most part,
/// and the brightest pixel. Pixels that are not finite were not measured.
std::pair<float, float> blackAndWhite(const ObservationProfile& profile)
{
    std::vector<float> listRim;
    float fHigh = -std::numeric_limits<float>::infinity();
    for (const std::vector<float>& window : profile.listWindow) {
        for (size_t n = 0; n < window.size(); ++n) {
            if (!std::isfinite(window[n])) {
                continue;
            }
            fHigh = std::max(fHigh, window[n]);
            if (isRim(int(n), profile.nSide)) {
                listRim.push_back(window[n]);
            }
        }
    }
    if (listRim.empty()) {
        return {0.f, 1.f};
    }
    const auto itMiddle = listRim.begin() + long(listRim.size() / 2);
    std::nth_element(listRim.begin(), itMiddle, listRim.end());
    // Apart, so that the scale can be divided by where all pixels are equal: by a count, which above 2²⁴ is
    // less than the step from one number to the next.
    return {*itMiddle, std::max({fHigh, *itMiddle + 1, std::nextafter(*itMiddle, INFINITY)})};
}

/// A window in grey, one pixel for each of the frame. What was not measured is black.
QImage windowImage(const std::vector<float>& window, int nSide, std::pair<float, float> limits)
{
    QImage image(nSide, nSide, QImage::Format_RGB32);
    image.fill(Qt::black);
    for (int n = 0; n < nSide * nSide && n < int(window.size()); ++n) {
        if (std::isfinite(window[n])) {
            const float fBrightness = (window[n] - limits.first) / (limits.second - limits.first);
            const int nGrey = int(std::min(std::max(fBrightness, 0.f), 1.f) * 255.f);
            image.setPixel(n % nSide, n / nSide, qRgb(nGrey, nGrey, nGrey));
        }
    }
    return image;
}

/// Draws the sides of pixels that part the disc from the pixels around it.
/// @param ptCorner  upper left corner of the window in the picture
void drawOutline(QPainter& painter, const ObservationProfile& profile, const QPoint& ptCorner, int nZoom)
{
    const int nSide = profile.nSide;
    const auto isInside = [&](int x, int y) {
        const int n = y * nSide + x;
        return x >= 0 && y >= 0 && x < nSide && y < nSide && n < int(profile.listInDisc.size()) &&
               profile.listInDisc[n] != 0;
    };
    // The left and the upper side of each pixel; one more column and row have the last right and lower sides.
    for (int y = 0; y <= nSide; ++y) {
        for (int x = 0; x <= nSide; ++x) {
            const QPoint pt = ptCorner + QPoint(x, y) * nZoom;
            if (isInside(x, y) != isInside(x - 1, y)) {
                painter.drawLine(pt, pt + QPoint(0, nZoom));
            }
            if (isInside(x, y) != isInside(x, y - 1)) {
                painter.drawLine(pt, pt + QPoint(nZoom, 0));
            }
        }
    }
}

}  // namespace

QImage profilePicture(const ObservationProfile& profile, const Observation& observation, int nZoom,
                      int nColumns)
{
    const auto nWindows = int(profile.listWindow.size());
    if (nWindows == 0 || profile.nSide < 1) {
        return {};
    }
    // From a window to the next one, in pixels of the picture.
    const int nPitch = profile.nSide * nZoom + g_nGap;
    const int nRows = (nWindows + nColumns - 1) / nColumns;
    QImage picture(std::min(nWindows, nColumns) * nPitch - g_nGap, nRows * nPitch - g_nGap,
                   QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);  // in the gaps, and after the last window of the last row
    QPainter painter(&picture);
    const std::pair<float, float> limits = blackAndWhite(profile);
    for (int n = 0; n < nWindows; ++n) {
        const QPoint ptCorner(n % nColumns * nPitch, n / nColumns * nPitch);
        const int nFrame = profile.nFirstFrame + n;
        const bool bSummed = observation.nFirstFrame <= nFrame && nFrame <= observation.nLastFrame;
        const QSize size(profile.nSide * nZoom, profile.nSide * nZoom);
        painter.drawImage(QRect(ptCorner, size), windowImage(profile.listWindow[n], profile.nSide, limits));
        painter.setPen(bSummed ? QColor(60, 220, 60) : QColor(150, 150, 150));
        drawOutline(painter, profile, ptCorner, nZoom);
        painter.drawText(QRect(ptCorner, size).adjusted(2, 1, 0, 0), Qt::AlignLeft | Qt::AlignTop,
                         QString::number(nFrame + 1));  // users count frames from 1
    }
    return picture;
}

}  // namespace tessera
