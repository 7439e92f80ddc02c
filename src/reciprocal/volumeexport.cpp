#include "reciprocal/volumeexport.h"

#include "frames/frameloader.h"
#include "frames/frametargets.h"
#include "geometry/rotationgeometry.h"
#include "reciprocal/reciprocalvolume.h"
#include "records/timestamp.h"

#include <exception>

namespace tessera {

namespace {

bool fail(CRunReport& report, const QString& strText)
{
    report.fail(strText);
    return false;
}

/// How far the walk over the frames came.
struct Walk {
    int nAdded = 0;
    bool bComplete = false;
    bool bStopped = false;
};

Walk addFrames(CReciprocalVolume& volume, const QStringList& listFrame, const QList<QPoint>& listHotPixel,
               const BeamCentres& centres, const QList<double>& listTilt, CRunReport& report)
{
    Walk walk;
    const int nFrames = listFrame.size();
    for (int i = 0; i < nFrames; ++i) {
        report.setProgress(i + 1);
        walk.bStopped = !report.goOn();
        if (walk.bStopped)
            return walk;
        ImageList vecImage;
        if (!loadFirstImage(vecImage, listFrame[i], listHotPixel, report)) {
            report.fail(QStringLiteral("Failed to load: %1").arg(listFrame[i]));
            return walk;
        }
        if (!vecImage.empty() &&
            volume.addFrame(vecImage.front().get(), frameCentre(centres, i), listTilt.value(i)))
            ++walk.nAdded;
    }
    walk.bComplete = walk.nAdded == nFrames;
    return walk;
}

}  // namespace

QString reciprocalVolumeFile(const DataSet& dataSet)
{
    const QString strFile = fileOfProject(dataSet, QStringLiteral(".mrc"));
    return frameAmongTargets({strFile}, dataSet.m_listFrameFile).isEmpty()
               ? strFile
               : fileOfProject(dataSet, QStringLiteral("_volume.mrc"));
}

bool exportReciprocalVolume(const DataSet& dataSet, const VolumeExportParameters& parameters,
                            CRunReport& report)
{
    // Copies: the data set may change through waiting events.
    const QStringList listFrame = dataSet.m_listFrameFile;
    const QList<QPoint> listHotPixel = dataSet.m_listHotPixel;
    const QList<double> listTilt = dataSet.m_listOverallTilt;
    const BeamCentres centres = {dataSet.m_listShift, dataSet.m_dfCenterX, dataSet.m_dfCenterY};
    const QString strFile = reciprocalVolumeFile(dataSet);

    if (listFrame.size() != dataSet.m_listShift.size())
        return fail(report, QStringLiteral("No shift correction data. Run shift evaluation first."));
    if (listFrame.isEmpty())
        return fail(report, QStringLiteral("There are no frames to make a reciprocal volume of."));
    if (!frameAmongTargets({strFile}, listFrame).isEmpty())
        return fail(report,
                    QStringLiteral("%1 is a frame of this series and would be overwritten. Nothing was "
                                   "exported.")
                        .arg(strFile));
    CReciprocalVolume volume;
    if (!volume.create(parameters.nEdge, parameters.nEdge, parameters.nEdge))
        return fail(report, QStringLiteral("Failed to create reciprocal volume. Not enough memory?"));
    volume.setPixelSize(dataSet.m_dfPixelSize);
    volume.setRotationAxis(dataSet.m_dfRotationAxis);
    volume.setWavelength(dataSet.m_dfWavelength);

    report.addMessage(QStringLiteral("%1>Constructing reciprocal space volume...").arg(currentTimeStamp()),
                      Severity::Milestone);
    report.startProgress(QStringLiteral("%v/%m"), 0, listFrame.size(), true);
    Walk walk;
    try {
        walk = addFrames(volume, listFrame, listHotPixel, centres, listTilt, report);
    } catch (const std::exception& e) {
        report.endProgress();
        return fail(report, QStringLiteral("Error: %1").arg(QString::fromLocal8Bit(e.what())));
    }
    report.endProgress();
    const QString strStopped = QStringLiteral(
        "%1>The reciprocal space volume was stopped. Nothing was saved.");
    if (walk.bStopped)
        return fail(report, strStopped.arg(currentTimeStamp()));
    if (walk.nAdded == 0)
        return fail(report, QStringLiteral("No frame could be added. %1 was not written.").arg(strFile));

    report.addMessage(QStringLiteral("%1>Saving reciprocal space volume to file...").arg(currentTimeStamp()),
                      Severity::Milestone);
    bool bStopped = false;
    const auto goOn = [&] { return !(bStopped = bStopped || !report.goOn()); };
    QString strReason;
    const bool bSaved = parameters.bScaled ? volume.saveScaled(strFile, parameters.dfContrastMin,
                                                               parameters.dfContrastMax, goOn, &strReason)
                                           : volume.saveRaw(strFile, goOn, &strReason);
    if (bStopped)
        return fail(report, strStopped.arg(currentTimeStamp()));
    if (!bSaved)
        return fail(report, QStringLiteral("Reciprocal space volume could not be saved: %1").arg(strReason));
    report.addMessage(
        QStringLiteral("%1>Reciprocal space volume saved to file: %2").arg(currentTimeStamp(), strFile),
        Severity::Milestone);
    return walk.bComplete;
}

}  // namespace tessera
