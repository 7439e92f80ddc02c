#include "window/integration/qualitytable.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nRowHeight = 20;  // units of the picture, about pixels
const int g_nCharWidth = 8;   // room for a letter of the font below
const int g_nPadding = 12;    // left and right of a text together
const int g_nFontSize = 13;

QString quoted(const QString& strText)
{
    if (!strText.contains(QLatin1Char(',')) && !strText.contains(QLatin1Char('"'))) {
        return strText;
    }
    QString strInner = strText;
    strInner.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + strInner + QLatin1Char('"');
}

QString csvField(const QualityCell& cell)
{
    if (cell.nDecimals < 0) {
        return quoted(cell.strText);
    }
    return std::isfinite(cell.dfNumber) ? QString::number(cell.dfNumber, 'g', QLocale::FloatingPointShortest)
                                        : QString();
}

std::vector<int> columnWidths(const QualityTable& table, const QLocale& locale)
{
    std::vector<int> listWidth;
    for (size_t nColumn = 0; nColumn < table.listColumn.size(); ++nColumn) {
        int nChars = table.listColumn[nColumn].strTitle.size();
        for (const std::vector<QualityCell>& row : table.listRow) {
            nChars = std::max(nChars, row[nColumn].shown(locale).size());
        }
        listWidth.push_back(nChars * g_nCharWidth + g_nPadding);
    }
    return listWidth;
}

enum class SvgSide { Left, Right };
enum class SvgWeight { Normal, Bold };

/// A text that begins or, on the right side, ends at nX.
QString svgText(int nX, int nRow, const QString& strText, SvgSide side, SvgWeight weight)
{
    return QStringLiteral("<text x=\"%1\" y=\"%2\"%3%4>%5</text>\n")
        .arg(nX)
        .arg((nRow + 1) * g_nRowHeight - 6)
        .arg(side == SvgSide::Right ? QStringLiteral(" text-anchor=\"end\"") : QString(),
             weight == SvgWeight::Bold ? QStringLiteral(" font-weight=\"bold\"") : QString(),
             strText.toHtmlEscaped());
}

QString svgRow(const std::vector<QualityCell>& row, const std::vector<int>& listWidth, int nRow,
               SvgWeight weight, const QLocale& locale)
{
    QString strRow;
    int nLeft = 0;
    for (size_t n = 0; n < row.size(); ++n) {
        const QualityCell& cell = row[n];
        if (cell.barShare() > 0) {
            strRow += QStringLiteral(
                          "<rect x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" fill=\"#a8c8f0\"/>\n")
                          .arg(nLeft)
                          .arg(nRow * g_nRowHeight + 2)
                          .arg(cell.barShare() * listWidth[n], 0, 'f', 1)
                          .arg(g_nRowHeight - 4);
        }
        const bool bNumber = cell.nDecimals >= 0;
        strRow += svgText(bNumber ? nLeft + listWidth[n] - g_nPadding / 2 : nLeft + g_nPadding / 2, nRow,
                          cell.shown(locale), bNumber ? SvgSide::Right : SvgSide::Left, weight);
        nLeft += listWidth[n];
    }
    return strRow;
}

}  // namespace

QString QualityCell::shown(const QLocale& locale) const
{
    if (nDecimals < 0) {
        return strText;
    }
    return std::isfinite(dfNumber) ? locale.toString(dfNumber, 'f', nDecimals) : QStringLiteral("–");
}

double QualityCell::barShare() const
{
    return bBar && std::isfinite(dfNumber) ? std::min(std::max(dfNumber, 0.0), 1.0) : 0;
}

QString csvOf(const QualityTable& table)
{
    QStringList listField;
    for (const QualityColumn& column : table.listColumn) {
        listField.append(quoted(column.strTitle));
    }
    QString strCsv = listField.join(QLatin1Char(',')) + QLatin1Char('\n');
    for (const std::vector<QualityCell>& row : table.listRow) {
        listField.clear();
        for (const QualityCell& cell : row) {
            listField.append(csvField(cell));
        }
        strCsv += listField.join(QLatin1Char(',')) + QLatin1Char('\n');
    }
    return strCsv;
}

QByteArray svgOf(const QualityTable& table, const QLocale& locale)
{
    const std::vector<int> listWidth = columnWidths(table, locale);
    int nWidth = table.strTitle.size() * g_nCharWidth + g_nPadding;
    int nLeft = 0;
    QString strBody = svgText(g_nPadding / 2, 0, table.strTitle, SvgSide::Left, SvgWeight::Bold);
    for (size_t n = 0; n < listWidth.size(); ++n) {
        strBody += svgText(nLeft + g_nPadding / 2, 1, table.listColumn[n].strTitle, SvgSide::Left,
                           SvgWeight::Bold);
        nLeft += listWidth[n];
    }
    nWidth = std::max(nWidth, nLeft);
    const auto nRows = int(table.listRow.size());
    for (int nRow = 0; nRow < nRows; ++nRow) {
        strBody += svgRow(table.listRow[nRow], listWidth, nRow + 2,
                          nRow == table.nBold ? SvgWeight::Bold : SvgWeight::Normal, locale);
    }
    const int nHeight = (nRows + 2) * g_nRowHeight + g_nPadding / 2;
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\" "
               "font-family=\"sans-serif\" font-size=\"%3\">\n"
               "<rect width=\"%1\" height=\"%2\" fill=\"white\"/>\n%4</svg>\n")
        .arg(nWidth)
        .arg(nHeight)
        .arg(g_nFontSize)
        .arg(strBody)
        .toUtf8();
}

}  // namespace tessera
