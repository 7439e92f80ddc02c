#include "crystals/knowncells.h"

#include "records/reason.h"
#include "records/regularfile.h"

#include <gemmi/symmetry.hpp>

#include <QFile>
#include <QRegularExpression>
#include <QTextCodec>

#include <Eigen/LU>

#include <algorithm>
#include <array>
#include <cmath>

namespace tessera {

namespace {

constexpr qint64 g_nMostBytes = qint64(64) << 20;  ///< 64 MB: about a million compounds
const int g_nLongestName = 200;                    ///< letters, so that a name fits into a line of the log

/// What is in a column, in the order of a table without a head.
enum Column { Name, A, B, C, Alpha, Beta, Gamma, Symmetry, Formula, ColumnCount };
const int g_nNeeded = Symmetry;  ///< the columns before this one are in each line: name and cell

using Columns = std::array<int, ColumnCount>;  ///< index of each Column in a line; -1: not there

/// The text of a file, UTF-8 or else Latin-1, with '\n' at the end of each line, without byte order mark and
/// control characters.
QString textOf(const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    const QString strText = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(),
                                                                         &state);
    const bool bUtf8 = state.invalidChars == 0 && state.remainingChars == 0;
    QString str = bUtf8 ? strText : QString::fromLatin1(bytes);
    if (str.startsWith(QChar(QChar::ByteOrderMark))) {
        str.remove(0, 1);
    }
    str.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    // A terminal that shows a name would obey control characters in it.
    for (QChar& ch : str) {
        if (ch.category() == QChar::Other_Control && ch != QLatin1Char('\n') && ch != QLatin1Char('\t')) {
            ch = QLatin1Char(' ');
        }
    }
    return str;
}

/// Part of a line as a message quotes it: cut, with "…" behind, if it is long.
QString quoted(const QString& strPart)
{
    const int nMost = 60;
    return strPart.size() > nMost ? strPart.left(nMost) + QStringLiteral("…") : strPart;
}

bool isComment(const QString& strLine)
{
    return strLine.trimmed().isEmpty() || strLine.trimmed().startsWith(QLatin1Char('#'));
}

/// The character between the columns of a line: a semicolon if it has one, else a tabulator, else a comma.
QChar separatorOf(const QString& strLine)
{
    for (const char ch : {';', '\t'}) {
        if (strLine.contains(QLatin1Char(ch))) {
            return QLatin1Char(ch);
        }
    }
    return QLatin1Char(',');
}

/// The columns of a line, without the quotes round them. Two quotes within quotes stand for one quote.
QStringList partsOf(const QString& strLine, QChar separator)
{
    const QChar quote = QLatin1Char('"');
    QStringList listPart = {QString()};
    bool bQuoted = false;
    for (int n = 0; n < strLine.size(); ++n) {
        const QChar ch = strLine[n];
        if (bQuoted && ch == quote && n + 1 < strLine.size() && strLine[n + 1] == quote) {
            listPart.last() += quote;
            ++n;
        } else if (ch == quote) {
            bQuoted = !bQuoted;
        } else if (ch == separator && !bQuoted) {
            listPart.append(QString());
        } else {
            listPart.last() += ch;
        }
    }
    for (QString& strPart : listPart) {
        strPart = strPart.simplified();
    }
    return listPart;
}

/// The number in a text such as "4.913(2)", of which the standard error is ignored. A decimal comma is read
/// unless commas separate the columns.
/// @return NaN if it is no number
double numberOf(QString strText, QChar separator)
{
    static const QRegularExpression error(QStringLiteral("\\(\\d+\\)$"));
    strText.remove(error);
    if (separator != QLatin1Char(',')) {
        strText.replace(QLatin1Char(','), QLatin1Char('.'));
    }
    bool bOk = false;
    const double dfNumber = strText.toDouble(&bOk);
    return bOk ? dfNumber : std::nan("");
}

/// The column that a word of a head names; ColumnCount if it names none. A unit behind it is ignored, as in
/// "a (Å)" or "b / nm": lengths are in Å whatever it says.
Column columnOf(QString strWord)
{
    static const QRegularExpression unit(QStringLiteral("\\s*[/(\\[].*$"));
    strWord = strWord.toLower().remove(unit).replace(QLatin1Char('_'), QLatin1Char(' ')).simplified();
    const QStringList listWords[ColumnCount] = {
        {"name", "compound", "phase", "mineral"},
        {"a"},
        {"b"},
        {"c"},
        {"alpha", "al", QStringLiteral("α")},
        {"beta", "be", QStringLiteral("β")},
        {"gamma", "ga", QStringLiteral("γ")},
        {"centring", "centering", "lattice", "space group", "spacegroup", "sg", "symmetry"},
        {"formula"}};
    int n = 0;
    while (n < ColumnCount && !listWords[n].contains(strWord)) {
        ++n;
    }
    return Column(n);
}

/// Finds the columns by the words of a head. If a word occurs twice its first column counts.
/// @return false, with the columns unchanged, if name and the six numbers are not all in it: it is no head
bool takeHead(const QStringList& listPart, Columns& columns)
{
    Columns found;
    found.fill(-1);
    for (int n = 0; n < listPart.size(); ++n) {
        const Column column = columnOf(listPart[n]);
        if (column != ColumnCount && found[column] < 0) {
            found[column] = n;
        }
    }
    if (std::any_of(found.begin(), found.begin() + g_nNeeded, [](int n) { return n < 0; })) {
        return false;
    }
    columns = found;
    return true;
}

/// Takes a centring, or the centring of a space group that is given by its name or number. The angles of the
/// cell, taken before, tell gemmi whether a rhombohedral group has hexagonal axes. An empty text changes
/// nothing.
/// @return false if it is neither
bool takeSymmetry(const QString& strText, KnownCell& known)
{
    if (strText.isEmpty()) {
        return true;
    }
    if (strText.size() == 1 && QStringLiteral("PABCIFR").contains(strText[0])) {
        known.chCentring = strText[0].toLatin1();
        return true;
    }
    bool bNumber = false;
    const int nGroup = strText.toInt(&bNumber);
    const gemmi::SpaceGroup* pGroup = bNumber
                                          ? gemmi::find_spacegroup_by_number(nGroup)
                                          : gemmi::find_spacegroup_by_name(
                                                strText.toStdString(), known.cell.alpha, known.cell.gamma);
    if (!pGroup) {
        return false;
    }
    known.chCentring = pGroup->centring_type();
    known.strSpaceGroup = bNumber ? QString::fromStdString(pGroup->xhm()) : strText;
    return true;
}

/// Takes the cell of a compound from the columns of a line.
/// @return what is wrong with the line; empty if nothing is
QString takeLine(const QStringList& listPart, QChar separator, const Columns& columns, KnownCell& known)
{
    const auto part = [&](Column column) { return listPart.value(columns[column]); };
    std::array<double, 6> adf = {};
    for (int n = 0; n < 6; ++n) {
        const Column column = Column(A + n);
        if (columns[column] >= listPart.size()) {
            return QStringLiteral("it has %1 columns, where name and six numbers are wanted")
                .arg(listPart.size());
        }
        adf[n] = numberOf(part(column), separator);
        if (!std::isfinite(adf[n])) {
            return QStringLiteral("\"%1\" is no number").arg(quoted(part(column)));
        }
    }
    known.strName = part(Name);
    known.cell = {adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]};
    if (known.strName.isEmpty()) {
        return QStringLiteral("it has no name");
    }
    if (known.strName.size() > g_nLongestName) {
        return QStringLiteral("its name has more than %1 letters").arg(g_nLongestName);
    }
    if (!takeSymmetry(part(Symmetry), known)) {
        return QStringLiteral("\"%1\" is neither a centring nor a space group").arg(quoted(part(Symmetry)));
    }
    if (reducedCell(known.cell, known.chCentring).basis.isZero()) {
        return QStringLiteral("its six numbers make no cell");
    }
    if (!part(Formula).isEmpty()) {
        QString strReason;
        const std::optional<ChemicalFormula> formula = chemicalFormula(part(Formula), &strReason);
        if (!formula) {
            return quoted(strReason);
        }
        known.formula = *formula;
    }
    return {};
}

