#include "exchange/exchangeexport.h"
#include "exchange/exchangewriting.h"
#include "exchange/zoneaxiscif.h"
#include "records/runends.h"

namespace tessera {

RunOutcome exportZoneAxisCif(const ExchangeSource& source, const VirtualFrameOptions& options,
                             CRunReport& report)
{
    if (!source.pIntegration) {
        return refuseRun(
            report, QStringLiteral(
                        "Nothing is integrated, but the list for dynamical refinement needs intensities."));
    }
    const int nFrames = source.series.frameCount();
    const IntegratedSeries& integrated = source.pIntegration->integrated;
    const VirtualFrameOptions chosen = chosenVirtualFrames(integrated, nFrames, options);
    size_t nRows = 0;
    const std::vector<VirtualFrame> listFrame = virtualFrames(integrated, nFrames, chosen);
    for (const VirtualFrame& frame : listFrame) {
        nRows += frame.listObservation.size();
    }
    report.addMessage(QStringLiteral("%L1 intensities in %L2 virtual frames of %3 frames, one from every %4.")
                          .arg(nRows)
                          .arg(listFrame.size())
                          .arg(chosen.nMerged)
                          .arg(chosen.nStep));
    return writeExchangeFiles(
        source, {{source.file(QStringLiteral("_dyn.cif_pets")), zoneAxisCif(*source.pIntegration, chosen)}},
        report);
}

}  // namespace tessera
