#include "reciprocal/tiltrefinement.h"

#include "crystal/reflectionfilter.h"
#include "crystal/reflectionindices.h"
#include "reciprocal/mapping.h"
#include "reciprocal/tiltfit.h"

#include <QLatin1Char>

#include <cmath>
#include <utility>

namespace tessera {

namespace {

constexpr double g_dfLeastDistance = 100.0;  // pixels from the axis

QList<Vec3D> cellOf(const double* p)
{
    QList<Vec3D> listCell;
    for (int n = 0; n < 9; n += 3)
        listCell.append({float(p[n]), float(p[n + 1]), float(p[n + 2])});
    return listCell;
}

std::vector<double> parametersOf(const QList<Vec3D>& listCell)
{
    std::vector<double> vec;
    for (const Vec3D& v : listCell)
        vec.insert(vec.end(), {double(v.x), double(v.y), double(v.z)});
    return vec;
}

// What differs between the two refinements of a free basis.
struct Kind {
    QString strTitle;
    QString strHeadBefore;  // before the lines of the basis; empty: none
    double dfLeastIntensity;
    bool bCountInResult;  // whether the line of the result tells the number of reflections
    double Peak3D::*pTilt;
};

void addErrorTable(TiltRefinement& result, const DataSet& dataSet, double dfWavelength, CRunReport& report)
{
    const BeamCentres centres = beamCentres(dataSet);
    QString strTable = QString::asprintf("%4s %4s %4s %8s %4s %8s %8s %8s %8s %8s %8s %8s\n", "h", "k", "l",
                                         "Int", "FNo", "d-RA", "TiltO", "TiltC1", "TiltC2", "Delta1",
                                         "Delta2", "DD");
    for (const Peak3D& peak : result.listPeak) {
        double dfBefore = 0, dfAfter = 0;
        if (!calculatedTilt(peak, result.listCellBefore, dfWavelength, dfBefore) ||
            !calculatedTilt(peak, result.listCell, dfWavelength, dfAfter))
            continue;
        const double dfDelta1 = std::fabs(peak.dfFrameTilt - dfBefore),
                     dfDelta2 = std::fabs(peak.dfFrameTilt - dfAfter);
        result.dfSquaresBefore += dfDelta1 * dfDelta1;
        result.dfSquaresAfter += dfDelta2 * dfDelta2;
        const float fDistance = calDistanceToRotationAxis(centres, dataSet.m_dfRotationAxis, peak.nFrame,
                                                          {peak.dfX2D, peak.dfY2D});
        strTable += QString::asprintf("%4d %4d %4d %8.1f %4d %8.1f %8.2f %8.2f %8.2f %8.2f %8.2f %8.2f\n",
                                      roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL),
                                      peak.dfIPoint, peak.nFrame + 1, double(fDistance), peak.dfFrameTilt,
                                      dfBefore, dfAfter, dfDelta1, dfDelta2, dfDelta1 - dfDelta2);
    }
    report.addMessage(strTable);
    report.addMessage(QStringLiteral("Sum of Err^2 of tilt before and after: %1, %2\n")
                          .arg(result.dfSquaresBefore)
                          .arg(result.dfSquaresAfter));
}

TiltRefinement refineBasis(const QList<Peak3D>& listPeak, const DataSet& dataSet, const Kind& kind,
                           const TiltRefinementOptions& options, CRunReport& report)
{
    TiltRefinement result;
    report.addMessage(kind.strTitle, Severity::Milestone);
    result.listCellBefore = rightHandedCell(dataSet, report, kind.strHeadBefore, &result.bExchanged);
    if (result.listCellBefore.isEmpty())
        return result;
    std::vector<double> vecParam = parametersOf(result.listCellBefore);
    addValues(QStringLiteral("Initial values:"), vecParam, report);
    result.listPeak = reflectionsForTilts(listPeak, dataSet, kind.dfLeastIntensity, options.listExcluded,
                                          result.bExchanged, report);
    report.addMessage(QStringLiteral("Before refinement:"));

    const TiltFitResult fit = fitTilts(result.listPeak, kind.pTilt, options.dfWavelength, vecParam, cellOf,
                                       options.dfFunctionError);
    result.nInfo = fit.nInfo;
    result.vecStdErr = fit.vecStdErr;
    report.addMessage(kind.bCountInResult
                          ? QStringLiteral("Refinement returned value: %1 using %2 reflections.")
                                .arg(result.nInfo)
                                .arg(result.listPeak.size())
                          : QStringLiteral("Refinement returned value: %1").arg(result.nInfo));
    addValues(QStringLiteral("Values after refinement:"), vecParam, report);
    addValues(QStringLiteral("Errors:"), result.vecStdErr, report);
    result.listCell = cellOf(vecParam.data());
    report.addMessage(QStringLiteral("Unit cell after refinement:"));
    addBasisLines(result.listCell, report);
    report.addMessage(QStringLiteral("After refinement:"));
    addErrorTable(result, dataSet, options.dfWavelength, report);
    addRefinedCell(result.listCell, options.strLatticeHost, report);
    result.bDone = true;
    return result;
}

}  // namespace

