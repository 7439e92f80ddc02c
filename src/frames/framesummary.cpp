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

bool readFrameSummary(const QString& strFileName, FrameSummary& summary, QString* pstrReason)
{
    CReasonReport report;
    ImageList vecImage;
    if (loadFirstImage(vecImage, strFileName, {}, report) != 1 || vecImage.empty()) {
        if (pstrReason) {
            *pstrReason = report.m_strReason;
        }
        return false;
    }
    FrameSummary read;
    read.nWidth = vecImage.front()->Width();
    read.nHeight = vecImage.front()->Height();
    read.strFormat = formatName(strFileName);
    const FrameHeader header = frameHeader(strFileName);
    read.dfKilovolts = header.kilovolts.isTold() ? header.kilovolts.df : 0;
    read.dfPixelSize = header.pixelSize.isTold() ? header.pixelSize.df : 0;
    summary = read;
    return true;
}

bool areFramesAlike(const QStringList& listFile, QString* pstrReason)
{
    FrameSummary first, other;
    if (!listFile.isEmpty() && !readFrameSummary(listFile.first(), first, pstrReason)) {
        return false;
    }
    const qint64 nLength = QFileInfo(frameName(listFile.value(0)).strFile).size();
    for (const QString& strFile : listFile) {
        const QFileInfo info(frameName(strFile).strFile);
        if (!info.isFile()) {
            return giveReason(pstrReason, strFile, QStringLiteral("no such file"));
        }
        const QString strFormat = formatName(strFile);
        if (info.size() == nLength && strFormat == first.strFormat) {
            continue;
        }
        QString strReason;
        const QSize size = frameHeader(strFile).size;
        if (size.isValid()) {
            other.nWidth = size.width();
            other.nHeight = size.height();
        } else if (!readFrameSummary(strFile, other, &strReason)) {
            return giveReason(pstrReason, strReason.isEmpty() ? strFile : strReason);
        }
        if (other.nWidth != first.nWidth || other.nHeight != first.nHeight) {
            return giveReason(pstrReason, strFile,
                              QStringLiteral("%1 × %2 pixels, but the first frame has %3 × %4")
                                  .arg(other.nWidth)
                                  .arg(other.nHeight)
                                  .arg(first.nWidth)
                                  .arg(first.nHeight));
        }
    }
    return true;
}

}  // namespace tessera
