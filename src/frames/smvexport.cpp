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

namespace {

void setItem(QString& strHeader, const char* pszKey, double dfValue, int nDecimals)
{
    replaceSmvItem(strHeader, QLatin1String(pszKey), dfValue, nDecimals);
}

// The header with the items that are the same for all frames.
// @param dfDistance  camera length, mm
QString headerOfSeries(const DataSet& dataSet, double dfDistance)
{
    QString strHeader = smvHeaderTemplate();
    setItem(strHeader, "WAVELENGTH", dataSet.m_dfWavelength, 6);
    setItem(strHeader, "PIXEL_SIZE", g_dfSmvPixelSize, 6);
    setItem(strHeader, "DISTANCE", dfDistance, 2);
    setItem(strHeader, "BEAM_CENTER_X", dataSet.m_dfCenterX, 2);
    setItem(strHeader, "BEAM_CENTER_Y", dataSet.m_dfCenterY, 2);
    setItem(strHeader, "DENZO_X_BEAM", dataSet.m_dfCenterY * g_dfSmvPixelSize, 2);
    setItem(strHeader, "DENZO_Y_BEAM", dataSet.m_dfCenterX * g_dfSmvPixelSize, 2);
    return strHeader;
}

// Whether a pixel exceeds what 16 bits can represent.
bool isCutOff(const CImgObj<float>& image)
{
    const float* const pBegin = image.Data();
    return std::any_of(pBegin, pBegin + qint64(image.Width()) * image.Height(),
                       [](float f) { return f > 65535; });
}

}  // namespace

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
    QString strHeader = headerOfSeries(dataSet, dfDistance);
    if (!dataSet.m_distortion.isNone()) {
        report.addMessage(
            QStringLiteral("SMV headers cannot describe a distortion of the lens or an axis out of the "
                           "plane: the frames keep them, and must be read with this in mind."));
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
        setItem(strHeader, "SIZE1", image.Width(), 0);
        setItem(strHeader, "SIZE2", image.Height(), 0);
        setItem(strHeader, "PHI", dfTilt, 2);
        setItem(strHeader, "OSC_START", dfTilt, 2);
        setItem(strHeader, "OSC_RANGE", dfStep, 2);
        nCutOff += isCutOff(image);
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
