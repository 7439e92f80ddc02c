#include "road/geometrytable.h"

#include "refinement/beamdrift.h"

#include <algorithm>
#include <iterator>

namespace tessera {

namespace {

const GeometryRow g_aRow[] = {
    {"axis", "°", 1, Axis, 3},
    {"axis out of the plane", "°", 1, AxisOutOfPlane, 3},
    {"centre x", "px", 1, CentreX, 3},
    {"centre y", "px", 1, CentreY, 3},
    {"stretching cos", "%", 100, StretchingCos, 3},
    {"stretching sin", "%", 100, StretchingSin, 3},
    {"ellipse along the axis", "%", 100, EllipseAlong, 3},
    {"ellipse across the axis", "%", 100, EllipseAcross, 3},
    {"third order, radial", "%", 100, ThirdOrderRadial, 3},
    {"third order, spiral", "%", 100, ThirdOrderSpiral, 3},
    {"parabolic cos", "%", 100, ParabolicCos, 3},
    {"parabolic sin", "%", 100, ParabolicSin, 3},
    {"scale of the tilts", "", 1, TiltScale, 5},
    {"offset of the tilts", "°", 1, TiltOffset, 3},
};

QString rowText(const GeometryRow& row, const GeometryNumbers& before, const GeometryModel& model)
{
    const size_t n = size_t(row.number);
    const auto& listFree = model.fit.listFree;
    const bool bFree = std::find(listFree.begin(), listFree.end(), int(row.number)) != listFree.end();
    const QString strError = bFree ? QString::number(row.dfFactor * model.errors[n], 'f', row.nDecimals)
                                   : QStringLiteral("-");
    return QStringLiteral("%1 %2 %3 %4 %5 %6")
        .arg(QLatin1String(row.pszName), -24)
        .arg(row.dfFactor * before[n], 11, 'f', row.nDecimals)
        .arg(row.dfFactor * model.fit.numbers[n], 11, 'f', row.nDecimals)
        .arg(strError, 9)
        .arg(QString::fromUtf8(row.pszUnit), 2)
        .arg(QLatin1String(bFree ? "free" : "fixed"));
}

QString cellText(const GeometryModel& model)
{
    const std::array<double, 6> aCell = model.cell.numbers(), aError = model.cellErrors.numbers();
    QStringList listPart;
    for (size_t n = 0; n < 6; ++n) {
        const int nDecimals = n < 3 ? 4 : 3;
        listPart.append(
            aError[n] > 0
                ? QStringLiteral("%1(%2)").arg(aCell[n], 0, 'f', nDecimals).arg(aError[n], 0, 'f', nDecimals)
                : QString::number(aCell[n], 'f', nDecimals));
    }
    return listPart.join(QLatin1Char(' '));
}

QString halvesText(const char* pszCell, const GeometryModel& model)
{
    return QStringLiteral(
               "%1: rms of one half of the frames %2 px if fitted to it, %3 px if fitted to the other half.")
        .arg(QLatin1String(pszCell))
        .arg(model.dfRmsSeen, 0, 'f', 3)
        .arg(model.dfRmsUnseen, 0, 'f', 3);
}

QString driftText(const GeometryModel& model)
{
    if (model.listDrift.empty()) {
        return QStringLiteral("No drift of the direct beam is left over.");
    }
    return QStringLiteral("Drift of the direct beam left over: rms %1 px, %2 intervals, %3 frames that jump.")
        .arg(driftRms(model), 0, 'f', 3)
        .arg(model.nDriftIntervals)
        .arg(model.nJumps);
}

}  // namespace

std::vector<GeometryRow> geometryRows()
{
    return {std::begin(g_aRow), std::end(g_aRow)};
}

QStringList geometryTable(const GeometryRefinement& refinement)
{
    const GeometryModel& best = refinement.best();
    // The ellipse is counted from the azimuth of the axis at the start of the fit.
    const GeometryNumbers before = numbersOf(refinement.before, refinement.before.plane.axis);
    QStringList listLine = {QStringLiteral("%1 %2 %3 %4")
                                .arg("Geometry", -24)
                                .arg("before", 11)
                                .arg("after", 11)
                                .arg("e.s.d.", 9)};
    for (const GeometryRow& row : g_aRow) {
        listLine.append(rowText(row, before, best));
    }
    listLine.append(driftText(best));
    listLine.append(QStringLiteral("Refined cell: %1").arg(cellText(refinement.free)));
    if (refinement.constrained) {
        listLine.append(QStringLiteral("Refined cell under %1: %2")
                            .arg(refinement.constrained->fit.form.constraint()->strSymbol,
                                 cellText(*refinement.constrained)));
    }
    listLine.append(halvesText("Free cell", refinement.free));
    if (refinement.constrained) {
        listLine.append(halvesText("Bravais type", *refinement.constrained));
    }
    listLine.append(
        QStringLiteral("The size of a pixel is not fitted: its error is that of all lengths in common."));
    listLine.append(QStringLiteral("%1 of %2 indexed peaks fit with an rms of %3 px; before %4 with %5 px.")
                        .arg(refinement.nFitAfter)
                        .arg(refinement.nPeaks)
                        .arg(refinement.dfRmsAfter, 0, 'f', 3)
                        .arg(refinement.nFitBefore)
                        .arg(refinement.dfRmsBefore, 0, 'f', 3));
    return listLine;
}

}  // namespace tessera
