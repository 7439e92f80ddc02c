#include "refinement/geometrysolver.h"

#include <ceres/ceres.h>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Computes all residuals once for each point that the solver evaluates; the blocks below copy their parts.
/// All blocks share one parameter block, the values of the free numbers. The solver writes each point that it
/// tries into it before it calls PrepareForEvaluation().
class CAllRows : public ceres::EvaluationCallback {
public:
    CAllRows(const CGeometryResiduals& residuals, const GeometryFit& fit)
        : m_residuals(residuals), m_form(fit.form), m_listFree(fit.listFree), m_numbers(fit.numbers)
    {
        for (const int nNumber : m_listFree) {
            m_listValue.push_back(m_numbers[nNumber]);
        }
    }
    double* values() { return m_listValue.data(); }  ///< the parameter block
    int count() const { return int(m_listValue.size()); }
    const Eigen::VectorXd& residual() const { return m_vecResidual; }
    const RowMatrix& jacobian() const { return m_matJacobian; }
    /// All numbers, the free ones with the values of the parameter block.
    GeometryNumbers numbers() const
    {
        GeometryNumbers numbers = m_numbers;
        for (size_t n = 0; n < m_listFree.size(); ++n) {
            numbers[size_t(m_listFree[n])] = m_listValue[n];
        }
        return numbers;
    }
    void PrepareForEvaluation(bool bJacobian, bool bNewPoint) override
    {
        // At a point that is not new the residuals are there, but perhaps not the derivatives.
        if (bNewPoint || bJacobian) {
            m_residuals.evaluate(numbers(), m_form, m_listFree, m_vecResidual,
                                 bJacobian ? &m_matJacobian : nullptr);
        }
    }

private:
    const CGeometryResiduals& m_residuals;
    const CellForm& m_form;
    const std::vector<int>& m_listFree;
    GeometryNumbers m_numbers;
    std::vector<double> m_listValue;
    Eigen::VectorXd m_vecResidual;
    RowMatrix m_matJacobian;
};

/// The rows of one spot or one chain, copied from those of CAllRows.
class CSomeRows : public ceres::CostFunction {
public:
    CSomeRows(const CAllRows& all, int nFirst, int nRows) : m_all(all), m_nFirst(nFirst)
    {
        set_num_residuals(nRows);
        mutable_parameter_block_sizes()->push_back(all.count());
    }
    bool Evaluate(double const* const*, double* pResidual, double** ppJacobian) const override
    {
        const Eigen::Index nRows = num_residuals();
        Eigen::Map<Eigen::VectorXd> vecResidual(pResidual, nRows);
        vecResidual = m_all.residual().segment(m_nFirst, nRows);
        if (ppJacobian && ppJacobian[0]) {
            Eigen::Map<RowMatrix>(ppJacobian[0], nRows, m_all.count()) = m_all.jacobian().middleRows(m_nFirst,
                                                                                                     nRows);
        }
        return vecResidual.allFinite();  // false: the solver takes the step back and tries a shorter one
    }

private:
    const CAllRows& m_all;
    int m_nFirst;
};

/// First and second derivatives of the loss 2·(√(1 + s) − 1) with respect to the squared distance s.
struct LossDerivatives {
    double dfFirst;
    double dfSecond;
};
LossDerivatives lossDerivatives(double dfSquare)
{
    const double dfFirst = 1 / std::sqrt(1 + dfSquare);
    return {dfFirst, -dfFirst / (2 * (1 + dfSquare))};
}

/// Adds one spot or one chain with the residuals r = (rows nFirst to nFirst + nRows − 1) and their
/// derivatives J. With the loss ρ of r², the gradient of ρ/2 is ρ'·Jᵀr, and its second derivatives are about
/// ρ'·JᵀJ + 2ρ''·(Jᵀr)(Jᵀr)ᵀ, without the second derivatives of r (Gauss–Newton).
/// @param nChain  row of the scores to which the gradient is added
void addBlock(GeometryNormal& normal, const RowMatrix& matJacobian, const Eigen::VectorXd& vecResidual,
              int nFirst, int nRows, int nChain)
{
    const auto rows = matJacobian.middleRows(nFirst, nRows);
    const auto residual = vecResidual.segment(nFirst, nRows);
    const LossDerivatives loss = lossDerivatives(residual.squaredNorm());
    const Eigen::VectorXd vecProduct = rows.transpose() * residual;  // Jᵀr
    normal.matHessian.noalias() += loss.dfFirst * rows.transpose() * rows;
    normal.matHessian.noalias() += 2 * loss.dfSecond * vecProduct * vecProduct.transpose();
    normal.matScore.row(nChain) += loss.dfFirst * vecProduct.transpose();
}

