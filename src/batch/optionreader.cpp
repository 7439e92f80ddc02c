#include "batch/optionreader.h"

namespace tessera {

namespace {

/// The square "X,Y,SIZE"; none if the text is anything else.
std::optional<QRect> parseRegion(const QString& strText)
{
    const QStringList listPart = strText.split(QLatin1Char(','));
    int an[3] = {0, 0, 0};
    for (int i = 0; i < 3; ++i) {
        bool bOk = listPart.size() == 3;
        an[i] = bOk ? listPart[i].trimmed().toInt(&bOk) : 0;
        if (!bOk) {
            return {};
        }
    }
    if (an[2] < 16 || an[2] > 16384 || an[2] % 2 != 0 || an[0] < 0 || an[1] < 0) {
        return {};
    }
    return QRect(an[0], an[1], an[2], an[2]);
}

}  // namespace

QString COptionReader::name(const QString& strName)
{
    const QString strValue = m_parser.value(strName);
    if (isSet(strName) && strValue.isEmpty()) {
        refuse(QStringLiteral("--%1: no name given").arg(strName));
    }
    return strValue;
}

int COptionReader::choice(const QString& strName, const QStringList& listValue, int nDefault)
{
    if (!isSet(strName)) {
        return nDefault;
    }
    const int nIndex = listValue.indexOf(m_parser.value(strName));
    if (nIndex < 0) {
        refuse(QStringLiteral("--%1 %2: not one of %3")
                   .arg(strName, m_parser.value(strName), listValue.join(QStringLiteral(", "))));
    }
    return nIndex;
}

int COptionReader::wholeNumber(const QString& strName, int nMinimum, int nMaximum, int nDefault)
{
    if (!isSet(strName)) {
        return nDefault;
    }
    bool bOk = false;
    const int nValue = m_parser.value(strName).toInt(&bOk);
    if (!bOk || nValue < nMinimum || nValue > nMaximum) {
        refuse(QStringLiteral("--%1 %2: must be a whole number from %3 to %4")
                   .arg(strName, m_parser.value(strName))
                   .arg(nMinimum)
                   .arg(nMaximum));
    }
    return nValue;
}

std::optional<double> COptionReader::number(const QString& strName, double dfMinimum, double dfMaximum,
                                            AutoValue autoValue)
{
    const QString strValue = m_parser.value(strName);
    const bool bAuto = autoValue != AutoValue::NotAllowed;
    const bool bAsGiven = autoValue == AutoValue::OrAsGiven;
    if (!isSet(strName) || (bAuto && strValue == QLatin1String("auto")) ||
        (bAsGiven && strValue == QLatin1String("as-given"))) {
        return {};
    }
    bool bOk = false;
    const double dfValue = strValue.toDouble(&bOk);
    if (!bOk || !(dfValue >= dfMinimum && dfValue <= dfMaximum)) {
        const QString strRange = dfMaximum < g_dfLarge
                                     ? QStringLiteral(" from %1 to %2").arg(dfMinimum).arg(dfMaximum)
                                     : QString();
        const QString strWords = bAsGiven ? QStringLiteral(", auto or as-given") : QStringLiteral(" or auto");
        refuse(QStringLiteral("--%1 %2: must be a number%3%4")
                   .arg(strName, strValue, strRange, bAuto ? strWords : QString()));
        return {};
    }
    return dfValue;
}

std::optional<QRect> COptionReader::region(const QString& strName)
{
    const QString strValue = m_parser.value(strName);
    if (!isSet(strName) || strValue == QLatin1String("auto")) {
        return {};
    }
    const std::optional<QRect> rcRegion = parseRegion(strValue);
    if (!rcRegion) {
        refuse(QStringLiteral("--%1 %2: must be X,Y,SIZE in whole pixels, SIZE even and at least 16")
                   .arg(strName, strValue));
    }
    return rcRegion;
}

void COptionReader::refuse(const QString& strError)
{
    if (m_strError.isEmpty()) {
        m_strError = strError;
    }
}

}  // namespace tessera
