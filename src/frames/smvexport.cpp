#include "frames/smvexport.h"

#include "frames/seriesexport.h"
#include "frames/wholepixels.h"
#include "imagefiles/framename.h"
#include "imagefiles/smvfile.h"
#include "imaging/imageshifts.h"
#include "records/runends.h"

#include <algorithm>
#include <cmath>

namespace tessera {

QString smvImageFile(const QString& strFolder, const QString& strFrame)
{
    return strFolder + QLatin1Char('/') + frameShortName(strFrame) + QStringLiteral(".img");
}

RunOutcome exportSMVImages(const DataSet& dataSet, CRunReport& report)
{
    const QString strFolder = dataSet.m_strProjectDir;
    return exportSMVImages(
        dataSet, strFolder, [&](const QString& strFrame) { return smvImageFile(strFolder, strFrame); },
        report);
}

RunOutcome exportSMVImages(const DataSet& dataSet, const QString& strFolder,
                           const std::function<QString(const QString& strFrame)>& fnTarget,
                           CRunReport& report)
{
    if (dataSet.m_listShift.size() != dataSet.m_listFrameFile.size()) {
        return refuseRun(report, QStringLiteral("No shift correction data. Run shift evaluation first."));
    }
    const double dfDistance = g_dfSmvPixelSize / dataSet.m_dfPixelSize / dataSet.m_dfWavelength;
    if (!std::isfinite(dfDistance)) {
        return refuseRun(
            report, QStringLiteral("There is no camera length, as pixel size or wavelength is 0. Nothing "
                                   "was exported."));
    }
    QString strHeader = smvHeaderTemplate();
    const auto set = [&strHeader](const char* pszKey, double dfValue, int nDecimals) {
        replaceSmvItem(strHeader, QLatin1String(pszKey), dfValue, nDecimals);
    };
    set("WAVELENGTH", dataSet.m_dfWavelength, 6);
    set("PIXEL_SIZE", g_dfSmvPixelSize, 6);
    set("DISTANCE", dfDistance, 2);
    set("BEAM_CENTER_X", dataSet.m_dfCenterX, 2);
    set("BEAM_CENTER_Y", dataSet.m_dfCenterY, 2);
    set("DENZO_X_BEAM", dataSet.m_dfCenterY * g_dfSmvPixelSize, 2);
    set("DENZO_Y_BEAM", dataSet.m_dfCenterX * g_dfSmvPixelSize, 2);

    if (!dataSet.m_distortion.isNone()) {
        report.addMessage(
            QStringLiteral("SMV headers hold no distortion of the lens and no axis out of the "
                           "plane: the frames keep them, and who reads them has to know."));
    }
    SeriesExport what(dataSet);
    what.strName = QStringLiteral("Exporting SMV files");
    what.strStartLine = QStringLiteral("%1>Exporting SMV files...");
    what.strEndLine = QStringLiteral("%1>Exporting SMV files finished.");
    what.strLoadFailed = QStringLiteral("Failed to load: %1");
    what.strFolder = strFolder;
    what.fnTarget = fnTarget;
    const QList<double>& listTilt = what.series.listTilt;
    double dfStep = 0;
    int nCutOff = 0;
    what.fnWrite = [&](int nFrame, CImgObj<float>& image, const QString& strTarget, QString& strReason) {
        const double dfTilt = listTilt.value(nFrame);
        if (nFrame + 1 < listTilt.size()) {
            dfStep = what.series.reading.isHoleBehind(nFrame) ? what.series.reading.stepOf(nFrame)
                                                              : listTilt[nFrame + 1] - dfTilt;
        }
        set("SIZE1", image.Width(), 0);
        set("SIZE2", image.Height(), 0);
        set("PHI", dfTilt, 2);
        set("OSC_START", dfTilt, 2);
        set("OSC_RANGE", dfStep, 2);
        const float* pEnd = image.Data() + qint64(image.Width()) * image.Height();
        nCutOff += std::any_of(static_cast<const float*>(image.Data()), pEnd,
                               [](float f) { return f > 65535; });
        const QPointF ptShift = what.series.centres.m_listShift[nFrame];
        CyclicShift(image.Data(), image.Width(), image.Height(), -wholePixels(ptShift.x()),
                    -wholePixels(ptShift.y()));
        return writeSmvImage(strHeader, image, strTarget, &strReason);
    };
    const RunOutcome outcome = exportSeries(what, report);
    if (nCutOff > 0 && what.series.reading.pixelCount() > 1) {
        report.addMessage(
            QStringLiteral("Warning: %L1 frames have sums of more than 65535 counts, which is the most "
                           "that SMV files hold.")
                .arg(nCutOff),
            Severity::Warning);
    }
    return outcome;
}

}  // namespace tessera