double wavelengthOfTilts(const DataSet& dataSet, CRunReport& report)
{
    const double dfWavelength = dataSet.m_dfWavelength;
    const double dfHalfDigit = 0.00005;
    if (!(dfWavelength > 0) || std::fabs(dfWavelength - g_dfTiltWavelength) <= dfHalfDigit)
        return g_dfTiltWavelength;
    report.addMessage(
        QStringLiteral("Tilts are calculated with the wavelength of the data set, %1 Å.").arg(dfWavelength));
    return dfWavelength;
}

void addBasisLines(const QList<Vec3D>& listCell, CRunReport& report)
{
    const char* const apszName[3] = {"a*", "b*", "c*"};
    for (int n = 0; n < 3; ++n)
        report.addMessage(QStringLiteral("%1 %2 %3 %4")
                              .arg(QLatin1String(apszName[n]))
                              .arg(double(listCell[n].x), 10, 'f', 7)
                              .arg(double(listCell[n].y), 10, 'f', 7)
                              .arg(double(listCell[n].z), 10, 'f', 7));
}

QList<Vec3D> rightHandedCell(const DataSet& dataSet, CRunReport& report, const QString& strHead,
                             bool* pbExchanged)
{
    if (pbExchanged)
        *pbExchanged = false;
    if (dataSet.m_listCell.size() < 3) {
        report.addMessage(QStringLiteral("Unit cell is not ready."), Severity::Error);
        return {};
    }
    QList<Vec3D> listCell = dataSet.m_listCell.mid(0, 3);
    if (dot(listCell[2], cross(listCell[0], listCell[1])) < 0) {
        listCell.swapItemsAt(0, 1);
        if (pbExchanged)
            *pbExchanged = true;
        report.addMessage(QStringLiteral("Wrong handness in unit cell setting."), Severity::Error);
    }
    report.addMessage(QStringLiteral("Reciprocal cell volume: %1")
                          .arg(double(dot(listCell[2], cross(listCell[0], listCell[1])))));
    if (!strHead.isEmpty())
        report.addMessage(strHead);
    addBasisLines(listCell, report);
    return listCell;
}

void addRefinedCell(const QList<Vec3D>& listCell, const QString& strLatticeHost, CRunReport& report)
{
    const QString strHtml = unitCellHtml(QStringLiteral("Refined unit cell"), listCell, strLatticeHost);
    if (strHtml.isEmpty())
        report.addMessage(QStringLiteral("Warning: co-planar reciprocal basis vectors!"), Severity::Warning);
    else
        report.addHtml(strHtml);
}

QList<Peak3D> reflectionsForTilts(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                  double dfLeastIntensity, const QList<HKLRef>& listExcluded, bool bExchanged,
                                  CRunReport& report)
{
    QList<Peak3D> listKept = withoutReflections(
        filterReflections(listPeak, g_dfLeastDistance, dfLeastIntensity, framePositionGeometry(dataSet),
                          report),
        listExcluded);
    if (bExchanged)
        for (Peak3D& peak : listKept)
            std::swap(peak.dfH, peak.dfK);
    return listKept;
}

FramePositionGeometry framePositionGeometry(const DataSet& dataSet)
{
    FramePositionGeometry geometry;
    geometry.listOverallTilt = dataSet.m_listOverallTilt;
    geometry.centres = beamCentres(dataSet);
    geometry.dfPixelSize = dataSet.m_dfPixelSize;
    geometry.dfRotationAxis = dataSet.m_dfRotationAxis;
    geometry.dfWavelength = dataSet.m_dfWavelength;
    return geometry;
}

TiltRefinement refineBasisVectors(const QList<Peak3D>& listPeak, const DataSet& dataSet, CRunReport& report,
                                  const TiltRefinementOptions& options)
{
    TiltRefinementOptions optionsAll = options;
    optionsAll.listExcluded.clear();  // only the other refinement leaves reflections out
    return refineBasis(listPeak, dataSet,
                       {QStringLiteral("\nRunning basis vector refinement..."), QString(), 500.0, true,
                        &Peak3D::dfFrameTilt},
                       optionsAll, report);
}

QList<Vec3D> refineUnitCellUsingFrameNo(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                        CRunReport& report, const TiltRefinementOptions& options,
                                        TiltRefinement* pResult)
{
    const TiltRefinement result = refineBasis(
        listPeak, dataSet,
        {QStringLiteral("\nRunning unit cell refinement..."), QStringLiteral("Unit cell before refinement:"),
         100.0, false, &Peak3D::dfTiltFit},
        options, report);
    if (pResult)
        *pResult = result;
    return result.listCell;
}

}  // namespace tessera
