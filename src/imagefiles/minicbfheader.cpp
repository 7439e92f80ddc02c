#include "imagefiles/minicbfheader.h"

#include "imagefiles/toldtilt.h"
#include "imagefiles/toldwavelength.h"

#include <QList>

#include <cmath>
#include <limits>
#include <map>

namespace tessera {

namespace {

struct Words {
    QByteArray bytesLine;  ///< the rest of the line after the key
    QList<QByteArray> listWord;

    double number(int n) const
    {
        bool bNumber = false;
        const double df = listWord.value(n).toDouble(&bNumber);
        return bNumber && std::isfinite(df) ? df : std::numeric_limits<double>::quiet_NaN();
    }
    /// A length in metres, with or without a unit after it.
    double length(int n) const
    {
        const QByteArray bytesUnit = listWord.value(n + 1).toLower();
        const double dfUnit = bytesUnit == "mm" ? 1e-3 : bytesUnit == "um" ? 1e-6 : 1;
        return number(n) * dfUnit;
    }
};

/// The lines by their keys in lower case.
class MiniCbfLines {
public:
    explicit MiniCbfLines(const QByteArray& bytesText)
    {
        static const QByteArray s_bytesNoise("=:,()[]\"'");
        const QList<QByteArray> listLine = bytesText.split('\n');
        for (const QByteArray& bytesLine : listLine) {
            if (!bytesLine.startsWith('#')) {
                continue;
            }
            QByteArray bytesWords = bytesLine.mid(1);
            for (char& c : bytesWords) {
                if (s_bytesNoise.contains(c)) {
                    c = ' ';
                }
            }
            QList<QByteArray> listWord = bytesWords.simplified().split(' ');
            const QByteArray bytesKey = listWord.takeFirst();
            const int nBehind = bytesLine.indexOf(bytesKey) + bytesKey.size();
            m_mapWords.insert({bytesKey.toLower(), {bytesLine.mid(nBehind), listWord}});
        }
    }
    const Words& operator[](const QByteArray& bytesKey) const
    {
        static const Words s_none;
        const auto it = m_mapWords.find(bytesKey.toLower());
        return it != m_mapWords.end() ? it->second : s_none;
    }

private:
    std::map<QByteArray, Words> m_mapWords;
};

ToldNumber toldAboveZero(double df, const char* pszSource)
{
    return df > 0 && std::isfinite(df) ? ToldNumber{df, QLatin1String(pszSource)} : ToldNumber{};
}

void tellDetectorPixel(const Words& words, FrameHeader& header)
{
    header.detectorPixel = toldAboveZero(words.length(0) * 1e6, "Pixel_size");
    double dfOther = std::numeric_limits<double>::quiet_NaN();  // second length of "75e-6 m x 75e-6 m"
    for (int n = 1; n < words.listWord.size() && !std::isfinite(dfOther); ++n) {
        dfOther = words.length(n) * 1e6;
    }
    if (std::abs(dfOther - header.detectorPixel.df) > 1e-3 * header.detectorPixel.df) {
        header.listDoubt.append(
            QStringLiteral("Pixel_size %1 µm was taken for both directions, but the other "
                           "is %2 µm")
                .arg(header.detectorPixel.df)
                .arg(dfOther));
    }
}

/// Reads start and width of the frame, or those of the rotated axis where the former are missing.
void tellTilt(const MiniCbfLines& lines, FrameHeader& header)
{
    const char* pszStart = "Start_angle";
    const char* pszStep = "Angle_increment";
    for (const auto& [pszAxis, pszIncrement] :
         {std::pair("Omega", "Omega_increment"), std::pair("Phi", "Phi_increment"),
          std::pair("Chi", "Chi_increment"), std::pair("Kappa", "Kappa_increment")}) {
        if (!std::isfinite(lines["Start_angle"].number(0)) && lines[pszIncrement].number(0) != 0 &&
            std::isfinite(lines[pszIncrement].number(0))) {
            pszStart = pszAxis;
            pszStep = pszIncrement;
            break;
        }
    }
    const double dfStart = tiltWithin(lines[pszStart].number(0), g_dfMostTilt, pszStart, header);
    const double dfStep = tiltWithin(lines[pszStep].number(0), g_dfMostTiltStep, pszStep, header);
    const bool bTurned = std::isfinite(dfStep) && dfStep != 0;
    if (std::isfinite(dfStart)) {
        ToldNumber& told = bTurned ? header.tiltStart : header.tilt;
        told = {dfStart, QLatin1String(pszStart)};
    }
    if (bTurned) {
        header.tiltStep = {dfStep, QLatin1String(pszStep)};
    }
}

void tellBeam(const Words& words, FrameHeader& header)
{
    const double dfColumn = words.number(0), dfRow = words.number(1);
    if (!(dfColumn > 0 && dfRow > 0)) {
        return;
    }
    if (header.size.isValid() && (dfColumn > header.size.width() || dfRow > header.size.height())) {
        header.listDoubt.append(QStringLiteral("Beam_xy lies beyond the frame and was not used: %1, %2")
                                    .arg(dfColumn)
                                    .arg(dfRow));
        return;
    }
    // Programs that read these files multiply by the pixel size and count from the outer corner of the
    // first pixel.
    constexpr double dfCornerToCentre = 0.5;
    header.beamX = {dfColumn - dfCornerToCentre, QStringLiteral("Beam_xy")};
    header.beamY = {dfRow - dfCornerToCentre, QStringLiteral("Beam_xy")};
}

}  // namespace

void tellMiniCbf(const QByteArray& bytesText, FrameHeader& header)
{
    const MiniCbfLines lines(bytesText);
    tellWavelength(lines["Wavelength"].listWord.value(0), QStringLiteral("Wavelength"), header);
    header.cameraLength = toldAboveZero(lines["Detector_distance"].length(0) * 1e3, "Detector_distance");
    tellDetectorPixel(lines["Pixel_size"], header);
    tellTilt(lines, header);
    tellBeam(lines["Beam_xy"], header);
    header.exposure = toldAboveZero(lines["Exposure_time"].number(0), "Exposure_time");
    header.saturation = toldAboveZero(lines["Count_cutoff"].number(0), "Count_cutoff");
    QByteArray bytesDetector = lines["Detector"].bytesLine;
    while (bytesDetector.startsWith(':') || bytesDetector.startsWith(' ')) {
        bytesDetector.remove(0, 1);
    }
    header.strDetector = QString::fromUtf8(bytesDetector).simplified();
}

}  // namespace tessera
