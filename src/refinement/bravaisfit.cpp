#include "refinement/bravaisfit.h"

#include "refinement/geometryterms.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// A free cell absorbs model errors, which lowers its rms by about this much in real series.
const double g_dfMostGrowth = 1.02;

const std::vector<int> g_listStretching = {StretchingCos, StretchingSin};
const std::vector<int> g_listEllipse = {EllipseAlong, EllipseAcross};

/// Fits the numbers that the peaks determine; the others are fixed.
bool solveDetermined(const CGeometryResiduals& residuals, GeometryFit& fit)
{
    const Undetermined undetermined = undeterminedNumbers(geometryNormal(residuals, fit), fit.listFree);
    for (const int nNumber : undetermined.listNumber) {
        fit.listFree.erase(std::find(fit.listFree.begin(), fit.listFree.end(), nNumber));
    }
    return !undetermined.bCell && solveGeometry(residuals, fit);
}

/// The fit under a Bravais type, with stretching or ellipse, whichever fits better.
struct TypeFit {
    GeometryFit fit;
    bool bEllipse = false;
    double dfRms = 0;
};
std::optional<TypeFit> fitOfType(const GeometryWork& work, const GeometryRefinementOptions& options,
                                 const GeometryModel& free, const CellConstraint& constraint)
{
    const Eigen::Matrix3d matBasis = free.fit.form.reciprocal(free.fit.numbers);
    GeometryFit fit = free.fit;
    fit.form = CellForm(constraint, matBasis);
    fit.form.setStart(fit.numbers, matBasis);
    fit.listFree.erase(std::remove_if(fit.listFree.begin(), fit.listFree.end(), isOfCell),
                       fit.listFree.end());
    for (int n = 0; n < fit.form.freeNumbers(); ++n) {
        fit.listFree.push_back(n);
    }
    std::sort(fit.listFree.begin(), fit.listFree.end());
    const CGeometryResiduals residuals = work.residuals();
    std::optional<TypeFit> best;
    const auto isFixed = [&](int n) {
        return std::find(options.listFixed.begin(), options.listFixed.end(), n) != options.listFixed.end();
    };
    for (const bool bEllipse : {false, true}) {
        const std::vector<int>& listMore = bEllipse ? g_listEllipse : g_listStretching;
        if (std::any_of(listMore.begin(), listMore.end(), isFixed) || (bEllipse && !options.bEllipse)) {
            continue;
        }
        GeometryFit other = withNumbers(withoutNumbers(fit, bEllipse ? g_listStretching : g_listEllipse),
                                        listMore);
        if (!solveDetermined(residuals, other)) {
            continue;
        }
        const double dfRms = rmsInPlane(residuals, other);
        // If both fit equally well the stretching is kept, since every project file can store it.
        const double dfTie = 1 - 1.0 / (2 * std::max(1, residuals.chains()));
        if (!best || dfRms < dfTie * best->dfRms) {
            best = TypeFit{other, bEllipse, dfRms};
        }
    }
    if (!best && solveDetermined(residuals, fit)) {
        best = TypeFit{fit, free.bEllipse, rmsInPlane(residuals, fit)};
    }
    return best;
}

}  // namespace

GeometryModel geometryModel(const GeometryWork& work, const GeometryFit& fit, bool bEllipse)
{
    GeometryModel model;
    model.fit = fit;
    model.bEllipse = bEllipse;
    model.geometry = work.geometryOf(fit);
    const CGeometryResiduals residuals = work.residuals();
    model.dfRms = rmsInPlane(residuals, fit);
    const HalvesRms halves = rmsOfHalves(work, fit);
    model.dfRmsSeen = halves.dfSeen;
    model.dfRmsUnseen = halves.dfUnseen;
    const Eigen::MatrixXd matCovariance = geometryCovariance(geometryNormal(residuals, fit));
    for (size_t n = 0; n < fit.listFree.size(); ++n) {
        const double dfVariance = matCovariance(Eigen::Index(n), Eigen::Index(n));
        model.errors[size_t(fit.listFree[n])] = dfVariance > 0 ? std::sqrt(dfVariance) : 0;
    }
    Eigen::MatrixXd matDerivative;
    model.cell = fit.form.cell(fit.numbers, &matDerivative);
    const Eigen::Index nCell = matDerivative.cols();  // the numbers of the cell are the first free ones
    const Eigen::MatrixXd matCell = matDerivative * matCovariance.topLeftCorner(nCell, nCell) *
                                    matDerivative.transpose();
    std::array<double, 6> aError;
    for (int n = 0; n < 6; ++n) {
        aError[n] = std::sqrt(std::max(0.0, matCell(n, n)));
    }
    model.cellErrors = {aError[0], aError[1], aError[2], aError[3], aError[4], aError[5]};
    return model;
}

std::optional<GeometryModel> bravaisModel(const GeometryWork& work, const GeometryRefinementOptions& options,
                                          const GeometryModel& free, CRunReport& report)
{
    for (const CellConstraint& constraint : options.listConstraint) {
        if (constraint.system == LatticeSystem::Triclinic || !report.goOn()) {
            continue;
        }
        const std::optional<TypeFit> found = fitOfType(work, options, free, constraint);
        const bool bGood = found && found->dfRms <= g_dfMostGrowth * free.dfRms;
        report.addMessage(QStringLiteral("Geometry under %1: rms %2 px, of the free cell %3 px; %4.")
                              .arg(constraint.strSymbol,
                                   found ? QString::number(found->dfRms, 'f', 3) : QStringLiteral("none"))
                              .arg(free.dfRms, 0, 'f', 3)
                              .arg(QLatin1String(bGood ? "taken" : "left out")));
        if (bGood) {
            return geometryModel(work, found->fit, found->bEllipse);
        }
    }
    return std::nullopt;
}

}  // namespace tessera
