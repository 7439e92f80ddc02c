#include "reciprocal/volumeexport.h"

#include "dataset/seriessnapshot.h"
#include "frames/frameloader.h"
#include "frames/frametargets.h"
#include "frames/framewalk.h"
#include "geometry/rotationgeometry.h"
#include "reciprocal/reciprocalvolume.h"
#include "records/runends.h"
#include "records/timestamp.h"

namespace tessera {

namespace {

/// How far the loop over the frames came.
struct AddedFrames {
    int nAdded = 0;            ///< frames whose pixels are in the volume
    bool bUnloadable = false;  ///< a frame that could not be loaded ended the loop; those before it are kept
    RunOutcome outcome;        ///< of the loop
};

/// Puts the first image of each frame into the volume.
AddedFrames addFrames(CReciprocalVolume& volume, const SeriesSnapshot& series, CRunReport& report)
{
    AddedFrames added;
    CFrameWalk walk(series.frameCount(), StopAsked::BeforeEachFrame, report);
    walk.showProgress(ProgressPlace::TaskBarToo);
    added.outcome = walk.run([&](int nFrame) {
        const QString& strFile = series.listFrameFile[nFrame];
        ImageList vecImage;
        if (!loadFirstImage(vecImage, frameSource(series, nFrame), report)) {
            report.fail(QStringLiteral("Failed to load: %1").arg(strFile));
            added.bUnloadable = true;
            return false;
        }
        if (!vecImage.empty() && volume.addFrame(vecImage.front().get(), frameCentre(series.centres, nFrame),
                                                 series.listTilt.value(nFrame))) {
            ++added.nAdded;
        } else {
            report.fail(QStringLiteral("%1 holds no image and is left out of the volume.").arg(strFile));
        }
        return true;
    });
    return added;
}

/// Reports that the user stopped the run, and makes its outcome.
RunOutcome stopped(CRunReport& report)
{
    const QString strText = QStringLiteral("%1>The reciprocal space volume was stopped. Nothing was saved.")
                                .arg(currentTimeStamp());
    report.fail(strText);
    return {RunEnd::Stopped, strText};
}

}  // namespace

QString reciprocalVolumeFile(const DataSet& dataSet)
{
    const QString strFile = fileOfProject(dataSet, QStringLiteral(".mrc"));
    return frameAmongTargets({strFile}, dataSet.allFiles()).isEmpty()
               ? strFile
               : fileOfProject(dataSet, QStringLiteral("_volume.mrc"));
}

RunOutcome exportReciprocalVolume(const DataSet& dataSet, const VolumeExportParameters& parameters,
                                  CRunReport& report)
{
    const SeriesSnapshot series(dataSet);
    const QString strFile = reciprocalVolumeFile(dataSet);

    if (series.frameCount() != series.centres.m_listShift.size()) {
        return refuseRun(report, QStringLiteral("No shift correction data. Run shift evaluation first."));
    }
    if (series.frameCount() == 0) {
        return refuseRun(report, QStringLiteral("There are no frames to make a reciprocal volume of."));
    }
    if (!frameAmongTargets({strFile}, series.allFiles()).isEmpty()) {
        return refuseRun(report,
                         QStringLiteral("%1 is a frame of this series and would be overwritten. Nothing was "
                                        "exported.")
                             .arg(strFile));
    }
    CReciprocalVolume volume;
    if (!volume.create(parameters.nEdge, parameters.nEdge, parameters.nEdge)) {
        return refuseRun(report, QStringLiteral("Failed to create reciprocal volume. Not enough memory?"));
    }
    volume.setPixelSize(dataSet.m_dfPixelSize);
    volume.setRotationAxis(dataSet.m_dfRotationAxis);
    volume.setWavelength(dataSet.m_dfWavelength);
    volume.setDistortion(dataSet.m_distortion);

    report.addMessage(QStringLiteral("%1>Constructing reciprocal space volume...").arg(currentTimeStamp()),
                      Severity::Milestone);
    const AddedFrames added = addFrames(volume, series, report);
    if (added.outcome.end == RunEnd::Stopped) {
        return stopped(report);
    }
    // A fault other than a frame that could not be loaded, such as a lack of memory: nothing is saved.
    if (added.outcome.end == RunEnd::Failed && !added.bUnloadable) {
        return added.outcome;
    }
    if (added.nAdded == 0) {
        return failRun(report, QStringLiteral("No frame could be added. %1 was not written.").arg(strFile));
    }

    report.addMessage(QStringLiteral("%1>Saving reciprocal space volume to file...").arg(currentTimeStamp()),
                      Severity::Milestone);
    // A stop and a failed write both make the writer return false; bStopped tells them apart.
    bool bStopped = false;
    const auto goOn = [&] {
        bStopped = bStopped || !report.goOn();
        return !bStopped;
    };
    QString strReason;
    const bool bSaved = parameters.bScaled ? volume.saveScaled(strFile, parameters.dfContrastMin,
                                                               parameters.dfContrastMax, goOn, &strReason)
                                           : volume.saveRaw(strFile, goOn, &strReason);
    if (bStopped) {
        return stopped(report);
    }
    if (!bSaved) {
        return failRun(report,
                       QStringLiteral("Reciprocal space volume could not be saved: %1").arg(strReason));
    }
    report.addMessage(
        QStringLiteral("%1>Reciprocal space volume saved to file: %2").arg(currentTimeStamp(), strFile),
        Severity::Milestone);
    return added.nAdded == series.frameCount() ? added.outcome : failedAsSaid(report);
}

}  // namespace tessera