/// A quick test: whether the volumes of two reduced cells differ by more than cells within the tolerance can.
/// The volume changes by three times the percentage of the edges. The angles of a reduced cell, which are
/// from 60° to 120°, change it most at 60°, 90°, 60° and at 90°, 120°, 120°: by 3.9 % if all change by 1°,
/// for which 5 % is allowed here.
bool areFarApart(const LatticeBasis& first, const LatticeBasis& second, const CellTolerance& tolerance)
{
    const double dfRatio = std::abs(first.determinant() / second.determinant());
    const double dfMost = std::pow(1 + tolerance.dfLengths / 100, 3) * (1 + 0.05 * tolerance.dfAngles);
    return dfRatio > dfMost || dfRatio < 1 / dfMost;
}

}  // namespace

KnownCells knownCellsOf(const QByteArray& bytes)
{
    KnownCells cells;
    Columns columns;
    for (int n = 0; n < ColumnCount; ++n) {
        columns[n] = n;
    }
    bool bFirst = true;
    int nLine = 0;
    for (const QString& strLine : textOf(bytes).split(QLatin1Char('\n'))) {
        ++nLine;
        if (isComment(strLine)) {
            continue;
        }
        const QChar separator = separatorOf(strLine);
        const QStringList listPart = partsOf(strLine, separator);
        const bool bHead = bFirst && takeHead(listPart, columns);
        bFirst = false;
        if (bHead) {
            continue;
        }
        KnownCell known;
        known.nLine = nLine;
        const QString strFault = takeLine(listPart, separator, columns, known);
        if (strFault.isEmpty()) {
            cells.listCell.push_back(known);
        } else {
            cells.listFault.append(QStringLiteral("line %1: %2").arg(nLine).arg(strFault));
        }
    }
    return cells;
}

