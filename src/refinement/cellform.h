// CellForm: the free numbers that describe the cell in a fit: the nine components of its reciprocal basis, or
// its orientation and the edges and angles that a Bravais type leaves free.
#pragma once

#include "lattice/latticesymmetry.h"
#include "refinement/geometrynumbers.h"

#include <Eigen/Dense>

#include <optional>
#include <vector>

namespace tessera {

/// The constraints of a Bravais type on a cell.
struct CellConstraint {
    LatticeSystem system = LatticeSystem::Triclinic;
    /// Rows: the conventional axes in terms of the axes of the cell in force.
    Eigen::Matrix3d matTransform = Eigen::Matrix3d::Identity();
    QString strSymbol;  ///< Pearson symbol
};

/// The cell with the symmetry of a lattice system: edges that the system makes equal are averaged, and angles
/// that it fixes are set. A rhombohedral lattice is given in hexagonal axes.
CellParameters constrainedCell(LatticeSystem system, const CellParameters& cell);

/// How the nine cell numbers of a fit make a reciprocal basis.
///
/// In a free cell the numbers are the components of a*, b* and c*. In a constrained cell the first three are
/// a rotation vector (radians) from the orientation with which the form was constructed, and the following
/// ones are the parameters that the lattice system leaves free, lengths in Å and angles in degrees; numbers
/// that are not needed stay 0.
class CellForm {
public:
    /// Selects the constructor that restores a form from its parts.
    struct AsTold {};
    /// A free cell.
    CellForm() = default;
    /// A constrained cell, with the orientation that lies closest to a basis (rows a*, b*, c*).
    CellForm(const CellConstraint& constraint, const Eigen::Matrix3d& reciprocal);

    /// Restores a form from the constraint() and orientation() of another one.
    CellForm(const std::optional<CellConstraint>& constraint, const Eigen::Matrix3d& orientation, AsTold)
        : m_constraint(constraint), m_matOrientation(orientation)
    {}

    /// Whether the cell is constrained by a Bravais type.
    bool isConstrained() const { return m_constraint.has_value(); }
    /// The constraint; none for a free cell.
    const std::optional<CellConstraint>& constraint() const { return m_constraint; }
    /// Rows: the axes of the standard setting with which the form was constructed.
    const Eigen::Matrix3d& orientation() const { return m_matOrientation; }
    int freeNumbers() const;  ///< how many of the nine numbers are used, counted from the first

    /// Sets the numbers to a basis (rows a*, b*, c*); for a constrained form, the basis it was constructed
    /// with.
    void setStart(GeometryNumbers& numbers, const Eigen::Matrix3d& reciprocal) const;
    /// Rows a*, b*, c* of the cell in force, Å⁻¹.
    Eigen::Matrix3d reciprocal(const GeometryNumbers& numbers) const;
    /// The same, with the derivatives by each of the used numbers, each a matrix of the same shape.
    Eigen::Matrix3d reciprocal(const GeometryNumbers& numbers,
                               std::vector<Eigen::Matrix3d>& listDerivative) const;
    /// The cell parameters that follow from the numbers: of the conventional cell under a constraint, else of
    /// the cell in force.
    /// @param pDerivative  may be null; gets the derivatives of the six parameters, one column for each used
    ///                     number
    CellParameters cell(const GeometryNumbers& numbers, Eigen::MatrixXd* pDerivative = nullptr) const;

private:
    std::optional<CellConstraint> m_constraint;
    Eigen::Matrix3d m_matOrientation = Eigen::Matrix3d::Identity();  ///< see orientation()
};

/// Lengths (Å) and angles (degrees) of the cell whose reciprocal basis has these rows.
CellParameters cellOfReciprocal(const Eigen::Matrix3d& reciprocal);

}  // namespace tessera
