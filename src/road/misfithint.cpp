#include "road/misfithint.h"

#include "crystal/cellarithmetic.h"
#include "lattice/axiscurve.h"
#include "lattice/beamsearch.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/latticehunting.h"
#include "reciprocal/latticepoints.h"
#include "reciprocal/mapping.h"
#include "reciprocal/rotationaxissearch.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr std::size_t g_nPeaks = 2000;  // peaks used in a lattice search; more give the same result
// By chance alone, sharpness and share vary by a few hundredths from trial to trial.
constexpr double g_dfClearly = 0.15;
constexpr double g_dfSameAxis = 1;        // degrees; with an axis this close most peaks are on the lattice
constexpr double g_dfCurvatureOff = 0.5;  // relative; errors of tilts and axis cause only some hundredths
constexpr double g_dfFlatter = 0.1;       // of the wavelength, as for a wrong unit
constexpr double g_dfBeamOff = 1;         // pixels

QString percent(double dfShare)
{
    return QStringLiteral("%1%").arg(100 * dfShare, 0, 'f', 0);
}

QString figure(double dfValue)
{
    return QStringLiteral("%1").arg(dfValue, 0, 'f', 2);
}

/// The peaks of a series with the geometry that is being tried.
class CMisfit {
public:
    explicit CMisfit(RoadState& state)
        : m_state(state),
          m_geometry{state.dataSet.m_dfPixelSize, state.dataSet.m_dfWavelength},
          m_vecPeak(usablePeaks(flatPeaksOf(state.dataSet, state.mapping), m_geometry)),
          m_dfAzimuth(state.dataSet.m_dfRotationAxis)
    {
        const std::optional<ReciprocalBasis> basis = cellInForce(state.dataSet);
        if (basis && isFinite(*basis)) {
            m_basis = latticeBasisOf(*basis);
            m_dfShare = shareOf(*m_basis, somePeaks());
        }
    }

    MisfitHints find()
    {
        const bool bFound = hintAtAxis() || hintAtCurvature() || hintAtBeam() || hintAtEdges();
        if (bFound) {
            m_hints.listTried.clear();
        }
        return m_hints;
    }

private:
    std::vector<FlatPeak> somePeaks() const { return thinnedPeaks(m_vecPeak, g_nPeaks); }

    LatticePoints pointsOf(const std::vector<FlatPeak>& vecPeak) const
    {
        return pointsForAxis(vecPeak, m_geometry, m_dfAzimuth);
    }

    double shareOf(const LatticeBasis& basis, const std::vector<FlatPeak>& vecPeak) const
    {
        return LatticeCandidate{basis, fitOfLattice(basis, pointsOf(vecPeak))}.honestShare();
    }

    QString shareFigures(double dfShare) const
    {
        return QStringLiteral("beyond chance %1 of the peaks fit a lattice then, now %2")
            .arg(percent(std::max(0.0, dfShare)), percent(std::max(0.0, m_dfShare)));
    }

    bool goOn() const { return m_state.report.goOn(); }

    bool hint(const QString& strText)
    {
        m_hints.listHint.append(strText);
        return true;
    }

    bool tried(const QString& strText)
    {
        m_hints.listTried.append(strText);
        return false;
    }

    bool hintAtAxis();
    bool hintAtAzimuth(const AxisFound& found);
    bool hintAtCurvature();
    bool hintAtBeam();
    bool hintAtEdges();
    double longestEdge() const;

    RoadState& m_state;
    MisfitHints m_hints;
    FlatGeometry m_geometry;
    std::vector<FlatPeak> m_vecPeak;
    double m_dfAzimuth;
    std::optional<LatticeBasis> m_basis;
    double m_dfShare = 0;  ///< share of the cell in force beyond chance
};

bool CMisfit::hintAtAxis()
{
    const std::optional<AxisSearch> search = searchAxis(m_vecPeak, m_geometry, m_state.options.jobs(),
                                                        [&] { return goOn(); });
    if (!search) {
        return false;
    }
    if (search->found) {
        return hintAtAzimuth(*search->found);
    }
    // Without a result, the peaks or the tilts themselves are wrong.
    if (search->vecCurve.empty()) {
        return hint(QStringLiteral("no geometry can be told from these peaks: %1").arg(search->strReason));
    }
    return tried(QStringLiteral("the azimuth of the rotation axis (%1)").arg(search->strReason));
}

