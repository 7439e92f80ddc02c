#include "reciprocal/cellfromdifferences.h"

#include "crystal/cellarithmetic.h"
#include "crystal/crystalparacal.h"
#include "crystal/peakpairs.h"
#include "crystal/reflectionindices.h"
#include "geometry/angles.h"
#include "geometry/rotationgeometry.h"
#include "reciprocal/differencegroups.h"
#include "reciprocal/mapping.h"
#include "records/numbertext.h"
#include "records/timestamp.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace tessera {

namespace {

constexpr std::size_t g_nRowsPerMessage = 100000;

// The limits of a refined cell that counts as close to the reference cell.
constexpr double g_dfCloseLength = 0.5;  // Å
constexpr double g_dfCloseAngle = 5;     // degrees

bool isClose(const CellParameters& cell, const CellParameters& reference)
{
    const std::array<double, 6> adfCell = cell.numbers(), adfReference = reference.numbers();
    for (std::size_t n = 0; n < 6; ++n) {
        if (!(std::fabs(adfCell[n] - adfReference[n]) < (n < 3 ? g_dfCloseLength : g_dfCloseAngle))) {
            return false;
        }
    }
    return true;
}

// What a pair measures.
struct Difference {
    PeakPairPlace place;
    IndexKey key;
    double dfX, dfY;     // raw, pixels
    double dfStretched;  // length after stretching, pixels
    double dfDStar;      // Å⁻¹
    int nGroupSize = 0;
};

int differenceOf(double dfFirst, double dfSecond)
{
    const qint64 n = qint64(roundIndex(dfFirst)) - roundIndex(dfSecond);
    return int(std::clamp<qint64>(n, -INT_MAX, INT_MAX));
}

double quotient(double dfNumerator, double dfDenominator)
{
    return dfDenominator == 0 ? 0 : dfNumerator / dfDenominator;
}

class CRun {
public:
    CRun(const QVector<QList<Peak3D>>& vecPeak, const DataSet& dataSet,
         const RefinementParameters& parameters, CRunReport& report)
        : m_vecPeak(vecPeak),
          m_dataSet(dataSet),
          m_parameters(parameters),
          m_report(report),
          m_centres(beamCentres(dataSet)),
          m_correction(placeCorrection(dataSet, false))
    {}

    // Returns false when the run was stopped.
    bool measure()
    {
        const std::optional<std::vector<PeakPairPlace>> vecPlace = peakPairPlaces(
            m_vecPeak,
            {m_parameters.m_dfRefineDStarLow, m_parameters.m_dfRefineDStarHigh, m_dataSet.m_dfPixelSize},
            m_dataSet.m_spaceGroup, m_report);
        if (!vecPlace) {
            return false;
        }
        m_vecDifference.reserve(vecPlace->size());
        for (const PeakPairPlace& place : *vecPlace) {
            const Peak3D& a = first(place);
            const Peak3D& b = second(place);
            Difference d;
            d.place = place;
            d.key = {differenceOf(a.dfH, b.dfH), differenceOf(a.dfK, b.dfK), differenceOf(a.dfL, b.dfL)};
            d.dfX = a.dfX2D - b.dfX2D;
            d.dfY = a.dfY2D - b.dfY2D;
            QPointF pt(d.dfX, d.dfY);
            if (m_correction.hasTermsBeside()) {
                pt += displacement(a) - displacement(b);
            }
            pt = applyStretching(pt, m_dataSet.m_dfStretchAmplitude, m_dataSet.m_dfStretchAzimuth);
            d.dfStretched = std::sqrt(pt.x() * pt.x() + pt.y() * pt.y());
            d.dfDStar = d.dfStretched * m_dataSet.m_dfPixelSize;
            m_vecDifference.push_back(d);
        }
        return true;
    }

    void group(DifferenceVectorRefinement& result)
    {
        std::vector<IndexKey> vecKey;
        vecKey.reserve(m_vecDifference.size());
        for (const Difference& d : m_vecDifference) {
            vecKey.push_back(d.key);
        }
        CNumberText table;
        for (const std::vector<int>& vecGroup : groupsOfDifferences(vecKey)) {
            const double dfCount = double(vecGroup.size());
            double dfMean = 0;
            for (int n : vecGroup) {
                at(n).nGroupSize = int(vecGroup.size());
                dfMean += at(n).dfDStar;
            }
            dfMean /= dfCount;
            double dfSquares = 0;
            for (int n : vecGroup) {
                dfSquares += (at(n).dfDStar - dfMean) * (at(n).dfDStar - dfMean);
            }
            if (!(std::sqrt(dfSquares / dfCount) < 2 * m_dataSet.m_dfPixelSize)) {
                ++result.nGroupsRejected;
                result.nVectorsRejected += int(vecGroup.size());
                continue;
            }
            const IndexKey& key = at(vecGroup.front()).key;
            Peak3D record;
            record.setHKL(key[0], key[1], key[2]);
            record.dfDStar = dfMean;
            record.nFrame = 0;
            result.listDifference.append(record);
            if (m_parameters.m_bOutputPeakList) {
                if (result.listDifference.size() > 1) {
                    table.text("\n");
                }
                table.whole(result.listDifference.size(), 5);
                for (int nIndex : key) {
                    table.whole(nIndex, 5);
                }
                table.fixed(quotient(1, dfMean), 9, 6).fixed(dfMean, 8, 6);
            }
        }
        m_report.addMessage(
            QStringLiteral("%1 groups and %2 difference vectors rejected due to high std in d*.")
                .arg(result.nGroupsRejected)
                .arg(result.nVectorsRejected));
        m_report.addMessage(QStringLiteral("Total number of difference vectors for refinement: %1")
                                .arg(result.listDifference.size()));
        if (m_parameters.m_bOutputPeakList) {
            m_report.addMessage(table.take());
        }
    }

