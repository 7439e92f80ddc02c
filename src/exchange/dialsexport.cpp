#include "exchange/dialsfiles.h"
#include "exchange/exchangeexport.h"
#include "exchange/exchangewriting.h"
#include "records/runends.h"

#include <cmath>

namespace tessera {

RunOutcome exportForDials(const ExchangeSource& source, const std::vector<GeometrySpot>& listSpot,
                          CRunReport& report)
{
    if (!source.bCell || listSpot.empty()) {
        return refuseRun(report, QStringLiteral("No peaks are indexed, but DIALS needs indexed ones."));
    }
    const ExchangeFrames frames = chooseExchangeFrames(source, FrameGaps::Filled);
    const std::optional<ExchangeGeometry> geometry = toldGeometry(source, frames, report);
    if (!geometry) {
        return failedAsSaid(report);
    }
    const std::vector<ExchangeReflection> listReflection = exchangeReflections(
        *geometry, listSpot, source.listBeam, source.series);
    if (listReflection.empty()) {
        return refuseRun(report,
                         QStringLiteral("None of the peaks lies on the lattice of the cell in force."));
    }
    const Scatter scatter = scatterOf(listReflection);
    report.addMessage(QStringLiteral("%L1 reflections of %L2 peaks; they scatter by %3 pixels and %4°.")
                          .arg(listReflection.size())
                          .arg(listSpot.size())
                          .arg(scatter.dfPlace, 0, 'f', 2)
                          .arg(scatter.dfAngle, 0, 'f', 3));
    DialsOptions options;
    options.strTemplate = templateOf(source, frames, QLatin1Char('#'));
    options.listUntrusted = untrustedOf(source, frames, report);
    options.nHighest = highestCount(trustedRangeOf(*source.pData), options.nHighest);
    // The width is at least the scatter of the centroids combined with the blur by the step.
    options.dfRockingSigma = std::hypot(scatter.dfAngle, geometry->dfWidth / 2);
    if (source.pIntegration) {
        options.dfSpotSigma = source.pIntegration->integrated.model.dfSigma;
    }
    const RunOutcome written = writeExchangeFrames(source, frames, report);
    if (!written.finished()) {
        return written;
    }
    return writeExchangeFiles(
        source,
        {{source.file(QStringLiteral(".expt")), dialsExperiment(*geometry, options)},
         {source.file(QStringLiteral(".refl")), dialsReflections(*geometry, options, listReflection)}},
        report);
}

}  // namespace tessera
