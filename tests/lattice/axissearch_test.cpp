// The rotation axis from peaks of a lattice that are made here by the law of Bragg, with noise, in both
// senses.
#include "lattice/axissearch.h"

#include "geometry/angles.h"
#include "geometry/rotationgeometry.h"
#include "lattice/axisfit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {

namespace {

const FlatGeometry g_geometry = {0.004, 0.0251};
const double g_dfAzimuth = -38.5;

struct Series {
    double dfStart = -40;  // degrees
    double dfStep = 1;
    int nFrames = 80;
    double dfReach = 0.9;      // Å⁻¹
    double dfNoise = 0;        // share of the peaks that lie anywhere
    double dfRocking = 0.004;  // Å⁻¹, greatest distance of a reflection from the sphere
};

/// Peaks of a triclinic crystal, by the law of Bragg: a reflection g shines at the tilt where k₀ + g is as
/// long as k₀, and its spot lies on the ray of k₀ + g through the plane of the flat pattern.
std::vector<FlatPeak> peaksOf(const Series& series)
{
    Eigen::Matrix3d matDirect;
    matDirect << 7.1, 0.3, -1.2, 0.8, 9.3, 0.6, -2.0, 1.1, 11.8;
    const Eigen::Matrix3d matReciprocal = matDirect.inverse();
    std::mt19937 random(7);
    const auto uniform = [&] { return (double(random()) + 0.5) / 4294967296.0; };
    const double dfK = 1 / g_geometry.dfWavelength;
    std::vector<FlatPeak> vecPeak;
    for (int nFrame = 0; nFrame < series.nFrames; ++nFrame) {
        const double dfTilt = series.dfStart + nFrame * series.dfStep;
        const double dfCos = std::cos(radians(dfTilt));
        const double dfSin = std::sin(radians(dfTilt));
        for (int n = 0; n < 15 * 19 * 23; ++n) {
            const Eigen::Vector3d index(n % 15 - 7, n / 15 % 19 - 9, n / 285 - 11);
            const Eigen::Vector3d g = matReciprocal * index;
            // The crystal is turned back by the tilt, against turnedByTilt().
            const Eigen::Vector3d lab(g.x(), dfCos * g.y() + dfSin * g.z(), -dfSin * g.y() + dfCos * g.z());
            const Eigen::Vector3d ray = lab - Eigen::Vector3d(0, 0, dfK);
            const bool bShines = std::abs(ray.norm() - dfK) < series.dfRocking && g.norm() < series.dfReach;
            if (!bShines || index.norm() == 0 || uniform() > 0.3) {
                continue;
            }
            const Eigen::Vector3d flat = ray * (dfK / -ray.z()) / g_geometry.dfPixelSize;
            const double dfAngle = radians(g_dfAzimuth);
            FlatPeak peak = {std::cos(dfAngle) * flat.x() + std::sin(dfAngle) * flat.y() + uniform() - 0.5,
                             -std::sin(dfAngle) * flat.x() + std::cos(dfAngle) * flat.y() + uniform() - 0.5,
                             dfTilt};
            if (uniform() < series.dfNoise) {
                const double dfRadius = series.dfReach / g_geometry.dfPixelSize * std::sqrt(uniform());
                const double dfWhere = 2 * g_dfPi * uniform();
                peak.dfX = dfRadius * std::cos(dfWhere);
                peak.dfY = dfRadius * std::sin(dfWhere);
            }
            vecPeak.push_back(peak);
        }
    }
    return vecPeak;
}

AxisSearch searched(const std::vector<FlatPeak>& vecPeak, int nJobs = 2)
{
    const std::optional<AxisSearch> search = searchAxis(vecPeak, g_geometry, nJobs);
    EXPECT_TRUE(search.has_value());
    return search.value_or(AxisSearch());
}

double off(double dfAzimuth, double dfTrue)
{
    return std::abs(std::remainder(dfAzimuth - dfTrue, 360));
}

// The mapping of the frames, in single precision, is the other way to the same points.
TEST(FlatPeak, IsMappedAsTheFramesAre)
{
    const FlatPeak peak = {-153.25, 88.5, 31.5};
    const Vec3D flat = {float(g_geometry.dfPixelSize * peak.dfX), float(g_geometry.dfPixelSize * peak.dfY),
                        0};
    const Vec3D mapped = rotated(rotationX(peak.dfTilt),
                                 ewaldPoint(rotated(rotationZ(-138.2), flat), g_geometry.dfWavelength));
    const Eigen::Vector3d point = pointsForAxis({peak}, g_geometry, -138.2).front();
    EXPECT_NEAR(point.x(), double(mapped.x), 1e-6);
    EXPECT_NEAR(point.y(), double(mapped.y), 1e-6);
    EXPECT_NEAR(point.z(), double(mapped.z), 1e-5);
}

TEST(AxisSearch, FindsAzimuthAndSense)
{
    Series noisy;
    noisy.dfNoise = 0.3;
    for (const Series& series : {Series(), noisy}) {
        std::vector<FlatPeak> vecPeak = peaksOf(series);
        for (const double dfTrue : {g_dfAzimuth, g_dfAzimuth + 180}) {
            SCOPED_TRACE(dfTrue);
            const AxisSearch search = searched(vecPeak);
            ASSERT_TRUE(search.found) << search.strReason.toStdString();
            const AxisFound& found = *search.found;
            EXPECT_LT(off(found.best.dfAzimuth, dfTrue), std::max(0.1, 4 * found.dfAzimuthError));
            EXPECT_LT(found.dfAzimuthError, 0.1);
            EXPECT_TRUE(found.bSure) << found.strSense.toStdString();
            EXPECT_NEAR(found.dfCurvature, 1, 4 * found.dfCurvatureError + 0.02);
            EXPECT_LT(off(found.second.dfAzimuth, dfTrue + 180), 3);
            EXPECT_LT(found.second.dfSharpness, found.best.dfSharpness);
            EXPECT_NEAR(found.dfShareFitting, 1 - series.dfNoise, 0.1);
            // The same places on frames that were turned the other way show the crystal's inverse.
            for (FlatPeak& peak : vecPeak) {
                peak.dfTilt = -peak.dfTilt;
            }
        }
    }
}

TEST(AxisSearch, GivesTheSameForEveryNumberOfThreads)
{
    const std::vector<FlatPeak> vecPeak = peaksOf({});
    const AxisSearch one = searched(vecPeak, 1);
    const AxisSearch three = searched(vecPeak, 3);
    ASSERT_TRUE(one.found);
    ASSERT_TRUE(three.found);
    EXPECT_EQ(one.found->best.dfAzimuth, three.found->best.dfAzimuth);
    EXPECT_EQ(one.found->dfCurvature, three.found->dfCurvature);
    ASSERT_EQ(one.vecCurve.size(), three.vecCurve.size());
    for (std::size_t n = 0; n < one.vecCurve.size(); ++n) {
        EXPECT_EQ(one.vecCurve[n].dfSharpness, three.vecCurve[n].dfSharpness);
        EXPECT_TRUE(n == 0 || one.vecCurve[n - 1].dfAzimuth < one.vecCurve[n].dfAzimuth);
    }
}

// So close to the direct beam the sphere is flat within the rocking curve.
TEST(AxisSearch, CallsTheSenseDoubtfulWhereTheSphereIsFlat)
{
    Series series;
    series.dfReach = 0.3;
    series.dfStep = 0.4;
    series.nFrames = 200;
    series.dfRocking = 0.015;
    std::vector<FlatPeak> vecPeak = peaksOf(series);
    const AxisSearch search = searched(vecPeak);
    ASSERT_TRUE(search.found) << search.strReason.toStdString();
    EXPECT_LT(std::abs(std::remainder(search.found->best.dfAzimuth - g_dfAzimuth, 180)), 1.5);
    EXPECT_FALSE(search.found->bSure) << search.found->strSense.toStdString();
}

TEST(AxisSearch, SaysWhereThePeaksDoNotTellTheAxis)
{
    Series noise;
    noise.dfNoise = 1;
    Series oneFrame;
    oneFrame.dfStart = 0;
    oneFrame.nFrames = 1;
    oneFrame.dfRocking = 0.05;
    Series hardlyTurned;
    hardlyTurned.nFrames = 3;
    hardlyTurned.dfRocking = 0.02;
    std::vector<FlatPeak> vecStill = peaksOf({});  // a turning crystal whose tilts are all the same
    std::vector<FlatPeak> vecShuffled = vecStill;
    std::vector<FlatPeak> vecBroken = vecStill;
    std::mt19937 random(5);
    for (std::size_t n = 0; n < vecStill.size(); ++n) {
        vecStill[n].dfTilt = 10;
        vecShuffled[n].dfTilt = vecShuffled[random() % vecShuffled.size()].dfTilt;
        vecBroken[n].dfX = n % 2 ? NAN : INFINITY;
    }
    std::vector<FlatPeak> vecFew = peaksOf({});
    vecFew.resize(49);
    const std::pair<const char*, std::vector<FlatPeak>> aCase[] = {{"none", {}},
                                                                   {"few", vecFew},
                                                                   {"noise", peaksOf(noise)},
                                                                   {"one frame", peaksOf(oneFrame)},
                                                                   {"hardly turned", peaksOf(hardlyTurned)},
                                                                   {"tilts that stand still", vecStill},
                                                                   {"tilts of other frames", vecShuffled},
                                                                   {"no numbers", vecBroken}};
    for (const auto& row : aCase) {
        const AxisSearch search = searched(row.second);
        EXPECT_FALSE(search.found) << row.first << " " << search.found->best.dfAzimuth << " ± "
                                   << search.found->dfAzimuthError;
        EXPECT_FALSE(search.strReason.isEmpty()) << row.first;
    }
    EXPECT_FALSE(searchAxis(peaksOf({}), {0.004, 0})->found);
    EXPECT_FALSE(searchAxis(peaksOf({}), {NAN, 0.0251})->found);
    EXPECT_FALSE(searchAxis(peaksOf({}), g_geometry, 1, [] { return false; }).has_value());
}

// Far from a whole degree and with a basis that is a little off, the fit comes to what the peaks were made
// with.
TEST(AxisFit, RefinesAxisAndBasisTogether)
{
    Eigen::Matrix3d basis;
    basis << 7.1, 0.3, -1.2, 0.8, 9.3, 0.6, -2.0, 1.1, 11.8;
    const std::vector<FlatPeak> vecPeak = peaksOf({});
    const std::optional<AxisFit> fit = fitAxis(vecPeak, g_geometry, g_dfAzimuth + 1.5, 1.003 * basis, 0.2);
    ASSERT_TRUE(fit);
    EXPECT_NEAR(fit->dfAzimuth, g_dfAzimuth, 4 * fit->dfAzimuthError);
    EXPECT_NEAR(fit->dfCurvature, 1, 4 * fit->dfCurvatureError);
    EXPECT_LT((fit->basis - basis).norm() / basis.norm(), 2e-3);
    EXPECT_FALSE(fitAxis({vecPeak[0], vecPeak[1]}, g_geometry, g_dfAzimuth, basis, 0.2));
}

}  // namespace
}  // namespace tessera
