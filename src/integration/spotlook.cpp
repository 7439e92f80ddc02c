#include "integration/spotlook.h"

#include <algorithm>

namespace tessera {

namespace {

const double g_dfStrong = 8;       // standard deviations above the background
const size_t g_nMostWindows = 60;  // windows per frame
const int g_nMostRinged = 20;      // frames whose rings are measured

}  // namespace

LookedFrame CSpotLook::look(int nFrame) const
{
    LookedFrame looked;
    const SeriesFrame frame = m_frames.read(nFrame);
    if (!frame.pImage) {
        looked.strFault = frame.strFault;
        return looked;
    }
    const int nEvery = std::max(1, m_passages.frameCount() / g_nMostRinged);
    const QSize size = m_passages.series().sizeFrame;
    const int nRings = nFrame % nEvery == 0 ? std::min(size.width(), size.height()) / 5 : 0;
    looked.counts = countFrame(*frame.pImage, m_passages.series().listBeam[nFrame], nRings);
    MeasureSettings settings = m_settings;
    settings.dfSaturation = fullFrom(m_settings.dfSaturation, saturationOf({looked.counts}));
    CSpotMeasurer measurer(settings);
    const std::vector<ExpectedSpot> listExpected = m_expected.onFrame(nFrame);
    measurer.beginFrame(*frame.pImage, listExpected);
    for (const ExpectedSpot& expected : listExpected) {
        if (expected.nObservation % m_nEvery == 0) {
            lookAt(expected, nFrame, measurer, looked);
        }
    }
    std::stable_sort(
        looked.listWindow.begin(), looked.listWindow.end(),
        [](const SpotWindow& one, const SpotWindow& other) { return one.dfStrength > other.dfStrength; });
    looked.listWindow.resize(std::min(looked.listWindow.size(), g_nMostWindows));
    return looked;
}

void CSpotLook::lookAt(const ExpectedSpot& expected, int nFrame, CSpotMeasurer& measurer,
                       LookedFrame& looked) const
{
    LookedSpot spot;
    spot.nObservation = expected.nObservation;
    spot.place = expected.place;
    spot.measure = measurer.measure(expected, nFrame);
    SpotMeasure& measure = spot.measure;
    const bool bHigh = measure.dfSum > 0 &&
                       measure.dfSum * measure.dfSum > g_dfStrong * g_dfStrong * measure.dfSumVariance;
    if (bHigh && !(measure.nFlags & g_nUnfitFlags) && measurer.findCentroid(expected, measure)) {
        spot.bStrong = true;
        SpotWindow window;
        window.dfX = expected.place.dfX + measure.dfOffX;
        window.dfY = expected.place.dfY + measure.dfOffY;
        window.dfStrength = measure.dfSum;
        window.pixels = measurer.window(expected, m_nHalf);
        if (!window.pixels.listPixel.empty()) {
            looked.listWindow.push_back(window);
        }
    }
    looked.listSpot.push_back(spot);
}

}  // namespace tessera
