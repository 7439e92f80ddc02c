#include "reciprocal/tiltfit.h"

#include "crystal/ewald.h"
#include "crystal/reflectionindices.h"
#include "geometry/angles.h"
#include "imaging/lmdiffit.h"

#include <limits>

namespace tessera {

namespace {

constexpr double g_dfDegreesPerRadian = 180 / g_dfPi;

// What a fit hands to its residuals.
struct Context {
    const FnBasis& fnBasis;
    std::function<double(const Peak3D& peak, const ReciprocalBasis& basis)> fnResidual;
    const QList<Peak3D>& listPeak;
};

int residuals(void* pContext, int m, int, const double* pParam, double* pResidual, int nFlag)
{
    if (nFlag == 0) {
        return 0;
    }
    const Context& context = *static_cast<const Context*>(pContext);
    const ReciprocalBasis basis = context.fnBasis(pParam);
    for (int i = 0; i < m; ++i) {
        pResidual[i] = context.fnResidual(context.listPeak[i], basis);
    }
    return 0;
}

Vec3D pointOf(const Peak3D& peak, const ReciprocalBasis& basis)
{
    return basis.point(roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL));
}

TiltFitResult runFit(Context& context, std::vector<double>& vecParam, double dfFunctionError)
{
    TiltFitResult result;
    const int m = context.listPeak.size(), n = int(vecParam.size());
    CLmdifFit fit;
    fit.SetFunctionError(dfFunctionError);
    result.nInfo = fit.Run(residuals, m, vecParam, &context);
    result.nEvaluations = fit.Evaluations();
    result.vecStdErr = fit.StdErr();
    result.vecStdErr.resize(vecParam.size(), std::numeric_limits<double>::infinity());
    std::vector<double> vecResidual(static_cast<std::size_t>(m));
    residuals(&context, m, n, vecParam.data(), vecResidual.data(), 1);
    double dfSquares = 0;
    for (double df : vecResidual) {
        dfSquares += df * df;
    }
    result.dfVariance = m > n ? dfSquares / (m - n) : std::numeric_limits<double>::infinity();
    return result;
}

}  // namespace

std::optional<double> calculatedTilt(const Peak3D& peak, const ReciprocalBasis& basis,
                                     const TiltGeometry& geometry)
{
    double dfRadians = 0;
    if (!calEwaldTilt(geometry.dfWavelength, -pointOf(peak, basis), dfRadians, geometry.dfAxisOutOfPlane)) {
        return std::nullopt;
    }
    return dfRadians * g_dfDegreesPerRadian;
}

TiltFitResult fitTilts(const QList<Peak3D>& listPeak, double Peak3D::*pTilt, const TiltGeometry& geometry,
                       std::vector<double>& vecParam, const FnBasis& fnBasis, double dfFunctionError)
{
    Context context{fnBasis,
                    [=](const Peak3D& peak, const ReciprocalBasis& basis) {
                        const std::optional<double> dfTilt = calculatedTilt(peak, basis, geometry);
                        return dfTilt ? peak.*pTilt - *dfTilt : 0;
                    },
                    listPeak};
    return runFit(context, vecParam, dfFunctionError);
}

TiltFitResult fitPoints(const QList<Peak3D>& listPeak, std::vector<double>& vecParam, const FnBasis& fnBasis)
{
    Context context{fnBasis,
                    [](const Peak3D& peak, const ReciprocalBasis& basis) {
                        return double(length(pointOf(peak, basis) - peak.point()));
                    },
                    listPeak};
    return runFit(context, vecParam, g_dfTiltFunctionError);
}

QList<Peak3D> withoutReflections(const QList<Peak3D>& listPeak, const QList<HKLRef>& listExcluded)
{
    QList<Peak3D> listKept;
    for (const Peak3D& peak : listPeak) {
        if (!reflectionExistInList({roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL), 0},
                                   listExcluded)) {
            listKept.append(peak);
        }
    }
    return listKept;
}

void addValues(const QString& strHead, const std::vector<double>& vecValue, CRunReport& report)
{
    QString strLine = strHead;
    for (double df : vecValue) {
        strLine += QStringLiteral(" %1").arg(df, 10, 'f', 7);
    }
    report.addMessage(strLine);
}

}  // namespace tessera
