#include "frames/imageseries.h"

#include "frames/seriesexport.h"
#include "imagefiles/framename.h"
#include "imagefiles/imagesaving.h"
#include "imaging/contrast.h"
#include "records/runends.h"

#include <new>

namespace tessera {

QString seriesPictureFile(const QString& strFolder, const QString& strFrame, const QString& strExtension)
{
    return strFolder + QLatin1Char('/') + frameBaseName(strFrame) + strExtension;
}

RunOutcome saveSeries(const DataSet& dataSet, const QString& strFolder, const QString& strExtension,
                      double dfContrastMin, double dfContrastMax, CRunReport& report)
{
    if (strExtension.isEmpty()) {
        return refuseRun(report, QStringLiteral("Invalid export image type."));
    }
    SeriesExport what(dataSet);
    what.strName = QStringLiteral("Exporting image series");
    what.strStartLine = QStringLiteral("%1>Exporting image series started.");
    what.strEndLine = QStringLiteral("%1>Exporting image series finished.");
    what.strLoadFailed = QStringLiteral("Failed to load %1. Stop.");
    what.bStopAtFailedWrite = true;
    what.fnTarget = [&](const QString& strFrame) {
        return seriesPictureFile(strFolder, strFrame, strExtension);
    };
    what.fnWrite = [&](int, const CImgObj<float>& image, const QString& strTarget, QString& strReason) {
        CImgObj<unsigned char> imgByte;
        if (!imgByte.Create(image.Width(), image.Height())) {
            throw std::bad_alloc();
        }
        FloatToByte(image.Data(), imgByte.Data(), image.Width() * image.Height(), float(dfContrastMin),
                    float(dfContrastMax), 0, 255);
        return saveImage(&imgByte, strTarget, &strReason);
    };
    return exportSeries(what, report);
}

}  // namespace tessera
