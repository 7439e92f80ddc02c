#include "simulate/symmetryjudgement.h"

#include "simulate/crystalstructures.h"
#include "simulate/equivalentindices.h"

#include <QJsonArray>

#include <array>
#include <cmath>
#include <limits>

namespace tessera {

namespace {
// The eleven pairs of enantiomorphic groups. Source: International Tables A, 3.5.
constexpr std::array<std::array<int, 2>, 11> g_aanEnantiomorphs = {{{76, 78},
                                                                    {91, 95},
                                                                    {92, 96},
                                                                    {144, 145},
                                                                    {151, 153},
                                                                    {152, 154},
                                                                    {169, 170},
                                                                    {171, 172},
                                                                    {178, 179},
                                                                    {180, 181},
                                                                    {212, 213}}};

// One number for both groups of an enantiomorphic pair, the lower one; of other groups their own number. By
// Friedel's law the intensities are the same for both.
int withoutHand(int nNumber)
{
    for (const auto& anPair : g_aanEnantiomorphs) {
        if (nNumber == anPair[1]) {
            return anPair[0];
        }
    }
    return nNumber;
}

// The symbol of a class or a group, which is a string, or an object that has it under one of the keys.
QString symbolOf(const QJsonValue& value, const QStringList& listKey)
{
    if (value.isString()) {
        return value.toString();
    }
    for (const QString& strKey : listKey) {
        const QString str = value.toObject()[strKey].toString();
        if (!str.isEmpty()) {
            return str;
        }
    }
    return QString();
}

// A Laue class without the orientation of its twofold axes, which the class of the true crystal lacks.
QString classWithoutAxes(QString strClass)
{
    strClass.remove(QLatin1Char(' '));
    if (strClass == QLatin1String("-3m1") || strClass == QLatin1String("-31m")) {
        return QStringLiteral("-3m");
    }
    return strClass;
}

// A Hermann-Mauguin symbol to be compared: without blanks ("P3221"), and without the letter of the axes
// ("R -3 c:H" is "R-3c").
QString plainSymbol(const QString& strSymbol)
{
    return strSymbol.section(QLatin1Char(':'), 0, 0).remove(QLatin1Char(' '));
}

bool isTrueGroup(const QJsonValue& value, const CrystalStructure& structure)
{
    const int nNumber = value.toObject()[QStringLiteral("number")].toInt();
    if (nNumber > 0) {
        return withoutHand(nNumber) == withoutHand(structure.nSpaceGroup);
    }
    return plainSymbol(symbolOf(value, {QStringLiteral("name"), QStringLiteral("symbol")})) ==
           plainSymbol(structure.strSpaceGroup);
}
}  // namespace

SymmetryJudgement judgeSymmetry(const QJsonObject& quality, const QString& strCrystal)
{
    SymmetryJudgement judgement;
    const CrystalStructure* pStructure = findCrystalStructure(strCrystal);
    if (!quality.contains(QStringLiteral("laueClass")) || !pStructure) {
        return judgement;
    }
    const QStringList listClassKey = {QStringLiteral("class"), QStringLiteral("name"),
                                      QStringLiteral("symbol")};
    judgement.bRead = true;
    judgement.strTrueClass = CEquivalentIndices(strCrystal).laueClass();
    judgement.strTrueGroup = pStructure->strSpaceGroup;
    const QJsonValue valueClass = quality[QStringLiteral("laueClass")];
    judgement.strClass = symbolOf(valueClass, listClassKey);
    judgement.bClassRight = classWithoutAxes(judgement.strClass) == judgement.strTrueClass;
    // The chosen class counts as the first one, also where it was not the most likely.
    judgement.nClassRank = judgement.bClassRight ? 1 : 0;
    const QJsonArray arrayClass = quality[QStringLiteral("laueClasses")].toArray();
    for (int n = 0; n < arrayClass.size() && judgement.nClassRank == 0; ++n) {
        if (classWithoutAxes(symbolOf(arrayClass[n], listClassKey)) == judgement.strTrueClass) {
            judgement.nClassRank = n + 1;
        }
    }
    const QJsonArray arrayGroup = quality[QStringLiteral("spaceGroups")].toArray();
    judgement.strGroup = symbolOf(arrayGroup.at(0), {QStringLiteral("name"), QStringLiteral("symbol")});
    for (int n = 0; n < arrayGroup.size() && judgement.nGroupRank == 0; ++n) {
        if (isTrueGroup(arrayGroup[n], *pStructure)) {
            judgement.nGroupRank = n + 1;
        }
    }
    judgement.dfRInt = quality[QStringLiteral("rInt")].toDouble(std::numeric_limits<double>::quiet_NaN());
    for (auto it = quality.begin(); it != quality.end(); ++it) {
        if (it.value().isDouble()) {
            judgement.told[it.key()] = it.value();
        }
    }
    return judgement;
}

QJsonObject symmetryToJson(const SymmetryJudgement& judgement)
{
    if (!judgement.bRead) {
        return QJsonObject();
    }
    return {{QStringLiteral("trueLaueClass"), judgement.strTrueClass},
            {QStringLiteral("laueClass"), judgement.strClass},
            {QStringLiteral("laueClassRight"), judgement.bClassRight},
            {QStringLiteral("laueClassRank"), judgement.nClassRank},
            {QStringLiteral("trueSpaceGroup"), judgement.strTrueGroup},
            {QStringLiteral("spaceGroup"), judgement.strGroup},
            {QStringLiteral("spaceGroupRank"), judgement.nGroupRank},
            {QStringLiteral("told"), judgement.told}};
}

QString symmetryToText(const SymmetryJudgement& judgement)
{
    if (!judgement.bRead) {
        return QString();
    }
    QString str = QStringLiteral("symmetry Laue class %1, true %2; space group %3, true %4")
                      .arg(judgement.strClass, judgement.strTrueClass, judgement.strGroup,
                           judgement.strTrueGroup);
    str += judgement.nGroupRank > 0 ? QStringLiteral(" on place %1").arg(judgement.nGroupRank)
                                    : QStringLiteral(", not among those proposed");
    if (std::isfinite(judgement.dfRInt)) {
        str += QStringLiteral("; Rint %1").arg(judgement.dfRInt, 0, 'f', 3);
    }
    return str + QLatin1Char('\n');
}

}  // namespace tessera
