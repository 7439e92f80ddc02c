#include "crystal/celltransformation.h"

#include <cmath>

namespace tessera {

bool transformUnitCell(const QList<Vec3D>& listCellFound, const CMatrix3& matrix, TransformationSpace space,
                       QList<Vec3D>& listCell, CRunReport& report, const QString& strLatticeHost)
{
    if (listCellFound.size() != 3) {
        report.addMessage(QStringLiteral("Unit cell information is missing."));
        return false;
    }
    QList<Vec3D> listNew;
    CMatrix3 matRows, matColumns;
    for (int n = 0; n < 3; ++n) {
        matRows.setRow(n + 1, listCellFound[n]);
        matColumns.setColumn(n, listCellFound[n]);
    }
    if (space == TransformationSpace::Reciprocal) {
        const CMatrix3 matNew = matrix.multiplied(matRows);
        listNew = {matNew.getRow(1), matNew.getRow(2), matNew.getRow(3)};
    } else {
        // Written so that a determinant that is no number is refused too.
        if (!(std::fabs(matrix.determinant()) > 1e-7)) {
            report.addMessage(QStringLiteral("TransformUnitCell: singlular matrix!"), Severity::Error);
            return false;
        }
        const CMatrix3 matNew = matColumns.multiplied(matrix.inverted());
        listNew = {matNew.getColumn(0), matNew.getColumn(1), matNew.getColumn(2)};
    }
    for (const Vec3D& v : qAsConst(listNew))
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z)) {
            report.addMessage(QStringLiteral("TransformUnitCell: the new vectors are not finite."),
                              Severity::Error);
            return false;
        }
    listCell = listNew;

    const QString strHtml = unitCellHtml(QStringLiteral("Transformed unit cell"), listCell, strLatticeHost);
    if (strHtml.isEmpty())
        report.addMessage(QStringLiteral("Warning: co-planar reciprocal basis vectors!"), Severity::Warning);
    else
        report.addHtml(strHtml);
    return true;
}

}  // namespace tessera
