#include "exchange/framenumbering.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace tessera {

namespace {

const int g_nMostDigits = 9;  // digits of an int

/// The length of the common beginning of all names.
int commonBeginning(const QStringList& listName)
{
    const QString& strFirst = listName.first();
    int nCommon = strFirst.size();
    for (const QString& strName : listName) {
        const auto end = std::mismatch(strFirst.begin(), strFirst.begin() + nCommon, strName.begin(),
                                       strName.end());
        nCommon = int(end.first - strFirst.begin());
    }
    return nCommon;
}

bool isDigit(QChar ch)
{
    return ch >= QLatin1Char('0') && ch <= QLatin1Char('9');
}

/// The place of the number in which the names differ; of a single name that of its last number.
/// @return place and length; length 0 where there is none
std::pair<int, int> placeOfNumber(const QStringList& listName)
{
    const QString& strFirst = listName.first();
    int nEnd = commonBeginning(listName);
    if (nEnd == strFirst.size()) {
        while (nEnd > 0 && !isDigit(strFirst[nEnd - 1])) {
            --nEnd;
        }
    }
    int nBegin = nEnd;
    while (nBegin > 0 && isDigit(strFirst[nBegin - 1])) {
        --nBegin;
    }
    while (nEnd < strFirst.size() && isDigit(strFirst[nEnd])) {
        ++nEnd;
    }
    return {nBegin, nEnd - nBegin};
}

}  // namespace

QString FrameNumbering::nameOf(int nNumber) const
{
    return strPrefix + QStringLiteral("%1").arg(nNumber, nDigits, 10, QLatin1Char('0')) + strSuffix;
}

QString FrameNumbering::pattern(QChar chDigit) const
{
    return strPrefix + QString(nDigits, chDigit) + strSuffix;
}

std::vector<std::pair<int, int>> FrameNumbering::missing() const
{
    std::vector<std::pair<int, int>> list;
    for (size_t n = 1; n < listNumber.size(); ++n) {
        if (listNumber[n] > listNumber[n - 1] + 1) {
            list.emplace_back(listNumber[n - 1] + 1, listNumber[n] - 1);
        }
    }
    return list;
}

std::optional<FrameNumbering> numberingOfNames(const QStringList& listName)
{
    if (listName.isEmpty()) {
        return std::nullopt;
    }
    const auto [nPlace, nDigits] = placeOfNumber(listName);
    if (nDigits < 1 || nDigits > g_nMostDigits) {
        return std::nullopt;
    }
    FrameNumbering numbering;
    numbering.strPrefix = listName.first().left(nPlace);
    numbering.strSuffix = listName.first().mid(nPlace + nDigits);
    numbering.nDigits = nDigits;
    for (const QString& strName : listName) {
        const QString strNumber = strName.mid(nPlace, nDigits);
        const bool bDigits = std::all_of(strNumber.begin(), strNumber.end(), isDigit);
        numbering.listNumber.push_back(bDigits ? strNumber.toInt() : 0);
        const size_t n = numbering.listNumber.size() - 1;
        if (numbering.name(n) != strName ||
            numbering.listNumber[n] <= (n > 0 ? numbering.listNumber[n - 1] : 0)) {
            return std::nullopt;
        }
    }
    return numbering;
}

AngleLine angleLine(const std::vector<int>& listNumber, const std::vector<double>& listAngle)
{
    AngleLine line;
    const double dfCount = double(listNumber.size());
    if (listNumber.size() != listAngle.size() || listNumber.empty()) {
        return line;
    }
    const double dfMiddle = std::accumulate(listNumber.begin(), listNumber.end(), 0.0) / dfCount;
    const double dfMean = std::accumulate(listAngle.begin(), listAngle.end(), 0.0) / dfCount;
    double dfSquares = 0, dfProducts = 0;
    for (size_t n = 0; n < listNumber.size(); ++n) {
        dfSquares += (listNumber[n] - dfMiddle) * (listNumber[n] - dfMiddle);
        dfProducts += (listNumber[n] - dfMiddle) * (listAngle[n] - dfMean);
    }
    line.dfStep = dfSquares > 0 ? dfProducts / dfSquares : 0;
    line.dfAtZero = dfMean - line.dfStep * dfMiddle;
    for (size_t n = 0; n < listNumber.size(); ++n) {
        const double dfOff = std::abs(listAngle[n] - line.dfAtZero - line.dfStep * listNumber[n]);
        line.dfWorst = std::max(line.dfWorst, dfOff);
    }
    return line;
}

bool followsNumbers(const AngleLine& line)
{
    return line.dfStep != 0 && line.dfWorst <= 0.25 * std::abs(line.dfStep);
}

FrameNumbering numberingOfAngles(const std::vector<double>& listAngle)
{
    FrameNumbering plain;
    plain.listNumber.resize(listAngle.size());
    std::iota(plain.listNumber.begin(), plain.listNumber.end(), 1);
    if (listAngle.size() < 3 || followsNumbers(angleLine(plain.listNumber, listAngle))) {
        return plain;
    }
    std::vector<double> listStep;
    for (size_t n = 1; n < listAngle.size(); ++n) {
        listStep.push_back(listAngle[n] - listAngle[n - 1]);
    }
    const auto middle = listStep.begin() + int(listStep.size() / 2);
    std::nth_element(listStep.begin(), middle, listStep.end());
    const double dfStep = *middle;
    const double dfMostNumber = 1e6;
    FrameNumbering gaps;
    for (const double dfAngle : listAngle) {
        const double dfNumber = 1 + std::round((dfAngle - listAngle.front()) / dfStep);
        const int nBefore = gaps.listNumber.empty() ? 0 : gaps.listNumber.back();
        if (!(dfNumber > nBefore && dfNumber < dfMostNumber)) {
            return plain;
        }
        gaps.listNumber.push_back(int(dfNumber));
    }
    gaps.nDigits = std::max(gaps.nDigits, QString::number(gaps.last()).size());
    return followsNumbers(angleLine(gaps.listNumber, listAngle)) ? gaps : plain;
}

}  // namespace tessera
