#include "reciprocal/peaktablecsv.h"

#include "reciprocal/peaktable.h"

#include <QLocale>

#include <cmath>

namespace tessera {

namespace {

QByteArray quoted(const QString& strText)
{
    const bool bQuote = strText.contains(QLatin1Char(',')) || strText.contains(QLatin1Char('"')) ||
                        strText.contains(QLatin1Char('\n')) || strText.contains(QLatin1Char('\r'));
    if (!bQuote) {
        return strText.toUtf8();
    }
    QString strDoubled = strText;
    strDoubled.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return '"' + strDoubled.toUtf8() + '"';
}

QByteArray field(const CPeakTable& table, int nRow, int nColumn)
{
    if (CPeakTable::isText(nColumn)) {
        return quoted(table.text(nRow, nColumn));
    }
    const double df = table.number(nRow, nColumn);
    return std::isnan(df) ? QByteArray() : QByteArray::number(df, 'g', QLocale::FloatingPointShortest);
}

}  // namespace

QByteArray peakTableCsv(const CPeakTable& table, const QVector<QString>& vecTitle, const QVector<int>& vecRow,
                        const QVector<int>& vecColumn)
{
    QByteArray bytesCsv;
    const auto addLine = [&](const auto& fnField) {
        for (int i = 0; i < vecColumn.size(); ++i) {
            bytesCsv += i > 0 ? "," : "";
            bytesCsv += fnField(vecColumn[i]);
        }
        bytesCsv += "\r\n";
    };
    addLine([&](int nColumn) { return quoted(vecTitle.value(nColumn)); });
    for (int nRow : vecRow) {
        addLine([&](int nColumn) { return field(table, nRow, nColumn); });
    }
    return bytesCsv;
}

}  // namespace tessera
