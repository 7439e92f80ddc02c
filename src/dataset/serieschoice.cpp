#include "dataset/serieschoice.h"

#include "records/reason.h"

#include <algorithm>

namespace tessera {

namespace {

const int g_nToEnd = std::numeric_limits<int>::max();

/// A number of a frame from 1 on, in plain digits.
std::optional<int> frameNumber(const QString& strText)
{
    bool bNumber = false;
    const int nNumber = strText.toInt(&bNumber);
    const bool bPlain = std::all_of(strText.begin(), strText.end(), [](QChar ch) {
        return ch >= QLatin1Char('0') && ch <= QLatin1Char('9');
    });
    return bNumber && bPlain && nNumber >= 1 ? std::optional<int>(nNumber) : std::nullopt;
}

std::optional<FrameRange> frameRange(const QString& strText)
{
    const int nDash = strText.indexOf(QLatin1Char('-'));
    const QString strFirst = nDash < 0 ? strText : strText.left(nDash).trimmed();
    const QString strLast = nDash < 0 ? strText : strText.mid(nDash + 1).trimmed();
    const std::optional<int> nFirst = strFirst.isEmpty() ? 1 : frameNumber(strFirst);
    const std::optional<int> nLast = strLast.isEmpty() ? g_nToEnd : frameNumber(strLast);
    if (!nFirst || !nLast || (strFirst.isEmpty() && strLast.isEmpty())) {
        return std::nullopt;
    }
    return FrameRange{*nFirst, *nLast};
}

QString rangeText(const FrameRange& range)
{
    if (range.nFirst == range.nLast) {
        return QString::number(range.nFirst);
    }
    return QString::number(range.nFirst) + QLatin1Char('-') +
           (range.nLast == g_nToEnd ? QString() : QString::number(range.nLast));
}

/// @param vecFlag  of the frames of a series; those of the ranges get the value
/// @return empty, or what lies beyond the series
QString setRanges(const QList<FrameRange>& listRange, bool bValue, std::vector<char>& vecFlag)
{
    const int nFrames = int(vecFlag.size());
    for (const FrameRange& range : listRange) {
        if (range.nFirst > nFrames || (range.nLast > nFrames && range.nLast != g_nToEnd)) {
            return QStringLiteral("the series has frames 1 to %1, but no frame %2")
                .arg(nFrames)
                .arg(rangeText(range));
        }
        std::fill(vecFlag.begin() + (range.nFirst - 1), vecFlag.begin() + std::min(range.nLast, nFrames),
                  char(bValue));
    }
    return {};
}

}  // namespace

std::optional<QList<FrameRange>> frameRanges(const QString& strText, QString* pstrReason)
{
    QList<FrameRange> listRange;
    for (const QString& strPart : strText.split(QLatin1Char(','))) {
        const std::optional<FrameRange> range = frameRange(strPart.trimmed());
        if (!range) {
            giveReason(
                pstrReason,
                QStringLiteral("\"%1\" is neither the number of a frame, from 1 on, nor a range such as "
                               "3-7, 12- or -40")
                    .arg(strPart.trimmed()));
            return std::nullopt;
        }
        if (range->nLast < range->nFirst) {
            giveReason(pstrReason,
                       QStringLiteral("%1-%2 ends before it begins").arg(range->nFirst).arg(range->nLast));
            return std::nullopt;
        }
        listRange.append(*range);
    }
    return listRange;
}

QString frameRangesText(const QList<FrameRange>& listRange)
{
    QStringList listText;
    for (const FrameRange& range : listRange) {
        listText.append(rangeText(range));
    }
    return listText.join(QLatin1Char(','));
}

QString choiceText(const SeriesChoice& choice)
{
    QStringList listText;
    if (!choice.listFrames.isEmpty()) {
        listText.append(QStringLiteral("frames %1").arg(frameRangesText(choice.listFrames)));
    }
    if (!choice.listSkipped.isEmpty()) {
        listText.append(QStringLiteral("without %1").arg(frameRangesText(choice.listSkipped)));
    }
    if (choice.nSum > 1) {
        listText.append(QStringLiteral("%1 summed").arg(choice.nSum));
    }
    if (choice.nBin > 1) {
        listText.append(QStringLiteral("binned %1 × %1").arg(choice.nBin));
    }
    return listText.join(QStringLiteral(", "));
}

QList<int> takenFrames(const SeriesChoice& choice, int nFrames, QString* pstrReason)
{
    std::vector<char> vecTaken(size_t(std::max(nFrames, 0)), char(choice.listFrames.isEmpty()));
    QString strReason = setRanges(choice.listFrames, true, vecTaken);
    if (strReason.isEmpty()) {
        strReason = setRanges(choice.listSkipped, false, vecTaken);
    }
    QList<int> listTaken;
    for (int n = 0; n < nFrames && strReason.isEmpty(); ++n) {
        if (vecTaken[n]) {
            listTaken.append(n);
        }
    }
    if (listTaken.isEmpty() && strReason.isEmpty()) {
        strReason = QStringLiteral("no frame of %1 is left").arg(nFrames);
    }
    if (!strReason.isEmpty()) {
        giveReason(pstrReason, strReason);
    }
    return listTaken;
}

QList<int> sumStarts(const QList<int>& listTaken, int nSum)
{
    QList<int> listFirst;
    int nRun = 0;
    for (int i = 0; i < listTaken.size(); ++i) {
        nRun = i > 0 && listTaken[i] == listTaken[i - 1] + 1 ? nRun + 1 : 1;
        if (nRun == nSum) {
            listFirst.append(listTaken[i] - nSum + 1);
            nRun = 0;
        }
    }
    return listFirst;
}

}  // namespace tessera
