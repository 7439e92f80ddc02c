#include "imaging/imageview.h"
#include "integration/expectedspots.h"
#include "integration/pixelmask.h"
#include "integration/reflectionflags.h"
#include "integration/seriesframes.h"
#include "integration/seriesintegration.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// The pixels around a place, row by row; 0 outside the frame.
std::vector<float> windowAbout(const CImgObj<float>& img, int nX, int nY, int nHalf)
{
    std::vector<float> listPixel;
    for (int y = nY - nHalf; y <= nY + nHalf; ++y) {
        for (int x = nX - nHalf; x <= nX + nHalf; ++x) {
            const bool bInside = x >= 0 && y >= 0 && x < img.Width() && y < img.Height();
            listPixel.push_back(bInside ? viewOf(img).at(x, y) : 0);
        }
    }
    return listPixel;
}

/// Marks the pixels of a window that are in the disc around a place.
std::vector<char> pixelsInDisc(const FramePlace& place, double dfRadius, int nX, int nY, int nHalf)
{
    std::vector<char> listInDisc;
    for (int y = nY - nHalf; y <= nY + nHalf; ++y) {
        for (int x = nX - nHalf; x <= nX + nHalf; ++x) {
            listInDisc.push_back(std::hypot(x - place.dfX, y - place.dfY) <= dfRadius ? 1 : 0);
        }
    }
    return listInDisc;
}

}  // namespace

std::optional<ObservationProfile> lookAtObservation(const DataSet& dataSet, const SeriesGeometry& series,
                                                    const SpotModel& model, const Observation& observation,
                                                    CRunReport& report)
{
    const int nFrames = std::min(series.frameCount(), int(dataSet.m_listFrameFile.size()));
    // Frames shown beyond those that are summed, so that the ends of the curve are visible.
    const int nMargin = 2;
    std::vector<Observation> listOne = {observation};
    listOne.front().nFirstFrame = std::max(0, observation.nFirstFrame - nMargin);
    listOne.front().nLastFrame = std::min(nFrames - 1, observation.nLastFrame + nMargin);
    const int nMiddle = std::clamp(int(std::lround(observation.dfFrame)), 0, std::max(0, nFrames - 1));
    const CPassageGeometry passages(series);
    const auto predicted = nFrames > 0 ? passages.placeOn(observation.anIndex, nMiddle) : std::nullopt;
    if (listOne.front().nFirstFrame > listOne.front().nLastFrame || !predicted) {
        report.fail(QStringLiteral("The reflection is on no frame of the series."));
        return {};
    }
    const CSeriesFrames frames(dataSet, series.sizeFrame);
    const RockingCurve curve{series.rotation, model.dfRockingWidth, model.dfMosaicity};
    const CExpectedSpots expected(passages, listOne, curve, {});
    const std::vector<char> listMask = pixelMask(series.sizeFrame, dataSet.m_maskPeakHunting,
                                                 dataSet.m_listHotPixel);
    MeasureSettings settings;
    settings.dfRadius = model.dfDiscRadius;
    settings.pMask = &listMask;
    CSpotMeasurer measurer(settings);

    ObservationProfile result;
    result.nFirstFrame = listOne.front().nFirstFrame;
    const int nHalf = int(std::ceil(model.dfDiscRadius + std::max(5.0, model.dfDiscRadius))) + 1;
    const int nX = int(std::lround(observation.place.dfX)), nY = int(std::lround(observation.place.dfY));
    result.nSide = 2 * nHalf + 1;
    result.listInDisc = pixelsInDisc(observation.place, model.dfDiscRadius, nX, nY, nHalf);
    for (int nFrame = result.nFirstFrame; nFrame <= listOne.front().nLastFrame; ++nFrame) {
        const SeriesFrame frame = frames.read(nFrame);
        std::vector<ExpectedSpot> listSpot = expected.onFrame(nFrame);
        if (!frame.pImage || listSpot.empty()) {
            report.fail(frame.pImage ? QStringLiteral("The reflection is not on frame #%L1.").arg(nFrame + 1)
                                     : frame.strFault);
            return {};
        }
        // The place on its frame was corrected when it was measured; apply the same correction on the other
        // frames.
        ExpectedSpot& spot = listSpot.front();
        spot.place.dfX += observation.place.dfX - predicted->dfX;
        spot.place.dfY += observation.place.dfY - predicted->dfY;
        measurer.beginFrame(*frame.pImage, listSpot);
        result.listWindow.push_back(windowAbout(*frame.pImage, nX, nY, nHalf));
        result.listRocking.push_back(measurer.measure(spot, nFrame).dfSum);
        result.listModel.push_back(spot.dfPart * observation.dfIntensity);
        result.listExcitation.push_back(spot.dfExcitation[1]);
    }
    return result;
}

}  // namespace tessera
