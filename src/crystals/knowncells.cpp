#include "crystals/knowncells.h"

#include "crystals/knowncellcolumns.h"
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
#include <string>

namespace tessera {

namespace {

constexpr qint64 g_nMostBytes = qint64(64) << 20;  ///< 64 MB: about a million compounds
const int g_nLongestName = 200;                    ///< letters, so that a name fits into a line of the log

using Columns = KnownCellColumns;

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

/// The character between the columns of a line: a semicolon if it has one outside quotes, else a tabulator,
/// else a comma.
QChar separatorOf(const QString& strLine)
{
    bool bQuoted = false, bTabulator = false;
    for (const QChar ch : strLine) {
        bQuoted = bQuoted != (ch == QLatin1Char('"'));  // two quotes within quotes change it twice
        if (ch == QLatin1Char(';') && !bQuoted) {
            return ch;
        }
        bTabulator = bTabulator || (ch == QLatin1Char('\t') && !bQuoted);
    }
    return QLatin1Char(bTabulator ? '\t' : ',');
}

/// The columns of a line, without the enclosing quotes. Two quotes within quotes mean one quote.
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

/// Whether a cell of the trigonal system has rhombohedral axes: α : γ is 1 : 1 there, and 90 : 120 with
/// hexagonal ones. The limit is that of gemmi.
bool hasRhombohedralAxes(const CellParameters& cell)
{
    return cell.gamma < 1.125 * cell.alpha;
}

/// Takes a centring, or the centring of a space group that is given by its name or number. The angles of the
/// cell, taken before, tell whether a rhombohedral lattice has hexagonal axes, unless the name does. An empty
/// text changes nothing.
/// @return false if it is neither
bool takeSymmetry(const QString& strText, KnownCell& known)
{
    if (strText.isEmpty()) {
        return true;
    }
    if (strText.size() == 1 && QStringLiteral("PABCIFR").contains(strText[0])) {
        known.chCentring = strText[0].toLatin1();
        if (known.chCentring == 'R' && hasRhombohedralAxes(known.cell)) {
            known.chCentring = 'P';
        }
        return true;
    }
    bool bNumber = false;
    const int nGroup = strText.toInt(&bNumber);
    std::string strName = strText.toStdString();
    if (bNumber) {
        const gemmi::SpaceGroup* pStandard = nGroup > 0 ? gemmi::find_spacegroup_by_number(nGroup) : nullptr;
        if (!pStandard) {
            return false;
        }
        // Without its ":H", so that the cell tells which axes it has.
        strName = pStandard->ext == 'H' ? std::string(pStandard->hm) : pStandard->xhm();
    }
    const gemmi::SpaceGroup* pGroup = gemmi::find_spacegroup_by_name(strName, known.cell.alpha,
                                                                     known.cell.gamma);
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
    const auto part = [&](Columns::Column column) { return listPart.value(columns.anPlace[column]); };
    std::array<double, 6> adf = {};
    for (int n = 0; n < 6; ++n) {
        const Columns::Column column = Columns::Column(Columns::A + n);
        if (columns.anPlace[column] >= listPart.size()) {
            return QStringLiteral("it has %1 columns, where name and six numbers are wanted")
                .arg(listPart.size());
        }
        adf[n] = numberOf(part(column), separator) * columns.adfFactor[column];
        if (!std::isfinite(adf[n])) {
            return QStringLiteral("\"%1\" is no number").arg(quoted(part(column)));
        }
    }
    known.strName = part(Columns::Name);
    known.cell = {adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]};
    if (known.strName.isEmpty()) {
        return QStringLiteral("it has no name");
    }
    if (known.strName.size() > g_nLongestName) {
        return QStringLiteral("its name has more than %1 letters").arg(g_nLongestName);
    }
    if (!takeSymmetry(part(Columns::Symmetry), known)) {
        return QStringLiteral("\"%1\" is neither a centring nor a space group")
            .arg(quoted(part(Columns::Symmetry)));
    }
    if (reducedCell(known.cell, known.chCentring).basis.isZero()) {
        return QStringLiteral("its six numbers are not a valid cell");
    }
    if (!part(Columns::Formula).isEmpty()) {
        QString strReason;
        const std::optional<ChemicalFormula> formula = chemicalFormula(part(Columns::Formula), &strReason);
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
    Columns columns = plainColumns();
    bool bFirst = true;
    int nLine = 0;
    for (const QString& strLine : textOf(bytes).split(QLatin1Char('\n'))) {
        ++nLine;
        if (isComment(strLine)) {
            continue;
        }
        const QChar separator = separatorOf(strLine);
        const QStringList listPart = partsOf(strLine, separator);
        const std::optional<Columns> head = bFirst ? columnsOfHead(listPart) : std::nullopt;
        bFirst = false;
        if (head) {
            columns = *head;
            const QString strUnknown = takeUnits(listPart, columns);
            if (strUnknown.isEmpty()) {
                continue;
            }
            // Nobody knows what the numbers of the lines below mean.
            cells.listFault.append(QStringLiteral("line %1: the unit in \"%2\" is not known")
                                       .arg(nLine)
                                       .arg(quoted(strUnknown)));
            return cells;
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
