#include "frames/framesummary.h"

#include "frames/frameloader.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"
#include "records/reason.h"

#include <QFileInfo>

namespace tessera {

namespace {

// Keeps the messages of the loader.
class CReasonReport : public CRunReport {
public:
    void addMessage(const QString& strText, Severity = Severity::Info) override { m_strReason = strText; }
    QString m_strReason;
};

// The name of the format in the table of formats, or the suffix of a picture that only QImage can read.
QString formatName(const QString& strFrame)
{
    const FrameFormat& format = frameFormatOf(strFrame);
    return format.listSuffix.isEmpty() ? QFileInfo(frameName(strFrame).strFile).suffix().toUpper()
                                       : format.strName;
}

}  // namespace

std::optional<FrameSummary> readFrameSummary(const QString& strFileName, QString* pstrReason)
{
    CReasonReport report;
    ImageList vecImage;
    if (loadFirstImage(vecImage, strFileName, {}, report) != 1 || vecImage.empty()) {
        giveReason(pstrReason, report.m_strReason);
        return std::nullopt;
    }
    FrameSummary read;
    read.nWidth = vecImage.front()->Width();
    read.nHeight = vecImage.front()->Height();
    read.strFormat = formatName(strFileName);
    const FrameHeader header = frameHeader(strFileName);
    read.dfKilovolts = header.kilovolts.isTold() ? header.kilovolts.df : 0;
    read.dfPixelSize = header.pixelSize.isTold() ? header.pixelSize.df : 0;
    return read;
}

bool areFramesAlike(const QStringList& listFile, QString* pstrReason)
{
    if (listFile.isEmpty()) {
        return true;
    }
    const std::optional<FrameSummary> first = readFrameSummary(listFile.first(), pstrReason);
    if (!first) {
        return false;
    }
    const QSize sizeFirst(first->nWidth, first->nHeight);
    const qint64 nLength = QFileInfo(frameName(listFile.first()).strFile).size();
    for (const QString& strFile : listFile) {
        const QFileInfo info(frameName(strFile).strFile);
        if (!info.isFile()) {
            return giveReason(pstrReason, strFile, QStringLiteral("no such file"));
        }
        const QString strFormat = formatName(strFile);
        if (info.size() == nLength && strFormat == first->strFormat) {
            continue;
        }
        QString strReason;
        QSize size = frameHeader(strFile).size;
        if (!size.isValid()) {
            const std::optional<FrameSummary> other = readFrameSummary(strFile, &strReason);
            if (!other) {
                return giveReason(pstrReason, strReason.isEmpty() ? strFile : strReason);
            }
            size = QSize(other->nWidth, other->nHeight);
        }
        if (size != sizeFirst) {
            return giveReason(pstrReason, strFile,
                              QStringLiteral("%1 × %2 pixels, but the first frame has %3 × %4")
                                  .arg(size.width())
                                  .arg(size.height())
                                  .arg(sizeFirst.width())
                                  .arg(sizeFirst.height()));
        }
    }
    return true;
}

}  // namespace tessera