std::optional<KnownCells> readKnownCells(const QString& strFile, QString* pstrReason)
{
    QFile file(strFile);
    QString strReason;
    const auto refused = [&](const QString& strWhy) {
        giveReason(pstrReason, QStringLiteral("%1: %2").arg(strFile, strWhy));
        return std::nullopt;
    };
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        return refused(strReason);
    }
    if (file.size() > g_nMostBytes) {
        return refused(QStringLiteral("it is too large for a table of cells"));
    }
    // Not readAll(): files of the system (/proc, /sys) report no size, and reading one may never end.
    KnownCells cells = knownCellsOf(file.read(file.size()));
    if (cells.listCell.empty()) {
        return refused(cells.listFault.isEmpty()
                           ? QStringLiteral("it holds no cell")
                           : QStringLiteral("it holds no cell; ") + cells.listFault.first());
    }
    return cells;
}

std::optional<KnownCellMatch> matchKnownCell(const LatticeBasis& reduced,
                                             const std::vector<KnownCell>& listKnown,
                                             const CellTolerance& tolerance)
{
    std::optional<KnownCellMatch> best;
    const double dfBeyond = 2;  // a misfit greater than any within the tolerance, which are up to 1
    double dfNext = dfBeyond;   // misfit of the second closest known cell
    for (size_t n = 0; n < listKnown.size(); ++n) {
        const LatticeBasis basis = reducedCell(listKnown[n].cell, listKnown[n].chCentring).basis;
        if (areFarApart(reduced, basis, tolerance)) {
            continue;
        }
        KnownCellMatch match;
        match.dfMisfit = dfBeyond;
        for (const CellSetting& setting : settingsBetween(reduced, basis, tolerance)) {
            const double df = std::max(setting.dfLengths / tolerance.dfLengths,
                                       setting.dfAngles / tolerance.dfAngles);
            if (df < match.dfMisfit) {
                match = {int(n), df, setting.dfLengths, setting.dfAngles, {}};
            }
        }
        // No setting brings the lattice onto this known cell.
        if (match.dfMisfit > 1) {
            continue;
        }
        if (!best || match.dfMisfit < best->dfMisfit) {
            if (best) {
                match.strNext = listKnown[best->nKnown].strName;
                dfNext = best->dfMisfit;
            }
            best = match;
        } else if (match.dfMisfit < dfNext) {
            best->strNext = listKnown[n].strName;
            dfNext = match.dfMisfit;
        }
    }
    return best;
}

}  // namespace tessera
