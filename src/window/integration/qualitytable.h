// QualityTable: a table of an integration as records, and as CSV and SVG.
#pragma once

#include <QByteArray>
#include <QString>

#include <limits>
#include <vector>

class QLocale;

namespace tessera {

/// A text, or a number that is shown with some decimals and, if it shall be seen at a glance, as a bar.
struct QualityCell {
    QString strText = {};  ///< of a cell without a number
    double dfNumber = std::numeric_limits<double>::quiet_NaN();
    int nDecimals = -1;  ///< −1: a text
    bool bBar = false;   ///< a bar of that length, 1 being the whole width

    /// A cell of text.
    static QualityCell text(const QString& strText) { return {strText}; }
    /// A number that is read.
    static QualityCell number(double df, int nDecimals) { return {{}, df, nDecimals, false}; }
    /// A number that is also drawn as a bar, 1 being the whole width.
    static QualityCell bar(double df, int nDecimals) { return {{}, df, nDecimals, true}; }

    /// What is read: numbers in the locale, a dash for one that is not known.
    QString shown(const QLocale& locale) const;
    /// The part of the width that the bar takes, 0 to 1; 0 without a bar.
    double barShare() const;
};

/// The title of a column.
struct QualityColumn {
    QString strTitle;
    QString strTip;  ///< what its numbers mean
};

/// A table as it is shown and saved.
struct QualityTable {
    QString strName;  ///< of its files: "laue_operations"
    QString strTitle;
    std::vector<QualityColumn> listColumn;
    std::vector<std::vector<QualityCell>> listRow;
    int nBold = -1;  ///< the row that was chosen; −1: none
};

/// Titles and rows with commas; numbers in the C locale, as short as they can be without loss.
QString csvOf(const QualityTable& table);

/// The table with its bars as a picture, in a locale of the reader.
QByteArray svgOf(const QualityTable& table, const QLocale& locale);

}  // namespace tessera
