#include "exchange/exchangewriting.h"

#include "frames/frametargets.h"
#include "records/fileset.h"
#include "records/runends.h"

#include <QDir>
#include <QStringList>

namespace tessera {

namespace {

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
        report.addMessage(
            QStringLiteral(
                "Warning: the tilt steps are not equal, as other programs assume; one frame is off by %1°.")
                .arg(geometry.dfWorstAngle, 0, 'f', 3),
            Severity::Warning);
    }
    if (geometry.worstBeam() > 1.5) {
        report.addMessage(QStringLiteral("Warning: the beam moves by up to %1 pixels over the exported "
                                         "frames, which other programs cannot correct.")
                              .arg(geometry.worstBeam(), 0, 'f', 1),
                          Severity::Warning);
    }
    if (geometry.rotation.kind != RotationKind::Continuous) {
        report.addMessage(QStringLiteral("Warning: XDS and DIALS assume that the crystal turned during the "
                                         "exposure of a frame, which it did not."),
                          Severity::Warning);
    }
}

}  // namespace

RunOutcome writeExchangeFiles(const ExchangeSource& source, const std::vector<NamedFile>& listFile,
                              CRunReport& report)
{
    CFileSet files;
    QStringList listName;
    for (const NamedFile& file : listFile) {
        listName.append(file.strFile);
    }
    if (overwritesFrames(listName, source.pData->allFiles(), report)) {
        return {RunEnd::Refused, report.reason()};
    }
    for (const NamedFile& file : listFile) {
        files.add(file.strFile, file.bytes);
    }
    QString strReason;
    if (!files.commit(&strReason)) {
        return failRun(report, strReason);
    }
    if (source.pWritten) {
        *source.pWritten += listName;
    }
    report.addMessage(QStringLiteral("Written: %1").arg(listName.join(QStringLiteral(", "))));
    return {};
}

QString templateOf(const ExchangeSource& source, const ExchangeFrames& frames, QChar chDigit)
{
    return QDir(source.strFolder)
        .relativeFilePath(frames.strFolder + QLatin1Char('/') + frames.numbering.pattern(chDigit));
}

std::optional<ExchangeGeometry> toldGeometry(const ExchangeSource& source, const ExchangeFrames& frames,
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

}  // namespace tessera
