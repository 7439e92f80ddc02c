#include "reciprocal/tiltrefinement.h"

#include "crystal/reflectionfilter.h"
#include "crystal/reflectionindices.h"
#include "reciprocal/mapping.h"
#include "reciprocal/tiltfit.h"

#include <QLatin1String>

#include <cmath>
#include <utility>

namespace tessera {

namespace {

constexpr double g_dfLeastDistance = 100.0;  // pixels from the axis

ReciprocalBasis basisOf(const double* p)
{
    const auto vector = [p](int n) { return Vec3D{float(p[n]), float(p[n + 1]), float(p[n + 2])}; };
    return {vector(0), vector(3), vector(6)};
}

std::vector<double> parametersOf(const ReciprocalBasis& basis)
{
    std::vector<double> vec;
    for (const Vec3D& v : basis.vectors()) {
        vec.insert(vec.end(), {double(v.x), double(v.y), double(v.z)});
    }
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

void addErrorTable(TiltRefinement& result, const DataSet& dataSet, const TiltGeometry& geometry,
                   CRunReport& report)
{
    const BeamCentres centres = beamCentres(dataSet);
    QString strTable = QString::asprintf("%4s %4s %4s %8s %4s %8s %8s %8s %8s %8s %8s %8s\n", "h", "k", "l",
                                         "Int", "FNo", "d-RA", "TiltO", "TiltC1", "TiltC2", "Delta1",
                                         "Delta2", "DD");
    for (const Peak3D& peak : result.listPeak) {
        const std::optional<double> dfBefore = calculatedTilt(peak, result.basisBefore, geometry);
        const std::optional<double> dfAfter = calculatedTilt(peak, result.basis, geometry);
        if (!dfBefore || !dfAfter) {
            continue;
        }
        const double dfDelta1 = std::fabs(peak.dfFrameTilt - *dfBefore),
                     dfDelta2 = std::fabs(peak.dfFrameTilt - *dfAfter);
        result.dfSquaresBefore += dfDelta1 * dfDelta1;
        result.dfSquaresAfter += dfDelta2 * dfDelta2;
        const float fDistance = calDistanceToRotationAxis(centres, dataSet.m_dfRotationAxis, peak.nFrame,
                                                          {peak.dfX2D, peak.dfY2D});
        strTable += QString::asprintf("%4d %4d %4d %8.1f %4d %8.1f %8.2f %8.2f %8.2f %8.2f %8.2f %8.2f\n",
                                      roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL),
                                      peak.dfIPoint, peak.nFrame + 1, double(fDistance), peak.dfFrameTilt,
                                      *dfBefore, *dfAfter, dfDelta1, dfDelta2, dfDelta1 - dfDelta2);
    }
    report.addMessage(strTable);
    report.addMessage(QStringLiteral("Sum of Err^2 of tilt before and after: %1, %2\n")
                          .arg(result.dfSquaresBefore)
                          .arg(result.dfSquaresAfter));
}

std::optional<TiltRefinement> refineBasis(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                          const Kind& kind, const TiltRefinementOptions& options,
                                          CRunReport& report)
{
    report.addMessage(kind.strTitle, Severity::Milestone);
    const std::optional<RightHandedCell> start = rightHandedCell(dataSet, report, kind.strHeadBefore);
    if (!start) {
        return std::nullopt;
    }
    TiltRefinement result;
    result.basisBefore = start->basis;
    result.bExchanged = start->bExchanged;
    std::vector<double> vecParam = parametersOf(result.basisBefore);
    addValues(QStringLiteral("Initial values:"), vecParam, report);
    result.listPeak = reflectionsForTilts(listPeak, dataSet, kind.dfLeastIntensity, options.listExcluded,
                                          result.bExchanged, report);
    report.addMessage(QStringLiteral("Before refinement:"));

    const TiltGeometry geometry = {options.dfWavelength, dataSet.m_distortion.dfAxisOutOfPlane};
    const TiltFitResult fit = fitTilts(result.listPeak, kind.pTilt, geometry, vecParam, basisOf,
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
    result.basis = basisOf(vecParam.data());
    report.addMessage(QStringLiteral("Unit cell after refinement:"));
    addBasisLines(result.basis, report);
    report.addMessage(QStringLiteral("After refinement:"));
    addErrorTable(result, dataSet, geometry, report);
    addRefinedCell(result.basis, options.strLatticeHost, report);
    return result;
}

}  // namespace

double wavelengthOfTilts(const DataSet& dataSet, CRunReport& report)
{
    const double dfWavelength = dataSet.m_dfWavelength;
    const double dfHalfDigit = 0.00005;
    if (!(dfWavelength > 0) || std::fabs(dfWavelength - g_dfTiltWavelength) <= dfHalfDigit) {
        return g_dfTiltWavelength;
    }
    report.addMessage(
        QStringLiteral("Tilts are calculated with the wavelength of the data set, %1 Å.").arg(dfWavelength));
    return dfWavelength;
}

void addBasisLines(const ReciprocalBasis& basis, CRunReport& report)
{
    const std::array<Vec3D, 3> aVector = basis.vectors();
    const char* const apszName[3] = {"a*", "b*", "c*"};
    for (int n = 0; n < 3; ++n) {
        report.addMessage(QStringLiteral("%1 %2 %3 %4")
                              .arg(QLatin1String(apszName[n]))
                              .arg(double(aVector[n].x), 10, 'f', 7)
                              .arg(double(aVector[n].y), 10, 'f', 7)
                              .arg(double(aVector[n].z), 10, 'f', 7));
    }
}

std::optional<RightHandedCell> rightHandedCell(const DataSet& dataSet, CRunReport& report,
                                               const QString& strHead)
{
    const std::optional<ReciprocalBasis> inForce = cellInForce(dataSet);
    if (!inForce) {
        report.addMessage(QStringLiteral("Unit cell is not ready."), Severity::Error);
        return std::nullopt;
    }
    RightHandedCell cell{*inForce};
    ReciprocalBasis& basis = cell.basis;
    if (dot(basis.c, cross(basis.a, basis.b)) < 0) {
        std::swap(basis.a, basis.b);
        cell.bExchanged = true;
        report.addMessage(QStringLiteral("Wrong handness in unit cell setting."), Severity::Error);
    }
    report.addMessage(
        QStringLiteral("Reciprocal cell volume: %1").arg(double(dot(basis.c, cross(basis.a, basis.b)))));
    if (!strHead.isEmpty()) {
        report.addMessage(strHead);
    }
    addBasisLines(basis, report);
    return cell;
}

void addRefinedCell(const ReciprocalBasis& basis, const QString& strLatticeHost, CRunReport& report)
{
    const QString strHtml = unitCellHtml(QStringLiteral("Refined unit cell"), basis, strLatticeHost);
    if (strHtml.isEmpty()) {
        report.addMessage(QStringLiteral("Warning: co-planar reciprocal basis vectors!"), Severity::Warning);
    } else {
        report.addHtml(strHtml);
    }
}

QList<Peak3D> reflectionsForTilts(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                  double dfLeastIntensity, const QList<HKLRef>& listExcluded, bool bExchanged,
                                  CRunReport& report)
{
    QList<Peak3D> listKept = withoutReflections(
        filterReflections(listPeak, g_dfLeastDistance, dfLeastIntensity, framePositionGeometry(dataSet),
                          report),
        listExcluded);
    if (bExchanged) {
        for (Peak3D& peak : listKept) {
            std::swap(peak.dfH, peak.dfK);
        }
    }
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
    geometry.distortion = dataSet.m_distortion;
    return geometry;
}

std::optional<TiltRefinement> refineBasisVectors(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                                 CRunReport& report, const TiltRefinementOptions& options)
{
    TiltRefinementOptions optionsAll = options;
    optionsAll.listExcluded.clear();  // only the refinement against the curves leaves reflections out
    return refineBasis(listPeak, dataSet,
                       {QStringLiteral("\nRunning basis vector refinement..."), QString(), 500.0, true,
                        &Peak3D::dfFrameTilt},
                       optionsAll, report);
}

std::optional<TiltRefinement> refineUnitCellUsingFrameNo(const QList<Peak3D>& listPeak,
                                                         const DataSet& dataSet, CRunReport& report,
                                                         const TiltRefinementOptions& options)
{
    return refineBasis(listPeak, dataSet,
                       {QStringLiteral("\nRunning unit cell refinement..."),
                        QStringLiteral("Unit cell before refinement:"), 100.0, false, &Peak3D::dfTiltFit},
                       options, report);
}

}  // namespace tessera
