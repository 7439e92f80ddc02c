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

constexpr qint64 g_nMostBytes = qint64(64) << 20;
const int g_nLongestName = 200;  ///< letters: a line of the log, not a page of it

/// What a column tells, in the order that a table without a head has.
enum Column { Name, A, B, C, Alpha, Beta, Gamma, Symmetry, Formula, ColumnCount };
const int g_nNeeded = Symmetry;  ///< columns that no line can do without

using Columns = std::array<int, ColumnCount>;  ///< place of each in a line; -1: not there

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
    for (QChar& ch : str) {  // a terminal that shows a name would obey these
        if (ch.category() == QChar::Other_Control && ch != QLatin1Char('\n') && ch != QLatin1Char('\t')) {
            ch = QLatin1Char(' ');
        }
    }
    return str;
}

/// A part of a line as it is told, however long it is.
QString told(const QString& strPart)
{
    const int nMost = 60;
    return strPart.size() > nMost ? strPart.left(nMost) + QStringLiteral("…") : strPart;
}

bool isComment(const QString& strLine)
{
    return strLine.trimmed().isEmpty() || strLine.trimmed().startsWith(QLatin1Char('#'));
}

/// What parts the columns of a line.
QChar separatorOf(const QString& strLine)
{
    for (const char ch : {';', '\t'}) {
        if (strLine.contains(QLatin1Char(ch))) {
            return QLatin1Char(ch);
        }
    }
    return QLatin1Char(',');
}

/// The columns of a line, without the quotes round them. Two quotes in quotes are one.
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

/// "4.913(2)", with commas for points where these part no columns; not finite for anything else.
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

/// The column that a word of a head means; ColumnCount where it means none.
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

/// @return false where the line is no head
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

/// Takes a centring, or that of a space group told by its name or number.
/// @return false where it is neither
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
            return QStringLiteral("\"%1\" is no number").arg(told(part(column)));
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
        return QStringLiteral("\"%1\" is neither a centring nor a space group").arg(told(part(Symmetry)));
    }
    if (reducedCell(known.cell, known.chCentring).basis.isZero()) {
        return QStringLiteral("its six numbers make no cell");
    }
    if (!part(Formula).isEmpty()) {
        QString strReason;
        const std::optional<ChemicalFormula> formula = chemicalFormula(part(Formula), &strReason);
        if (!formula) {
            return told(strReason);
        }
        known.formula = *formula;
    }
    return {};
}

/// Whether volumes are too far apart for lattices within the tolerance. Edges give three times their share,
/// and angles of a reduced cell, which lie from 60° to 120°, at most 7 % for 3° each; twice that is left.
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
    // What has no size, as the files of the system itself, may keep a reader waiting for ever.
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
    double dfNext = 2;  // beyond any within the tolerance
    for (size_t n = 0; n < listKnown.size(); ++n) {
        const LatticeBasis basis = reducedCell(listKnown[n].cell, listKnown[n].chCentring).basis;
        if (areFarApart(reduced, basis, tolerance)) {
            continue;
        }
        KnownCellMatch match;
        match.dfMisfit = 2;
        for (const CellSetting& setting : settingsBetween(reduced, basis, tolerance)) {
            const double df = std::max(setting.dfLengths / tolerance.dfLengths,
                                       setting.dfAngles / tolerance.dfAngles);
            if (df < match.dfMisfit) {
                match = {int(n), df, setting.dfLengths, setting.dfAngles, {}};
            }
        }
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
