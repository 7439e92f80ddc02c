#include "imagefiles/tiffseries.h"

#include "imagefiles/hdf5stamp.h"

#include <QList>
#include <QSize>

#include <algorithm>
#include <limits>
#include <list>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <utility>

namespace tessera {

namespace {

/// Whether a page is a reduced copy or a transparency mask of another one.
bool isAside(CTiffBytes& tiff, const TiffDirectory& directory)
{
    constexpr uint64_t nReduced = 1, nMask = 4, nOldReduced = 2;
    return (tiff.wholeNumber(directory, TiffTag::NewSubfileType, 0) & (nReduced | nMask)) != 0 ||
           tiff.wholeNumber(directory, TiffTag::SubfileType, 0) == nOldReduced;
}

std::pair<uint64_t, uint64_t> sizeOf(CTiffBytes& tiff, const TiffDirectory& directory)
{
    const std::pair<uint64_t, uint64_t> size = {tiff.wholeNumber(directory, TiffTag::ImageWidth, 0),
                                                tiff.wholeNumber(directory, TiffTag::ImageLength, 0)};
    const uint64_t nOrientation = tiff.wholeNumber(directory, TiffTag::Orientation, 1);
    return nOrientation >= 5 && nOrientation <= 8 ? std::make_pair(size.second, size.first) : size;
}

/// The number of images that the text of ImageJ gives for a file with one page; else 1.
uint64_t imagesInOne(CTiffBytes& tiff, const TiffDirectory& directory)
{
    const QByteArray text = tiff.text(directory, TiffTag::ImageDescription);
    if (text.startsWith("ImageJ=")) {
        for (const QByteArray& line : text.split('\n')) {
            if (line.startsWith("images=")) {
                return std::max(line.mid(7).trimmed().toULongLong(), qulonglong(1));
            }
        }
    }
    return 1;
}

enum class Pages {
    All,
    Images,  ///< those that are no copies or masks
};

/// Goes through the pages.
TiffSeries walk(CTiffBytes& tiff, uint64_t nMost, Pages pages)
{
    TiffSeries series;
    std::unordered_set<uint64_t> setSeen;
    std::pair<uint64_t, uint64_t> sizeFirst;
    uint64_t nPlace = tiff.firstDirectory(), nBytes = 0;
    while (nPlace != 0 && series.vecPage.size() < nMost) {
        const uint64_t nPage = setSeen.size() + 1;
        if (!setSeen.insert(nPlace).second) {
            series.strEnd = QStringLiteral("page %1 leads back to an earlier one").arg(nPage - 1);
            break;
        }
        const std::optional<TiffDirectory> directory = tiff.directory(nPlace);
        if (!directory) {
            series.strEnd = QStringLiteral(
                                "the directory of page %1 is not in the file, which is damaged or cut at "
                                "%2 bytes")
                                .arg(nPage)
                                .arg(tiff.fileSize());
            break;
        }
        nBytes += directory->nBytes;
        if (nBytes > tiff.fileSize()) {  // non-overlapping directories are no longer than the file
            series.strEnd = QStringLiteral("the directory of page %1 overlaps others").arg(nPage);
            break;
        }
        nPlace = directory->nNext;
        if (pages == Pages::Images && isAside(tiff, *directory)) {
            continue;
        }
        const std::pair<uint64_t, uint64_t> size = sizeOf(tiff, *directory);
        if (series.vecPage.empty()) {
            sizeFirst = size;
        } else if (size != sizeFirst) {
            series.strEnd = QStringLiteral(
                                "page %1 has %2 x %3 pixels, those before it %4 x %5; it ends the series")
                                .arg(nPage)
                                .arg(size.first)
                                .arg(size.second)
                                .arg(sizeFirst.first)
                                .arg(sizeFirst.second);
            break;
        }
        series.vecPage.push_back(directory->nPlace);
    }
    if (series.vecPage.size() == 1 && setSeen.size() == 1 && nPlace == 0) {
        const std::optional<TiffDirectory> directory = tiff.directory(series.vecPage[0]);
        series.nInOne = directory ? imagesInOne(tiff, *directory) : 1;
    }
    return series;
}

TiffSeries walkTo(CTiffBytes& tiff, uint64_t nMost)
{
    TiffSeries series = walk(tiff, nMost, Pages::Images);
    if (series.vecPage.empty() && series.strEnd.isEmpty()) {  // a file with thumbnails only
        series = walk(tiff, nMost, Pages::All);
    }
    return series;
}

/// The pages of a file as it was at a time.
struct KeptSeries {
    std::vector<Hdf5Stamp> vecStamp;  ///< of the file
    QDateTime timeRead;
    TiffSeries series;
};

constexpr uint64_t g_nFewPages = 16;  ///< a walk over so many takes less than a frame

/// All pages of a file, of the last few files with many pages as they are remembered.
std::shared_ptr<const KeptSeries> wholeSeries(CTiffBytes& tiff)
{
    constexpr size_t nMostKept = 4;
    static std::mutex s_mutex;
    static std::list<std::shared_ptr<const KeptSeries>> s_listKept;  // the most recent one comes first
    const QString strFile = tiff.file().fileName();
    {
        const std::lock_guard<std::mutex> lock(s_mutex);
        const auto it = std::find_if(s_listKept.begin(), s_listKept.end(), [&](const auto& pKept) {
            return pKept->vecStamp.front().strFile == strFile;
        });
        if (it != s_listKept.end() && isCurrent((*it)->vecStamp, (*it)->timeRead)) {
            s_listKept.splice(s_listKept.begin(), s_listKept, it);
            return s_listKept.front();
        }
    }
    const QDateTime timeRead = QDateTime::currentDateTimeUtc();
    const std::vector<Hdf5Stamp> vecStamp = {stampOf(strFile)};
    const auto pSeries = std::make_shared<const KeptSeries>(
        KeptSeries{vecStamp, timeRead, walkTo(tiff, std::numeric_limits<uint64_t>::max())});
    if (pSeries->series.vecPage.size() > g_nFewPages) {
        const std::lock_guard<std::mutex> lock(s_mutex);
        s_listKept.remove_if([&](const auto& pKept) { return pKept->vecStamp.front().strFile == strFile; });
        s_listKept.push_front(pSeries);
        s_listKept.resize(std::min(s_listKept.size(), nMostKept));
    }
    return pSeries;
}

}  // namespace

TiffSeries tiffSeries(CTiffBytes& tiff, uint64_t nMost)
{
    if (nMost <= g_nFewPages) {
        return walkTo(tiff, nMost);
    }
    const std::shared_ptr<const KeptSeries> pWhole = wholeSeries(tiff);
    const std::vector<uint64_t>& vecPage = pWhole->series.vecPage;
    if (vecPage.size() < nMost) {
        return pWhole->series;
    }
    // A walk that has all that is wanted does not come to the end.
    TiffSeries series;
    series.vecPage.assign(vecPage.begin(), vecPage.begin() + std::ptrdiff_t(nMost));
    return series;
}

}  // namespace tessera
