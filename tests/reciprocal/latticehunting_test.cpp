// The cell search over all peaks of the frames, and what it starts from.
#include "reciprocal/latticehunting.h"
#include "reciprocal/latticepoints.h"
#include "records/pi.h"
#include "tests/reciprocal/simulatedlattice.h"
#include "tests/recordingreport.h"

#include <gtest/gtest.h>

namespace tessera {

namespace {

constexpr double g_dfPixel = 0.002;  // Å⁻¹

/// A series of flat cuts through the lattice, 1.2° apart over 120°, each with the reflections within reach of
/// its frame; what was seen on several frames is merged into the last.
DataSet seriesOf(const QList<Vec3D>& listBasis, double dfMaxDStar, double dfError = 4e-4)
{
    const int nFrames = 100;
    DataSet data;
    data.m_peakMapping = PeakMapping();
    for (int n = 0; n < nFrames; ++n) {
        data.m_listPeakFrame.append(QList<Peak3D>());
    }
    for (Peak3D peak : simulatedReflections(listBasis, dfMaxDStar, dfError, all)) {
        const Vec3D v = peak.point();
        bool bSeen = false;
        for (int n = 0; n < nFrames; ++n) {
            const double dfTilt = (-60 + 1.2 * n) * g_dfPi / 180;
            const double dfAcross = double(v.y) * std::cos(dfTilt) + double(v.z) * std::sin(dfTilt);
            if (std::abs(double(v.z) * std::cos(dfTilt) - double(v.y) * std::sin(dfTilt)) < 0.004) {
                peak.dfX2DCorrected = double(v.x) / g_dfPixel;
                peak.dfY2DCorrected = dfAcross / g_dfPixel;
                data.m_listPeakFrame[n].append(peak);
                bSeen = true;
            }
        }
        if (bSeen) {
            data.m_listPeakMerged.append(peak);
        }
    }
    return data;
}

double volumeInForce(const DataSet& data)
{
    return 1 / double(std::fabs(dot(cross(data.m_listCell[0], data.m_listCell[1]), data.m_listCell[2])));
}

CellHuntingParameters automatic(CellSearchMethod method)
{
    CellHuntingParameters parameters;
    parameters.m_method = method;
    parameters.m_bAutoRange = true;
    return parameters;
}

}  // namespace

// The longest edge has to be known before the search, without room for its multiples.
TEST(LatticePoints, RangeHoldsTheLongestEdgeAndLittleMore)
{
    const struct {
        gemmi::UnitCell cell;
        double dfReach;
        double dfLongest;  // of the primitive cell
    } aRow[] = {{{79.1, 79.1, 37.9, 90, 90, 90}, 0.25, 79.1},
                {{5.3, 6.1, 7.4, 81, 77, 68}, 1.2, 7.4},
                {{10.4, 10.4, 10.4, 109.47, 109.47, 109.47}, 0.8, 10.4},
                {{4, 9, 41, 90, 97, 90}, 0.6, 41}};
    for (const auto& row : aRow) {
        const CellRange range = automaticCellRange(seriesOf(reciprocalBasis(row.cell), row.dfReach));
        EXPECT_EQ(range.dfShortest, 2);
        EXPECT_GT(range.dfLongest, 1.05 * row.dfLongest);
        EXPECT_LT(range.dfLongest, 2.5 * row.dfLongest);
    }
    DataSet data = seriesOf(reciprocalBasis({5.3, 6.1, 7.4, 81, 77, 68}), 1.2);
    data.m_listPeakMerged = data.m_listPeakMerged.mid(0, 4);  // many frames, but hardly any peaks
    EXPECT_EQ(automaticCellRange(data).dfLongest, 30);
    EXPECT_EQ(automaticCellRange(DataSet()).dfShortest, 3);
}

TEST(LatticePoints, AreThoseOfDenseShellsWithoutBeamAndNumbersThatAreNone)
{
    DataSet data = seriesOf(reciprocalBasis({9, 10, 11, 90, 95, 90}), 0.6);
    const std::size_t nSpots = latticePoints(data).size();
    Peak3D peak;
    peak.setPoint({0.001f, 0.01f, 0});
    peak.dfY2DCorrected = 5;
    data.m_listPeakFrame[3].append(peak);  // close to the beam
    peak.dfY2DCorrected = 500;
    for (const float f : {NAN, INFINITY}) {
        peak.setPoint({0.1f, f, 0});
        data.m_listPeakFrame[7].append(peak);
    }
    EXPECT_EQ(latticePoints(data).size(), nSpots);
    data.m_peakMapping.reset();
    EXPECT_TRUE(latticePoints(data).empty());

    // The density is even up to 0.7, and a hundredth of that up to 1.5: within an area the number of points
    // is proportional to the square of the radius.
    std::vector<double> vecDStar;
    for (int n = 1; n <= 1000; ++n) {
        vecDStar.push_back(0.7 * std::sqrt(n / 1000.0));
    }
    EXPECT_EQ(denseDStar(vecDStar), 0.7);
    for (int n = 1; n <= 36; ++n) {
        vecDStar.push_back(std::sqrt(0.49 + (2.25 - 0.49) * n / 36.0));
    }
    EXPECT_NEAR(denseDStar(vecDStar), 0.7, 0.02);
    EXPECT_EQ(denseDStar({0.5, 2, 1}), 2);
    EXPECT_EQ(denseDStar({}), 0);
}

TEST(LatticeHunting, EachMethodCommitsTheCellOfTheSeries)
{
    const gemmi::UnitCell cell(12.3, 17.1, 21.4, 81, 77, 98);
    DataSet data = seriesOf(reciprocalBasis(cell), 0.7);
    for (const CellSearchMethod method :
         {CellSearchMethod::DifferenceVectors, CellSearchMethod::Directions, CellSearchMethod::BestOfBoth}) {
        data.m_listCell.clear();
        CRecordingReport log;
        const RunOutcome outcome = runLatticeHunting(data, data.m_listPeakMerged, automatic(method), 0.05,
                                                     log);
        ASSERT_TRUE(outcome.finished()) << int(method);
        EXPECT_EQ(data.m_listCell, data.m_listCellFound);
        EXPECT_NEAR(volumeInForce(data), cell.volume, 0.01 * cell.volume);
        EXPECT_TRUE(log.said("Found unit cell"));
        EXPECT_EQ(log.said("Directions: V="), method != CellSearchMethod::DifferenceVectors);
        EXPECT_EQ(log.said("Difference vectors: V="), method == CellSearchMethod::BestOfBoth);
    }
}

TEST(LatticeHunting, WithoutACellTheFormerOneStays)
{
    const QList<Vec3D> listFormer = reciprocalBasis({5, 6, 7, 90, 90, 90});
    const DataSet series = seriesOf(reciprocalBasis({9, 10, 11, 90, 95, 90}), 0.6);
    DataSet data;
    data.m_listCell = data.m_listCellFound = listFormer;
    CRecordingReport log;
    CellHuntingParameters parameters = automatic(CellSearchMethod::Directions);
    RunOutcome outcome = runLatticeHunting(data, {}, parameters, 0.05, log);
    EXPECT_EQ(outcome.end, RunEnd::Refused);
    EXPECT_FALSE(outcome.strReason.isEmpty());

    data.m_listPeakFrame = series.m_listPeakFrame;
    data.m_peakMapping = PeakMapping();
    parameters = {30, 3, CellSearchMethod::Directions, false};
    outcome = runLatticeHunting(data, {}, parameters, 0.05, log);
    EXPECT_EQ(outcome.end, RunEnd::Failed);
    EXPECT_TRUE(outcome.strReason.startsWith("No edge is both longer"));

    CRecordingReport stopped;
    stopped.m_nStopAfter = 3;
    outcome = runLatticeHunting(data, series.m_listPeakMerged, automatic(CellSearchMethod::BestOfBoth), 0.05,
                                stopped);
    EXPECT_EQ(outcome.end, RunEnd::Stopped);
    EXPECT_EQ(data.m_listCell, listFormer);
    EXPECT_EQ(data.m_listCellFound, listFormer);
}

// A supercell explains as much as the cell, and by its finer mesh a little more; a subcell explains less.
TEST(LatticeHunting, OfEqualSharesTheSmallerCellIsTaken)
{
    const auto candidate = [](double dfVolume, int nFitting, double dfByChance) {
        LatticeCandidate c;
        c.basis = std::cbrt(dfVolume) * LatticeBasis::Identity();
        c.fit.nPoints = 1000;
        c.fit.nFitting = nFitting;
        c.fit.dfByChance = dfByChance;
        return c;
    };
    EXPECT_TRUE(isBetter(candidate(1000, 900, 0.07), candidate(2000, 920, 0.065)));
    EXPECT_FALSE(isBetter(candidate(2000, 920, 0.065), candidate(1000, 900, 0.07)));
    EXPECT_TRUE(isBetter(candidate(2000, 920, 0.07), candidate(1000, 700, 0.07)));
    EXPECT_TRUE(isBetter(candidate(1010, 905, 0.07), candidate(1000, 900, 0.07)));  // the same lattice
    EXPECT_TRUE(isBetter(candidate(1000, 500, 0.1), candidate(3000, 520, 0.3)));    // chance counts
}

}  // namespace tessera
