// Prints what frames contain, for comparison with other programs:
//
//   tessera-frameinfo [--pixels FILE] FRAME...
//
// Prints a line of JSON for each frame, FILE or FILE#12: format, width, height, the number of images in the
// file; minimum, maximum and mean of the valid pixels, and the number of invalid ones; and the header, with
// sources and doubts. Of a file of many images the first one is read. --pixels writes the pixels of one
// frame after another as float32, little-endian, row by row from the top. The exit status is 1, with the
// reason on the standard error, where a frame cannot be read.
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <limits>

namespace tessera {
namespace {

QJsonObject statistics(const CImgObj<float>& image)
{
    constexpr double dfInf = std::numeric_limits<double>::infinity();
    const size_t nPixels = size_t(image.Width()) * size_t(image.Height());
    double dfMinimum = dfInf, dfMaximum = -dfInf, dfSum = 0;
    size_t nNumbers = 0;
    for (size_t i = 0; i < nPixels; ++i) {
        const double df = double(image.Data()[i]);
        if (!std::isnan(df)) {
            dfMinimum = std::min(dfMinimum, df);
            dfMaximum = std::max(dfMaximum, df);
            dfSum += df;
            ++nNumbers;
        }
    }
    // NaN becomes null in JSON.
    return {{"width", image.Width()},
            {"height", image.Height()},
            {"minimum", dfMinimum},
            {"maximum", dfMaximum},
            {"mean", nNumbers > 0 ? dfSum / double(nNumbers) : std::nan("")},
            {"no_numbers", double(nPixels - nNumbers)}};
}

QJsonObject toldNumbers(const FrameHeader& header)
{
    const std::pair<const char*, const ToldNumber*> aTold[] = {{"kilovolts", &header.kilovolts},
                                                               {"wavelength", &header.wavelength},
                                                               {"pixel_size", &header.pixelSize},
                                                               {"camera_length", &header.cameraLength},
                                                               {"detector_pixel", &header.detectorPixel},
                                                               {"tilt", &header.tilt},
                                                               {"tilt_start", &header.tiltStart},
                                                               {"tilt_step", &header.tiltStep},
                                                               {"rotation_axis", &header.rotationAxis},
                                                               {"exposure", &header.exposure},
                                                               {"beam_x", &header.beamX},
                                                               {"beam_y", &header.beamY},
                                                               {"saturation", &header.saturation}};
    QJsonObject object;
    for (const auto& [pszName, pTold] : aTold) {
        if (pTold->isTold()) {
            object[QLatin1String(pszName)] = QJsonObject{{"value", pTold->df}, {"source", pTold->strSource}};
        }
    }
    return object;
}

bool writePixels(QFile& file, const CImgObj<float>& image)
{
    const int nPixels = image.Width() * image.Height();
    QByteArray bytes(nPixels * int(sizeof(float)), 0);
    qToLittleEndian<float>(image.Data(), nPixels, bytes.data());
    return file.write(bytes) == bytes.size();
}

/// Prints the line of a frame.
/// @return what is wrong; empty if nothing is
QString printFrame(const QString& strFrame, QFile& filePixels)
{
    const FrameFormat& format = frameFormatOf(strFrame);
    const FrameName name = frameName(strFrame);
    const FrameHeader header = frameHeader(strFrame);
    ImageList vecImage;
    QString strReason;
    if (!format.fnRead(name.strFile, name.nImage, 1, vecImage, strReason) || vecImage.empty()) {
        return strReason;
    }
    QJsonObject object = statistics(*vecImage.front());
    object["frame"] = strFrame;
    object["format"] = format.strName;
    object["images"] = header.nImages;
    object["header_width"] = header.size.width();  // -1 where only reading the image can tell
    object["header_height"] = header.size.height();
    object["header"] = toldNumbers(header);
    object["detector"] = header.strDetector;
    object["doubts"] = QJsonArray::fromStringList(header.listDoubt);
    object["reason"] = strReason;
    std::printf("%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    return filePixels.isOpen() && !writePixels(filePixels, *vecImage.front()) ? filePixels.errorString()
                                                                              : QString();
}

int printFrames(QStringList listFrame)
{
    QFile filePixels;
    if (listFrame.value(0) == QLatin1String("--pixels") && listFrame.size() > 1) {
        filePixels.setFileName(listFrame[1]);
        if (!filePixels.open(QIODevice::WriteOnly)) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(listFrame[1]), qPrintable(filePixels.errorString()));
            return 1;
        }
        listFrame = listFrame.mid(2);
    }
    if (listFrame.isEmpty()) {
        std::fprintf(stderr, "tessera-frameinfo [--pixels FILE] FRAME...\n");
        return 1;
    }
    bool bGood = true;
    for (const QString& strFrame : listFrame) {
        QString strWrong;
        try {
            strWrong = printFrame(strFrame, filePixels);
        } catch (const std::exception& thrown) {
            strWrong = QString::fromLocal8Bit(thrown.what());
        }
        if (!strWrong.isEmpty()) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(strFrame), qPrintable(strWrong));
            bGood = false;
        }
    }
    return bGood && (!filePixels.isOpen() || filePixels.flush()) ? 0 : 1;
}

}  // namespace
}  // namespace tessera

int main(int nArguments, char** ppszArgument)
{
    const QCoreApplication application(nArguments, ppszArgument);
    return tessera::printFrames(QCoreApplication::arguments().mid(1));
}
