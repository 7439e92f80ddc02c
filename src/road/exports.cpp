#include "road/exports.h"

#include "crystal/indexedpeaklist.h"
#include "dataset/pagerounding.h"
#include "frames/frameloader.h"
#include "frames/imageseries.h"
#include "frames/scaledframes.h"
#include "frames/smvexport.h"
#include "imaging/contrast.h"
#include "reciprocal/volumeexport.h"

#include <QDir>

namespace tessera {

namespace {

struct Contrast {
    double dfMin = 0;
    double dfMax = 0;
};

/// The given contrast limits; a missing one is that which the window shows for the first frame.
std::optional<Contrast> contrastLimits(const ExportOptions& exports, const DataSet& dataSet,
                                       CRunReport& report)
{
    Contrast contrast;
    if (!exports.dfContrastMin || !exports.dfContrastMax) {
        ImageList vecImage;
        if (!loadFirstImage(vecImage, frameSource(dataSet, 0), report) || vecImage.empty()) {
            report.fail(QStringLiteral("%1 gives no contrast limits.").arg(dataSet.m_listFrameFile.first()));
            return {};
        }
        const CImgObj<float>& image = *vecImage.front();
        autoContrastLimits(image.Data(), image.Width() * image.Height(), &contrast.dfMin, &contrast.dfMax);
    }
    contrast.dfMin = spinBoxValue(exports.dfContrastMin.value_or(contrast.dfMin), 2, -1000000, 1000000);
    contrast.dfMax = spinBoxValue(exports.dfContrastMax.value_or(contrast.dfMax), 2, -1000000, 1000000);
    report.addMessage(QStringLiteral("Contrast limits %1 and %2.").arg(contrast.dfMin).arg(contrast.dfMax));
    if (contrast.dfMin > contrast.dfMax) {
        report.addMessage(
            QStringLiteral("Warning: the contrast limits are the wrong way round; what is bright comes out "
                           "dark."),
            Severity::Error);
    }
    return contrast;
}

bool exportPictures(const ExportOptions& exports, const DataSet& dataSet, CRunReport& report)
{
    const QString strFolder = exports.strPictureFolder.isEmpty() ? dataSet.m_strProjectDir
                                                                 : exports.strPictureFolder;
    if (!QDir().mkpath(strFolder)) {
        report.fail(QStringLiteral("%1: the folder cannot be made.").arg(strFolder));
        return false;
    }
    const std::optional<Contrast> contrast = contrastLimits(exports, dataSet, report);
    return contrast && saveSeries(dataSet, strFolder, QLatin1Char('.') + exports.strPictureFormat,
                                  contrast->dfMin, contrast->dfMax, report)
                               .end == RunEnd::Finished;
}

bool exportVolume(const ExportOptions& exports, const DataSet& dataSet, CRunReport& report)
{
    VolumeExportParameters parameters;
    parameters.nEdge = exports.nVolumeEdge;
    parameters.bScaled = exports.bVolumeScaled;
    if (parameters.bScaled) {
        const std::optional<Contrast> contrast = contrastLimits(exports, dataSet, report);
        if (!contrast) {
            return false;
        }
        parameters.dfContrastMin = contrast->dfMin;
        parameters.dfContrastMax = contrast->dfMax;
    }
    return exportReciprocalVolume(dataSet, parameters, report).end == RunEnd::Finished;
}

bool exportIndexedPeaks(const DataSet& dataSet, CRunReport& report)
{
    return outputIndexedReflectionsOnFrames(dataSet.m_vecPeakIndexedOnFrame, dataSet.m_strProjectDir,
                                            dataSet.m_strProjectName, report);
}

}  // namespace

bool writeExport(ExportKind kind, const ExportOptions& exports, const DataSet& dataSet, CRunReport& report)
{
    switch (kind) {
        case ExportKind::Smv:
            return exportSMVImages(dataSet, report).end == RunEnd::Finished;
        case ExportKind::Scaled:
            return exportBinnedFrames(dataSet, exports.dfScale, report).end == RunEnd::Finished;
        case ExportKind::Volume:
            return exportVolume(exports, dataSet, report);
        case ExportKind::Pictures:
            return exportPictures(exports, dataSet, report);
        case ExportKind::IndexedPeaks:
            return exportIndexedPeaks(dataSet, report);
        default:
            break;
    }
    return false;
}

}  // namespace tessera
