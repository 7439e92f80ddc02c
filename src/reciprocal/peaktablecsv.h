// PeakTableCsv: rows of the peak table as comma-separated values.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

namespace tessera {

class CPeakTable;

/// The table as RFC 4180 has it, in UTF-8: a line of titles, then the rows, each ended by CR LF; fields with
/// commas, quotes or line ends in quotes. Numbers have a decimal point, no digit groups, and as many digits
/// as it takes to read the same number again; a field is empty where there is none.
///
/// @param vecTitle   of all columns of the table
/// @param vecRow     rows in their order, below table.rowCount()
/// @param vecColumn  columns in their order, below g_nPeakTableColumns
QByteArray peakTableCsv(const CPeakTable& table, const QVector<QString>& vecTitle, const QVector<int>& vecRow,
                        const QVector<int>& vecColumn);

}  // namespace tessera
