#include "simulate/framewriter.h"

#include "simulate/dm3writer.h"
#include "simulate/wholewriting.h"

#include <QBuffer>
#include <QImage>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessera {

namespace {
constexpr int g_nCountsPerGrey = 4;

struct NameAndExtension {
    const char* pName;
    const char* pExtension;
};
/// In the order of SimulatedFormat.
constexpr NameAndExtension g_aFormat[] = {
    {"mrc16", "mrc"}, {"mrcu16", "mrc"}, {"mrcfloat", "mrc"}, {"dm3", "dm3"}, {"png8", "png"}};

template <typename T>
T rounded(float f)
{
    const double df = std::floor(double(f) + 0.5);
    return T(std::clamp(df, double(std::numeric_limits<T>::min()), double(std::numeric_limits<T>::max())));
}

template <typename T>
void appendPixels(const std::vector<float>& listPixel, int nWidth, int nHeight, QByteArray& data)
{
    for (int y = nHeight - 1; y >= 0; --y) {
        for (int x = 0; x < nWidth; ++x) {
            const float f = listPixel[size_t(y) * nWidth + x];
            const T value = qToLittleEndian(std::is_floating_point<T>::value ? T(f) : rounded<T>(f));
            data.append(reinterpret_cast<const char*>(&value), int(sizeof(T)));
        }
    }
}

QByteArray encodePng(const std::vector<float>& listPixel, int nWidth, int nHeight)
{
    QImage image(nWidth, nHeight, QImage::Format_Grayscale8);
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            image.scanLine(y)[x] = rounded<uchar>(listPixel[size_t(y) * nWidth + x] / g_nCountsPerGrey);
        }
    }
    QByteArray data;
    QBuffer buffer(&data);
    return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") ? data : QByteArray();
}
}  // namespace

QStringList simulatedFormatNames()
{
    QStringList listName;
    for (const NameAndExtension& row : g_aFormat) {
        listName.append(QLatin1String(row.pName));
    }
    return listName;
}

QString frameExtension(SimulatedFormat format)
{
    return QLatin1String(g_aFormat[int(format)].pExtension);
}

QByteArray encodeMrc(const std::vector<float>& listPixel, int nWidth, int nHeight, SimulatedFormat format)
{
    const int nMode = format == SimulatedFormat::Mrc16 ? 1 : format == SimulatedFormat::MrcU16 ? 6 : 2;
    QByteArray data(1024, '\0');
    const auto put = [&](int nOffset, qint32 nValue) { qToLittleEndian(nValue, data.data() + nOffset); };
    put(0, nWidth);
    put(4, nHeight);
    put(8, 1);
    put(12, nMode);
    put(28, nWidth);
    put(32, nHeight);
    put(36, 1);
    put(64, 1);  // columns, rows, sections
    put(68, 2);
    put(72, 3);
    data[212] = 0x44;
    data[213] = 0x41;
    data.reserve(1024 + nWidth * nHeight * 4);
    if (nMode == 1) {
        appendPixels<qint16>(listPixel, nWidth, nHeight, data);
    } else if (nMode == 6) {
        appendPixels<quint16>(listPixel, nWidth, nHeight, data);
    } else {
        appendPixels<float>(listPixel, nWidth, nHeight, data);
    }
    return data;
}

QString writeFrame(const QString& strFileName, const std::vector<float>& listPixel, int nWidth, int nHeight,
                   SimulatedFormat format)
{
    const QByteArray data = format == SimulatedFormat::Png8  ? encodePng(listPixel, nWidth, nHeight)
                            : format == SimulatedFormat::Dm3 ? encodeDm3(listPixel, nWidth, nHeight)
                                                             : encodeMrc(listPixel, nWidth, nHeight, format);
    return data.isEmpty() ? QStringLiteral("the picture cannot be made") : writeWhole(strFileName, data);
}

}  // namespace tessera
