#include "cloud/cellframe.h"

#include <QRegularExpression>
#include <QStringList>

#include <cmath>

namespace tessera {

namespace {

// Vectors count as co-planar up to this ratio of the volume that they span to the product of their lengths,
// which is the volume of a box with these edges. Single precision leaves a ratio of some 1e-7 to vectors that
// are co-planar.
const double g_dfCoPlanar = 1e-6;

// Two digits: zone axes with greater indices are so sparsely populated that they cannot be made out.
const int g_nGreatestIndex = 99;

QString wrongForm()
{
    return QStringLiteral("a direction has three whole numbers, such as \"1 -1 0\" or \"[1-10]\"");
}

// The three whole numbers of the text; an empty list where the text has another form.
QStringList numbersOf(const QString& strText)
{
    // Three digits with their signs and nothing between them, such as "1-10".
    static const QRegularExpression together(QStringLiteral("^([+-]?\\d)([+-]?\\d)([+-]?\\d)$"));
    static const QRegularExpression number(QStringLiteral("^[+-]?\\d+$"));
    static const QRegularExpression between(QStringLiteral("[\\s,;]+"));
    const QRegularExpressionMatch match = together.match(strText);
    if (match.hasMatch()) {
        return match.capturedTexts().mid(1);
    }
    const QStringList listNumber = strText.split(between, Qt::SkipEmptyParts);
    for (const QString& str : listNumber) {
        if (!number.match(str).hasMatch()) {
            return {};
        }
    }
    return listNumber.size() == 3 ? listNumber : QStringList();
}

}  // namespace

std::optional<CCellFrame> CCellFrame::of(const std::optional<ReciprocalBasis>& basis)
{
    if (!basis || !isFinite(*basis)) {
        return std::nullopt;
    }
    CCellFrame frame;
    double dfBox = 1;  // product of the lengths, Å⁻³
    for (size_t i = 0; i < 3; ++i) {
        frame.m_aReciprocal[i] = widened(basis->vectors()[i]);
        dfBox *= std::sqrt(dot(frame.m_aReciprocal[i], frame.m_aReciprocal[i]));
    }
    const auto& [a, b, c] = frame.m_aReciprocal;
    const double dfVolume = dot(a, cross(b, c));
    if (!(std::abs(dfVolume) > g_dfCoPlanar * dfBox)) {
        return std::nullopt;
    }
    // a = b* × c* / V*, and so on; with the sign of V* this holds for left-handed vectors, too.
    frame.m_aDirect = {cross(b, c), cross(c, a), cross(a, b)};
    for (DoubleVector& v : frame.m_aDirect) {
        for (double& df : v) {
            df /= dfVolume;
        }
    }
    return frame;
}

DoubleVector CCellFrame::indicesOf(const Vec3D& place) const
{
    const DoubleVector v = widened(place);
    return {dot(m_aDirect[0], v), dot(m_aDirect[1], v), dot(m_aDirect[2], v)};
}

DoubleVector CCellFrame::zone(const std::array<int, 3>& anIndex) const
{
    DoubleVector v = {};
    for (size_t i = 0; i < 3; ++i) {
        for (size_t j = 0; j < 3; ++j) {
            v[j] += anIndex[i] * m_aDirect[i][j];
        }
    }
    return v;
}

std::optional<std::array<int, 3>> readDirection(const QString& strText, QString* pReason)
{
    const auto refuse = [pReason](const QString& strReason) {
        if (pReason) {
            *pReason = strReason;
        }
        return std::nullopt;
    };
    QString str = strText.trimmed();
    str.replace(QChar(0x2212), QLatin1Char('-'));  // the minus of typesetters
    const bool bOpen = str.startsWith(QLatin1Char('['));
    if (bOpen != str.endsWith(QLatin1Char(']'))) {
        return refuse(QStringLiteral("a bracket is missing"));
    }
    if (bOpen) {
        str = str.mid(1, str.size() - 2).trimmed();
    }
    if (str.contains(QLatin1Char('('))) {
        return refuse(QStringLiteral("(h k l) is a plane; a direction is written as [u v w]"));
    }
    const QStringList listNumber = numbersOf(str);
    if (listNumber.isEmpty()) {
        return refuse(wrongForm());
    }
    std::array<int, 3> anIndex = {};
    for (int i = 0; i < 3; ++i) {
        bool bOk = false;
        const int n = listNumber[i].toInt(&bOk);
        if (!bOk || std::abs(n) > g_nGreatestIndex) {
            return refuse(QStringLiteral("%1 is beyond %2").arg(listNumber[i]).arg(g_nGreatestIndex));
        }
        anIndex[i] = n;
    }
    if (anIndex == std::array<int, 3>{0, 0, 0}) {
        return refuse(QStringLiteral("0 0 0 is no direction"));
    }
    return anIndex;
}

QString directionName(const std::array<int, 3>& anIndex)
{
    return QStringLiteral("[%1 %2 %3]").arg(anIndex[0]).arg(anIndex[1]).arg(anIndex[2]);
}

}  // namespace tessera
