// Sections of reciprocal space: a simulated crystal of known cell on them, and frames of one value against
// the closed form of what a tilt series sees.
#include "integration/reciprocalsection.h"
#include "imagefiles/mrcwriter.h"
#include "tests/integration/simulatedintegration.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace tessera {

namespace {

SectionPlane plane(const char* pszName)
{
    const std::optional<SectionPlane> found = sectionPlane(pszName);
    EXPECT_TRUE(found) << pszName;
    return found.value_or(SectionPlane());
}

std::vector<ReciprocalSection> sections(const CSimulatedFrames& frames,
                                        const std::vector<SectionPlane>& listPlane,
                                        const SectionOptions& options, int nJobs = 2)
{
    CRunReport report;
    const auto made = makeSections(frames.m_data, frames.m_geometry, listPlane, options, nJobs, report);
    EXPECT_TRUE(made.finished()) << report.reason().toStdString();
    return made.made.value_or(std::vector<ReciprocalSection>(listPlane.size()));
}

/// The height of a spot above the background at a lattice point, and its centre of gravity.
struct SpotOnSection {
    bool bSeen = false;
    double dfHeight = 0;  ///< counts, mean of the 3 × 3 pixels about the point, above the ground
    double dfOff = 0;     ///< pixels, of the centre of gravity from the point
};
SpotOnSection spotAt(const ReciprocalSection& section, const std::array<int, 3>& anIndex)
{
    const int nReach = 5, nSpot = 3;
    SpotOnSection spot;
    const auto pt = placeOnSection(section, {double(anIndex[0]), double(anIndex[1]), double(anIndex[2])});
    if (!pt) {
        return spot;
    }
    const int nX = qRound(pt->x()), nY = qRound(pt->y());
    std::vector<double> listGround;
    double dfSum = 0, dfX = 0, dfY = 0;
    for (const bool bGround : {true, false}) {
        const double dfGround = listGround.empty() ? 0 : listGround[listGround.size() / 2];
        for (int y = nY - nReach; y <= nY + nReach; ++y) {
            for (int x = nX - nReach; x <= nX + nReach; ++x) {
                if (x < 0 || y < 0 || x >= section.nSide || y >= section.nSide) {
                    return {};
                }
                const float f = section.listValue[size_t(y) * size_t(section.nSide) + size_t(x)];
                const double dfAway = std::hypot(x - pt->x(), y - pt->y());
                if (!std::isfinite(f)) {
                    return {};
                }
                if (bGround && dfAway > nSpot) {
                    listGround.push_back(double(f));
                } else if (!bGround && dfAway <= nSpot) {
                    dfSum += double(f) - dfGround;
                    dfX += (double(f) - dfGround) * (x - pt->x());
                    dfY += (double(f) - dfGround) * (y - pt->y());
                    spot.dfHeight += std::max(std::abs(x - nX), std::abs(y - nY)) <= 1
                                         ? (double(f) - dfGround) / 9
                                         : 0;
                }
            }
        }
        std::sort(listGround.begin(), listGround.end());
    }
    spot.bSeen = true;
    spot.dfOff = std::hypot(dfX / dfSum, dfY / dfSum);
    return spot;
}

/// Frames that have the same count everywhere, with a cell along the laboratory's axes.
class CEvenFrames {
public:
    CEvenFrames(int nFrames, double dfFirst, double dfStep)
    {
        m_geometry.geometry.aBasis = {DoubleVector{0.05, 0, 0}, {0, 0.06, 0}, {0, 0, 0.07}};
        m_geometry.geometry.dfWavelength = 0.05;  // the sphere is well curved
        m_geometry.geometry.dfPixelSize = 0.01;
        m_geometry.geometry.plane.axis = 30;
        m_geometry.sizeFrame = {g_nSize, g_nSize};
        for (int n = 0; n < nFrames; ++n) {
            m_data.m_listFrameFile.append(m_dir.filePath(QStringLiteral("e_%1.mrc").arg(n)));
            m_geometry.listTilt.push_back(dfFirst + n * dfStep);
            m_geometry.listBeam.push_back({g_nSize / 2.0 + 0.3, g_nSize / 2.0 - 0.2});
            m_listPixel.emplace_back(size_t(g_nSize * g_nSize), 7.f);
            for (int y = 10; y < 20; ++y) {
                m_listPixel.back()[y * g_nSize + 15] = std::numeric_limits<float>::quiet_NaN();
            }
        }
    }
    /// A round spot on a frame, pixels from its beam; narrow, because intensity outside the rotation range of
    /// the frame is not in a section.
    void addSpot(int nFrame, double dfX, double dfY)
    {
        const FramePlace& beam = m_geometry.listBeam[nFrame];
        for (int y = 0; y < g_nSize; ++y) {
            for (int x = 0; x < g_nSize; ++x) {
                const double dfAway = std::hypot(x - beam.dfX - dfX, y - beam.dfY - dfY);
                m_listPixel[nFrame][y * g_nSize + x] += float(1000 * std::exp(-2 * dfAway * dfAway));
            }
        }
    }
    void write()
    {
        for (size_t n = 0; n < m_listPixel.size(); ++n) {
            CMrcWriter<float> writer;
            writer.open(m_data.m_listFrameFile[int(n)], g_nSize, g_nSize, 1);
            writer.addSection(m_listPixel[n].data());
            EXPECT_TRUE(writer.commit());
        }
    }
    static constexpr int g_nSize = 160;
    SeriesGeometry m_geometry;
    DataSet m_data;

private:
    QTemporaryDir m_dir;
    std::vector<std::vector<float>> m_listPixel;
};

/// The tilt at which a point of the crystal lies on the sphere, degrees, by halving; none from -60 to 60.
std::optional<double> crossing(const DoubleVector& point, double dfK)
{
    const auto off = [&](double dfTilt) {
        const double dfCos = std::cos(radians(dfTilt)), dfSin = std::sin(radians(dfTilt));
        const double dfY = dfCos * point[1] + dfSin * point[2], dfZ = dfCos * point[2] - dfSin * point[1];
        return std::hypot(point[0], dfY, dfZ - dfK) - dfK;
    };
    double dfLow = -60, dfHigh = 60;
    if (off(dfLow) * off(dfHigh) > 0) {
        return {};
    }
    for (int n = 0; n < 60; ++n) {
        const double dfMiddle = (dfLow + dfHigh) / 2;
        (off(dfLow) * off(dfMiddle) <= 0 ? dfHigh : dfLow) = dfMiddle;
    }
    return dfLow;
}

}  // namespace

