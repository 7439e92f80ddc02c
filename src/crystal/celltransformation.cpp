#include "crystal/celltransformation.h"

#include <cmath>

namespace tessera {

std::optional<ReciprocalBasis> transformUnitCell(const std::optional<ReciprocalBasis>& basisFound,
                                                 const CMatrix3& matrix, TransformationSpace space,
                                                 CRunReport& report, const QString& strLatticeHost)
{
    if (!basisFound) {
        report.addMessage(QStringLiteral("Unit cell information is missing."));
        return std::nullopt;
    }
    const std::array<Vec3D, 3> aFound = basisFound->vectors();
    ReciprocalBasis basis;
    CMatrix3 matRows, matColumns;
    for (int n = 0; n < 3; ++n) {
        matRows.setRow(n + 1, aFound[n]);
        matColumns.setColumn(n, aFound[n]);
    }
    if (space == TransformationSpace::Reciprocal) {
        const CMatrix3 matNew = matrix.multiplied(matRows);
        basis = {matNew.getRow(1), matNew.getRow(2), matNew.getRow(3)};
    } else {
        // Written so that a determinant that is no number is refused too.
        if (!(std::fabs(matrix.determinant()) > 1e-7)) {
            report.addMessage(QStringLiteral("TransformUnitCell: singlular matrix!"), Severity::Error);
            return std::nullopt;
        }
        const CMatrix3 matNew = matColumns.multiplied(matrix.inverted());
        basis = {matNew.getColumn(0), matNew.getColumn(1), matNew.getColumn(2)};
    }
    if (!isFinite(basis)) {
        report.addMessage(QStringLiteral("TransformUnitCell: the new vectors are not finite."),
                          Severity::Error);
        return std::nullopt;
    }
    const QString strHtml = unitCellHtml(QStringLiteral("Transformed unit cell"), basis, strLatticeHost);
    if (strHtml.isEmpty()) {
        report.addMessage(QStringLiteral("Warning: co-planar reciprocal basis vectors!"), Severity::Warning);
    } else {
        report.addHtml(strHtml);
    }
    return basis;
}

}  // namespace tessera
