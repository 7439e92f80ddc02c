// CellForm: the cell of a fit by free numbers, as nine of its basis or as orientation and edges of a Bravais
// type.
#pragma once

#include "lattice/latticesymmetry.h"
#include "refinement/geometrynumbers.h"

#include <Eigen/Dense>

#include <optional>
#include <vector>

namespace tessera {

/// What a Bravais type asks of a cell.
struct CellConstraint {
    LatticeSystem system = LatticeSystem::Triclinic;
    Eigen::Matrix3d matTransform =
        Eigen::Matrix3d::Identity();  ///< conventional axes as rows along the old ones
    QString strSymbol;                ///< Pearson's
};

/// The edges and angles of a system alone: equal edges are averaged, fixed angles set. A rhombohedral lattice
/// is in hexagonal axes.
CellParameters constrainedCell(LatticeSystem system, const CellParameters& cell);

/// How the nine numbers of the cell make a reciprocal basis.
///
/// Free, they are its components by a*, b*, c*. Constrained, the first three are a rotation vector (radians)
/// from the orientation that the form was made with, and the following ones the numbers that the system
/// leaves free: lengths in Å, angles in degrees. What is over stays 0.
class CellForm {
public:
    struct AsTold {};
    /// Free.
    CellForm() = default;
    /// Under a constraint, with the orientation that lies closest to a basis (rows a*, b*, c*).
    CellForm(const CellConstraint& constraint, const Eigen::Matrix3d& reciprocal);

    /// A form again as another one told it: by constraint() and orientation().
    CellForm(const std::optional<CellConstraint>& constraint, const Eigen::Matrix3d& orientation, AsTold)
        : m_constraint(constraint), m_matOrientation(orientation)
    {}

    bool isConstrained() const { return m_constraint.has_value(); }
    const std::optional<CellConstraint>& constraint() const { return m_constraint; }
    /// Rows: the axes of the standard setting, as the form was made with them.
    const Eigen::Matrix3d& orientation() const { return m_matOrientation; }
    int freeNumbers() const;  ///< those that are used, from the first

    /// Puts a basis (rows a*, b*, c*) into the numbers; of a constrained form the one it was made with.
    void setStart(GeometryNumbers& numbers, const Eigen::Matrix3d& reciprocal) const;
    /// Rows a*, b*, c* of the cell in force, Å⁻¹.
    Eigen::Matrix3d reciprocal(const GeometryNumbers& numbers) const;
    /// The same, and its derivatives by the used numbers, each a matrix of the same shape.
    Eigen::Matrix3d reciprocal(const GeometryNumbers& numbers,
                               std::vector<Eigen::Matrix3d>& listDerivative) const;
    /// The cell that the numbers mean: conventional under a constraint, else that in force. With derivatives
    /// of the six numbers by those used, a column for each, if `pDerivative` is not null.
    CellParameters cell(const GeometryNumbers& numbers, Eigen::MatrixXd* pDerivative = nullptr) const;

private:
    std::optional<CellConstraint> m_constraint;
    Eigen::Matrix3d m_matOrientation =
        Eigen::Matrix3d::Identity();  ///< rows: the axes of the standard setting
};

/// Lengths (Å) and angles (degrees) of the cell whose reciprocal basis has these rows.
CellParameters cellOfReciprocal(const Eigen::Matrix3d& reciprocal);

}  // namespace tessera
