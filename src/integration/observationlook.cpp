#include "integration/expectedspots.h"
#include "integration/pixelmask.h"
#include "integration/reflectionflags.h"
#include "integration/seriesframes.h"
#include "integration/seriesintegration.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// Row by row about whole pixels; 0 outside the frame.
std::vector<float> windowAbout(const CImgObj<float>& img, int nX, int nY, int nHalf)
{
    std::vector<float> listPixel;
    for (int y = nY - nHalf; y <= nY + nHalf; ++y) {
        for (int x = nX - nHalf; x <= nX + nHalf; ++x) {
            const bool bInside = x >= 0 && y >= 0 && x < img.Width() && y < img.Height();
            listPixel.push_back(bInside ? img.Data()[size_t(y) * size_t(img.Width()) + size_t(x)] : 0);
        }
    }
    return listPixel;
}

}  // namespace

bool lookAtObservation(const DataSet& dataSet, const SeriesGeometry& series, const SpotModel& model,
                       const Observation& observation, CRunReport& report, ObservationProfile& profile)
{
    const int nFrames = std::min(series.frameCount(), int(dataSet.m_listFrameFile.size()));
    const int nMargin = 2;  // frames beyond those that are summed, to see the curve end
    const int nFirst = std::max(0, observation.nFirstFrame - nMargin);
    const int nLast = std::min(nFrames - 1, observation.nLastFrame + nMargin);
    if (nFirst > nLast) {
        report.fail(QStringLiteral("The reflection shows on no frame of the series."));
        return false;
    }
    const CPassageGeometry passages(series);
    const CSeriesFrames frames(dataSet, series.sizeFrame);
    std::vector<Observation> listOne = {observation};
    listOne.front().nFirstFrame = nFirst;
    listOne.front().nLastFrame = nLast;
    const RockingCurve curve{series.rotation, model.dfRockingWidth, model.dfMosaicity};
    const CExpectedSpots expected(passages, listOne, curve, {});
    MeasureSettings settings;
    settings.dfRadius = model.dfDiscRadius;
    settings.noise = NoiseModel{model.dfGain, model.dfReadNoise * model.dfReadNoise};
    const std::vector<char> listMask = pixelMask(series.sizeFrame, dataSet.m_maskPeakHunting,
                                                 dataSet.m_listHotPixel);
    settings.pMask = &listMask;
    CSpotMeasurer measurer(settings);

    // The place was corrected when it was measured, so that of other frames is as far from it as predicted.
    const int nMiddle = std::clamp(int(std::lround(observation.dfFrame)), 0, nFrames - 1);
    const auto predicted = passages.placeOn(observation.anIndex, nMiddle);
    ObservationProfile result;
    result.nFirstFrame = nFirst;
    const int nHalf = int(std::ceil(model.dfDiscRadius + std::max(5.0, model.dfDiscRadius))) + 1;
    result.nSide = 2 * nHalf + 1;
    for (int nFrame = nFirst; nFrame <= nLast; ++nFrame) {
        const SeriesFrame frame = frames.read(nFrame);
        if (!frame.pImage) {
            report.fail(frame.strFault);
            return false;
        }
        std::vector<ExpectedSpot> listSpot = expected.onFrame(nFrame);
        if (listSpot.empty() || !predicted) {
            report.fail(QStringLiteral("The reflection has no place on frame #%L1.").arg(nFrame + 1));
            return false;
        }
        ExpectedSpot& spot = listSpot.front();
        spot.place.dfX += observation.place.dfX - predicted->dfX;
        spot.place.dfY += observation.place.dfY - predicted->dfY;
        measurer.beginFrame(*frame.pImage, listSpot);
        const SpotMeasure measure = measurer.measure(spot, nFrame);
        const int nX = int(std::lround(observation.place.dfX)), nY = int(std::lround(observation.place.dfY));
        result.listWindow.push_back(windowAbout(*frame.pImage, nX, nY, nHalf));
        result.listRocking.push_back(measure.dfSum);
        result.listModel.push_back(spot.dfPart * observation.dfIntensity);
        result.listExcitation.push_back(spot.dfExcitation[1]);
        if (nFrame == nMiddle) {
            for (int n = 0; n < result.nSide * result.nSide; ++n) {
                const double dfX = nX - nHalf + n % result.nSide - spot.place.dfX;
                const double dfY = nY - nHalf + n / result.nSide - spot.place.dfY;
                result.listInDisc.push_back(std::hypot(dfX, dfY) <= model.dfDiscRadius ? 1 : 0);
            }
        }
    }
    result.listInDisc.resize(size_t(result.nSide) * size_t(result.nSide));
    profile = std::move(result);
    return true;
}

}  // namespace tessera