    // Returns false when the run was stopped.
    bool addPairTable(const CellParameters& cell)
    {
        m_cell = CCrystalParaCal(cell);
        setReference(cell);
        CNumberText table;
        for (std::size_t n = 0; n < m_vecDifference.size(); ++n) {
            if (m_parameters.m_bRefine2D) {
                addRefinedRow(table, int(n));
            } else {
                addRow(table, int(n));
            }
            if ((n + 1) % g_nRowsPerMessage == 0 || n + 1 == m_vecDifference.size()) {
                m_report.addMessage(table.take());
                if (!m_report.goOn()) {
                    return false;
                }
            }
        }
        return true;
    }

    qint64 pairs() const { return qint64(m_vecDifference.size()); }

private:
    Difference& at(int n) { return m_vecDifference[n]; }
    const Peak3D& first(const PeakPairPlace& place) const { return m_vecPeak[place.nList][place.nFirst]; }
    const Peak3D& second(const PeakPairPlace& place) const { return m_vecPeak[place.nList][place.nSecond]; }

    // By how much a peak moves when the distortions other than the stretching are undone.
    QPointF displacement(const Peak3D& peak) const
    {
        const QPointF pt = QPointF(peak.dfX2D, peak.dfY2D) - frameCentre(m_centres, peak.nFrame);
        return m_correction.undone(pt) - pt;
    }

    void setReference(const CellParameters& cell)
    {
        if (!m_parameters.m_referenceCell || !isClose(cell, *m_parameters.m_referenceCell)) {
            return;
        }
        m_bClose = true;
        m_cellReference = CCrystalParaCal(*m_parameters.m_referenceCell);
    }

    // The columns that all forms of a row begin with; returns the order of the difference indices.
    double addRowStart(CNumberText& table, int n)
    {
        const Difference& d = at(n);
        const Peak3D& peak = first(d.place);
        table.whole(n + 1, 6).whole(peak.nFrame + 1, 4);
        for (int nIndex : d.key) {
            table.whole(nIndex, 3);
        }
        table.fixed(d.dfDStar, 6, 6);
        addIndices(table, peak);
        table.fixed(peak.dfIPoint, 8, 1).fixed(peak.dfX2D, 6, 1).fixed(peak.dfY2D, 6, 1);
        const double h = d.key[0], k = d.key[1], l = d.key[2];
        return std::sqrt(h * h + k * k + l * l);
    }
    void addIndices(CNumberText& table, const Peak3D& peak)
    {
        table.whole(roundIndex(peak.dfH), 3).whole(roundIndex(peak.dfK), 3).whole(roundIndex(peak.dfL), 3);
    }
    void addLengths(CNumberText& table, const Difference& d, double dfOrder)
    {
        const double dfRaw = std::sqrt(d.dfX * d.dfX + d.dfY * d.dfY);
        table.fixed(dfRaw, 8, 1).fixed(screenAzimuth(d.dfX, d.dfY), 8, 3);
        table.fixed(quotient(dfRaw, dfOrder), 8, 3).fixed(quotient(d.dfStretched, dfOrder), 8, 3);
    }

    void addRow(CNumberText& table, int n)
    {
        const double dfOrder = addRowStart(table, n);
        const Difference& d = at(n);
        const Peak3D& peak = second(d.place);
        addIndices(table, peak);
        table.fixed(peak.dfIPoint, 8, 1).fixed(peak.dfX2D, 6, 1).fixed(peak.dfY2D, 6, 1);
        addLengths(table, d, dfOrder);
        const double dfCalculated = m_cell.calDStar(d.key[0], d.key[1], d.key[2]);
        table.fixed(dfCalculated, 8, 4)
            .fixed(quotient(100 * (dfCalculated - d.dfDStar), d.dfDStar), 8, 2)
            .text("%")
            .whole(d.nGroupSize, 4);
        if (m_bClose) {
            const double dfReference = m_cellReference.calDStar(d.key[0], d.key[1], d.key[2]);
            table.fixed(dfReference, 8, 4)
                .fixed(quotient(100 * (dfCalculated - dfReference), dfReference), 8, 2)
                .text("%");
        }
        table.text("\n");
    }

