#include "imagefiles/dmheader.h"

#include "imagefiles/dm3file.h"
#include "records/regularfile.h"

#include <cmath>

namespace tessera {

namespace {

/// The tags of one image, which are found by the names of their groups.
class CImageTags {
public:
    CImageTags(const DmTags& tags, const DmImage& image) : m_tags(tags), m_pImage(image.pTags) {}

    /// The first group of this name at any depth, as the tags of processed files are one level deeper.
    const TagDirectory* group(const char* pLabel) const
    {
        return asGroup(DM3File::FindTag(*m_pImage, pLabel));
    }
    ToldNumber above0(const Tag* pTag, double dfFactor, const QString& strSource) const
    {
        const double df = dmNumber(m_tags, pTag) * dfFactor;
        return std::isfinite(df) && df > 0 ? ToldNumber{df, strSource} : ToldNumber();
    }
    double number(const Tag* pTag) const { return dmNumber(m_tags, pTag); }
    QString text(const Tag* pTag) const { return dmText(m_tags, pTag).trimmed(); }

private:
    const DmTags& m_tags;
    const TagDirectory* m_pImage;
};

void tellScale(const CImageTags& tags, FrameHeader& header)
{
    const TagDirectory* pDimension = asGroup(dmChild(tags.group("Calibrations"), "Dimension"));
    if (!pDimension || pDimension->vecChild.empty()) {
        return;
    }
    const auto scale = [&](size_t i) {
        const TagDirectory* pAxis = i < pDimension->vecChild.size() ? asGroup(pDimension->vecChild[i].get())
                                                                    : nullptr;
        const QString strUnit = tags.text(dmChild(pAxis, "Units"));
        const double dfFactor = strUnit == QLatin1String("1/nm")                                      ? 0.1
                                : strUnit == QLatin1String("1/A") || strUnit == QStringLiteral("1/Å") ? 1.
                                                                                                      : 0.;
        return tags.above0(dmChild(pAxis, "Scale"), dfFactor, QStringLiteral("Calibrations: Scale"));
    };
    header.pixelSize = scale(0);
    const ToldNumber other = scale(1);
    if (header.pixelSize.isTold() && other.isTold() && std::abs(other.df / header.pixelSize.df - 1) > 0.001) {
        header.listDoubt +=
            QStringLiteral(
                "The pixels are not square according to the header (%1 and %2 1/Å); the first is used")
                .arg(header.pixelSize.df)
                .arg(other.df);
    }
}

void tellMicroscope(const CImageTags& tags, FrameHeader& header)
{
    const TagDirectory* pMicroscope = tags.group("Microscope Info");
    header.kilovolts = tags.above0(dmChild(pMicroscope, "Voltage"), 0.001,
                                   QStringLiteral("Microscope Info: Voltage"));
    const QString strMode = tags.text(dmChild(pMicroscope, "Illumination Mode")).toUpper();
    const bool bDiffraction = tags.text(dmChild(pMicroscope, "Imaging Mode")).toUpper().startsWith("DIFF");
    if (strMode.startsWith(QLatin1String("STEM"))) {
        header.cameraLength = tags.above0(dmChild(pMicroscope, "STEM Camera Length"), 1,
                                          QStringLiteral("Microscope Info: STEM Camera Length"));
    } else if (bDiffraction) {
        header.cameraLength = tags.above0(dmChild(pMicroscope, "Indicated Magnification"), 1,
                                          QStringLiteral("Microscope Info: Indicated Magnification"));
    }

    const double dfAlpha = tags.number(dmChild(dmGroup(pMicroscope, "Stage Position"), "Stage Alpha"));
    if (!(std::abs(dfAlpha) <= 360)) {
        return;
    }
    if (header.nImages == 1) {
        header.tilt = {dfAlpha, QStringLiteral("Stage Position: Stage Alpha")};
    } else {
        header.listDoubt +=
            QStringLiteral("A tilt of %1 degrees is given once for all images of the file; it is not used")
                .arg(dfAlpha);
    }
}

void tellCamera(const CImageTags& tags, FrameHeader& header)
{
    const TagDirectory* pAcquisition = tags.group("Acquisition");
    const TagDirectory* pDevice = dmGroup(pAcquisition, "Device");
    const TagDirectory* pHighLevel = dmGroup(dmGroup(pAcquisition, "Parameters"), "High Level");
    header.exposure = tags.above0(dmChild(tags.group("DataBar"), "Exposure Time (s)"), 1,
                                  QStringLiteral("DataBar: Exposure Time"));
    if (!header.exposure.isTold()) {
        header.exposure = tags.above0(dmChild(pHighLevel, "Exposure (s)"), 1,
                                      QStringLiteral("Acquisition: Exposure"));
    }
    header.strDetector = tags.text(dmChild(pDevice, "Name"));
    if (header.strDetector.isEmpty()) {
        header.strDetector = tags.text(dmChild(tags.group("DataBar"), "Device Name"));
    }

    const ToldNumber pixel = tags.above0(dmChild(dmGroup(pDevice, "CCD"), "Pixel Size (um)"), 1,
                                         QStringLiteral("Acquisition: Pixel Size"));
    const ToldNumber binning = tags.above0(dmChild(pHighLevel, "Binning"), 1, QString());
    header.detectorPixel = pixel;
    if (pixel.isTold() && binning.isTold() && binning.df != 1) {
        header.detectorPixel.df *= binning.df;
        header.listDoubt += QStringLiteral("The camera's pixel of %1 µm is multiplied by the binning, %2")
                                .arg(pixel.df)
                                .arg(binning.df);
    }
}

/// Opens a file and finds its image.
bool openDm(QFile& file, int nVersion, bool bPixelsOnly, DmTags& tags, DmImage& image, QString& strReason)
{
    if (!openRegularFile(file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason) ||
        !readDmTags(file, bPixelsOnly, tags, strReason)) {
        return false;
    }
    if (tags.nVersion != nVersion) {
        strReason =
            QStringLiteral("version %1; this is a reader of version %2").arg(tags.nVersion).arg(nVersion);
        return false;
    }
    return findDmImage(tags, image, strReason);
}

}  // namespace

FrameHeader dmHeader(const DmTags& tags, const DmImage& image)
{
    FrameHeader header;
    header.size = QSize(image.nWidth, image.nHeight);
    header.nImages = image.nPlanes;
    const CImageTags imageTags(tags, image);
    tellScale(imageTags, header);
    tellMicroscope(imageTags, header);
    tellCamera(imageTags, header);
    if (image.nPlanesTold > image.nPlanes) {
        header.listDoubt += QStringLiteral("The file is truncated: it has %1 of %2 images")
                                .arg(image.nPlanes)
                                .arg(image.nPlanesTold);
    }
    return header;
}

FrameHeader readDmHeader(const QString& strFileName, int nVersion, int nImage)
{
    QFile file(strFileName);
    DmTags tags;
    DmImage image;
    QString strReason;
    if (!openDm(file, nVersion, false, tags, image, strReason) || nImage < 0 || nImage >= image.nPlanes) {
        return {};
    }
    return dmHeader(tags, image);
}

bool readDmFrames(const QString& strFileName, int nVersion, int nFirst, int nMaxImages, ImageList& vecImage,
                  QString& strReason)
{
    QFile file(strFileName);
    DmTags tags;
    DmImage image;
    strReason.clear();
    return openDm(file, nVersion, true, tags, image, strReason) &&
           readDmPlanes(file, tags, image, nFirst, nMaxImages, vecImage, strReason);
}

}  // namespace tessera
