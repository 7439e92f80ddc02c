// SummaryRow: many series in one table, from the files that --json wrote.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

namespace tessera {

/// A file of the command line as it was read.
struct SummaryFile {
    QString strFileName;
    QByteArray bytes;
    QString strFault;  ///< why it could not be read; empty otherwise
};

enum class SummaryState { BadFile, Failed, Misfit, Reached };  ///< in the order of the table

/// One series, or one file that tells of none.
struct SummaryRow {
    QString strSeries;  ///< where the file lies, without what all have in common
    SummaryState state = SummaryState::BadFile;
    double dfIndexedShare = 0;  ///< 0 too where the stages did not go as far
    QJsonObject summary;        ///< empty for a bad file
    QString strNote;            ///< the fault, the stage that failed or is bad and why, or the first warning
};

/// Reads `strFileName`, with the fault in the result when that is not possible.
SummaryFile readSummaryFile(const QString& strFileName);

/// One row per file, the worst first: bad files, then failed series, then those whose result is judged bad,
/// then by the share of the reflections that were indexed. Rows that are alike in this are in the order of
/// their names.
QList<SummaryRow> summaryRows(const QList<SummaryFile>& listFile);

/// The rows as a table in columns of equal width, with a line of counts and medians below it.
QString summaryText(const QList<SummaryRow>& listRow);

}  // namespace tessera