bool CMisfit::hintAtAzimuth(const AxisFound& found)
{
    const double dfNow = axisSharpness(m_vecPeak, m_geometry, m_dfAzimuth);
    const QString strFigures =
        QStringLiteral("lattice sharpness %1 against %2").arg(figure(found.best.dfSharpness), figure(dfNow));
    const double dfApart = azimuthsApart(found.best.dfAzimuth, m_dfAzimuth);
    const double dfLinesApart = azimuthsApart(2 * found.best.dfAzimuth, 2 * m_dfAzimuth) / 2;
    if (dfLinesApart > g_dfSameAxis && found.best.dfSharpness > dfNow + g_dfClearly) {
        return hint(QStringLiteral("the rotation axis is more likely at %1° than at %2° (%3; %4 of the peaks "
                                   "fit a lattice then%5)")
                        .arg(found.best.dfAzimuth, 0, 'f', 1)
                        .arg(m_dfAzimuth, 0, 'f', 1)
                        .arg(strFigures, percent(found.dfShareFitting),
                             QLatin1String(found.bSure ? "" : "; the sense is doubtful")));
    }
    if (dfApart > 90 && dfLinesApart <= g_dfSameAxis && found.bSure) {
        return hint(QStringLiteral("the series was more likely turned the other way: the rotation axis at "
                                   "%1°, or tilts of the other sign (%2; %3)")
                        .arg(found.best.dfAzimuth, 0, 'f', 1)
                        .arg(strFigures, found.strSense));
    }
    const bool bDecided = found.dfCurvature > 3 * found.dfCurvatureError;
    if (bDecided && std::abs(found.dfCurvature - 1) > g_dfCurvatureOff) {
        return hint(
            QStringLiteral("the product of wavelength and pixel size is more likely %1 of what was given, "
                           "or the tilts are %2 times as large: %3")
                .arg(figure(found.dfCurvature), figure(1 / found.dfCurvature), found.strSense));
    }
    return tried(QStringLiteral("the azimuth of the rotation axis (%1 at %2°)")
                     .arg(strFigures)
                     .arg(found.best.dfAzimuth, 0, 'f', 1));
}

/// If the sphere is curved far too much, the lattice is blurred at every azimuth, but not with a flat sphere.
bool CMisfit::hintAtCurvature()
{
    const FlatGeometry flat = {m_geometry.dfPixelSize, g_dfFlatter * m_geometry.dfWavelength};
    const double dfNow = axisSharpness(m_vecPeak, m_geometry, m_dfAzimuth);
    const double dfFlat = axisSharpness(m_vecPeak, flat, m_dfAzimuth);
    const QString strFigures =
        QStringLiteral("lattice sharpness %1 against %2").arg(figure(dfFlat), figure(dfNow));
    if (dfFlat > dfNow + g_dfClearly) {
        return hint(QStringLiteral("wavelength or pixel size are more likely some ten times smaller, as the "
                                   "peaks lie on a flatter sphere (%1)")
                        .arg(strFigures));
    }
    return tried(
        QStringLiteral("a flatter sphere, as of a smaller wavelength or pixel size (%1)").arg(strFigures));
}

