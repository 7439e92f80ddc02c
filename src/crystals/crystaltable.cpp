#include "crystals/crystaltable.h"

#include "crystals/joblines.h"

#include <QStringList>

#include <cmath>

namespace tessera {

namespace {

const QStringList& tableHead()
{
    static const QStringList list = {
        QStringLiteral("crystal"),   QStringLiteral("folder"),       QStringLiteral("group"),
        QStringLiteral("compound"),  QStringLiteral("used"),         QStringLiteral("number"),
        QStringLiteral("setting"),   QStringLiteral("alternatives"), QStringLiteral("correlation"),
        QStringLiteral("second"),    QStringLiteral("common"),       QStringLiteral("scale"),
        QStringLiteral("b"),         QStringLiteral("ccHalfGain"),   QStringLiteral("a/A"),
        QStringLiteral("b/A"),       QStringLiteral("c/A"),          QStringLiteral("alpha"),
        QStringLiteral("beta"),      QStringLiteral("gamma"),        QStringLiteral("centring"),
        QStringLiteral("laueClass"), QStringLiteral("completeness"), QStringLiteral("rInt"),
        QStringLiteral("ccHalf"),    QStringLiteral("observed"),     QStringLiteral("reason")};
    return list;
}

/// A field, in quotes if it contains a separator of fields or lines.
QString field(const QString& strText)
{
    static const QString strSpecial = QStringLiteral(",\"\n\r");
    for (const QChar ch : strSpecial) {
        if (strText.contains(ch)) {
            QString strQuoted = strText;
            strQuoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
            return QLatin1Char('"') + strQuoted + QLatin1Char('"');
        }
    }
    return strText;
}

QString number(double dfValue, int nDecimals)
{
    if (!std::isfinite(dfValue)) {
        return {};
    }
    const QString strText = QString::number(dfValue, 'f', nDecimals);
    return strText.toDouble() == 0 ? QString::number(0.0, 'f', nDecimals) : strText;  // no -0.00
}

QByteArray line(const QStringList& listField)
{
    QStringList listQuoted;
    for (const QString& strField : listField) {
        listQuoted.append(field(strField));
    }
    return listQuoted.join(QLatin1Char(',')).toUtf8() + '\n';
}

const int g_nSettledFields = 9;  ///< columns from number to ccHalfGain

/// What its group has found out of a crystal.
QStringList settledFields(const CompoundGroup& compound, const CrystalFate& fate)
{
    const size_t n = size_t(fate.nSettled);
    const SettledCrystal& settled = compound.merged.listSettled[n];
    const CrystalScale& scale = compound.merged.listScale[n];
    const bool bSecond = settled.nAlternatives > 1 && settled.bBySharing;
    QStringList listField = {QString::number(fate.nSettled + 1),
                             settingText(compound, settled),
                             QString::number(settled.nAlternatives),
                             settled.nCommon > 0 ? number(settled.dfCorrelation, 4) : QString(),
                             bSecond ? number(settled.dfSecond, 4) : QString(),
                             QString::number(settled.nCommon)};
    if (!fate.bUsed) {
        return listField << QString() << QString() << QString();
    }
    return listField << number(scale.dfScale, 4) << number(scale.dfB, 3)
                     << number(compound.merged.listGain[n], 4);
}

}  // namespace

QByteArray crystalTable(const CrystalsJobResult& result)
{
    QByteArray bytes = line(tableHead());
    for (size_t n = 0; n < result.listCrystal.size(); ++n) {
        const Crystal& crystal = result.listCrystal[n];
        const CrystalFate& fate = result.listFate[n];
        QStringList listField = {crystal.strName, crystal.strFolder};
        const CompoundGroup* pGroup = fate.nGroup >= 0 ? &result.listGroup[fate.nGroup] : nullptr;
        listField << (pGroup ? pGroup->strName : QString())
                  << (pGroup && pGroup->known ? result.listKnown[pGroup->known->nKnown].strName : QString())
                  << (fate.bUsed ? QStringLiteral("yes") : QStringLiteral("no"));
        if (pGroup && fate.nSettled >= 0) {
            listField += settledFields(*pGroup, fate);
        } else {
            for (int i = 0; i < g_nSettledFields; ++i) {
                listField.append(QString());
            }
        }
        for (const double df : crystal.cell.numbers()) {
            listField.append(number(df, 4));
        }
        listField << QString(QLatin1Char(crystal.chCentring)) << crystal.strLaueClass
                  << number(crystal.dfCompleteness, 4) << number(crystal.dfRInt, 4)
                  << number(crystal.dfCcHalf, 4) << QString::number(crystal.listIntensity.size())
                  << fate.strReason;
        bytes += line(listField);
    }
    for (const UnreadCrystal& unread : result.listUnread) {
        QStringList listField = {QString(), unread.strName, QString(), QString(), QStringLiteral("no")};
        while (listField.size() + 1 < tableHead().size()) {
            listField.append(QString());
        }
        bytes += line(listField << unread.strReason);
    }
    return bytes;
}

}  // namespace tessera