TEST(ReciprocalSection, SpotsLieOnWholeIndicesAndAbsentOnesAreMissing)
{
    SimulationParameters p = smallCrystal();
    p.dfStretchAmplitude = 0;
    CSimulatedFrames frames(p);
    frames.write();
    const CStructureFactor crystal(*findCrystalStructure(p.strCrystal));
    SectionOptions options;
    options.dfMaxDStar = 0.85;
    const std::vector<ReciprocalSection> listSection = sections(
        frames, {plane("hk0"), plane("h0l"), plane("0kl"), plane("h1l"), plane("[1 1 0]")}, options);
    int nStrong = 0, nAbsent = 0;
    double dfStrong = 0, dfAbsent = 0, dfWorst = 0;
    for (const ReciprocalSection& section : listSection) {
        for (const std::array<int, 3>& an : latticeOfSection(section, 10000)) {
            const SpotOnSection spot = spotAt(section, an);
            const double dfSquare = std::norm(crystal.value(an[0], an[1], an[2]));
            // Spots within the halo of the beam have no even background and are left out.
            if (!spot.bSeen || std::hypot(an[0] / 3.78, an[1] / 3.78, an[2] / 9.51) < 0.2) {
                continue;
            }
            if (dfSquare > 50) {
                ++nStrong;
                dfStrong += spot.dfHeight;
                dfWorst = std::max(dfWorst, spot.dfOff);
            } else if (dfSquare < 1e-6) {
                ++nAbsent;
                dfAbsent = std::max(dfAbsent, spot.dfHeight);
            }
        }
    }
    EXPECT_GT(nStrong, 15);
    EXPECT_GT(nAbsent, 40);
    EXPECT_LT(dfWorst, 1) << "pixels";
    EXPECT_GT(dfStrong / nStrong, 50) << "counts";
    EXPECT_LT(dfAbsent, 0.03 * dfStrong / nStrong) << nStrong << " strong, " << nAbsent << " absent";
}

