// Intensities of a simulated series on a detector with gaps.
#include "simulate/frameimage.h"
#include "simulate/framewriter.h"
#include "tests/integration/simulatedintegration.h"

#include <algorithm>
#include <limits>

namespace tessera {

namespace {

/// A series integrated whole, and again with two gaps of the detector through its frames.
class SeriesWithGaps : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        SimulationParameters p = smallCrystal();
        p.format = SimulatedFormat::MrcFloat;
        CSimulatedFrames frames(p);
        frames.write();
        ASSERT_TRUE(integrated(frames, s_whole).finished());
        for (int n = 0; n < p.nFrames; ++n) {
            std::vector<float> listPixel = renderFrame(frames.m_series, n);
            for (size_t i = 0; i < listPixel.size(); ++i) {
                const int x = int(i) % p.nSize, y = int(i) / p.nSize;
                const bool bGap = (x >= s_nGap && x < s_nGap + 6) || (y >= s_nGap && y < s_nGap + 6);
                listPixel[i] = bGap ? std::numeric_limits<float>::quiet_NaN() : listPixel[i];
            }
            EXPECT_EQ(writeFrame(frames.m_data.m_listFrameFile[n], listPixel, p.nSize, p.nSize, p.format),
                      QString());
        }
        ASSERT_TRUE(integrated(frames, s_result).finished());
        s_agreement = agreementWithTruth(s_result, frames.m_series);
    }
    static void TearDownTestSuite() { s_whole = s_result = IntegratedSeries(); }

    /// Of a place from the middle of the nearer gap, pixels.
    static double distanceFromGap(const Observation& o)
    {
        return std::min(std::abs(o.place.dfX - s_nGap - 2.5), std::abs(o.place.dfY - s_nGap - 2.5));
    }
    static constexpr int s_nGap = 150;  ///< its first column; the beam is not in it
    inline static IntegratedSeries s_whole, s_result;
    inline static Agreement s_agreement;
};

}  // namespace

TEST_F(SeriesWithGaps, AgreesWithTheTruthInFiniteNumbers)
{
    EXPECT_GE(s_agreement.dfCorrelation, 0.998);
    EXPECT_LE(s_agreement.dfChi, 1.5);
    for (const Observation& o : s_result.listObservation) {
        EXPECT_TRUE(std::isfinite(o.dfIntensity));
        EXPECT_TRUE(std::isfinite(o.dfSigma));
    }
}

TEST_F(SeriesWithGaps, LeavesOutWhatLiesInThem)
{
    int nInGap = 0;
    for (const Observation& o : s_result.listObservation) {
        if (distanceFromGap(o) < 2.5 + s_result.model.dfDiscRadius - 1) {
            EXPECT_TRUE(o.nFlags & g_nExcludingFlags) << o.place.dfX << " " << o.place.dfY;
            nInGap += o.nFlags & FlagNotFinite ? 1 : 0;
        }
    }
    EXPECT_GT(nInGap, 5);
}

TEST_F(SeriesWithGaps, MeasuresTheRestAsBefore)
{
    int nSame = 0;
    for (const Observation& o : s_result.listObservation) {
        const auto it = std::find_if(
            s_whole.listObservation.begin(), s_whole.listObservation.end(), [&](const Observation& other) {
                return other.anIndex == o.anIndex && std::abs(other.dfFrame - o.dfFrame) < 1;
            });
        if (distanceFromGap(o) > 2.5 + 2 * s_result.model.dfDiscRadius + 6 &&
            it != s_whole.listObservation.end() && !o.nFlags && !it->nFlags) {
            ++nSame;
            EXPECT_NEAR(o.dfIntensity, it->dfIntensity, 0.02 * std::abs(it->dfIntensity) + it->dfSigma);
        }
    }
    EXPECT_GT(nSame, 40);
}

}  // namespace tessera
