// PeakFilter: which rows of the peak table are shown, as a line of text says it.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

class CPeakTable;

/// Conditions that a reflection has to meet, all of them, read from a line such as
/// "I>1000, d<1.2, h+k=2n, frame=12..30, unindexed".
///
/// Commas part the terms. A term is `indexed`, `unindexed`, `hkl=2 0 -4`, or a comparison. Its left side is a
/// column, or a sum of columns with whole factors (`-h+k`, `2h+l`); its right side a number with a decimal
/// point, a range `12..30` with both ends, or `2n`, `3n+1`: a multiple of a whole number and what is left.
/// Comparisons are = != < <= > >=, of a range and of a multiple = and != alone. Columns have the names of
/// their titles, with or without the unit in brackets, and some shorter ones (columnNames()); case does not
/// count. Of a column of words, `flags=slow` wants the words in it, and `flags` alone any.
///
/// What is equal goes by the digits that the table shows: `d=1.25` is all that is shown so. Where a number
/// is missing (the index of a reflection that isn't indexed) no comparison holds, != included.
class CPeakFilter {
public:
    /// Without terms: every row passes.
    CPeakFilter() = default;

    /// @param strLine    empty or blank: a filter without terms
    /// @param vecTitle   of the columns of the table, g_nPeakTableColumns of them
    /// @param strReason  what is wrong, in words, where nothing is returned
    static std::optional<CPeakFilter> parse(const QString& strLine, const QVector<QString>& vecTitle,
                                            QString& strReason);

    bool isEmpty() const { return m_vecTerm.empty(); }  ///< without terms
    /// Whether a row meets all conditions.
    bool passes(const CPeakTable& table, int nRow) const;
    /// passes() of all rows of a table.
    std::vector<char> rowsThatPass(const CPeakTable& table) const;

    /// How a column can be named, its title among it.
    static QStringList columnNames(int nColumn, const QString& strTitle);

private:
    friend class CPeakFilterReader;

    using Term = std::function<bool(const CPeakTable& table, int nRow)>;
    std::vector<Term> m_vecTerm;
};

}  // namespace tessera
