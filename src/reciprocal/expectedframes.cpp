#include "reciprocal/expectedframes.h"

#include "crystal/reflectionindices.h"
#include "geometry/angles.h"
#include "reciprocal/mapping.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

// Beam tilt series of each frame, and the place of the frame in it.
struct FrameInSeries {
    int nSeries;
    int nPlace;
};

std::vector<FrameInSeries> beamTiltSeries(const QList<int>& listBreak)
{
    std::vector<FrameInSeries> vecFrame;
    int nSeries = 0, nPlace = 0;
    for (int nBreak : listBreak) {
        if (nBreak == 1) {
            ++nSeries;
            nPlace = 0;
        }
        vecFrame.push_back({nSeries, nPlace++});
    }
    return vecFrame;
}

// A frame without a flag belongs to the first series.
FrameInSeries seriesOf(const std::vector<FrameInSeries>& vecFrame, int nFrame)
{
    if (nFrame < 0 || std::size_t(nFrame) >= vecFrame.size()) {
        return {0, std::max(nFrame, 0)};
    }
    return vecFrame[nFrame];
}

void fillSeriesMeans(QList<ExpectedFrame>& listRow, const std::vector<FrameInSeries>& vecFrame)
{
    std::vector<double> vecSum(vecFrame.size() + 1), vecCount(vecFrame.size() + 1);
    for (const ExpectedFrame& row : listRow) {
        const std::size_t nSeries = std::size_t(seriesOf(vecFrame, row.peak.nFrame).nSeries);
        vecSum[nSeries] += row.dfErrAfter;
        vecCount[nSeries] += 1;
    }
    for (ExpectedFrame& row : listRow) {
        const FrameInSeries frame = seriesOf(vecFrame, row.peak.nFrame);
        row.dfSeriesMean = vecSum[frame.nSeries] / vecCount[frame.nSeries];
        row.nPlaceInSeries = frame.nPlace;
    }
}

QString rowText(const ExpectedFrame& row, const DataSet& dataSet, const BeamCentres& centres, bool bExchanged)
{
    const Peak3D& peak = row.peak;
    const int h = roundIndex(peak.dfH), k = roundIndex(peak.dfK), l = roundIndex(peak.dfL);
    const QPointF pt(peak.dfX2D, peak.dfY2D), ptOffset = pt - frameCentre(centres, peak.nFrame);
    const bool bAbsent = dataSet.m_spaceGroup.isAbsent(bExchanged ? k : h, bExchanged ? h : k, l);
    return QString::asprintf(
        "%4d %4d %4d %2d %8.1f %4d %8.1f %8.2f %8.3f %8.3f %8.3f %8.3f %8.3f %8.3f %8.3f %8.3f %8.3f %8.1f "
        "%8d\n",
        h, k, l, bAbsent ? 0 : 1, peak.dfIPoint, peak.nFrame + 1,
        double(calDistanceToRotationAxis(centres, dataSet.m_dfRotationAxis, peak.nFrame, pt)),
        peak.dfFrameTilt, peak.dfTiltFit, row.dfTiltBefore, row.dfTiltAfter, row.dfErrBefore, row.dfErrAfter,
        std::fabs(row.dfErrBefore) - std::fabs(row.dfErrAfter), row.dfSeriesMean,
        row.dfErrAfter - row.dfSeriesMean, peak.dfDStar == 0 ? 0.0 : 1 / peak.dfDStar,
        screenAzimuth360(ptOffset.x(), ptOffset.y()), row.nPlaceInSeries);
}

}  // namespace

QList<ExpectedFrame> calExpectedFrameNo(const QList<Vec3D>& listUnitCellBefore,
                                        const QList<Vec3D>& listUnitCellAfter, const QList<Peak3D>& listPeak,
                                        const DataSet& dataSet, CRunReport& report,
                                        const TiltRefinementOptions& options, bool bExchanged)
{
    QList<ExpectedFrame> listRow;
    const std::optional<ReciprocalBasis> basisBefore = basisFromList(listUnitCellBefore);
    const std::optional<ReciprocalBasis> basisAfter = basisFromList(listUnitCellAfter);
    if (!basisBefore || !basisAfter) {
        report.addMessage(QStringLiteral("Unit cell error."), Severity::Error);
        return listRow;
    }
    const TiltGeometry geometry = {options.dfWavelength, dataSet.m_distortion.dfAxisOutOfPlane};
    double dfSquaresBefore = 0, dfSquaresAfter = 0;
    for (const Peak3D& peak : listPeak) {
        const std::optional<double> dfBefore = calculatedTilt(peak, *basisBefore, geometry);
        const std::optional<double> dfAfter = calculatedTilt(peak, *basisAfter, geometry);
        if (!dfBefore || !dfAfter) {
            continue;
        }
        ExpectedFrame row{peak, *dfBefore, *dfAfter, 0, 0, 0, 0};
        row.dfErrBefore = peak.dfTiltFit - row.dfTiltBefore;
        row.dfErrAfter = peak.dfTiltFit - row.dfTiltAfter;
        dfSquaresBefore += row.dfErrBefore * row.dfErrBefore;
        dfSquaresAfter += row.dfErrAfter * row.dfErrAfter;
        listRow.append(row);
    }
    fillSeriesMeans(listRow, beamTiltSeries(dataSet.m_listBeamTiltBreak));

    report.addMessage(QStringLiteral("After refinement:"));
    const BeamCentres centres = beamCentres(dataSet);
    QString strTable = QString::asprintf(
        "%4s %4s %4s %2s %8s %4s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %3s\n", "h", "k", "l", "A",
        "Int", "FNo", "d-RA", "TiltO", "TiltF", "TiltC1", "TiltC2", "Delta1", "Delta2", "DD", "Avg",
        "ErrDiff", "d-value", "Alpha", "BTFrame");
    for (const ExpectedFrame& row : listRow) {
        strTable += rowText(row, dataSet, centres, bExchanged);
    }
    report.addMessage(strTable);
    report.addMessage(QStringLiteral("Sum of Err^2 of tilt before and after refinement: %1, %2\n")
                          .arg(dfSquaresBefore)
                          .arg(dfSquaresAfter));
    const double dfRows = std::max(1, listRow.size());
    report.addMessage(QStringLiteral("Averaged error before and after refinement: %1, %2\n")
                          .arg(std::sqrt(dfSquaresBefore / dfRows))
                          .arg(std::sqrt(dfSquaresAfter / dfRows)));
    addRefinedCell(*basisAfter, options.strLatticeHost, report);
    return listRow;
}

}  // namespace tessera
