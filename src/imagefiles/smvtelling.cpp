#include "imagefiles/smvtelling.h"

#include "imagefiles/toldtilt.h"
#include "imagefiles/toldwavelength.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// Greatest count of unsigned 16-bit pixels, at which writers cut off.
constexpr int g_nLargestCount = 65535;

ToldNumber told(double df, const char* pszSource)
{
    return {df, QLatin1String(pszSource)};
}

ToldNumber toldAboveZero(const SmvHeader& smv, const char* pszKey)
{
    const double df = smv.number(pszKey);
    return df > 0 ? told(df, pszKey) : ToldNumber();
}

/// Reads PIXEL_SIZE, which is in mm. No camera has pixels of a millimetre, so a greater number is in
/// micrometres.
void tellDetectorPixel(const SmvHeader& smv, FrameHeader& header)
{
    header.detectorPixel = toldAboveZero(smv, "PIXEL_SIZE");
    if (header.detectorPixel.df <= 1) {
        header.detectorPixel.df *= 1000;
    } else if (header.detectorPixel.isTold()) {
        header.listDoubt.append(
            QStringLiteral("PIXEL_SIZE %1 was taken for micrometres").arg(header.detectorPixel.df));
    }
}

void tellTilt(const SmvHeader& smv, FrameHeader& header)
{
    const double dfOscStart = tiltWithin(smv.number("OSC_START"), g_dfMostTilt, "OSC_START", header);
    const double dfPhi = tiltWithin(smv.number("PHI"), g_dfMostTilt, "PHI", header);
    const bool bOscStart = std::isfinite(dfOscStart);
    const ToldNumber start = bOscStart              ? told(dfOscStart, "OSC_START")
                             : std::isfinite(dfPhi) ? told(dfPhi, "PHI")
                                                    : ToldNumber();
    if (std::abs(dfOscStart - dfPhi) > 0.001) {  // degrees, less than the width of any frame
        header.listDoubt.append(
            QStringLiteral("OSC_START %1 was taken, but PHI is %2").arg(dfOscStart).arg(dfPhi));
    }
    const double dfRange = tiltWithin(smv.number("OSC_RANGE"), g_dfMostTiltStep, "OSC_RANGE", header);
    if (std::isfinite(dfRange) && dfRange != 0) {
        header.tiltStart = start;
        header.tiltStep = told(dfRange, "OSC_RANGE");
    } else {
        header.tilt = start;
    }
}

struct PixelPlace {
    double dfColumn, dfRow;  ///< counted from the outer corner of the first pixel
};

/// The place of the beam from BEAM_CENTER_X and _Y, in either of their meanings.
///
/// ADSC writes mm, X along the columns of the image and Y along its rows, so (Y, X) is (column, row).
/// Programs of hybrid cameras write pixels, with X as the column. A number that would be outside the frame
/// in mm is in pixels. So are numbers that are confirmed as pixels by DENZO_Y_BEAM and DENZO_X_BEAM, the
/// column and the row in mm.
/// @param dfPixel  mm
PixelPlace beamCenter(const SmvHeader& smv, double dfX, double dfY, double dfPixel, FrameHeader& header)
{
    const double dfDenzoColumn = smv.number("DENZO_Y_BEAM"), dfDenzoRow = smv.number("DENZO_X_BEAM");
    const auto isDenzo = [&](double dfColumn, double dfRow) {  // within a pixel; false for NaN
        return std::abs(dfDenzoColumn - dfColumn) < dfPixel && std::abs(dfDenzoRow - dfRow) < dfPixel;
    };
    const double dfEnd = dfPixel * static_cast<double>(std::max(smv.pixels.nWidth, smv.pixels.nHeight));
    const bool bConfirmed = isDenzo(dfX * dfPixel, dfY * dfPixel);
    if (bConfirmed || dfX > dfEnd || dfY > dfEnd) {
        if (!bConfirmed && dfDenzoColumn > 0 && dfDenzoRow > 0) {
            header.listDoubt.append(QStringLiteral(
                "BEAM_CENTER_X and _Y were taken for pixels, but DENZO_X_BEAM and _Y tell another place"));
        }
        return {dfX, dfY};
    }
    if (!isDenzo(dfY, dfX) && std::abs(dfX - dfY) >= dfPixel) {
        header.listDoubt.append(
            QStringLiteral("BEAM_CENTER_X and _Y were taken for the row and the column in "
                           "mm, as ADSC cameras have them; programs differ in the order"));
    }
    return {dfY / dfPixel, dfX / dfPixel};
}

