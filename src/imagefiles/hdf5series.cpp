#include "imagefiles/hdf5series.h"

#include "imagefiles/hdf5finding.h"
#include "imagefiles/hdf5probe.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <map>

namespace tessera {

namespace {

constexpr qint64 g_nMostWithoutFile = 100000;

/// The number of images of a block whose file is missing; 0 when it cannot be determined.
/// @param nBefore  number of images before it
qint64 countOf(const std::vector<Hdf5Block>& vecBlock, size_t nBlock, qint64 nBefore, qint64 nTotal)
{
    qint64 nPresent = 0, nMissing = 0, nOther = 0;
    for (size_t i = 0; i < vecBlock.size(); ++i) {
        const Hdf5Block& block = vecBlock[i];
        nPresent += block.nCount;
        nMissing += block.nCount == 0 ? 1 : 0;
        if (block.strMissing.isEmpty() && nOther == 0 && i + 1 < vecBlock.size()) {
            nOther = block.nCount;  // all files except the last are equally long
        }
    }
    qint64 nCount = 0;
    if (nBlock + 1 < vecBlock.size() && vecBlock[nBlock + 1].nNumber > 0) {
        nCount = vecBlock[nBlock + 1].nNumber - 1 - nBefore;
    }
    if (nCount < 1 && nMissing == 1) {
        nCount = nTotal - nPresent;
    }
    if (nCount < 1 && nBlock + 1 < vecBlock.size()) {
        nCount = nOther;
    }
    return nCount <= g_nMostWithoutFile ? std::max(nCount, qint64(0)) : 0;
}

/// The greatest number of images that a series may have. Images in missing files cost the master no bytes,
/// but each of them is listed and gets a name and a tilt. So there may be as many of them as of existing
/// images, as if half of a series were lost, plus the number that a detector writes in a few scans.
qint64 mostImages(const std::vector<Hdf5Block>& vecBlock)
{
    std::map<std::pair<QString, QByteArray>, qint64> mapHeld;  // a data set may be used more than once
    for (const Hdf5Block& block : vecBlock) {
        if (block.strMissing.isEmpty()) {
            qint64& nHeld = mapHeld[std::make_pair(block.strFile, block.strPath)];
            nHeld = std::max(nHeld, qint64(block.nFirst) + block.nCount);
        }
    }
    qint64 nMost = g_nMostWithoutFile;
    for (const auto& held : mapHeld) {
        nMost += 2 * held.second;
    }
    return nMost;
}

}  // namespace

int imagesIn(const Hdf5Layout& layout, bool bFramesLast)
{
    const size_t nAxes = layout.vecLength.size();
    if (nAxes < 2) {
        return 0;
    }
    uint64_t nImages = 1;
    for (size_t i = 0; i < nAxes; ++i) {
        const bool bImage = bFramesLast && nAxes > 2 ? i < 2 : i + 2 >= nAxes;
        if (!bImage) {
            nImages = std::min<uint64_t>(nImages, std::numeric_limits<uint32_t>::max()) *
                      std::min<uint64_t>(layout.vecLength[i], std::numeric_limits<uint32_t>::max());
        }
    }
    const size_t nRow = bFramesLast && nAxes > 2 ? 0 : nAxes - 2;
    const uint64_t nHeight = layout.vecLength[nRow], nWidth = layout.vecLength[nRow + 1];
    if (nHeight > uint64_t(std::numeric_limits<int>::max()) / nWidth) {
        return int(std::min<uint64_t>(nImages, 1));  // too large to be read; reading will tell so
    }
    const uint64_t nHeld = layout.nStored * g_nHdf5BestRatio / (nHeight * nWidth * layout.nElementSize) + 1;
    const uint64_t nCount = layout.vecChunk.empty() ? nImages
                                                    : std::min({nImages, nHeld, layout.nStored + 1});
    return int(std::min<uint64_t>(nCount, std::numeric_limits<int>::max()));
}

Hdf5Plane planeOf(const Hdf5Layout& layout, bool bFramesLast, int nImage)
{
    const size_t nAxes = layout.vecLength.size();
    Hdf5Plane plane;
    plane.vecPlace.assign(nAxes, 0);
    const bool bLast = bFramesLast && nAxes > 2;
    plane.nRowAxis = bLast ? 0 : int(nAxes) - 2;
    plane.nColumnAxis = plane.nRowAxis + 1;
    uint64_t nLeft = uint64_t(nImage);
    for (size_t i = nAxes; i-- > 0;) {
        if (int(i) != plane.nRowAxis && int(i) != plane.nColumnAxis) {
            plane.vecPlace[i] = nLeft % layout.vecLength[i];
            nLeft /= layout.vecLength[i];
        }
    }
    return plane;
}

QString countMissing(std::vector<Hdf5Block>& vecBlock, qint64 nTotal)
{
    const qint64 nMost = mostImages(vecBlock);
    QString strReason;
    qint64 nBefore = 0;
    for (size_t i = 0; i < vecBlock.size(); ++i) {
        if (!vecBlock[i].strMissing.isEmpty()) {
            const qint64 nTold = vecBlock[i].nCount;  // given by a virtual data set
            const qint64 nCount = nTold > 0 ? nTold : countOf(vecBlock, i, nBefore, nTotal);
            if (strReason.isEmpty()) {
                strReason = vecBlock[i].strMissing;
            }
            if (nCount == 0) {  // the following images have no number
                strReason = i + 1 < vecBlock.size()
                                ? vecBlock[i].strMissing +
                                      QStringLiteral(
                                          "; the number of its images is unknown, so the files after it "
                                          "cannot be numbered and are left out")
                                : strReason;
                vecBlock.resize(i);
                return strReason;
            }
            vecBlock[i].nCount = int(nCount);
        }
        nBefore += vecBlock[i].nCount;
        if (nBefore > std::numeric_limits<int>::max()) {
            vecBlock.resize(i);
            return QStringLiteral("%1 images").arg(nBefore);
        }
        if (nBefore > nMost) {
            const QString strMissing = strReason.isEmpty() ? QString() : strReason + QStringLiteral("; ");
            strReason = strMissing + QStringLiteral(
                                         "it announces more than %1 images, but too few are in its files, so "
                                         "that the last ones are left out")
                                         .arg(nMost);
            vecBlock.resize(i);
            return strReason;
        }
    }
    return strReason;
}

QString pathBesideMaster(const QString& strMaster, const QString& strLinked, QString& strReason)
{
    const QString strFolder = QFileInfo(strMaster).absolutePath();
    const QString strPath = QDir::cleanPath(strFolder + QLatin1Char('/') + strLinked);
    const QString strInside = strFolder.endsWith(QLatin1Char('/')) ? strFolder : strFolder + QLatin1Char('/');
    if (strLinked.isEmpty() || QDir::isAbsolutePath(strLinked) || !strPath.startsWith(strInside)) {
        strReason = QStringLiteral("its link to \"%1\" leads out of its folder and is not followed")
                        .arg(strLinked.left(200));
        return {};
    }
    // Symbolic links may lead anywhere. If all files of a series are links, they lead to the folder of the
    // real master.
    const QString strReal = QFileInfo(strPath).canonicalFilePath();  // empty where the file does not exist
    const auto isBelow = [&](const QString& strRealFolder) {
        return !strRealFolder.isEmpty() && strReal.startsWith(strRealFolder.endsWith(QLatin1Char('/'))
                                                                  ? strRealFolder
                                                                  : strRealFolder + QLatin1Char('/'));
    };
    if (!strReal.isEmpty() && !isBelow(QFileInfo(strFolder).canonicalFilePath()) &&
        !isBelow(QFileInfo(QFileInfo(strMaster).canonicalFilePath()).absolutePath())) {
        strReason = QStringLiteral("its link to \"%1\" leads out of its folder and is not followed")
                        .arg(strLinked.left(200));
        return {};
    }
    return strPath;
}

std::shared_ptr<const Hdf5Series> hdf5Series(const QString& strFileName, QString& strReason)
{
    constexpr size_t nMostKept = 4;
    static std::vector<std::shared_ptr<const Hdf5Series>>
        s_vecKept;  // the most recently used one comes first
    static CHdf5Faults s_faults;
    const CHdf5Lock lock;
    const QString strPath = QFileInfo(strFileName).absoluteFilePath();
    const auto it = std::find_if(s_vecKept.begin(), s_vecKept.end(), [&](const auto& pSeries) {
        return pSeries->vecStamp.front().strFile == strPath;
    });
    if (it != s_vecKept.end()) {
        std::rotate(s_vecKept.begin(), it, it + 1);
        if (isCurrent(s_vecKept.front()->vecStamp, s_vecKept.front()->timeRead)) {
            return s_vecKept.front();
        }
        s_vecKept.erase(s_vecKept.begin());
    }
    const QString strFault = s_faults.reason(strPath);
    if (!strFault.isEmpty()) {
        strReason = strFault;
        return nullptr;
    }
    auto pSeries = std::make_shared<Hdf5Series>();
    pSeries->timeRead = QDateTime::currentDateTimeUtc();
    pSeries->vecStamp.push_back(stampOf(strPath));
    const std::vector<Hdf5Stamp> vecStamp = CHdf5Faults::stampsOf(strPath);
    const Hdf5Trial trial = tryReading(strPath, strReason);
    if (trial == Hdf5Trial::BROKEN) {
        s_faults.keep(strPath, pSeries->timeRead, vecStamp, strReason);
    }
    if (trial != Hdf5Trial::GOOD || !findSeries(strPath, *pSeries, strReason)) {
        return nullptr;
    }
    for (const Hdf5Block& block : pSeries->vecBlock) {
        if (block.strFile != strPath && block.strFile != pSeries->vecStamp.back().strFile) {
            pSeries->vecStamp.push_back(stampOf(block.strFile));
        }
    }
    s_vecKept.insert(s_vecKept.begin(), pSeries);
    s_vecKept.resize(std::min(s_vecKept.size(), nMostKept));
    return pSeries;
}

}  // namespace tessera