/// The numbers that are not of the cell, from dispensable ones to those that every geometry has. Of two
/// numbers that the peaks cannot distinguish, the one that comes first here is fixed.
const int g_anPriority[] = {TiltOffset,    AxisOutOfPlane, TiltScale,        ParabolicSin,
                            ParabolicCos,  EllipseAlong,   ThirdOrderSpiral, ThirdOrderRadial,
                            EllipseAcross, StretchingSin,  StretchingCos,    Axis,
                            CentreY,       CentreX};

/// Higher for numbers that are harder to do without.
int priorityOf(int nNumber)
{
    return int(std::find(std::begin(g_anPriority), std::end(g_anPriority), nNumber) -
               std::begin(g_anPriority));
}

/// The most dispensable number that is correlated with others; −1 if all numbers are determined. Numbers of
/// the cell are never returned.
/// @param matHessian  second derivatives by the numbers of listFree, scaled to a unit diagonal
int worstNumber(const Eigen::MatrixXd& matHessian, const std::vector<int>& listFree)
{
    // Two estimates with this correlation share all but 4 % of their variance (1 − 0.98²).
    const double dfPair = 0.98;
    // Diagonal elements of the inverse tell by which factor a variance grows because the other numbers are
    // free as well. An estimate that shares all but a ten-thousandth of its information with others is
    // governed by model errors rather than by the peaks.
    const double dfAll = 1e4;
    // Added to the diagonal, so that a singular matrix has an inverse, too, with elements far above dfAll.
    const double dfRidge = 1e-13;
    const Eigen::MatrixXd matInverse =
        (matHessian + dfRidge * Eigen::MatrixXd::Identity(matHessian.rows(), matHessian.cols())).inverse();
    int nWorst = -1;
    const auto take = [&](int nNumber) {
        if (nWorst < 0 || priorityOf(nNumber) < priorityOf(nWorst)) {
            nWorst = nNumber;
        }
    };
    for (int n = 0; n < int(listFree.size()); ++n) {
        if (isOfCell(listFree[n])) {
            continue;
        }
        if (!(matInverse(n, n) > 0 && matInverse(n, n) < dfAll)) {  // also if it is not a number
            take(listFree[n]);
        }
        for (int m = 0; m < n; ++m) {
            const double dfScale = std::sqrt(matInverse(n, n) * matInverse(m, m));
            // The correlation of the estimates is that element of the inverse over dfScale.
            if (!isOfCell(listFree[m]) && !(std::abs(matInverse(n, m)) <= dfPair * dfScale)) {
                take(priorityOf(listFree[n]) < priorityOf(listFree[m]) ? listFree[n] : listFree[m]);
            }
        }
    }
    return nWorst;
}

/// The rows and columns of some numbers, scaled to a unit diagonal.
/// @param listColumn  their places in the matrix
Eigen::MatrixXd scaledPart(const Eigen::MatrixXd& mat, const std::vector<int>& listColumn)
{
    const Eigen::Index nCount = Eigen::Index(listColumn.size());
    Eigen::MatrixXd part(nCount, nCount);
    for (Eigen::Index n = 0; n < nCount; ++n) {
        for (Eigen::Index m = 0; m < nCount; ++m) {
            const Eigen::Index nRow = listColumn[n], nColumn = listColumn[m];
            const double dfScale = std::sqrt(mat(nRow, nRow) * mat(nColumn, nColumn));
            part(n, m) = dfScale > 0 ? mat(nRow, nColumn) / dfScale : 0;
        }
    }
    return part;
}

}  // namespace

bool solveGeometry(const CGeometryResiduals& residuals, GeometryFit& fit, int nSteps)
{
    if (fit.listFree.empty() || residuals.spots() == 0) {
        return false;
    }
    CAllRows all(residuals, fit);
    ceres::SoftLOneLoss loss(1.0);
    ceres::Problem::Options problemOptions;
    problemOptions.loss_function_ownership = ceres::DO_NOT_TAKE_OWNERSHIP;
    problemOptions.evaluation_callback = &all;
    problemOptions.disable_all_safety_checks = true;  // each block has the same parameters: nothing to check
    ceres::Problem problem(problemOptions);
    problem.AddParameterBlock(all.values(), all.count());
    for (int n = 0; n < residuals.spots(); ++n) {
        problem.AddResidualBlock(new CSomeRows(all, 2 * n, 2), &loss, all.values());
    }
    for (int n = 0; n < residuals.chains(); ++n) {
        problem.AddResidualBlock(new CSomeRows(all, 2 * residuals.spots() + n, 1), &loss, all.values());
    }
    ceres::Solver::Options options;
    options.linear_solver_type = ceres::DENSE_NORMAL_CHOLESKY;
    options.logging_type = ceres::SILENT;
    options.max_num_iterations = nSteps;
    options.num_threads = 1;  // evaluate() has threads of its own
    // The default of 1e-6 is too coarse for correlated numbers, which still move while the loss hardly falls.
    options.function_tolerance = 1e-9;
    ceres::Solver::Summary summary;
    ceres::Solve(options, &problem, &summary);
    const GeometryNumbers numbers = all.numbers();
    const bool bFinite = std::all_of(numbers.begin(), numbers.end(),
                                     [](double df) { return std::isfinite(df); });
    if (!summary.IsSolutionUsable() || !bFinite || !std::isfinite(summary.final_cost)) {
        return false;
    }
    fit.numbers = numbers;
    return true;
}