namespace {

/// The plane across the axis, of even frames from -30 to 30 degrees in steps of 3.
ReciprocalSection wedgeSection()
{
    CEvenFrames frames(21, -30, 3);
    frames.write();
    SectionOptions options;
    options.dfMaxDStar = 0.7;
    options.dfThickness = 0.02;
    CRunReport report;
    const auto made = makeSections(frames.m_data, frames.m_geometry, {plane("0kl")}, options, 2, report);
    EXPECT_TRUE(made.finished());
    return made.made.value_or(std::vector<ReciprocalSection>(1)).front();
}

struct WedgePixel {
    bool bInside;  ///< of what the tilts reach, by more than is shared with the neighbours
    float fValue;
};

std::vector<WedgePixel> pixelsOfWedge(const ReciprocalSection& section)
{
    // Perpendicular to the axis, a point at the distance d is on the sphere if its direction, rotated by the
    // tilt, is inclined by asin(d λ/2) to the plane of the frame, to either side.
    const double dfReach = radians(30 + 1.5);
    std::vector<WedgePixel> listPixel;
    for (int nRow = 0; nRow < section.nSide; ++nRow) {
        for (int nColumn = 0; nColumn < section.nSide; ++nColumn) {
            const double dfY = (nColumn - section.centre()) * section.dfStep;
            const double dfZ = (section.centre() - nRow) * section.dfStep;
            const double dfD = std::hypot(dfY, dfZ);
            if (dfD < 0.05 || dfD > 0.7) {
                continue;
            }
            const double dfLift = std::asin(dfD * 0.05 / 2);
            const double dfRight = std::fabs(std::remainder(std::atan2(dfZ, dfY) - dfLift, 2 * g_dfPi));
            const double dfLeft = std::fabs(
                std::remainder(std::atan2(dfZ, dfY) + dfLift - g_dfPi, 2 * g_dfPi));
            const double dfInside = (dfReach - std::min(dfRight, dfLeft)) * dfD / section.dfStep;
            if (std::fabs(dfInside) >= 2) {
                listPixel.push_back(
                    {dfInside > 0,
                     section.listValue[size_t(nRow) * size_t(section.nSide) + size_t(nColumn)]});
            }
        }
    }
    return listPixel;
}

}  // namespace

TEST(ReciprocalSection, TheMissingWedgeIsThatOfTheTilts)
{
    const ReciprocalSection section = wedgeSection();
    int nSeen = 0, nUnseen = 0, nWrong = 0;
    for (const WedgePixel& pixel : pixelsOfWedge(section)) {
        nWrong += std::isfinite(pixel.fValue) != pixel.bInside;
        (pixel.bInside ? nSeen : nUnseen) += 1;
    }
    EXPECT_EQ(nWrong, 0) << "of " << nSeen << " and " << nUnseen;
    EXPECT_GT(nSeen, 4000);
    EXPECT_GT(nUnseen, 4000);
    EXPECT_NEAR(seenShare(section), 63 / 180., 0.03);
}

TEST(ReciprocalSection, EqualCountsHaveThatMean)
{
    int nSeen = 0;
    for (const WedgePixel& pixel : pixelsOfWedge(wedgeSection())) {
        if (std::isfinite(pixel.fValue)) {
            EXPECT_NEAR(pixel.fValue, 7, 1e-3);  // whatever their weights
            ++nSeen;
        }
    }
    EXPECT_GT(nSeen, 4000);
}

namespace {

/// Frames in steps in which a spot moves by five pixels. The plane is oblique to the axis, so that a spot
/// moves along it, too. Each spot is on the frames before and after its flash, at its position there.
struct FlashingFrames : CEvenFrames {
    FlashingFrames() : CEvenFrames(21, -60, g_dfTiltStep)
    {
        for (int h = -6; h <= 6; h += 2) {
            for (int l = -8; l <= 8; l += 2) {
                addReflection(h, l);
            }
        }
        write();
    }
    void addReflection(int h, int l)
    {
        const double dfK = 1 / 0.05;
        const DoubleVector point = {0.05 * h, -0.06 * h, 0.07 * l};
        const std::optional<double> tilt = crossing(point, dfK);
        // Where it moves across the plane fast enough to have a place there.
        if (!tilt || std::fabs(point[1]) < 0.1 || std::fabs(point[2]) < 0.2 || dot(point, point) > 0.36) {
            return;
        }
        const double dfCos = std::cos(radians(*tilt)), dfSin = std::sin(radians(*tilt));
        const double dfX = point[0], dfY = dfCos * point[1] + dfSin * point[2];
        const double dfFlat = dfK / std::sqrt(dfK * dfK - dfX * dfX - dfY * dfY) / 0.01;
        const double dfAxisCos = std::cos(radians(30)), dfAxisSin = std::sin(radians(30));
        const double dfFrame = (*tilt + 60) / g_dfTiltStep;
        for (const double df : {std::floor(dfFrame), std::ceil(dfFrame)}) {
            addSpot(int(df), dfFlat * (dfAxisCos * dfX + dfAxisSin * dfY),
                    dfFlat * (dfAxisCos * dfY - dfAxisSin * dfX));
        }
        m_listIndex.push_back({h, -h, l});
        m_dfMostMove = std::max(m_dfMostMove, radians(g_dfTiltStep * std::fabs(std::remainder(dfFrame, 1))) *
                                                  std::fabs(point[1]) / 0.01);
    }
    static constexpr double g_dfTiltStep = 6;  ///< degrees
    std::vector<std::array<int, 3>> m_listIndex;
    double m_dfMostMove = 0;  ///< pixels, between the frame and the flash
};

}  // namespace

