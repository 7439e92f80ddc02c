#include "crystal/cellrefinement.h"

#include "crystal/uclscell.h"
#include "imaging/lmderfit.h"
#include "records/pi.h"

#include <QLatin1Char>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace tessera {

namespace {

constexpr double g_dfRadiansPerDegree = 0.017453292519943295;
constexpr double g_dfDegreesPerRadian = 180 / g_dfPi;
constexpr int g_nParam = 6;

// One reflection as the fit sees it: the row of the Jacobian and the measured d*.
struct FitRow {
    double dfTerm[g_nParam];  // h², k², l², h·k, k·l, h·l
    double dfDStar;

    double form(const double* pCoef) const
    {
        return pCoef[0] * dfTerm[0] + pCoef[1] * dfTerm[1] + pCoef[2] * dfTerm[2] + pCoef[3] * dfTerm[3] +
               pCoef[4] * dfTerm[4] + pCoef[5] * dfTerm[5];
    }
};

using FitData = std::vector<FitRow>;

FitData fitData(const QList<Peak3D>& listPeak)
{
    FitData data;
    data.reserve(listPeak.size());
    for (const Peak3D& peak : listPeak) {
        const double h = peak.dfH, k = peak.dfK, l = peak.dfL;
        data.push_back({{h * h, k * k, l * l, h * k, k * l, h * l}, peak.dfDStar});
    }
    return data;
}

int residuals(void* pData, int m, int n, const double* x, double* fvec, double* fjac, int ldfjac, int iflag)
{
    const FitData& data = *static_cast<const FitData*>(pData);
    if (iflag == 1) {
        for (int i = 0; i < m; ++i) {
            const FitRow& row = data[i];
            fvec[i] = row.form(x) - row.dfDStar * row.dfDStar;
        }
    } else if (iflag == 2) {
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < m; ++i) {
                fjac[std::ptrdiff_t(j) * ldfjac + i] = data[i].dfTerm[j];
            }
        }
    }
    return 0;
}

// Root mean square of the d* errors, and the sum of their sizes over the sum of d*.
void figuresOfMerit(const FitData& data, const double* pCoef, double* pFigure)
{
    double dfSquares = 0, dfSizes = 0, dfDStars = 0;
    for (const FitRow& row : data) {
        const double dfError = std::sqrt(row.form(pCoef)) - row.dfDStar;
        dfSquares += dfError * dfError;
        dfSizes += std::fabs(dfError);
        dfDStars += row.dfDStar;
    }
    pFigure[0] = std::sqrt(dfSquares / double(data.size()));
    pFigure[1] = dfSizes / dfDStars;
}

void startCoefficients(double a, double b, double c, double dfAlpha, double dfBeta, double dfGamma,
                       double* pCoef)
{
    const double dfCosA = std::cos(dfAlpha), dfCosB = std::cos(dfBeta), dfCosC = std::cos(dfGamma);
    const double dfSinA = std::sin(dfAlpha), dfSinB = std::sin(dfBeta), dfSinC = std::sin(dfGamma);
    const double dfV2 = a * a * b * b * c * c *
                        (1 - dfCosA * dfCosA - dfCosB * dfCosB - dfCosC * dfCosC +
                         2 * dfCosA * dfCosB * dfCosC);
    pCoef[0] = b * b * c * c * dfSinA * dfSinA / dfV2;
    pCoef[1] = a * a * c * c * dfSinB * dfSinB / dfV2;
    pCoef[2] = a * a * b * b * dfSinC * dfSinC / dfV2;
    pCoef[3] = 2 * a * b * c * c * (dfCosA * dfCosB - dfCosC) / dfV2;
    pCoef[4] = 2 * a * a * b * c * (dfCosB * dfCosC - dfCosA) / dfV2;
    pCoef[5] = 2 * a * b * b * c * (dfCosC * dfCosA - dfCosB) / dfV2;
}

CellParameters cellOf(const CUclsCell& cell)
{
    return {cell.calA(),
            cell.calB(),
            cell.calC(),
            cell.calAlpha() * g_dfDegreesPerRadian,
            cell.calBeta() * g_dfDegreesPerRadian,
            cell.calGamma() * g_dfDegreesPerRadian};
}

CellParameters standardErrorsOf(const CUclsCell& cell)
{
    return {std::sqrt(cell.varA()),
            std::sqrt(cell.varB()),
            std::sqrt(cell.varC()),
            std::sqrt(cell.varAlpha()) * g_dfDegreesPerRadian,
            std::sqrt(cell.varBeta()) * g_dfDegreesPerRadian,
            std::sqrt(cell.varGamma()) * g_dfDegreesPerRadian};
}

QString sixNumbers(const double* p)
{
    return QStringLiteral("%L1, %L2, %L3, %L4, %L5, %L6")
        .arg(p[0])
        .arg(p[1])
        .arg(p[2])
        .arg(p[3])
        .arg(p[4])
        .arg(p[5]);
}

QString sixNumbers(const CellParameters& cell)
{
    return sixNumbers(cell.numbers().data());
}

QString twoNumbers(const double* p)
{
    return QStringLiteral("%L1, %L2").arg(p[0]).arg(p[1]);
}