double rmsInPlane(const CGeometryResiduals& residuals, const GeometryFit& fit)
{
    Eigen::VectorXd vecResidual;
    residuals.evaluate(fit.numbers, fit.form, {}, vecResidual, nullptr);
    const Eigen::Index nPlane = 2 * residuals.spots();
    return nPlane == 0 ? 0 : std::sqrt(vecResidual.head(nPlane).squaredNorm() / double(nPlane));
}

GeometryNormal geometryNormal(const CGeometryResiduals& residuals, const GeometryFit& fit)
{
    Eigen::VectorXd vecResidual;
    RowMatrix matJacobian;
    residuals.evaluate(fit.numbers, fit.form, fit.listFree, vecResidual, &matJacobian);
    const Eigen::Index nFree = Eigen::Index(fit.listFree.size());
    GeometryNormal normal = {Eigen::MatrixXd::Zero(nFree, nFree),
                             Eigen::MatrixXd::Zero(residuals.chains(), nFree)};
    const int nFirstChain = 2 * residuals.spots();
    for (int n = 0; n < residuals.spots(); ++n) {
        addBlock(normal, matJacobian, vecResidual, 2 * n, 2, residuals.chainRows()[n] - nFirstChain);
    }
    for (int n = 0; n < residuals.chains(); ++n) {
        addBlock(normal, matJacobian, vecResidual, nFirstChain + n, 1, n);
    }
    return normal;
}

Eigen::MatrixXd geometryCovariance(const GeometryNormal& normal)
{
    const Eigen::Index nFree = normal.matHessian.rows();
    const Eigen::Index nChains = normal.matScore.rows();
    // The numbers have different units, so the Hessian is scaled to a unit diagonal before it is inverted.
    // The limit avoids a division by 0 for a number without influence.
    const Eigen::VectorXd vecScale = normal.matHessian.diagonal().cwiseMax(1e-300).cwiseSqrt().cwiseInverse();
    const Eigen::MatrixXd matScaled = vecScale.asDiagonal() * normal.matHessian * vecScale.asDiagonal();
    const Eigen::MatrixXd matInverse = vecScale.asDiagonal() *
                                       matScaled.ldlt().solve(Eigen::MatrixXd::Identity(nFree, nFree)) *
                                       vecScale.asDiagonal();
    const double dfSmallSample = double(nChains) / double(std::max<Eigen::Index>(1, nChains - nFree));
    return dfSmallSample * matInverse * (normal.matScore.transpose() * normal.matScore) * matInverse;
}

Undetermined undeterminedNumbers(const GeometryNormal& normal, const std::vector<int>& listFree)
{
    Undetermined undetermined;
    std::vector<int> listLeft = listFree;          // numbers that are still free
    std::vector<int> listColumn(listFree.size());  // their columns in the full Hessian
    for (size_t n = 0; n < listColumn.size(); ++n) {
        listColumn[n] = int(n);
    }
    Eigen::MatrixXd matPart = scaledPart(normal.matHessian, listColumn);
    for (int nWorst = worstNumber(matPart, listLeft); nWorst >= 0; nWorst = worstNumber(matPart, listLeft)) {
        const auto nPlace = std::find(listLeft.begin(), listLeft.end(), nWorst) - listLeft.begin();
        undetermined.listNumber.push_back(nWorst);
        listLeft.erase(listLeft.begin() + nPlace);
        listColumn.erase(listColumn.begin() + nPlace);
        matPart = scaledPart(normal.matHessian, listColumn);
    }
    // A change of the cell that moves no peak has the eigenvalue 0, or of the size of the rounding errors.
    const double dfLeastEigenvalue = 1e-10;
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(matPart, Eigen::EigenvaluesOnly);
    undetermined.bCell = !(solver.eigenvalues().minCoeff() > dfLeastEigenvalue);
    return undetermined;
}

}  // namespace tessera