TEST(ReciprocalSection, SpotsComeToTheirPlacesFromBetweenTheFrames)
{
    const FlashingFrames frames;
    SectionOptions options;
    options.dfMaxDStar = 0.7;
    options.dfThickness = 0.008;  // passed within a part of a frame's turn
    CRunReport report;
    const auto made = makeSections(frames.m_data, frames.m_geometry, {plane("[1 1 0]")}, options, 2, report);
    ASSERT_TRUE(made.finished());
    EXPECT_GT(frames.m_listIndex.size(), 8U);
    EXPECT_GT(frames.m_dfMostMove, 1.2);
    int nSeen = 0;
    for (const std::array<int, 3>& an : frames.m_listIndex) {
        const SpotOnSection spot = spotAt(made.made->front(), an);
        nSeen += spot.bSeen;
        if (spot.bSeen) {
            EXPECT_LT(spot.dfOff, 0.2) << an[0] << " " << an[1] << " " << an[2];
            EXPECT_GT(spot.dfHeight, 50) << an[0] << " " << an[1] << " " << an[2];
        }
    }
    EXPECT_GT(nSeen, int(frames.m_listIndex.size()) / 2);
}

TEST(ReciprocalSection, AveragesHaveTheSymmetryAndFewerGaps)
{
    CSimulatedFrames frames(smallCrystal());
    frames.write();
    SectionOptions options;
    options.dfMaxDStar = 0.85;
    options.dfThickness = 0.02;
    const ReciprocalSection alone = sections(frames, {plane("h0l")}, options).front();
    options.strLaueClass = "4/mmm";
    const ReciprocalSection averaged = sections(frames, {plane("h0l")}, options).front();
    EXPECT_GT(seenShare(averaged), seenShare(alone) + 0.1);
    const int nLast = averaged.nSide - 1;
    const auto at = [&](int nColumn, int nRow) {
        return averaged.listValue[size_t(nRow) * size_t(averaged.nSide) + size_t(nColumn)];
    };
    int nBroken = 0;
    for (int nRow = 0; nRow <= nLast; ++nRow) {
        for (int nColumn = 0; nColumn <= nLast; ++nColumn) {
            const float f = at(nColumn, nRow);
            for (const float fOther : {at(nLast - nColumn, nRow), at(nColumn, nLast - nRow)}) {
                const bool bSame = std::isnan(f)
                                       ? std::isnan(fOther)
                                       : std::fabs(f - fOther) <= 1e-2f * std::max(std::fabs(f), 1.f);
                nBroken += !bSame;
            }
        }
    }
    // What touches the border of a gap by the last bits of a weight may be on one side alone.
    EXPECT_LT(nBroken, 1e-3 * double(averaged.listValue.size()));
    options.strLaueClass = "m-3m";
    CRecordingReport report;
    EXPECT_EQ(makeSections(frames.m_data, frames.m_geometry, {plane("h0l")}, options, 1, report).outcome.end,
              RunEnd::Refused);
    EXPECT_TRUE(report.reason().contains("m-3m"));
}

TEST(ReciprocalSection, TheSameForEveryNumberOfThreadsAndNoneOfAStoppedRun)
{
    SimulationParameters p = smallCrystal();
    p.nFrames = 12;
    CSimulatedFrames frames(p);
    frames.write();
    SectionOptions options;
    options.bWithoutRings = true;
    const std::vector<SectionPlane> listPlane = {plane("hk0"), plane("h0l")};
    const auto one = sections(frames, listPlane, options, 1);
    const auto three = sections(frames, listPlane, options, 3);
    ASSERT_EQ(one.size(), 2U);
    for (size_t n = 0; n < one.size(); ++n) {
        ASSERT_EQ(one[n].listValue.size(), three[n].listValue.size());
        EXPECT_EQ(std::memcmp(one[n].listValue.data(), three[n].listValue.data(),
                              one[n].listValue.size() * sizeof(float)),
                  0);
    }
    CRecordingReport report;
    report.m_nStopAfter = 3;
    EXPECT_EQ(makeSections(frames.m_data, frames.m_geometry, {plane("0kl")}, options, 2, report).outcome.end,
              RunEnd::Stopped);
    // A frame that cannot be read is left out and told; none at all is a failure.
    QFile(frames.m_data.m_listFrameFile[3]).remove();
    CRecordingReport told;
    const auto made = makeSections(frames.m_data, frames.m_geometry, {plane("0kl")}, options, 2, told);
    ASSERT_TRUE(made.finished());
    EXPECT_EQ(made.made->front().nFrames, 11);
}

}  // namespace tessera
