#include "crystal/cellmessage.h"

#include "crystal/cellarithmetic.h"
#include "crystal/crystalparacal.h"

#include <QLatin1Char>

namespace tessera {

QString latticeServiceHost()
{
    return QStringLiteral("https://cci.lbl.gov");
}

QString unitCellText(const QString& strTitle, const CellParameters& cell)
{
    const QChar chFill = QLatin1Char(' ');
    return strTitle + QStringLiteral(": a=%L1 Å, b=%L2 Å, c=%L3 Å, α=%L4°, β=%L5°, γ=%L6°, V=%L7 Å³")
                          .arg(cell.a, 6, 'f', 3, chFill)
                          .arg(cell.b, 6, 'f', 3, chFill)
                          .arg(cell.c, 6, 'f', 3, chFill)
                          .arg(cell.alpha, 6, 'f', 2, chFill)
                          .arg(cell.beta, 6, 'f', 2, chFill)
                          .arg(cell.gamma, 6, 'f', 2, chFill)
                          .arg(CCrystalParaCal(cell).getVolume(), 6, 'f', 1, chFill);
}

QString latticeLinkHtml(const QString& strText, const CellParameters& cell, const QString& strHost)
{
    // The numbers are filled in first, so a percent sign in the host's address is no place marker.
    const QString strCell = QStringLiteral("%1,%2,%3,%4,%5,%6")
                                .arg(cell.a)
                                .arg(cell.b)
                                .arg(cell.c)
                                .arg(cell.alpha)
                                .arg(cell.beta)
                                .arg(cell.gamma);
    const QString strBase = strHost +
                            QStringLiteral("/cctbx/cctbx_web.cgi?target_module=lattice_symmetry&ucparams");
    return QStringLiteral("<br>") + strText + QStringLiteral(" <a href=\"") + strBase + QStringLiteral("=") +
           strCell + QStringLiteral("\">Test lattice type</a>");
}

QString unitCellHtml(const QString& strTitle, const ReciprocalBasis& basis, const QString& strHost)
{
    const std::optional<CellParameters> cell = cellParameters(basis);
    return cell ? latticeLinkHtml(unitCellText(strTitle, *cell), *cell, strHost) : QString();
}

}  // namespace tessera
