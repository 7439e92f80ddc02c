// SummaryRow: a table of many series, made from the files that --json wrote.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

namespace tessera {

/// The contents of a file.
struct SummaryFile {
    QString strFileName;
    QByteArray bytes;
    QString strFault;  ///< why it could not be read; empty if it could
};

enum class SummaryState { BadFile, Failed, Misfit, Reached };  ///< in the order of the table

/// A series, or a file that is not a summary.
struct SummaryRow {
    QString strSeries;  ///< path of the file, without the part that all files have in common
    SummaryState state = SummaryState::BadFile;
    double dfIndexedShare = 0;  ///< fraction of the reflections that were indexed; 0 without that stage
    QJsonObject summary;        ///< empty for a bad file
    QString strNote;            ///< the fault, the stage that failed or is bad and why, or the first warning
};

/// Reads a file; if that fails, the result has the fault.
SummaryFile readSummaryFile(const QString& strFileName);

/// One row per file, the worst first: bad files, failed series, series whose result is judged bad, and then
/// the others by the fraction of reflections that were indexed. Equal rows are sorted by name.
QList<SummaryRow> summaryRows(const QList<SummaryFile>& listFile);

/// The rows as a text table, followed by a line of counts and medians.
QString summaryText(const QList<SummaryRow>& listRow);

}  // namespace tessera
