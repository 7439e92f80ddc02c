#include "crystal/testindexing.h"

#include "crystal/cellarithmetic.h"
#include "crystal/hkl3d.h"
#include "crystal/reflectionbuilder.h"

#include <QString>

namespace tessera {

bool testIndexing(const std::optional<ReciprocalBasis>& basis, QList<Peak3D>& listPeak, CRunReport& report)
{
    const std::optional<CellParameters> cellInForce = basis ? cellParameters(*basis) : std::nullopt;
    const CellParameters cell = cellInForce.value_or(CellParameters{20.091, 20.0, 13.37, 90, 89.6, 90});
    CReflectionBuilder builder;
    if (!builder.setUnitCell(cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma)) {
        report.addMessage(
            QStringLiteral("The unit cell is no cell that reflections can be built of: %1, %2, %3, %4, "
                           "%5, %6.")
                .arg(cell.a)
                .arg(cell.b)
                .arg(cell.c)
                .arg(cell.alpha)
                .arg(cell.beta)
                .arg(cell.gamma),
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
    for (const std::array<int, 3>& hkl : builder.reflections()) {
        listHKL.append({hkl[0], hkl[1], hkl[2], 100, 0});
    }
    return showHKL3D(listHKL, basis, listPeak, report);
}

}  // namespace tessera
