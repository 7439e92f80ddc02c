#include "exchange/exchangeexport.h"

#include "exchange/exchangeframes.h"
#include "exchange/exchangegeometry.h"
#include "exchange/greytiff.h"
#include "exchange/petsinput.h"
#include "frames/firstimage.h"
#include "frames/frametargets.h"
#include "frames/framewalk.h"
#include "frames/seriesexport.h"
#include "records/runends.h"
#include "records/sealedfile.h"
#include "records/wholefile.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace tessera {

namespace {

/// Finds whether 16 bits are enough for all pixels of all frames, as all files must have the same type.
RunOutcome fitsIn16Bits(const DataSet& dataSet, CRunReport& report, bool& bFits)
{
    bFits = true;
    const SeriesSnapshot series(dataSet);
    CFrameWalk walk(series.frameCount(), StopAsked::BeforeEachFrame, report);
    walk.showProgress(ProgressPlace::TaskBarToo);
    return walk.run([&](int nFrame) {
        const auto pImage = firstImage(series, nFrame, {}, report);
        if (pImage) {
            const float* pEnd = pImage->Data() + qint64(pImage->Width()) * pImage->Height();
            bFits = bFits && std::none_of(static_cast<const float*>(pImage->Data()), pEnd,
                                          [](float f) { return f > 65535 || f < -0.5f; });
        }
        return pImage != nullptr;
    });
}

RunOutcome writeTiffs(const DataSet& dataSet, const QString& strFolder, const QStringList& listTarget,
                      int nBits, CRunReport& report)
{
    QHash<QString, QString> mapTarget;
    for (int n = 0; n < listTarget.size(); ++n) {
        mapTarget.insert(dataSet.m_listFrameFile[n], strFolder + QLatin1Char('/') + listTarget[n]);
    }
    SeriesExport what(dataSet);
    what.strName = QStringLiteral("Exporting TIFF files");
    what.strStartLine = QStringLiteral("%1>Exporting TIFF files...");
    what.strEndLine = QStringLiteral("%1>Exporting TIFF files finished.");
    what.strLoadFailed = QStringLiteral("Failed to load: %1");
    what.strFolder = strFolder;
    what.fnTarget = [&](const QString& strFrame) { return mapTarget.value(strFrame); };
    what.fnWrite = [nBits](int, CImgObj<float>& image, const QString& strTarget, QString& strReason) {
        const QByteArray bytes = greyTiff(image, nBits);
        if (bytes.isEmpty()) {
            strReason = QStringLiteral("%1: no image that a TIFF file can hold").arg(strTarget);
            return false;
        }
        return writeWholeFile(strTarget, bytes, &strReason);
    };
    return exportSeries(what, report);
}

QString freePetsName(const ExchangeSource& source)
{
    QString strFile = source.file(QStringLiteral(".pts"));
    for (int n = 2; n <= 100 && !isFreeForSealed(strFile); ++n) {
        strFile = source.file(QStringLiteral("_%1.pts").arg(n));
    }
    return isFreeForSealed(strFile) ? strFile : QString();
}

}  // namespace

RunOutcome exportForPets(const ExchangeSource& source, CRunReport& report)
{
    const DataSet& dataSet = *source.pData;
    const std::vector<double> listAngle = anglesOf(source.series);
    FrameNumbering numbering = numberingOfAngles(listAngle);
    numbering.strSuffix = QStringLiteral(".tif");
    QString strReason;
    const std::optional<ExchangeGeometry> geometry = exchangeGeometry(source.series, numbering, {},
                                                                      source.bCell, &strReason);
    if (!geometry) {
        return failRun(report, strReason);
    }
    const QString strImages = plainName(dataSet) + QStringLiteral("_pets/tiff");
    const QString strFolder = source.strFolder + QLatin1Char('/') + strImages;
    PetsOptions options;
    options.strName = dataSet.m_strProjectName;
    options.listAlpha = listAngle;
    QStringList listTarget;
    for (size_t n = 0; n < numbering.listNumber.size(); ++n) {
        listTarget.append(numbering.name(n));
        options.listFile.append(strImages + QLatin1Char('/') + numbering.name(n));
    }
    if (source.pIntegration) {
        options.dfSpotDiameter = 2 * source.pIntegration->integrated.model.dfDiscRadius;
        options.dfHighest = source.pIntegration->integrated.dfMaxDStar;
    }
    const QString strFile = freePetsName(source);
    if (strFile.isEmpty() || overwritesFrames({strFile}, dataSet.allFiles(), report)) {
        return failRun(report, QStringLiteral("No name is free for the list of frames."));
    }
    if (!QDir().mkpath(strFolder)) {
        return failRun(report, QStringLiteral("%1: the folder cannot be made.").arg(strFolder));
    }
    bool bFits = true;
    RunOutcome outcome = fitsIn16Bits(dataSet, report, bFits);
    if (outcome.finished()) {
        outcome = writeTiffs(dataSet, strFolder, listTarget, bFits ? 16 : 32, report);
    }
    if (!outcome.finished()) {
        return outcome;
    }
    if (!writeWholeFile(strFile, petsInput(*geometry, options), &strReason)) {
        return failRun(report, strReason);
    }
    report.addMessage(QStringLiteral("Written: %1").arg(strFile));
    return {};
}

}  // namespace tessera
