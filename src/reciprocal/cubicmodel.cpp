#include "reciprocal/cubicmodel.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessera {

namespace {

Vec3D singleVector(double dfX, double dfY, double dfZ)
{
    return {float(dfX), float(dfY), float(dfZ)};
}

// The start of a fit: the angles of the model that comes closest to the cell in force.
struct CubicStart {
    std::vector<double> vecAngle;  // θ, φ, ψ; empty without a cell
    bool bExchanged = false;
};

CubicStart findCubicStart(const DataSet& dataSet, int nSteps, double dfEdge, CRunReport& report)
{
    CubicStart start;
    const QList<Vec3D> listCell = rightHandedCell(dataSet, report, QString(), &start.bExchanged);
    if (listCell.isEmpty())
        return start;
    const double dfX = double(listCell[0].x), dfY = double(listCell[0].y), dfZ = double(listCell[0].z);
    const double dfLength = std::sqrt(dfX * dfX + dfY * dfY + dfZ * dfZ);
    const double dfTheta = dfLength > 0 ? std::acos(std::clamp(dfZ / dfLength, -1.0, 1.0)) : 0;
    const double dfPhi = std::atan2(dfY, dfX);
    double dfPsi = 0, dfLeast = 0;
    for (int n = 0; n < nSteps; ++n) {
        const double dfTry = 2 * n * g_dfPi / nSteps;
        const QList<Vec3D> listModel = cubicBasisFromAngles(dfTheta, dfPhi, dfTry, dfEdge);
        const double df = double(squaredLength(listModel[1] - listCell[1])) +
                          double(squaredLength(listModel[2] - listCell[2]));
        if (n == 0 || df < dfLeast) {
            dfLeast = df;
            dfPsi = dfTry;
        }
    }
    report.addMessage(QStringLiteral("Alpha:%1").arg(dfPsi));
    report.addMessage(QStringLiteral("Unit cell before refinement:"));
    addBasisLines(cubicBasisFromAngles(dfTheta, dfPhi, dfPsi, dfEdge), report);
    report.addMessage(QStringLiteral("Initial values: %1 %2 %3").arg(dfTheta).arg(dfPhi).arg(dfPsi));
    start.vecAngle = {dfTheta, dfPhi, dfPsi};
    return start;
}

FnBasis cubicBasis(double dfEdge)
{
    return [dfEdge](const double* p) { return cubicBasisFromAngles(p[0], p[1], p[2], dfEdge); };
}

QList<Vec3D> addFit(const TiltFitResult& fit, const std::vector<double>& vecAngle, double dfEdge,
                    CRunReport& report)
{
    report.addMessage(QStringLiteral("Refinement returned value: %1").arg(fit.nInfo));
    addValues(QStringLiteral("Values after refinement:"), vecAngle, report);
    addValues(QStringLiteral("Errors:"), fit.vecStdErr, report);
    report.addMessage(QStringLiteral("Unit cell after refinement:"));
    const QList<Vec3D> listCell = cubicBasisFromAngles(vecAngle[0], vecAngle[1], vecAngle[2], dfEdge);
    addBasisLines(listCell, report);
    return listCell;
}

}  // namespace

QList<Vec3D> cubicBasisFromAngles(double dfTheta, double dfPhi, double dfPsi, double dfEdge)
{
    const double dfSinT = std::sin(dfTheta), dfCosT = std::cos(dfTheta);
    const double dfSinP = std::sin(dfPhi), dfCosP = std::cos(dfPhi);
    const double aAxis[3] = {dfSinT * dfCosP, dfSinT * dfSinP, dfCosT};
    const double aB[3] = {dfCosT * dfCosP, dfCosT * dfSinP, -dfSinT};
    // b₀ is perpendicular to the axis, so of Rodrigues' formula b₀·cos ψ + (axis × b₀)·sin ψ remains.
    const double dfCos = std::cos(dfPsi), dfSin = std::sin(dfPsi);
    const double aCross[3] = {aAxis[1] * aB[2] - aAxis[2] * aB[1], aAxis[2] * aB[0] - aAxis[0] * aB[2],
                              aAxis[0] * aB[1] - aAxis[1] * aB[0]};
    const Vec3D vecA = singleVector(aAxis[0] / dfEdge, aAxis[1] / dfEdge, aAxis[2] / dfEdge);
    const Vec3D vecB = singleVector((aB[0] * dfCos + aCross[0] * dfSin) / dfEdge,
                                    (aB[1] * dfCos + aCross[1] * dfSin) / dfEdge,
                                    (aB[2] * dfCos + aCross[2] * dfSin) / dfEdge);
    return {vecA, vecB, scaledDouble(cross(vecA, vecB), dfEdge)};
}

QList<Vec3D> testFindCubicCell(const QList<Peak3D>& listPeak, const DataSet& dataSet, CRunReport& report,
                               double dfEdge)
{
    report.addMessage(QStringLiteral("\nRunning unit cell refinement for garnet..."), Severity::Milestone);
    CubicStart start = findCubicStart(dataSet, 1000, dfEdge, report);
    if (start.vecAngle.empty())
        return {};
    QList<Peak3D> listWork = listPeak;
    if (start.bExchanged)
        for (Peak3D& peak : listWork)
            std::swap(peak.dfH, peak.dfK);
    const TiltFitResult fit = fitPoints(listWork, start.vecAngle, cubicBasis(dfEdge));
    report.addMessage(QStringLiteral("Refinment result: %1, fev: %2").arg(fit.nInfo).arg(fit.nEvaluations));
    report.addMessage(QStringLiteral("covfac: %1").arg(fit.dfVariance));
    const QList<Vec3D> listCell = addFit(fit, start.vecAngle, dfEdge, report);
    report.addMessage(QStringLiteral("Len: %1, %2, %3")
                          .arg(1 / double(length(listCell[0])))
                          .arg(1 / double(length(listCell[1])))
                          .arg(1 / double(length(listCell[2]))));
    report.addMessage(QStringLiteral("DotProduct: %1, %2, %3")
                          .arg(double(dot(listCell[1], listCell[0])))
                          .arg(double(dot(listCell[2], listCell[0])))
                          .arg(double(dot(listCell[1], listCell[2]))));
    return listCell;
}

QList<Vec3D> refineCubicUnitCell(const QList<Peak3D>& listPeak, const DataSet& dataSet, CRunReport& report,
                                 const TiltRefinementOptions& options, double dfEdge)
{
    report.addMessage(QStringLiteral("\nRunning cubic unit refinement..."), Severity::Milestone);
    CubicStart start = findCubicStart(dataSet, 10000, dfEdge, report);
    if (start.vecAngle.empty())
        return {};
    const QList<Peak3D> listWork = reflectionsForTilts(listPeak, dataSet, 100.0, options.listExcluded,
                                                       start.bExchanged, report);
    const TiltFitResult fit = fitTilts(listWork, &Peak3D::dfTiltFit, options.dfWavelength, start.vecAngle,
                                       cubicBasis(dfEdge), options.dfFunctionError);
    return addFit(fit, start.vecAngle, dfEdge, report);
}

}  // namespace tessera