    // How far the new measurement moved the peak, and the standard errors of its position, which fX3D and
    // fY3D hold at this stage. Returns the error of both coordinates together.
    double addShiftAndErrors(CNumberText& table, const Peak3D& peak)
    {
        const double dfX = double(peak.fX3D), dfY = double(peak.fY3D);
        const double dfError = std::sqrt(dfX * dfX + dfY * dfY);
        table.fixed(peak.dfX2D - peak.dfX2DCorrected, 6, 3).fixed(peak.dfY2D - peak.dfY2DCorrected, 6, 3);
        table.fixed(dfX, 6, 3).fixed(dfY, 6, 3).fixed(dfError, 6, 3);
        return dfError;
    }

    void addRefinedRow(CNumberText& table, int n)
    {
        const double dfOrder = addRowStart(table, n);
        const Difference& d = at(n);
        const double dfFirst = addShiftAndErrors(table, first(d.place));
        const Peak3D& peak = second(d.place);
        addIndices(table, peak);
        table.fixed(peak.dfIPoint, 8, 1).fixed(peak.dfX2D, 8, 1).fixed(peak.dfY2D, 8, 1);
        const double dfSecond = addShiftAndErrors(table, peak);
        addLengths(table, d, dfOrder);
        const double dfCalculated = m_cell.calDStar(d.key[0], d.key[1], d.key[2]);
        table.fixed(std::sqrt(dfFirst * dfFirst + dfSecond * dfSecond), 6, 3)
            .fixed(dfCalculated, 8, 4)
            .fixed(quotient(100 * (dfCalculated - d.dfDStar), d.dfDStar), 8, 2)
            .text("%\n");
    }

    const QVector<QList<Peak3D>>& m_vecPeak;
    const DataSet& m_dataSet;
    const RefinementParameters& m_parameters;
    CRunReport& m_report;
    BeamCentres m_centres;
    CPlaceCorrection
        m_correction;  // without the stretching, which is undone by the direction of the difference
    std::vector<Difference> m_vecDifference;
    CCrystalParaCal m_cell;
    CCrystalParaCal m_cellReference;
    bool m_bClose = false;
};

}  // namespace

DifferenceVectorRefinement refineCellFromDifferenceVectors(const QVector<QList<Peak3D>>& vecPeak,
                                                           const DataSet& dataSet,
                                                           const RefinementParameters& parameters,
                                                           CRunReport& report,
                                                           const FnRefinePositions& fnRefinePositions)
{
    DifferenceVectorRefinement result;
    QVector<QList<Peak3D>> vecSelected = selectPeaksByIntensity(vecPeak, parameters.m_dfRefineIntensityLow,
                                                                parameters.m_dfRefineIntensityHigh);
    bool bStopped = false;
    if (parameters.m_bRefine2D && fnRefinePositions) {
        const int nLists = vecSelected.size();
        vecSelected = fnRefinePositions(vecSelected);
        bStopped = vecSelected.size() != nLists;
    }
    CRun run(vecSelected, dataSet, parameters, report);
    const auto sayStopped = [&report] {
        report.addMessage(QStringLiteral("%1>Unit cell refinement did not finish.").arg(currentTimeStamp()),
                          Severity::Error);
    };
    if (bStopped || !run.measure() || !report.goOn()) {
        sayStopped();
        return result;
    }
    result.nPairs = run.pairs();
    run.group(result);

    const std::optional<CellParameters> cellStart = cellParametersFromList(dataSet.m_listCell);
    if (!cellStart) {
        report.fail(QStringLiteral("Warning: co-planar reciprocal basis vectors!"));
        return result;
    }
    result.refinement = unitCellRefinement(result.listDifference, *cellStart, report);
    const CellParameters cell = result.refinement ? result.refinement->cell : *cellStart;
    if (parameters.m_bOutputPeakList && !run.addPairTable(cell)) {
        sayStopped();
    }
    return result;
}

DifferenceVectorRefinement runUnitCellRefinement(const DataSet& dataSet,
                                                 const RefinementParameters& parameters, CRunReport& report,
                                                 const FnRefinePositions& fnRefinePositions)
{
    if (dataSet.m_vecPeakIndexedOnFrame.isEmpty()) {
        report.fail(QStringLiteral("No indexed peaks are available. Do merging and indexing first."));
        return {};
    }
    return refineCellFromDifferenceVectors(dataSet.m_vecPeakIndexedOnFrame, dataSet, parameters, report,
                                           fnRefinePositions);
}

}  // namespace tessera
