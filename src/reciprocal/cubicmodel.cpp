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
    std::vector<double> vecAngle;  // θ, φ, ψ
    bool bExchanged = false;
};

std::optional<CubicStart> findCubicStart(const DataSet& dataSet, int nSteps, double dfEdge,
                                         CRunReport& report)
{
    const std::optional<RightHandedCell> cell = rightHandedCell(dataSet, report);
    if (!cell) {
        return std::nullopt;
    }
    const ReciprocalBasis& basis = cell->basis;
    const double dfX = double(basis.a.x), dfY = double(basis.a.y), dfZ = double(basis.a.z);
    const double dfLength = std::sqrt(dfX * dfX + dfY * dfY + dfZ * dfZ);
    const double dfTheta = dfLength > 0 ? std::acos(std::clamp(dfZ / dfLength, -1.0, 1.0)) : 0;
    const double dfPhi = std::atan2(dfY, dfX);
    double dfPsi = 0, dfLeast = 0;
    for (int n = 0; n < nSteps; ++n) {
        const double dfTry = 2 * n * g_dfPi / nSteps;
        const ReciprocalBasis model = cubicBasis(dfTheta, dfPhi, dfTry, dfEdge);
        const double df = double(squaredLength(model.b - basis.b)) + double(squaredLength(model.c - basis.c));
        if (n == 0 || df < dfLeast) {
            dfLeast = df;
            dfPsi = dfTry;
        }
    }
    report.addMessage(QStringLiteral("Alpha:%1").arg(dfPsi));
    report.addMessage(QStringLiteral("Unit cell before refinement:"));
    addBasisLines(cubicBasis(dfTheta, dfPhi, dfPsi, dfEdge), report);
    report.addMessage(QStringLiteral("Initial values: %1 %2 %3").arg(dfTheta).arg(dfPhi).arg(dfPsi));
    return CubicStart{{dfTheta, dfPhi, dfPsi}, cell->bExchanged};
}

FnBasis cubicModel(double dfEdge)
{
    return [dfEdge](const double* p) { return cubicBasis(p[0], p[1], p[2], dfEdge); };
}

ReciprocalBasis addFit(const TiltFitResult& fit, const std::vector<double>& vecAngle, double dfEdge,
                       CRunReport& report)
{
    report.addMessage(QStringLiteral("Refinement returned value: %1").arg(fit.nInfo));
    addValues(QStringLiteral("Values after refinement:"), vecAngle, report);
    addValues(QStringLiteral("Errors:"), fit.vecStdErr, report);
    report.addMessage(QStringLiteral("Unit cell after refinement:"));
    const ReciprocalBasis basis = cubicBasis(vecAngle[0], vecAngle[1], vecAngle[2], dfEdge);
    addBasisLines(basis, report);
    return basis;
}

}  // namespace

ReciprocalBasis cubicBasis(double dfTheta, double dfPhi, double dfPsi, double dfEdge)
{
    const double dfSinT = std::sin(dfTheta), dfCosT = std::cos(dfTheta);
    const double dfSinP = std::sin(dfPhi), dfCosP = std::cos(dfPhi);
    const double aAxis[3] = {dfSinT * dfCosP, dfSinT * dfSinP, dfCosT};
    const double aB[3] = {dfCosT * dfCosP, dfCosT * dfSinP, -dfSinT};
    // b₀ is perpendicular to the axis, so that Rodrigues' formula becomes b₀·cos ψ + (axis × b₀)·sin ψ.
    const double dfCos = std::cos(dfPsi), dfSin = std::sin(dfPsi);
    const double aCross[3] = {aAxis[1] * aB[2] - aAxis[2] * aB[1], aAxis[2] * aB[0] - aAxis[0] * aB[2],
                              aAxis[0] * aB[1] - aAxis[1] * aB[0]};
    const Vec3D vecA = singleVector(aAxis[0] / dfEdge, aAxis[1] / dfEdge, aAxis[2] / dfEdge);
    const Vec3D vecB = singleVector((aB[0] * dfCos + aCross[0] * dfSin) / dfEdge,
                                    (aB[1] * dfCos + aCross[1] * dfSin) / dfEdge,
                                    (aB[2] * dfCos + aCross[2] * dfSin) / dfEdge);
    return {vecA, vecB, scaledDouble(cross(vecA, vecB), dfEdge)};
}

QList<Vec3D> cubicBasisFromAngles(double dfTheta, double dfPhi, double dfPsi, double dfEdge)
{
    return cubicBasis(dfTheta, dfPhi, dfPsi, dfEdge).toList();
}

std::optional<ReciprocalBasis> testFindCubicCell(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                                 CRunReport& report, double dfEdge)
{
    report.addMessage(QStringLiteral("\nRunning unit cell refinement for garnet..."), Severity::Milestone);
    std::optional<CubicStart> start = findCubicStart(dataSet, 1000, dfEdge, report);
    if (!start) {
        return std::nullopt;
    }
    QList<Peak3D> listWork = listPeak;
    if (start->bExchanged) {
        for (Peak3D& peak : listWork) {
            std::swap(peak.dfH, peak.dfK);
        }
    }
    const TiltFitResult fit = fitPoints(listWork, start->vecAngle, cubicModel(dfEdge));
    report.addMessage(QStringLiteral("Refinment result: %1, fev: %2").arg(fit.nInfo).arg(fit.nEvaluations));
    report.addMessage(QStringLiteral("covfac: %1").arg(fit.dfVariance));
    const ReciprocalBasis basis = addFit(fit, start->vecAngle, dfEdge, report);
    report.addMessage(QStringLiteral("Len: %1, %2, %3")
                          .arg(1 / double(length(basis.a)))
                          .arg(1 / double(length(basis.b)))
                          .arg(1 / double(length(basis.c))));
    report.addMessage(QStringLiteral("DotProduct: %1, %2, %3")
                          .arg(double(dot(basis.b, basis.a)))
                          .arg(double(dot(basis.c, basis.a)))
                          .arg(double(dot(basis.b, basis.c))));
    return basis;
}

std::optional<ReciprocalBasis> refineCubicUnitCell(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                                   CRunReport& report, const TiltRefinementOptions& options,
                                                   double dfEdge)
{
    report.addMessage(QStringLiteral("\nRunning cubic unit refinement..."), Severity::Milestone);
    std::optional<CubicStart> start = findCubicStart(dataSet, 10000, dfEdge, report);
    if (!start) {
        return std::nullopt;
    }
    const QList<Peak3D> listWork = reflectionsForTilts(listPeak, dataSet, 100.0, options.listExcluded,
                                                       start->bExchanged, report);
    const TiltFitResult fit = fitTilts(listWork, &Peak3D::dfTiltFit,
                                       {options.dfWavelength, dataSet.m_distortion.dfAxisOutOfPlane},
                                       start->vecAngle, cubicModel(dfEdge), options.dfFunctionError);
    return addFit(fit, start->vecAngle, dfEdge, report);
}

}  // namespace tessera