void tellBeam(const SmvHeader& smv, FrameHeader& header)
{
    const double dfPixel = header.detectorPixel.df / 1000;  // mm
    double dfX = smv.number("BEAM_CENTER_X"), dfY = smv.number("BEAM_CENTER_Y");
    PixelPlace place = {};
    QString strName = QStringLiteral("BEAM_CENTER");
    if (!(dfPixel > 0)) {
        return;  // it is unknown whether they are mm or pixels
    }
    if (dfX > 0 && dfY > 0) {
        place = beamCenter(smv, dfX, dfY, dfPixel, header);
    } else {
        dfX = smv.number("DENZO_X_BEAM");
        dfY = smv.number("DENZO_Y_BEAM");
        if (!(dfX > 0 && dfY > 0)) {
            return;
        }
        strName = QStringLiteral("DENZO_X_BEAM, DENZO_Y_BEAM");
        place = {dfY / dfPixel, dfX / dfPixel};
    }
    if (place.dfColumn > static_cast<double>(smv.pixels.nWidth) ||
        place.dfRow > static_cast<double>(smv.pixels.nHeight)) {
        header.listDoubt.append(QStringLiteral("%1 lies beyond the frame and was not used: %2, %3")
                                    .arg(strName)
                                    .arg(dfX)
                                    .arg(dfY));
        return;
    }
    // All programs that read the format count mm from the outer corner of the first pixel. The pixels in
    // files of hybrid cameras are these mm divided by the pixel size (DENZO_Y_BEAM = BEAM_CENTER_X *
    // PIXEL_SIZE). In two series, the core of the beam was 0.4 pixels before the given place on average.
    constexpr double dfCornerToCentre = 0.5;
    header.beamX = {place.dfColumn - dfCornerToCentre, strName};
    header.beamY = {place.dfRow - dfCornerToCentre, strName};
}

/// The binning, from an item such as "2x2".
int binning(const SmvHeader& smv)
{
    const QByteArray bytesBin = smv.text("BIN");
    return std::clamp(bytesBin.left(bytesBin.indexOf('x')).toInt(), 1, 64);
}

void tellSaturation(const SmvHeader& smv, FrameHeader& header)
{
    ToldNumber& saturation = header.saturation;
    for (const char* pszKey : {"CCD_IMAGE_SATURATION", "SATURATED_VALUE"}) {
        if (!saturation.isTold()) {
            saturation = toldAboveZero(smv, pszKey);
        }
    }
    if (!saturation.isTold() && smv.text("BEAMLINE").toUpper().startsWith("CETAD")) {
        const int nBinning = binning(smv);
        constexpr int nCetaSaturation = 8000;  // counts of a pixel of this camera
        saturation = told(nCetaSaturation * nBinning * nBinning, "BEAMLINE, BIN");
        header.listDoubt.append(QStringLiteral("a Ceta camera was taken to be linear up to %1 counts")
                                    .arg(nCetaSaturation * nBinning * nBinning));
    }
    if (smv.pixels.element == PixelElement::UInt16 && !(saturation.df < g_nLargestCount)) {
        saturation = told(g_nLargestCount, "TYPE");
    }
    // The pedestal has been subtracted from the counts.
    const int nPedestal = smvPedestal(smv);
    if (saturation.df > nPedestal) {
        saturation.df -= nPedestal;
    } else {
        saturation = {};
    }
}

}  // namespace

int smvPedestal(const SmvHeader& smv)
{
    const double df = smv.number("IMAGE_PEDESTAL");
    return df > 0 && df < g_nLargestCount && df == std::floor(df) ? static_cast<int>(df) : 0;
}

FrameHeader frameHeaderOfSmv(const SmvHeader& smv)
{
    FrameHeader header;
    tellWavelength(smv.text("WAVELENGTH"), QStringLiteral("WAVELENGTH"), header);
    header.cameraLength = toldAboveZero(smv, "DISTANCE");
    tellDetectorPixel(smv, header);
    tellTilt(smv, header);
    header.exposure = toldAboveZero(smv, "TIME");
    tellBeam(smv, header);
    tellSaturation(smv, header);
    if (smvPedestal(smv) > 0) {
        header.listDoubt.append(
            QStringLiteral("IMAGE_PEDESTAL: %1 was subtracted from every count").arg(smvPedestal(smv)));
    }
    const QByteArray bytesDetector = smv.text("BEAMLINE") + ' ' + smv.text("DETECTOR_SN");
    header.strDetector = QString::fromUtf8(bytesDetector).simplified();
    return header;
}

}  // namespace tessera
