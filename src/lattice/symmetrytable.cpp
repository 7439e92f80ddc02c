#include "lattice/symmetrytable.h"

#include <QLatin1Char>

#include <cstdlib>

namespace tessera {

namespace {

const QChar g_chFill = QLatin1Char(' ');

/// An axis as a text such as "a-b+2c".
QString axisText(const Eigen::RowVector3i& row)
{
    QString strText;
    for (int n = 0; n < 3; ++n) {
        if (row(n) == 0) {
            continue;
        }
        if (row(n) < 0) {
            strText += QLatin1Char('-');
        } else if (!strText.isEmpty()) {
            strText += QLatin1Char('+');
        }
        if (std::abs(row(n)) != 1) {
            strText += QString::number(std::abs(row(n)));
        }
        strText += QLatin1Char(char('a' + n));
    }
    return strText;
}

/// The heading, with columns of the widths of lineOf().
QString headingOfTable()
{
    QString strHeading = QStringLiteral("    type").leftJustified(18);
    for (const char* pszLength : {"a, Å", "b, Å", "c, Å"}) {
        strHeading += QString::fromUtf8(pszLength).rightJustified(9);
    }
    for (const char* pszAngle : {"α, °", "β, °", "γ, °"}) {
        strHeading += QString::fromUtf8(pszAngle).rightJustified(7);
    }
    for (const char* pszMisfit : {"edges, %", "angles, °", "axes, °"}) {
        strHeading += QString::fromUtf8(pszMisfit).rightJustified(10);
    }
    return strHeading + QStringLiteral("  new axes");
}

QString lineOf(const LatticeSymmetry& symmetry, bool bProposed)
{
    QString strLine = QLatin1Char(bProposed ? '*' : ' ') + bravaisSymbol(symmetry);
    strLine +=
        QLatin1Char(' ') +
        (nameOf(symmetry.system) + QLatin1Char(' ') + QLatin1Char(symmetry.chCentring)).leftJustified(14);
    const CellParameters& cell = symmetry.cellConstrained;
    for (const double dfLength : {cell.a, cell.b, cell.c}) {
        strLine += QStringLiteral(" %L1").arg(dfLength, 8, 'f', 3, g_chFill);
    }
    for (const double dfAngle : {cell.alpha, cell.beta, cell.gamma}) {
        strLine += QStringLiteral(" %L1").arg(dfAngle, 6, 'f', 2, g_chFill);
    }
    for (const double dfMisfit : {symmetry.dfMisfitLengths, symmetry.dfMisfitAngles, symmetry.dfObliquity}) {
        strLine += QStringLiteral(" %L1").arg(dfMisfit, 9, 'f', 2, g_chFill);
    }
    return strLine + QStringLiteral("  %1, %2, %3")
                         .arg(axisText(symmetry.matTransform.row(0)), axisText(symmetry.matTransform.row(1)),
                              axisText(symmetry.matTransform.row(2)));
}

}  // namespace

QStringList symmetryTable(const std::vector<LatticeSymmetry>& listSymmetry,
                          const std::optional<LatticeSymmetry>& proposed)
{
    QStringList listLine = {headingOfTable()};
    for (const LatticeSymmetry& symmetry : listSymmetry) {
        const bool bProposed = proposed && symmetry.nRotations == proposed->nRotations &&
                               symmetry.matTransform == proposed->matTransform;
        listLine += lineOf(symmetry, bProposed);
    }
    return listLine;
}

QString symmetryTableHtml(const std::vector<LatticeSymmetry>& listSymmetry,
                          const std::optional<LatticeSymmetry>& proposed)
{
    const QString strText = symmetryTable(listSymmetry, proposed).join(QLatin1Char('\n'));
    return QStringLiteral("<pre>") + strText.toHtmlEscaped() + QStringLiteral("</pre>");
}

}  // namespace tessera
