#include "frames/frameloader.h"

#include "frames/framesum.h"
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

// Memory by file size: the file, and 4 bytes for each pixel of 1, 2 or 4 bytes.
const std::uint64_t g_nMemoryOfFile = 3;

/// The memory for a frame, from the size of its file, or of one image of a stack if the header tells it.
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
            QStringLiteral("%1: %2").arg(strFileName, strReason));  // follows a line with only the file
    }
    if (nResult != 1) {
        report.fail(QStringLiteral("%1: failed to load").arg(strFileName));
    }
    if (!strReason.isEmpty()) {
        report.addMessage(QStringLiteral("%1: %2").arg(strFileName, strReason),
                          vecRead.empty() ? Severity::Error : Severity::Info);
    }
    if (nResult != 1) {
        return 0;
    }
    if (!vecRead.empty()) {
        repairHotPixels(*vecRead.front(), listHotPixel);
    }
    vecImage.reserve(vecImage.size() + vecRead.size());
    for (auto& pImage : vecRead) {
        vecImage.push_back(std::move(pImage));
    }
    return 1;
}

/// Sums the first images of some files, in blocks of pixels.
int readSum(ImageList& vecImage, const FrameSource& source, CRunReport& report)
{
    CFrameSum sum(source.nBin, source.dfSaturation);
    for (const QString& strFile : source.listFile) {
        ImageList vecRead;
        if (read(vecRead, strFile, source.listRawPixel, report, 1) != 1) {
            return 0;
        }
        if (vecRead.empty()) {
            return 1;  // as for a single file without a readable image; a red line tells the reason
        }
        QString strReason;
        if (!sum.add(*vecRead.front(), &strReason)) {
            report.fail(QStringLiteral("%1: %2").arg(strFile, strReason));
            return 0;
        }
    }
    std::unique_ptr<CImgObj<float>> pSum = sum.take();
    repairHotPixels(*pSum, source.listHotPixel);
    vecImage.push_back(std::move(pSum));
    return 1;
}

int read(ImageList& vecImage, const FrameSource& source, CRunReport& report, int nMaxImages)
{
    return source.isPlain() ? read(vecImage, source.listFile.first(), source.listHotPixel, report, nMaxImages)
                            : readSum(vecImage, source, report);
}

int load(ImageList& vecImage, const FrameSource& source, CRunReport& report, int nMaxImages)
{
    try {
        return read(vecImage, source, report, nMaxImages);
    } catch (...) {
        releaseFrameImages(vecImage);
        report.fail(whatWasThrown());
        return 0;
    }
}

}  // namespace

int loadFrame(ImageList& vecImage, const FrameSource& source, CRunReport& report)
{
    return load(vecImage, source, report, std::numeric_limits<int>::max());
}

int loadFirstImage(ImageList& vecImage, const FrameSource& source, CRunReport& report)
{
    return load(vecImage, source, report, 1);
}

int readFirstImage(ImageList& vecImage, const FrameSource& source, CRunReport& report)
{
    try {
        return read(vecImage, source, report, 1);
    } catch (const CShortMemory&) {  // it has a more precise reason
        throw;
    } catch (const std::bad_alloc&) {
        const std::uint64_t nFrames = source.isPlain() ? g_nMemoryOfFile : g_nMemoryOfFile + 1;
        throw CShortMemory(QStringLiteral("%1: reading the frame").arg(source.listFile.first()),
                           nFrames * bytesOfFrame(source.listFile.first()));
    }
}

int loadFrame(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
              CRunReport& report)
{
    return loadFrame(vecImage, FrameSource{{strFileName}, listHotPixel, 1, {}, 0}, report);
}

int loadFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report)
{
    return loadFirstImage(vecImage, FrameSource{{strFileName}, listHotPixel, 1, {}, 0}, report);
}

int readFirstImage(ImageList& vecImage, const QString& strFileName, const QList<QPoint>& listHotPixel,
                   CRunReport& report)
{
    return readFirstImage(vecImage, FrameSource{{strFileName}, listHotPixel, 1, {}, 0}, report);
}

void releaseFrameImages(ImageList& vecImage)
{
    vecImage.clear();
}

}  // namespace tessera
