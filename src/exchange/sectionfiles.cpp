#include "exchange/sectionfiles.h"

#include "crystal/cellarithmetic.h"
#include "frames/frametargets.h"
#include "imagefiles/mrcwriter.h"
#include "records/runends.h"
#include "records/wholefile.h"

#include <QBuffer>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

QString axisText(const std::array<int, 3>& anVector)
{
    return QStringLiteral("%1 %2 %3").arg(anVector[0]).arg(anVector[1]).arg(anVector[2]);
}

/// The labels of the file, which viewers show. The format asks for ASCII, so Å⁻¹ is written as 1/A.
QStringList labelsOf(const ReciprocalSection& section)
{
    QStringList listLabel = {QStringLiteral("Section %1 of reciprocal space, mean counts, NaN: not seen")
                                 .arg(section.plane.strName),
                             QStringLiteral("Unit 1/A, %1 1/A a pixel, slab %2 1/A, height %3 1/A")
                                 .arg(section.dfStep, 0, 'g', 8)
                                 .arg(section.dfThickness, 0, 'g', 6)
                                 .arg(section.frame.dfHeight, 0, 'g', 6),
                             QStringLiteral("x along %1, y towards %2")
                                 .arg(axisText(section.frame.anFirst), axisText(section.frame.anSecond))};
    const auto narrow = [](const DoubleVector& v) { return Vec3D{float(v[0]), float(v[1]), float(v[2])}; };
    const auto cell = cellParameters(
        {narrow(section.basis[0]), narrow(section.basis[1]), narrow(section.basis[2])});
    if (cell) {
        QStringList listNumber;
        for (const double df : cell->numbers()) {
            listNumber.append(QString::number(df, 'f', 4));
        }
        listLabel.append(QStringLiteral("Cell %1").arg(listNumber.join(QLatin1Char(' '))));
    }
    if (!section.strLaueClass.isEmpty()) {
        listLabel.append(QStringLiteral("Averaged by %1").arg(section.strLaueClass));
    }
    if (section.bWithoutRings) {
        listLabel.append(QStringLiteral("Medians of rings around the direct beam subtracted"));
    }
    return listLabel;
}

MrcNotes notesOf(const ReciprocalSection& section)
{
    MrcNotes notes;
    notes.dfPixelSize = section.dfStep;
    notes.nStartX = notes.nStartY = -section.centre();
    notes.listLabel = labelsOf(section);
    double dfSum = 0, dfSquares = 0;
    qint64 nSeen = 0;
    for (const float f : section.listValue) {
        if (std::isfinite(f)) {
            notes.fMinimum = nSeen == 0 ? f : std::min(notes.fMinimum, f);
            notes.fMaximum = nSeen == 0 ? f : std::max(notes.fMaximum, f);
            dfSum += double(f);
            ++nSeen;
        }
    }
    if (nSeen > 0) {
        const double dfMean = dfSum / double(nSeen);
        for (const float f : section.listValue) {
            dfSquares += std::isfinite(f) ? (double(f) - dfMean) * (double(f) - dfMean) : 0;
        }
        notes.fMean = float(dfMean);
        notes.fDeviation = float(std::sqrt(dfSquares / double(nSeen)));
    }
    return notes;
}

}  // namespace

QString sectionFile(const DataSet& dataSet, const SectionPlane& plane, const QString& strEnding)
{
    return fileOfProject(dataSet, QLatin1Char('_') + sectionFileWord(plane) + strEnding);
}

bool writeSectionMrc(const ReciprocalSection& section, const QString& strFile, QString* pstrReason)
{
    const MrcNotes notes = notesOf(section);
    CMrcWriter<float> writer;
    writer.open(strFile, section.nSide, section.nSide, 1, &notes);
    writer.addSection(section.listValue.data());
    return writer.commit(pstrReason);
}

QByteArray sectionPng(const ReciprocalSection& section, const SectionLook& look)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const QImage image = drawSection(section, look);
    if (image.isNull() || !image.save(&buffer, "PNG")) {
        return {};
    }
    return bytes;
}

RunOutcome writeSections(const DataSet& dataSet, const std::vector<ReciprocalSection>& listSection,
                         const SectionLook& look, CRunReport& report, QStringList* pWritten)
{
    QStringList listTarget;
    for (const ReciprocalSection& section : listSection) {
        listTarget.append(sectionFile(dataSet, section.plane, QStringLiteral(".mrc")));
        listTarget.append(sectionFile(dataSet, section.plane, QStringLiteral(".png")));
    }
    if (overwritesFrames(listTarget, dataSet.allFiles(), report)) {
        return {RunEnd::Refused, report.reason()};
    }
    for (size_t n = 0; n < listSection.size(); ++n) {
        const ReciprocalSection& section = listSection[n];
        const QString& strMrc = listTarget[2 * int(n)];
        const QString& strPng = listTarget[2 * int(n) + 1];
        report.addMessage(describeSection(section));
        QString strReason;
        const QByteArray bytes = sectionPng(section, look);
        if (bytes.isEmpty()) {
            return failRun(report, QStringLiteral("%1: no memory for the picture").arg(strPng));
        }
        if (!writeSectionMrc(section, strMrc, &strReason) || !writeWholeFile(strPng, bytes, &strReason)) {
            return failRun(report, QStringLiteral("The section could not be saved: %1").arg(strReason));
        }
        report.addMessage(QStringLiteral("Section written: %1, %2").arg(strMrc, strPng));
        if (pWritten) {
            pWritten->append({strMrc, strPng});
        }
    }
    return {};
}

}  // namespace tessera
