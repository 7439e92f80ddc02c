#include "imagefiles/smvfile.h"

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "records/reason.h"
#include "records/wholefile.h"

namespace tessera {

namespace {

constexpr int g_nHeaderSize = 512;

uint16_t pixelOf(float f)
{
    return f >= 65535.f ? uint16_t(65535) : f > 0.f ? static_cast<uint16_t>(f) : uint16_t(0);
}

}  // namespace

QString smvHeaderTemplate()
{
    return QStringLiteral(
        "{\n"
        "HEADER_BYTES=  512;\n"
        "DIM=2;\n"
        "BYTE_ORDER=little_endian;\n"
        "TYPE=unsigned_short;\n"
        "SIZE1=XXXX;\n"
        "SIZE2=YYYY;\n"
        "PIXEL_SIZE=0.05;\n"
        "BIN=1x1;\n"
        "BIN_TYPE=HW;\n"
        "ADC=fast;\n"
        "CREV=1;\n"
        "BEAMLINE=TIMEPIX_QV;\n"
        "DETECTOR_SN=901;\n"
        "DATE=Tue Jun 26 09:43:09 2007;\n"
        "TIME=0.096288;\n"
        "DISTANCE=249.98;\n"
        "TWOTHETA=0.00;\n"
        "PHI=342.000;\n"
        "OSC_START=342.000;\n"
        "OSC_RANGE=1.000;\n"
        "WAVELENGTH=0.979340;\n"
        "BEAM_CENTER_X=154.96;\n"
        "BEAM_CENTER_Y=155.91;\n"
        "DENZO_X_BEAM=159.25;\n"
        "DENZO_Y_BEAM=154.96;\n"
        "}");
}

bool replaceSmvItem(QString& strHeader, const QString& strKey, double dfValue, int nDecimals)
{
    const int nKey = strHeader.indexOf(strKey);
    const int nEnd = nKey < 0 ? -1 : strHeader.indexOf(QLatin1Char(';'), nKey);
    const int nValue = nKey + strKey.size() + 1;
    if (nEnd < nValue) {
        return false;
    }
    strHeader.replace(nValue, nEnd - nValue, QStringLiteral("%1").arg(dfValue, 8, 'f', nDecimals).trimmed());
    return true;
}

bool writeSmvImage(const QString& strHeader, const CImgObj<float>& image, const QString& strFileName,
                   QString* pstrReason)
{
    const size_t nPixels = static_cast<size_t>(image.Width()) * static_cast<size_t>(image.Height());
    if (nPixels == 0 || nPixels > (size_t(1) << 30) - g_nHeaderSize) {
        return giveReason(pstrReason, strFileName, QStringLiteral("%1 pixels").arg(nPixels));
    }
    QByteArray bytes = strHeader.toLatin1();
    bytes.remove(0, qMax(0, bytes.indexOf('{')));
    const int nText = qMin(bytes.size(), g_nHeaderSize);
    bytes.resize(g_nHeaderSize + int(2 * nPixels));
    std::fill(bytes.begin() + nText, bytes.begin() + g_nHeaderSize, '\0');
    char* pTarget = bytes.data() + g_nHeaderSize;
    for (size_t i = 0; i < nPixels; ++i, pTarget += 2) {
        qToLittleEndian(pixelOf(image.Data()[i]), pTarget);
    }
    return writeWholeFile(strFileName, bytes, pstrReason);
}

}  // namespace tessera
