// Section files: sections of reciprocal space as MRC for programs, and as PNG to look at.
#pragma once

#include "exchange/sectionpicture.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tessera {

/// The file of a section: PROJECTDIR/NAME_hk0 and the ending, such as ".mrc".
QString sectionFile(const DataSet& dataSet, const SectionPlane& plane, const QString& strEnding);

/// Writes a section as an MRC image of 32-bit floats with the second axis upwards. Pixels that no frame has
/// covered are NaN. The cell of the header is in Å⁻¹ instead of Å, its start is the distance from the
/// origin in pixels, and labels describe plane, axes and cell.
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
bool writeSectionMrc(const ReciprocalSection& section, const QString& strFile, QString* pstrReason);

/// The picture of drawSection() as a PNG, with the same bytes with and without a display.
/// @return empty where there is no picture
QByteArray sectionPng(const ReciprocalSection& section, const SectionLook& look);

/// Writes both files of each section beside the other results, and logs each section. Nothing is written if
/// one of the files is a frame of the series.
/// @param pWritten  may be null; takes the paths
RunOutcome writeSections(const DataSet& dataSet, const std::vector<ReciprocalSection>& listSection,
                         const SectionLook& look, CRunReport& report, QStringList* pWritten);

}  // namespace tessera
