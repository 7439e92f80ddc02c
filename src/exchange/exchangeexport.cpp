#include "exchange/exchangeexport.h"

#include "exchange/dialsfiles.h"
#include "exchange/exchangeframes.h"
#include "exchange/exchangegeometry.h"
#include "exchange/exchangereflections.h"
#include "exchange/xdsinput.h"
#include "exchange/zoneaxiscif.h"
#include "frames/firstimage.h"
#include "frames/frametargets.h"
#include "records/fileset.h"
#include "records/runends.h"
#include "records/sealedfile.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

struct NamedFile {
    QString strFile;
    QByteArray bytes;
};

/// Writes the files of an export in one go.
RunOutcome writeFiles(const ExchangeSource& source, const std::vector<NamedFile>& listFile,
                      CRunReport& report)
{
    CFileSet files;
    QStringList listName;
    for (const NamedFile& file : listFile) {
        listName.append(file.strFile);
    }
    if (overwritesFrames(listName, source.pData->m_listFrameFile, report)) {
        return {RunEnd::Refused, report.reason()};
    }
    for (const NamedFile& file : listFile) {
        files.add(file.strFile, file.bytes);
    }
    QString strReason;
    if (!files.commit(&strReason)) {
        return failRun(report, strReason);
    }
    report.addMessage(QStringLiteral("Written: %1").arg(listName.join(QStringLiteral(", "))));
    return {};
}

/// The first of the names that a sealed text may be written to.
QString freeName(const QStringList& listName, CRunReport& report)
{
    for (const QString& strFile : listName) {
        if (isFreeForSealed(strFile)) {
            if (strFile != listName.first()) {
                report.addMessage(QStringLiteral("%1 stays, as it was not written here or was changed since.")
                                      .arg(QFileInfo(listName.first()).fileName()),
                                  Severity::Milestone);
            }
            return strFile;
        }
    }
    return {};
}

QStringList xdsNames(const ExchangeSource& source)
{
    const QString strFolder = source.strFolder + QLatin1Char('/');
    QStringList list = {strFolder + QStringLiteral("XDS.INP")};
    for (int n = 1; n <= 100; ++n) {
        list.append(strFolder + plainName(*source.pData) + QStringLiteral("_XDS%1.INP").arg(n));
    }
    return list;
}

/// The template of the frames from the folder of the other files.
QString templateOf(const ExchangeSource& source, const ExchangeFrames& frames, QChar chDigit)
{
    return QDir(source.strFolder)
        .relativeFilePath(frames.strFolder + QLatin1Char('/') + frames.numbering.pattern(chDigit));
}

void tellGeometry(const ExchangeGeometry& geometry, CRunReport& report)
{
    report.addMessage(QStringLiteral("Axis %1 %2 %3 (x right, y up, z to the source), %4° a frame from %5°, "
                                     "distance %6 mm, beam at %7, %8.")
                          .arg(geometry.axis[0], 0, 'f', 5)
                          .arg(geometry.axis[1], 0, 'f', 5)
                          .arg(geometry.axis[2], 0, 'f', 5)
                          .arg(geometry.dfWidth, 0, 'f', 4)
                          .arg(geometry.dfStart, 0, 'f', 4)
                          .arg(geometry.dfDistance, 0, 'f', 3)
                          .arg(geometry.beam.dfX, 0, 'f', 2)
                          .arg(geometry.beam.dfY, 0, 'f', 2));
    if (geometry.dfWorstAngle > geometry.dfWidth / 4) {
        report.addMessage(QStringLiteral("Warning: the frames do not turn by equal steps, which other "
                                         "programs take them to do; one is off by %1°.")
                              .arg(geometry.dfWorstAngle, 0, 'f', 3),
                          Severity::Warning);
    }
    if (geometry.worstBeam() > 1.5) {
        report.addMessage(QStringLiteral("Warning: the beam wanders by up to %1 pixels over the frames as "
                                         "other programs get them, which these cannot follow.")
                              .arg(geometry.worstBeam(), 0, 'f', 1),
                          Severity::Warning);
    }
    if (geometry.rotation.kind != RotationKind::Continuous) {
        report.addMessage(QStringLiteral("Warning: XDS and DIALS take the crystal to turn while a frame is "
                                         "exposed, which it did not."),
                          Severity::Warning);
    }
}

