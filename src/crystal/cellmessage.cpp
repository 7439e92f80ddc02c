#include "crystal/cellmessage.h"

#include "crystal/cellarithmetic.h"
#include "crystal/crystalparacal.h"

#include <QLatin1Char>

namespace tessera {

QString latticeServiceHost()
{
    return QStringLiteral("https://cci.lbl.gov");
}

QString unitCellText(const QString& strTitle, double a, double b, double c, double alpha, double beta,
                     double gamma)
{
    CCrystalParaCal cell;
    cell.setUnitCell(a, b, c, alpha, beta, gamma);
    const QChar chFill = QLatin1Char(' ');
    return strTitle + QStringLiteral(": a=%L1 Å, b=%L2 Å, c=%L3 Å, α=%L4°, β=%L5°, γ=%L6°, V=%L7 Å³")
                          .arg(a, 6, 'f', 3, chFill)
                          .arg(b, 6, 'f', 3, chFill)
                          .arg(c, 6, 'f', 3, chFill)
                          .arg(alpha, 6, 'f', 2, chFill)
                          .arg(beta, 6, 'f', 2, chFill)
                          .arg(gamma, 6, 'f', 2, chFill)
                          .arg(cell.getVolume(), 6, 'f', 1, chFill);
}

QString latticeLinkHtml(const QString& strText, double a, double b, double c, double alpha, double beta,
                        double gamma, const QString& strHost)
{
    // The numbers are filled in first, so a percent sign in the host's address is no place marker.
    const QString strCell =
        QStringLiteral("%1,%2,%3,%4,%5,%6").arg(a).arg(b).arg(c).arg(alpha).arg(beta).arg(gamma);
    const QString strBase = strHost +
                            QStringLiteral("/cctbx/cctbx_web.cgi?target_module=lattice_symmetry&ucparams");
    return QStringLiteral("<br>") + strText + QStringLiteral(" <a href=\"") + strBase + QStringLiteral("=") +
           strCell + QStringLiteral("\">Test lattice type</a>");
}

QString unitCellHtml(const QString& strTitle, const QList<Vec3D>& listCell, const QString& strHost)
{
    double a, b, c, alpha, beta, gamma;
    if (!cellParametersFromList(listCell, a, b, c, alpha, beta, gamma))
        return {};
    return latticeLinkHtml(unitCellText(strTitle, a, b, c, alpha, beta, gamma), a, b, c, alpha, beta, gamma,
                           strHost);
}

}  // namespace tessera
