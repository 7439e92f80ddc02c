// Limits that let all peaks of a series through, against the law of Bragg.
#include "reciprocal/suggestframelimits.h"
#include "reciprocal/suggestcellrange.h"
#include "records/pi.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessera {

namespace {

DataSet seriesOf(const QList<double>& listIntensity)
{
    DataSet dataSet;
    dataSet.m_dfPixelSize = 0.004;
    dataSet.m_dfWavelength = 0.0251;
    dataSet.m_dfCenterX = dataSet.m_dfCenterY = 200;
    dataSet.m_listShift = {{0, 0}, {20, -10}};
    QList<Peak3D> listPeak;
    for (const double dfIntensity : listIntensity) {
        Peak3D peak;
        peak.dfIPoint = dfIntensity;
        listPeak.append(peak);
    }
    dataSet.m_listPeakFrame = {listPeak, {}};
    return dataSet;
}

double valueOf(const Suggestion& suggestion, const ParameterMember& member)
{
    for (const SuggestedValue& value : suggestion) {
        if (value.member == member) {
            return value.dfValue;
        }
    }
    return NAN;
}

}  // namespace

TEST(SuggestFrameLimits, ReachTheFarthestCornerOfAnyFrame)
{
    DataSet dataSet = seriesOf({});
    // On the second frame the beam lies at (220, 190), and (0, 512) is the corner farthest from it.
    const double dfFlat = std::hypot(220, 512 - 190) * 0.004;
    const double dfTheta = std::atan(dfFlat * 0.0251) / 2;
    const double dfDStar = 2 * std::sin(dfTheta) / 0.0251;
    EXPECT_NEAR(dStarOfFarthestCorner(dataSet, {}, {400, 512}), dfDStar, 1e-5);
    const double dfLimit = valueOf(suggestFrameLimits(dataSet, {}, {400, 512}),
                                   &MappingParameters::m_dfResolutionMax);
    EXPECT_GE(dfLimit, dfDStar);
    EXPECT_LT(dfLimit, dfDStar + 0.0101);
    // The stretching counts where it is applied, and moves a corner by its amplitude at most.
    dataSet.m_dfStretchAmplitude = 10;
    dataSet.m_dfStretchAzimuth = 180 / g_dfPi * std::atan2(-322, -220);
    MappingParameters mapping;
    EXPECT_NEAR(dStarOfFarthestCorner(dataSet, mapping, {400, 512}), dfDStar, 1e-5);
    mapping.m_bApplyStretching = true;
    EXPECT_NEAR(dStarOfFarthestCorner(dataSet, mapping, {400, 512}) / dfDStar, 1.1, 1e-3);
    EXPECT_TRUE(suggestFrameLimits(dataSet, mapping, {}).isEmpty());
    dataSet.m_dfPixelSize = 0;
    EXPECT_TRUE(suggestFrameLimits(dataSet, mapping, {400, 512}).isEmpty());
}

TEST(SuggestFrameLimits, HoldTheWeakestAndTheStrongestPeak)
{
    const auto limits = [](const QList<double>& listIntensity) {
        const Suggestion suggestion = suggestFrameLimits(seriesOf(listIntensity), {}, {});
        return std::make_pair(valueOf(suggestion, &MappingParameters::m_dfIntensityMin),
                              valueOf(suggestion, &MappingParameters::m_dfIntensityMax));
    };
    EXPECT_EQ(limits({40000.25, 3}), std::make_pair(0.0, 40001.0));
    EXPECT_EQ(limits({-2.5, 7}), std::make_pair(-3.0, 7.0));
}

TEST(SuggestCellRange, SaysNothingWithoutSpots)
{
    EXPECT_TRUE(suggestCellRange(DataSet()).isEmpty());
    EXPECT_TRUE(suggestCellRange(seriesOf({1, 2, 3})).isEmpty());
}

}  // namespace tessera