std::optional<ExchangeGeometry> geometryOf(const ExchangeSource& source, const ExchangeFrames& frames,
                                           CRunReport& report)
{
    QString strReason;
    std::optional<ExchangeGeometry> geometry = exchangeGeometry(source.series, frames.numbering,
                                                                frames.listMoved, source.bCell, &strReason);
    if (geometry) {
        tellGeometry(*geometry, report);
    } else {
        report.fail(strReason);
    }
    return geometry;
}

/// Counts of the least pixel that is a measurement: 0 where the camera counts electrons, so that empty pixels
/// are common; else a 0 is a pixel that told nothing.
std::optional<int> leastValid(const DataSet& dataSet, CRunReport& report)
{
    const double dfCommon = 0.005;  // of the pixels; gaps between modules are rarer, empty pixels are not
    const auto pImage = firstImage(SeriesSnapshot(dataSet), 0, {}, report);
    if (!pImage) {
        return std::nullopt;
    }
    const qint64 nPixels = qint64(pImage->Width()) * pImage->Height();
    const qint64 nEmpty = std::count_if(pImage->Data(), pImage->Data() + nPixels,
                                        [](float f) { return f >= 0 && f < 1; });
    return double(nEmpty) > dfCommon * double(nPixels) ? 0 : 1;
}

}  // namespace

RunOutcome exportForXds(const ExchangeSource& source, CRunReport& report)
{
    const DataSet& dataSet = *source.pData;
    const ExchangeFrames frames = chooseExchangeFrames(source);
    const std::optional<ExchangeGeometry> geometry = geometryOf(source, frames, report);
    if (!geometry) {
        return failedAsSaid(report);
    }
    XdsOptions options;
    options.strName = dataSet.m_strProjectName;
    options.strTemplate = templateOf(source, frames, QLatin1Char('?'));
    options.listUntrusted = untrustedOf(source, frames);
    if (source.pIntegration && source.pIntegration->integrated.dfMaxDStar > 0) {
        options.dfHighest = 1 / source.pIntegration->integrated.dfMaxDStar;
    }
    const std::optional<int> least = leastValid(dataSet, report);
    if (!least) {
        return failedAsSaid(report);
    }
    options.nMinimumValid = *least;
    const RunOutcome written = writeExchangeFrames(source, frames, report);
    if (!written.finished()) {
        return written;
    }
    if (options.strTemplate.contains(QLatin1Char(' '))) {
        report.addMessage(
            QStringLiteral("Warning: XDS reads no names with blanks, as in %1.").arg(options.strTemplate),
            Severity::Warning);
    }
    const QString strFile = freeName(xdsNames(source), report);
    if (strFile.isEmpty()) {
        return failRun(report, QStringLiteral("No name is free for XDS.INP."));
    }
    return writeFiles(source, {{strFile, xdsInput(*geometry, options)}}, report);
}

RunOutcome exportForDials(const ExchangeSource& source, const std::vector<GeometrySpot>& listSpot,
                          CRunReport& report)
{
    if (!source.bCell || listSpot.empty()) {
        return refuseRun(report, QStringLiteral("No peaks are indexed, and DIALS is to get indexed ones."));
    }
    const ExchangeFrames frames = chooseExchangeFrames(source);
    const std::optional<ExchangeGeometry> geometry = geometryOf(source, frames, report);
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
    options.listUntrusted = untrustedOf(source, frames);
    // Reflections are as wide as their centroids scatter and as the step blurs them, at least.
    options.dfRockingSigma = std::hypot(scatter.dfAngle, geometry->dfWidth / 2);
    if (source.pIntegration) {
        options.dfSpotSigma = source.pIntegration->integrated.model.dfSigma;
    }
    const RunOutcome written = writeExchangeFrames(source, frames, report);
    if (!written.finished()) {
        return written;
    }
    return writeFiles(
        source,
        {{source.file(QStringLiteral(".expt")), dialsExperiment(*geometry, options)},
         {source.file(QStringLiteral(".refl")), dialsReflections(*geometry, options, listReflection)}},
        report);
}

RunOutcome exportZoneAxisCif(const ExchangeSource& source, const VirtualFrameOptions& options,
                             CRunReport& report)
{
    if (!source.pIntegration) {
        return refuseRun(report,
                         QStringLiteral("Nothing is integrated, and the list for dynamical refinement holds "
                                        "intensities."));
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
    return writeFiles(
        source, {{source.file(QStringLiteral("_dyn.cif_pets")), zoneAxisCif(*source.pIntegration, chosen)}},
        report);
}

}  // namespace tessera
