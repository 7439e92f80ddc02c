// SeriesChoice: which frames of a series are taken, and what of them becomes one: sums of neighbours, bins.
#pragma once

#include "dataset/frametilts.h"

#include <QList>
#include <QPoint>
#include <QString>
#include <QStringList>

#include <limits>
#include <optional>

namespace tessera {

constexpr int g_nMostBin = 64;      ///< pixels: 64 × 64 of the largest cameras leave 64 × 64
constexpr int g_nMostSum = 100000;  ///< frames: more than a series has

/// Frames by their numbers, which count from 1; both ends are in it.
struct FrameRange {
    int nFirst = 1;
    int nLast = std::numeric_limits<int>::max();  ///< this one: to the end of the series

    bool operator==(const FrameRange& other) const { return nFirst == other.nFirst && nLast == other.nLast; }
};

/// Reads "1-10,20-30", "7", "12-" or "-40"; the ranges may lie anyhow, and over one another.
/// @return none, with the reason, for anything else
std::optional<QList<FrameRange>> frameRanges(const QString& strText, QString* pstrReason = nullptr);

/// The text that frameRanges() reads.
QString frameRangesText(const QList<FrameRange>& listRange);

/// What of a series is worked on. Numbers of frames are those of the project, or of the folder in its order.
struct SeriesChoice {
    int nBin = 1;                   ///< pixels: so many times so many are summed to one
    int nSum = 1;                   ///< frames: so many neighbours are summed to one
    QList<FrameRange> listFrames;   ///< that are taken; empty: all
    QList<FrameRange> listSkipped;  ///< of these, those that are left out

    bool isPlain() const { return *this == SeriesChoice(); }
    bool operator==(const SeriesChoice& other) const
    {
        return nBin == other.nBin && nSum == other.nSum && listFrames == other.listFrames &&
               listSkipped == other.listSkipped;
    }
    bool operator!=(const SeriesChoice& other) const { return !(*this == other); }
};

/// In words, "frames 1-56, without 10,11, 2 summed, binned 2 × 2"; empty where all is taken as it comes.
QString choiceText(const SeriesChoice& choice);

/// How the frames of a data set come from those of its files. One that is plain has nothing but its choice.
struct SeriesReading {
    SeriesChoice choice;
    QStringList listFile;        ///< all frames of the series as it came, those left out as well
    FrameTilts tilts;            ///< of these
    QList<int> listFirst;        ///< for each frame of the data set the place of its first one in listFile
    double dfSaturation = 0;     ///< counts of a pixel of the files that are no longer trusted; 0: not told
    QList<QPoint> listHotPixel;  ///< of frames before they are binned: column, row

    bool isPlain() const { return listFirst.isEmpty(); }
    /// All frames that the files of the series hold, where these are the frames of the data set.
    const QStringList& allFiles(const QStringList& listFrame) const
    {
        return isPlain() ? listFrame : listFile;
    }
    /// Whether frames of the files lie between a frame of the data set and its next that are in neither.
    bool isHoleBehind(int nFrame) const
    {
        return nFrame + 1 < listFirst.size() && listFirst[nFrame + 1] > listFirst[nFrame] + choice.nSum;
    }
    /// Degrees that the crystal turned while a frame before a hole was exposed, by the next one of the files.
    double stepOf(int nFrame) const
    {
        const int n = listFirst[nFrame];
        return choice.nSum * (tilts.listOverall.value(n + 1) - tilts.listOverall.value(n));
    }
    /// What a pixel of the data set is the sum of.
    int pixelCount() const { return choice.nSum * choice.nBin * choice.nBin; }
};

/// The frames that are taken, each once and in the order of the series, by their place from 0.
/// @return empty, with the reason, where a number lies beyond the series or nothing is left
QList<int> takenFrames(const SeriesChoice& choice, int nFrames, QString* pstrReason = nullptr);

/// The places of the first of each nSum frames that follow one another in the series. Frames that are left
/// over before a hole, or at the end, are in none.
QList<int> sumStarts(const QList<int>& listTaken, int nSum);

}  // namespace tessera
