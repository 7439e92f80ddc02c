#include "crystals/knowncellcolumns.h"

#include "records/pi.h"

#include <QRegularExpression>

#include <algorithm>
#include <iterator>
#include <numeric>

namespace tessera {

namespace {

using Column = KnownCellColumns::Column;

/// What stands in a head between the name of a column and its unit, as in "a (Å)" or "b / nm".
const QRegularExpression& beforeUnit()
{
    static const QRegularExpression before(QStringLiteral("\\s*[/(\\[]"));
    return before;
}

/// The column that a word of a head names, whatever its unit; ColumnCount if it names none.
Column columnOf(QString strWord)
{
    strWord = strWord.toLower().section(beforeUnit(), 0, 0);
    strWord = strWord.replace(QLatin1Char('_'), QLatin1Char(' ')).simplified();
    const QStringList listWords[Column::ColumnCount] = {
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
    while (n < Column::ColumnCount && !listWords[n].contains(strWord)) {
        ++n;
    }
    return Column(n);
}

/// The unit that a word of a head tells, in small letters; empty if it tells none.
QString unitOf(const QString& strWord)
{
    static const QRegularExpression brackets(QStringLiteral("[()\\[\\]]"));
    // Some systems write Å as A and a ring.
    const QString strUnit = strWord.normalized(QString::NormalizationForm_C).toLower();
    return strUnit.section(beforeUnit(), 1).remove(brackets).simplified();
}

/// The factor from the numbers of a column of the cell to Å or degrees. A column without unit is in these.
/// @return nothing for a unit that is none of lengths or angles
std::optional<double> factorOf(Column column, const QString& strUnit)
{
    struct Unit {
        double dfFactor;
        QStringList listWord;
    };
    const Unit aLength[] = {{1,
                             {"", QStringLiteral("å"), "a", "ang", "angstrom", "angstroms",
                              QStringLiteral("ångström"), QStringLiteral("ångstrøm")}},
                            {10, {"nm"}},
                            {0.01, {"pm"}}};
    const Unit aAngle[] = {{1, {"", QStringLiteral("°"), "deg", "deg.", "degree", "degrees"}},
                           {180 / g_dfPi, {"rad", "radian", "radians"}}};
    const bool bLength = column >= Column::A && column <= Column::C;
    const Unit* const pEnd = bLength ? std::end(aLength) : std::end(aAngle);
    const Unit* const pUnit = std::find_if(bLength ? std::begin(aLength) : std::begin(aAngle), pEnd,
                                           [&](const Unit& unit) { return unit.listWord.contains(strUnit); });
    return pUnit != pEnd ? std::optional<double>(pUnit->dfFactor) : std::nullopt;
}

}  // namespace

KnownCellColumns plainColumns()
{
    KnownCellColumns columns;
    std::iota(columns.anPlace.begin(), columns.anPlace.end(), 0);
    columns.adfFactor.fill(1);
    return columns;
}

std::optional<KnownCellColumns> columnsOfHead(const QStringList& listPart)
{
    KnownCellColumns columns = plainColumns();
    columns.anPlace.fill(-1);
    for (int n = 0; n < listPart.size(); ++n) {
        const Column column = columnOf(listPart[n]);
        if (column != KnownCellColumns::ColumnCount && columns.anPlace[column] < 0) {
            columns.anPlace[column] = n;
        }
    }
    const auto itNeeded = columns.anPlace.begin() + KnownCellColumns::g_nNeeded;
    return std::none_of(columns.anPlace.begin(), itNeeded, [](int n) { return n < 0; })
               ? std::optional<KnownCellColumns>(columns)
               : std::nullopt;
}

QString takeUnits(const QStringList& listPart, KnownCellColumns& columns)
{
    for (int n = KnownCellColumns::A; n < KnownCellColumns::g_nNeeded; ++n) {
        const QString& strWord = listPart[columns.anPlace[n]];
        const std::optional<double> factor = factorOf(Column(n), unitOf(strWord));
        if (!factor) {
            return strWord;
        }
        columns.adfFactor[n] = *factor;
    }
    return {};
}

}  // namespace tessera
