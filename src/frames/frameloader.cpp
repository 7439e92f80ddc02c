#include "frames/frameloader.h"

#include "frames/hotpixels.h"
#include "imagefiles/filekind.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"
#include "records/shortmemory.h"
#include "records/whatwasthrown.h"

#include <QFileInfo>

#include <cstdint>
#include <limits>
#include <new>

namespace tessera {

namespace {

const std::uint64_t g_nMemoryOfFile = 3;  // the file itself, and 4 bytes for the 1, 2 or 4 of a pixel

/// Of its file, or of one image of many as far as the header tells its size.
std::uint64_t bytesOfFrame(const QString& strFileName)
{
    const FrameName name = frameName(strFileName);
    const QSize size = name.bPart ? frameHeader(strFileName).size : QSize();
    const std::uint64_t nBytesOfPixel = 4, nFile = std::uint64_t(QFileInfo(name.strFile).size());
    return size.isValid() ? nBytesOfPixel * std::uint64_t(size.width()) * std::uint64_t(size.height())
                          : nFile;
}

int readFrame(const QString& strFileName, int nMaxImages, ImageList& vecImage, QString& strReason)
{
    const FrameName name = frameName(strFileName);
    return frameFormatOf(strFileName)
                   .fnRead(name.strFile, name.nImage, name.bPart ? 1 : nMaxImages, vecImage, strReason)
               ? 1
               : 0;
}

int read(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
         CRunReport& report, int nMaxImages)
{
    ImageList vecRead;
    QString strReason;
    const int nResult = readFrame(strFileName, nMaxImages, vecRead, strReason);
    const FrameName name = frameName(strFileName);
    if (vecRead.empty() && strReason.isEmpty() && name.bPart) {
        strReason = QStringLiteral("there is no image %1 in the file").arg(qint64(name.nImage) + 1);
    }
    if (vecRead.empty() && !strReason.isEmpty()) {
        strReason += misnamedHint(name.strFile);
        report.noteReason(
            QStringLiteral("%1: %2").arg(strFileName, strReason));  // said after a line with the file alone
    }
    if (nResult != 1)
        report.fail(QStringLiteral("%1: failed to load").arg(strFileName));
    if (!strReason.isEmpty())
        report.addMessage(QStringLiteral("%1: %2").arg(strFileName, strReason),
                          vecRead.empty() ? Severity::Error : Severity::Info);
    if (nResult != 1)
        return 0;
    if (!vecRead.empty())
        repairHotPixels(*vecRead.front(), listHotPixel);
    vecImage.reserve(vecImage.size() + vecRead.size());
    for (auto& pImage : vecRead)
        vecImage.push_back(std::move(pImage));
    return 1;
}

int load(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
         CRunReport& report, int nMaxImages)
{
    try {
        return read(vecImage, strFileName, listHotPixel, report, nMaxImages);
    } catch (...) {
        releaseFrameImages(vecImage);
        report.fail(whatWasThrown());
        return 0;
    }
}

}  // namespace

int loadFrame(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
              CRunReport& report)
{
    return load(vecImage, strFileName, listHotPixel, report, std::numeric_limits<int>::max());
}

int loadFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report)
{
    return load(vecImage, strFileName, listHotPixel, report, 1);
}

int readFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report)
{
    try {
        return read(vecImage, strFileName, listHotPixel, report, 1);
    } catch (const CShortMemory&) {  // it knows better
        throw;
    } catch (const std::bad_alloc&) {
        throw CShortMemory(QStringLiteral("%1: reading the frame").arg(strFileName),
                           g_nMemoryOfFile * bytesOfFrame(strFileName));
    }
}

void releaseFrameImages(ImageList& vecImage)
{
    vecImage.clear();
}

}  // namespace tessera
