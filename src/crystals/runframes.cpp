#include "crystals/runframes.h"

#include "dataset/serieschoice.h"

#include <QCryptographicHash>
#include <QJsonArray>

#include <algorithm>
#include <iterator>
#include <limits>
#include <type_traits>

namespace tessera {

namespace {

QString parameterOf(const QJsonObject& run, const char* pszName)
{
    return run.value(QStringLiteral("parameters"))
        .toObject()
        .value(QLatin1String(pszName))
        .toObject()
        .value(QStringLiteral("value"))
        .toString();
}

QList<FrameRange> rangesOf(const QString& strText)
{
    // "all" and "none", or no text where the series was taken as it came, are no ranges.
    return frameRanges(strText).value_or(QList<FrameRange>());
}

SeriesChoice choiceOf(const QJsonObject& run)
{
    SeriesChoice choice;
    choice.listFrames = rangesOf(parameterOf(run, "frames"));
    choice.listSkipped = rangesOf(parameterOf(run, "skip"));
    choice.nSum = std::clamp(parameterOf(run, "sum").toInt(), 1, g_nMostSum);
    return choice;
}

/// The number of frames of the data set, after summing; 0 if the record does not have it.
int frameCountOf(const QJsonObject& run)
{
    const QJsonArray listStage = run.value(QStringLiteral("stages")).toArray();
    for (const QJsonValue& value : listStage) {
        const QJsonObject found = value.toObject().value(QStringLiteral("found")).toObject();
        const QJsonObject quality = found.value(QStringLiteral("quality")).toObject();
        const QJsonArray listFrame = quality.value(QStringLiteral("completenessByFrame")).toArray();
        if (!listFrame.isEmpty()) {
            return listFrame.size();
        }
    }
    return 0;
}

/// More frames than the series has: what a range that goes to its end takes beyond is cut off again.
int boundOfSeries(const SeriesChoice& choice, int nFiles, int nFrames)
{
    const int nMost = 10000000;
    qint64 nBound = std::max<qint64>(nFiles, 1) + qint64(nFrames) * choice.nSum;
    for (const QList<FrameRange>& list : {choice.listFrames, choice.listSkipped}) {
        for (const FrameRange& range : list) {
            const bool bToEnd = range.nLast == std::numeric_limits<int>::max();
            nBound += bToEnd ? range.nFirst : range.nLast;
        }
    }
    return int(std::min<qint64>(nBound, nMost));
}

}  // namespace

RunFrames framesOfRun(const QJsonObject& run)
{
    RunFrames frames;
    std::vector<QByteArray> listFile;
    const QJsonArray listInput =
        run.value(QStringLiteral("inputs")).toObject().value(QStringLiteral("frames")).toArray();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QJsonValue& value : listInput) {
        listFile.push_back(value.toObject().value(QStringLiteral("sha256")).toString().toLatin1());
        if (listFile.back().isEmpty()) {
            return frames;
        }
        hash.addData(listFile.back());
    }
    if (listFile.empty()) {
        return frames;
    }
    const SeriesChoice choice = choiceOf(run);
    const int nTold = frameCountOf(run);
    const int nSeries = nTold > 0 ? boundOfSeries(choice, int(listFile.size()), nTold) : int(listFile.size());
    QList<int> listStart = sumStarts(takenFrames(choice, nSeries), choice.nSum);
    if (nTold > 0) {
        listStart = listStart.mid(0, nTold);
    }
    for (const int nStart : listStart) {
        for (int n = nStart; n < nStart + choice.nSum; ++n) {
            frames.listNumber.push_back(n);
        }
    }
    frames.bytesSeries = hash.result();
    if (!frames.listNumber.empty() && frames.listNumber.back() < int(listFile.size())) {
        for (const int n : frames.listNumber) {
            frames.listHash.push_back(listFile[n]);
        }
        std::sort(frames.listHash.begin(), frames.listHash.end());
        frames.listHash.erase(std::unique(frames.listHash.begin(), frames.listHash.end()),
                              frames.listHash.end());
    }
    return frames;
}

int sharedFrames(const RunFrames& one, const RunFrames& other)
{
    const auto countOf = [](const auto& listOne, const auto& listOther) {
        typename std::decay_t<decltype(listOne)> listBoth;
        std::set_intersection(listOne.begin(), listOne.end(), listOther.begin(), listOther.end(),
                              std::back_inserter(listBoth));
        return int(listBoth.size());
    };
    const bool bSeries = !one.bytesSeries.isEmpty() && one.bytesSeries == other.bytesSeries;
    return bSeries ? countOf(one.listNumber, other.listNumber) : countOf(one.listHash, other.listHash);
}

bool isDependent(const RunFrames& one, const RunFrames& other)
{
    return 10 * sharedFrames(one, other) > std::min(one.count(), other.count());
}

}  // namespace tessera
