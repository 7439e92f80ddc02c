#include "frames/framesummary.h"

#include "frames/frameloader.h"
#include "imagefiles/dm3calibration.h"

#include <QFileInfo>

#include <exception>

namespace {

// Keeps what the loader has to say.
class CReasonReport : public CRunReport {
public:
    void addMessage(const QString& strText, Qt::GlobalColor = Qt::black) override { m_strReason = strText; }
    QString m_strReason;
};

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
    if (read.strFormat == QLatin1String("DM3")) {
        try {
            DM3File file;
            if (file.Read(strFileName)) {
                const Dm3Calibration calibration = dm3Calibration(file);
                read.dfKilovolts = calibration.dfKilovolts;
                read.dfPixelSize = calibration.dfPixelSize;
            }
        } catch (const std::exception&) {  // no memory for the tags: the size is known all the same
        }
    }
    summary = read;
    return true;
}