void tellResult(const CellRefinement& result, CRunReport& report)
{
    report.addMessage(QStringLiteral("A-F after UCLS refinement: ") + sixNumbers(result.dfCoefficient) +
                      QStringLiteral("; result = %L1").arg(result.nInfo));
    report.addMessage(QStringLiteral("A-F UCLS esd: ") + sixNumbers(result.dfCoefficientStdErr));
    report.addMessage(QStringLiteral("Unit cell after UCLS refinement: ") + sixNumbers(result.cell));
    report.addMessage(QStringLiteral("Unit cell UCLS e.s.d: ") + sixNumbers(result.cellStdErr));
    report.addMessage(QStringLiteral("RMS of the d* errors after fitting: ") + twoNumbers(result.dfRmsAfter));
}

// Names the coefficients that the reflections leave open.
void tellOpen(const CLmderFit& fit, CRunReport& report)
{
    QStringList listOpen;
    for (int i = 0; i < g_nParam; ++i) {
        if (fit.m_vecOpen[i]) {
            listOpen.append(QString(QLatin1Char(char('A' + i))));
        }
    }
    if (!listOpen.isEmpty()) {
        report.addMessage(
            QStringLiteral("Not determined by these reflections: %1. An e.s.d. of 0 has no meaning.")
                .arg(listOpen.join(QStringLiteral(", "))),
            Severity::Error);
    }
}

// A form that isn't positive definite has no direct cell, though two negative numbers may make a root
// that looks like a length. A fit of numbers that aren't finite found nothing.
bool isCell(const CellRefinement& result, const CUclsCell& cell, const std::vector<double>& vecResidual)
{
    const auto allFinite = [](const auto& numbers) {
        return std::all_of(numbers.begin(), numbers.end(), [](double df) { return std::isfinite(df); });
    };
    const double* p = result.dfCoefficient;
    const bool bDefinite = p[0] > 0 && 4 * p[0] * p[1] - p[3] * p[3] > 0 && cell.m_dfG > 0;
    return bDefinite && allFinite(result.cell.numbers()) && allFinite(vecResidual);
}

}  // namespace

std::optional<CellRefinement> unitCellRefinement(const QList<Peak3D>& listPeak,
                                                 const CellParameters& cellStart, CRunReport& report)
{
    CellRefinement result;
    double aCoef[g_nParam];
    startCoefficients(cellStart.a, cellStart.b, cellStart.c, cellStart.alpha * g_dfRadiansPerDegree,
                      cellStart.beta * g_dfRadiansPerDegree, cellStart.gamma * g_dfRadiansPerDegree, aCoef);
    report.addMessage(QStringLiteral("Unit cell refinement: %1 points.").arg(listPeak.size()));
    if (listPeak.size() < 6) {
        report.addMessage(QStringLiteral("Too few peaks for refinement."), Severity::Error);
        return std::nullopt;
    }

    FitData data = fitData(listPeak);
    figuresOfMerit(data, aCoef, result.dfRmsBefore);
    CUclsCell cell;
    cell.setCoefficients(aCoef[0], aCoef[1], aCoef[2], aCoef[3], aCoef[4], aCoef[5]);
    report.addMessage(QStringLiteral("Unit cell before UCLS refinement: ") + sixNumbers(cellOf(cell)));
    report.addMessage(QStringLiteral("A-F before UCLS refinement: ") + sixNumbers(aCoef));
    report.addMessage(QStringLiteral("RMS of the d* errors before fitting: ") +
                      twoNumbers(result.dfRmsBefore));

    CLmderFit fit(g_nParam);
    fit.SetParams(std::vector<double>(aCoef, aCoef + g_nParam));
    result.nInfo = fit.Run(residuals, listPeak.size(), &data);

    std::copy(fit.m_vecParam.begin(), fit.m_vecParam.end(), result.dfCoefficient);
    std::copy(fit.m_vecStdErr.begin(), fit.m_vecStdErr.end(), result.dfCoefficientStdErr);
    const double* p = result.dfCoefficient;
    cell.setCoefficients(p[0], p[1], p[2], p[3], p[4], p[5]);
    cell.setCovariance(fit.m_vecCovariance.data());
    result.cell = cellOf(cell);
    result.cellStdErr = standardErrorsOf(cell);
    figuresOfMerit(data, result.dfCoefficient, result.dfRmsAfter);

    tellResult(result, report);
    tellOpen(fit, report);
    if (!isCell(result, cell, fit.m_vecResidual)) {
        report.addMessage(QStringLiteral("The fit gives no unit cell; the cell stays as it was."),
                          Severity::Error);
        return std::nullopt;
    }
    return result;
}

bool unitCellRefinement(const QList<Peak3D>& listPeak, double& a, double& b, double& c, double& alpha,
                        double& beta, double& gamma, CRunReport& report)
{
    const std::optional<CellRefinement> result = unitCellRefinement(listPeak, {a, b, c, alpha, beta, gamma},
                                                                    report);
    if (!result) {
        return false;
    }
    a = result->cell.a;
    b = result->cell.b;
    c = result->cell.c;
    alpha = result->cell.alpha;
    beta = result->cell.beta;
    gamma = result->cell.gamma;
    return true;
}

}  // namespace tessera
