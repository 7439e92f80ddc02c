#include "frames/framesummary.h"

#include "frames/frameloader.h"
#include "imagefiles/frameformats.h"
#include "records/reason.h"

#include <QFileInfo>

#include <exception>

namespace tessera {

namespace {

// Keeps what the loader has to say.
class CReasonReport : public CRunReport {
public:
    void addMessage(const QString& strText, Severity = Severity::Info) override { m_strReason = strText; }
    QString m_strReason;
};

FrameHeader headerOf(const QString& strFileName)
{
    const FrameFormat& format = frameFormatOf(strFileName);
    try {
        return format.fnReadHeader ? format.fnReadHeader(strFileName) : FrameHeader();
    } catch (const std::exception&) {  // no memory for the tags: the image may be read all the same
        return {};
    }
}

}  // namespace

bool readFrameSummary(const QString& strFileName, FrameSummary& summary, QString* pstrReason)
{
    CReasonReport report;
    ImageList vecImage;
    if (loadFirstImage(vecImage, strFileName, {}, report) != 1 || vecImage.empty()) {
        if (pstrReason)
            *pstrReason = report.m_strReason;
        return false;
    }
    FrameSummary read;
    read.nWidth = vecImage.front()->Width();
    read.nHeight = vecImage.front()->Height();
    read.strFormat = QFileInfo(strFileName).suffix().toUpper();
    const FrameHeader header = headerOf(strFileName);
    read.dfKilovolts = header.dfKilovolts;
    read.dfPixelSize = header.dfPixelSize;
    summary = read;
    return true;
}

bool areFramesAlike(const QStringList& listFile, QString* pstrReason)
{
    FrameSummary first, other;
    if (!listFile.isEmpty() && !readFrameSummary(listFile.first(), first, pstrReason))
        return false;
    const qint64 nLength = QFileInfo(listFile.value(0)).size();
    for (const QString& strFile : listFile) {
        const QFileInfo info(strFile);
        if (!info.isFile())
            return giveReason(pstrReason, strFile, QStringLiteral("no such file"));
        const QString strFormat = info.suffix().toUpper();
        if (info.size() == nLength && strFormat == first.strFormat)
            continue;
        QString strReason;
        const QSize size = headerOf(strFile).size;
        if (size.isValid()) {
            other.nWidth = size.width();
            other.nHeight = size.height();
        } else if (!readFrameSummary(strFile, other, &strReason)) {
            return giveReason(pstrReason, strReason.isEmpty() ? strFile : strReason);
        }
        if (other.nWidth != first.nWidth || other.nHeight != first.nHeight)
            return giveReason(pstrReason, strFile,
                              QStringLiteral("%1 × %2 pixels, but the first frame has %3 × %4")
                                  .arg(other.nWidth)
                                  .arg(other.nHeight)
                                  .arg(first.nWidth)
                                  .arg(first.nHeight));
    }
    return true;
}

}  // namespace tessera
