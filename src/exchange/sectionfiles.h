// Section files: sections of reciprocal space as MRC for programs, and as PNG to look at.
#pragma once

#include "exchange/sectionpicture.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tessera {

/// PROJECTDIR/NAME_hk0 and the ending, such as ".mrc".
QString sectionFile(const DataSet& dataSet, const SectionPlane& plane, const QString& strEnding);

/// One image of 32-bit floats, NaN where no frame has been, the second axis upwards. The cell of the header
/// has Å⁻¹ in place of Å, its start counts pixels from the origin, and labels tell plane, axes and cell.
/// @param pstrReason  may be null
bool writeSectionMrc(const ReciprocalSection& section, const QString& strFile, QString* pstrReason);

/// drawSection() as a PNG; the same bytes with and without a display.
/// @return empty where there is no picture
QByteArray sectionPng(const ReciprocalSection& section, const SectionLook& look);

/// Writes both files of each section beside the other results, and tells of each section in the log. A file
/// that is a frame of the series is refused before anything is written.
/// @param pWritten  gets the paths; may be null
RunOutcome writeSections(const DataSet& dataSet, const std::vector<ReciprocalSection>& listSection,
                         const SectionLook& look, CRunReport& report, QStringList* pWritten);

}  // namespace tessera
