#include "road/latticefinding.h"

#include "lattice/symmetrytable.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/latticepoints.h"

#include <vector>

namespace tessera {

namespace {

LatticeAnalysis analyse(RoadState& state, const ReciprocalBasis& basis)
{
    FurtherLatticesOptions options;
    options.search.nJobs = state.options.jobs();
    return analyseLattice(latticeBasisOf(basis), latticePoints(state.dataSet), options,
                          [&] { return state.report.goOn(); });
}

/// The measured axes of the proposed Bravais type.
ReciprocalBasis conventionalBasis(const ReciprocalBasis& basis, const LatticeType& type)
{
    return reciprocalBasisOf(type.matTransform * latticeBasisOf(basis));
}

void tell(const LatticeAnalysis& analysis, CRunReport& report)
{
    std::vector<LatticeSymmetry> listSymmetry;
    for (const LatticeType& type : analysis.listType) {
        listSymmetry.push_back(type.symmetry);
    }
    std::optional<LatticeSymmetry> proposed;
    if (analysis.proposed) {
        proposed = analysis.proposed->symmetry;
    }
    report.addMessage(QStringLiteral("Bravais types that fit the lattice; * is proposed:"));
    for (const QString& strLine : symmetryTable(listSymmetry, proposed)) {
        report.addMessage(strLine);
    }
    for (const QString& strLine : tellFurtherLattices(analysis.lattices)) {
        report.addMessage(strLine, Severity::Milestone);
    }
}

}  // namespace

void findLattice(RoadState& state)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(state.dataSet);
    if (!basis) {
        return;
    }
    LatticeAnalysis analysis = analyse(state, *basis);
    tell(analysis, state.report);
    const bool bChange = state.options.bConventional && analysis.proposed &&
                         !analysis.proposed->matTransform.isIdentity();
    if (bChange) {
        state.dataSet.m_listCellFound = conventionalBasis(*basis, *analysis.proposed).toList();
        updateUnitCell(state.dataSet);
        state.report.addMessage(QStringLiteral("The cell is set to the conventional axes of %1.")
                                    .arg(bravaisSymbol(analysis.proposed->symmetry)));
        const Eigen::Matrix3d matBack = analysis.proposed->matTransform.inverse();
        for (LatticeType& type : analysis.listType) {
            type.matTransform = type.matTransform * matBack;
        }
        analysis.proposed->matTransform = Eigen::Matrix3d::Identity();
    }
    state.results.lattice = analysis;
}

}  // namespace tessera
