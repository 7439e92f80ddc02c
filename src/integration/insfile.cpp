#include "integration/insfile.h"

#include "integration/electronscattering.h"
#include "records/sealedfile.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const int g_nColumns = 80;

/// The text in ASCII, which every program can read; other characters have several encodings.
QByteArray plainText(const QString& strText)
{
    QByteArray bytes;
    for (const QChar ch : strText) {
        bytes += ch >= QLatin1Char(' ') && ch < QLatin1Char('\x7f') ? ch.toLatin1() : '_';
    }
    return bytes;
}

/// An instruction; lines that are continued end with "=".
QByteArray instruction(const QStringList& listWord)
{
    QByteArray bytes;
    QByteArray bytesLine;
    for (const QString& strWord : listWord) {
        const QByteArray bytesWord = plainText(strWord);
        if (!bytesLine.isEmpty() && bytesLine.size() + 1 + bytesWord.size() + 2 > g_nColumns) {
            bytes += bytesLine + " =\n";
            bytesLine = "   ";
        }
        bytesLine += (bytesLine.isEmpty() ? "" : " ") + bytesWord;
    }
    return bytes + bytesLine + '\n';
}

/// A remark of one or several lines; remarks cannot be continued with "=".
QByteArray remark(const QString& strText)
{
    QByteArray bytes;
    QByteArray bytesLine = "REM";
    const QStringList listWord = strText.split(QLatin1Char(' '));
    for (const QString& strWord : listWord) {
        const QByteArray bytesWord = plainText(strWord);
        if (bytesLine.size() > 3 && bytesLine.size() + 1 + bytesWord.size() > g_nColumns) {
            bytes += bytesLine + '\n';
            bytesLine = "REM";
        }
        bytesLine += ' ' + bytesWord;
    }
    return bytes + bytesLine + '\n';
}

/// The text without line breaks and without a final "=", which would continue the line.
QString titleOf(const StructureData& data)
{
    QString strTitle = data.strName.simplified() + QStringLiteral(" in ") +
                       QString::fromStdString(data.pSpaceGroup->xhm());
    return strTitle.left(g_nColumns - 6).replace(QLatin1Char('='), QLatin1Char('-'));
}

/// The parameter of LATT, negative without a centre of symmetry.
int latticeNumber(const gemmi::SpaceGroup& group)
{
    const int nType = 1 + QStringLiteral("PIRFABC").indexOf(QLatin1Char(group.centring_type()));
    return group.is_centrosymmetric() ? nType : -nType;
}

QStringList numbersOf(const CellParameters& cell)
{
    QStringList list;
    const std::array<double, 6> adf = cell.numbers();
    for (size_t n = 0; n < 6; ++n) {
        list.append(QString::number(adf[n], 'f', n < 3 ? 4 : 3));
    }
    return list;
}

QByteArray scatteringLine(gemmi::El element)
{
    const FourGaussians fit = fourGaussians(element);
    QStringList listWord = {QStringLiteral("SFAC"), QLatin1String(gemmi::element_name(element))};
    for (size_t n = 0; n < 4; ++n) {
        listWord += {QString::number(fit.a[n], 'f', 5), QString::number(fit.b[n], 'f', 5)};
    }
    const QString strNone = QStringLiteral("0.0");
    listWord += {QString::number(fit.c, 'f', 5), strNone, strNone, strNone};  // c, f', f", absorption
    listWord += {QString::number(double(gemmi::covalent_radius(element)), 'f', 2),
                 QString::number(gemmi::molecular_weight(element), 'f', 3)};
    return instruction(listWord);
}

QByteArray symmetryLines(const gemmi::SpaceGroup& group)
{
    QByteArray bytes;
    for (const gemmi::Op& op : basicOperations(group)) {
        if (op != gemmi::Op::identity()) {
            bytes += instruction({QStringLiteral("SYMM"), QString::fromStdString(op.triplet()).toUpper()});
        }
    }
    return bytes;
}

QByteArray contentLines(const StructureData& data)
{
    ChemicalFormula formula = data.formula;
    QByteArray bytes;
    int nUnits = data.nUnits;
    if (formula.isEmpty()) {
        bytes += remark(
            QStringLiteral("No formula was given: all atoms are taken as carbon, 18 cubic angstroms each."));
        nUnits = std::max(1, int(std::lround(data.dfVolume / 18)));
        formula.listElement = {{gemmi::El::C, 1}};
    } else {
        bytes += remark(
            QStringLiteral("%1 %2 in a cell, %3: %4 cubic angstroms for an atom other than hydrogen.")
                .arg(nUnits)
                .arg(hillFormula(formula))
                .arg(QLatin1String(data.bUnitsTold ? "as told" : "estimated from the volume"))
                .arg(
                    data.dfVolume / (nUnits * std::max(1.0, formula.atomCount(CountedAtoms::AllButHydrogen))),
                    0, 'f', 1));
    }
    QStringList listUnit = {QStringLiteral("UNIT")};
    for (const ElementCount& one : formula.listElement) {
        bytes += scatteringLine(one.element);
        listUnit.append(QString::number(one.dfCount * nUnits, 'g', 8));
    }
    return bytes + instruction(listUnit);
}

}  // namespace

QByteArray insText(const StructureData& data, const QString& strReflections)
{
    QByteArray bytes = instruction({QStringLiteral("TITL"), titleOf(data)});
    bytes += "REM Tessera " TESSERA_VERSION " " + sealPlace() + '\n';
    bytes += remark(
        QStringLiteral("Electrons. The intensities of this cell are those of %1.").arg(strReflections));
    bytes += instruction(QStringList{QStringLiteral("CELL"), QString::number(data.dfWavelength, 'f', 6)} +
                         numbersOf(data.cell));
    const int nUnits = data.formula.isEmpty() ? 1 : data.nUnits;
    bytes += instruction(QStringList{QStringLiteral("ZERR"), QString::number(nUnits)} +
                         numbersOf(data.cellErrors));
    bytes += instruction({QStringLiteral("LATT"), QString::number(latticeNumber(*data.pSpaceGroup))});
    bytes += symmetryLines(*data.pSpaceGroup);
    bytes += contentLines(data);
    bytes += "HKLF 4\nEND\n";
    return sealed(bytes);
}

}  // namespace tessera
