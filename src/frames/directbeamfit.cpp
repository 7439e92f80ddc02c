#include "frames/directbeamfit.h"

#include "frames/framerun.h"
#include "geometry/rotationgeometry.h"
#include "imaging/peakfit2d.h"

namespace tessera {

namespace {

const int g_nFitHalfSize = 50;
const double g_dfSaturation = 3000.0;

QString beamLine(const DirectBeamOnFrame& beam)
{
    return QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9 %10 %11")
        .arg(beam.nFrame + 1, 4)
        .arg(beam.ptExpected.x(), 8, 'f', 1)
        .arg(beam.ptExpected.y(), 8, 'f', 1)
        .arg(beam.ptFitted.x(), 8, 'f', 2)
        .arg(beam.ptFitted.y(), 8, 'f', 2)
        .arg(beam.ptFitted.x() - beam.ptExpected.x(), 8, 'f', 2)
        .arg(beam.ptFitted.y() - beam.ptExpected.y(), 8, 'f', 2)
        .arg(beam.vecFit[0], 15, 'f', 1)
        .arg(beam.vecFit[2], 10, 'f', 6)
        .arg(beam.vecFit[4], 10, 'f', 6)
        .arg(int(beam.vecFit[10]));
}

}  // namespace

RunOutcome fitDirectBeam(DataSet& dataSet, CRunReport& report,
                         const std::function<void(const DirectBeamOnFrame&)>& fnFrameDone)
{
    CFrameRun run(dataSet, report, QStringLiteral("Evaluation of the direct beam"));
    run.begin();
    const RunOutcome outcome = run.walk([&](int nFrame) {
        const CImgObj<float>* pImage = run.load(nFrame);
        if (!pImage) {
            return true;
        }
        DirectBeamOnFrame beam;
        beam.nFrame = nFrame;
        beam.ptExpected = frameCentre(run.series().centres, nFrame);
        double dfX = beam.ptExpected.x();
        double dfY = beam.ptExpected.y();
        beam.vecFit = FitPeak2D(*pImage, dfX, dfY, g_nFitHalfSize, g_dfSaturation);
        beam.ptFitted = QPointF(dfX, dfY);
        report.addMessage(beamLine(beam), Severity::Info);
        if (fnFrameDone) {
            fnFrameDone(beam);
        }
        return true;
    });
    run.sayEnd(outcome);
    return outcome;
}

}  // namespace tessera