bool CMisfit::hintAtBeam()
{
    // Difference vectors give the right cell even with a wrong beam.
    std::vector<LatticeBasis> vecBasis;
    if (m_basis) {
        vecBasis.push_back(*m_basis);
    }
    DataSet scratch;
    CRunReport silent;
    CellHuntingParameters range = m_state.options.cell;
    range.m_dfCellRangeMax = longestEdge();
    runUnitCellHunting(scratch, m_state.dataSet.m_listPeakMerged, range, silent, m_state.options.jobs());
    const std::optional<ReciprocalBasis> found = cellInForce(scratch);
    if (found && isFinite(*found) && latticeBasisOf(*found).allFinite()) {
        vecBasis.push_back(latticeBasisOf(*found));
    }
    std::optional<BeamMove> best;
    double dfBest = 0;
    for (const LatticeBasis& basis : vecBasis) {
        const std::optional<BeamMove> move = searchBeam(thinnedPeaks(m_vecPeak, g_nPeaks / 2), m_geometry,
                                                        m_dfAzimuth, basis);
        if (!move || !goOn()) {
            continue;
        }
        std::vector<FlatPeak> vecMoved = somePeaks();
        for (FlatPeak& peak : vecMoved) {
            peak.dfX -= move->dfX;
            peak.dfY -= move->dfY;
        }
        const double dfShare = shareOf(refinedBasis(basis, pointsOf(vecMoved), g_dfLatticeTolerance),
                                       vecMoved);
        if (!best || dfShare > dfBest) {
            best = move;
            dfBest = dfShare;
        }
    }
    if (!best) {
        return false;
    }
    const QString strFigures = shareFigures(dfBest);
    if (std::hypot(best->dfX, best->dfY) > g_dfBeamOff && dfBest > m_dfShare + g_dfClearly) {
        return hint(QStringLiteral("the direct beam is more likely at (%1, %2), moved by (%3, %4) "
                                   "pixels (%5)")
                        .arg(m_state.dataSet.m_dfCenterX + best->dfX, 0, 'f', 1)
                        .arg(m_state.dataSet.m_dfCenterY + best->dfY, 0, 'f', 1)
                        .arg(best->dfX, 0, 'f', 1)
                        .arg(best->dfY, 0, 'f', 1)
                        .arg(strFigures));
    }
    return tried(QStringLiteral("another direct beam (%1)").arg(strFigures));
}

/// The upper limit of the edges in the search.
double CMisfit::longestEdge() const
{
    CellHuntingParameters range = m_state.options.cell;
    range.m_bAutoRange = !m_state.options.bWindowDefaults;
    range = withRange(range, m_state.dataSet);
    return m_state.options.dfCellRangeMax.value_or(range.m_dfCellRangeMax);
}

bool CMisfit::hintAtEdges()
{
    const bool bGivenCell = !m_state.options.strCellFile.isEmpty();
    std::optional<LatticeCandidate> best;
    double dfFactor = 1;
    const LatticePoints listPoint = pointsOf(somePeaks());
    for (const double dfTry : {1.0, 2.0, 0.5}) {
        if (!goOn()) {
            return false;
        }
        DirectionSearchOptions options;
        options.dfLongest = dfTry * longestEdge();
        options.nJobs = m_state.options.jobs();
        const std::optional<DirectionLattice> found = searchDirections(listPoint, options,
                                                                       [&] { return goOn(); });
        if (!found) {
            continue;
        }
        const LatticeCandidate candidate = {found->matBasis, fitOfLattice(found->matBasis, listPoint)};
        if (!best || candidate.honestShare() > best->honestShare() + g_dfClearly) {
            best = candidate;
            dfFactor = dfTry;
        }
    }
    const double dfBest = best ? best->honestShare() : 0;
    const QString strFigures = shareFigures(dfBest);
    if (dfBest <= m_dfShare + g_dfClearly) {
        return tried(QStringLiteral("cells of shorter and longer edges (%1)").arg(strFigures));
    }
    if (bGivenCell) {
        return hint(
            QStringLiteral("the cell that was given is more likely not that of this crystal: a search "
                           "over directions finds one of %1 Å³ (%2)")
                .arg(best->volume(), 0, 'f', 0)
                .arg(strFigures));
    }
    return hint(QStringLiteral("a search over directions (--cell-method directions) with edges up to %1 Å "
                               "(--cell-max) finds a cell of %2 Å³ that suits the peaks better (%3)")
                    .arg(dfFactor * longestEdge(), 0, 'f', 0)
                    .arg(best->volume(), 0, 'f', 0)
                    .arg(strFigures));
}

}  // namespace

MisfitHints findMisfitHints(RoadState& state)
{
    return CMisfit(state).find();
}

void hintAtMisfit(RoadState& state)
{
    if (!state.results.listHint.isEmpty()) {
        return;
    }
    const MisfitHints hints = findMisfitHints(state);
    QStringList& listHint = state.results.listHint;
    listHint = hints.listHint;
    if (listHint.isEmpty() && !hints.listTried.isEmpty()) {
        listHint.append(QStringLiteral("nothing was found that suits the peaks clearly better; tried were %1")
                            .arg(hints.listTried.join(QStringLiteral("; "))));
    }
    for (const QString& strHint : listHint) {
        state.report.addMessage(QStringLiteral("Hint: %1.").arg(strHint), Severity::Warning);
    }
}

}  // namespace tessera
