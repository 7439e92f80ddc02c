#include "crystal/testindexing.h"

#include "crystal/cellarithmetic.h"
#include "crystal/hkl3d.h"
#include "crystal/reflectionbuilder.h"
#include "records/hklref.h"

#include <QString>

namespace tessera {

bool testIndexing(const QList<Vec3D>& listCell, QList<Peak3D>& listPeak, CRunReport& report)
{
    double a = 20.091, b = 20.0, c = 13.37, alpha = 90, beta = 89.6, gamma = 90;
    cellParametersFromList(listCell, a, b, c, alpha, beta, gamma);
    CReflectionBuilder builder;
    if (!builder.setUnitCell(a, b, c, alpha, beta, gamma)) {
        report.addMessage(
            QStringLiteral("The unit cell is no cell that reflections can be built of: %1, %2, %3, %4, "
                           "%5, %6.")
                .arg(a)
                .arg(b)
                .arg(c)
                .arg(alpha)
                .arg(beta)
                .arg(gamma),
            Severity::Error);
        return false;
    }
    if (!builder.build(1.0)) {
        const double dfExpected = builder.expectedReflections(1.0);
        report.addMessage(
            dfExpected > CReflectionBuilder::s_dfMaxReflections
                ? QStringLiteral("Too many reflections: about %L1 are expected, the limit is %L2.")
                      .arg(dfExpected, 0, 'f', 0)
                      .arg(CReflectionBuilder::s_dfMaxReflections, 0, 'f', 0)
                : QStringLiteral("The unit cell is too oblique to build its reflections."),
            Severity::Error);
        return false;
    }
    report.addMessage(QStringLiteral("%L1 reflection built.").arg(builder.reflections().size()));
    QList<HKL5> listHKL;
    for (const std::array<int, 3>& hkl : builder.reflections())
        listHKL.append({hkl[0], hkl[1], hkl[2], 100, 0});
    return showHKL3D(listHKL, listCell, listPeak, report);
}

}  // namespace tessera
