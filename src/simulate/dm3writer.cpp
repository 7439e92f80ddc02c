#include "simulate/dm3writer.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {
constexpr quint32 g_nTypeInt16 = 2, g_nTypeInt32 = 3, g_nTypeArray = 20;
constexpr quint32 g_nPixelInt32 = 7;  // the image's own code for signed 32-bit pixels

class TagWriter {
public:
    explicit TagWriter(bool bBigEndianData) : m_bBigEndianData(bBigEndianData) {}

    void word32(quint32 n)
    {
        char ac[4];
        qToBigEndian(n, ac);
        data.append(ac, 4);
    }
    void word16(quint16 n)
    {
        char ac[2];
        qToBigEndian(n, ac);
        data.append(ac, 2);
    }
    void value32(qint32 n)
    {
        char ac[4];
        m_bBigEndianData ? qToBigEndian(n, ac) : qToLittleEndian(n, ac);
        data.append(ac, 4);
    }
    void group(const char* pLabel, quint32 nChildren)
    {
        head(20, pLabel);
        data.append('\1');  // sorted
        data.append('\0');  // not open
        word32(nChildren);
    }
    void entry(const char* pLabel, std::initializer_list<quint32> listInfo)
    {
        head(21, pLabel);
        data.append("%%%%");
        word32(quint32(listInfo.size()));
        for (quint32 n : listInfo) {
            word32(n);
        }
    }
    void number(const char* pLabel, qint32 n)
    {
        entry(pLabel, {g_nTypeInt32});
        value32(n);
    }
    void image(const std::vector<qint32>& listPixel, int nWidth, int nHeight)
    {
        group("", 2);
        group("ImageData", 4);
        entry("Data", {g_nTypeArray, g_nTypeInt32, quint32(listPixel.size())});
        for (qint32 n : listPixel) {
            value32(n);
        }
        number("DataType", g_nPixelInt32);
        group("Dimensions", 2);
        number("", nWidth);
        number("", nHeight);
        number("PixelDepth", 4);
        entry("Name", {g_nTypeArray, g_nTypeInt16, 0});  // an empty name
    }

    QByteArray data;

private:
    void head(char nKind, const char* pLabel)
    {
        data.append(nKind);
        word16(quint16(qstrlen(pLabel)));
        data.append(pLabel);
    }
    bool m_bBigEndianData;
};
}  // namespace

QByteArray encodeDm3(const std::vector<float>& listPixel, int nWidth, int nHeight, bool bBigEndianData)
{
    std::vector<qint32> listWhole(listPixel.size());
    std::transform(listPixel.begin(), listPixel.end(), listWhole.begin(), [](float f) {
        return qint32(std::clamp(std::floor(double(f) + 0.5), -2147483648.0, 2147483647.0));
    });
    // Every eighth pixel makes the thumbnail, which a reader must not take for the image.
    const int nThumbWidth = (nWidth + 7) / 8, nThumbHeight = (nHeight + 7) / 8;
    std::vector<qint32> listThumb;
    for (int y = 0; y < nThumbHeight; ++y) {
        for (int x = 0; x < nThumbWidth; ++x) {
            listThumb.push_back(listWhole[size_t(8 * y) * nWidth + 8 * x]);
        }
    }

    TagWriter writer(bBigEndianData);
    writer.word32(3);
    writer.word32(0);  // length of the root, filled in below
    writer.word32(bBigEndianData ? 0 : 1);
    writer.data.append('\1');
    writer.data.append('\0');
    writer.word32(3);
    writer.group("ImageList", 2);
    writer.image(listThumb, nThumbWidth, nThumbHeight);
    writer.image(listWhole, nWidth, nHeight);
    writer.number("InImageMode", 1);
    writer.group("Thumbnails", 1);
    writer.group("", 1);
    writer.number("ImageIndex", 0);
    qToBigEndian(quint32(writer.data.size() - 12), writer.data.data() + 4);
    writer.data.append(QByteArray(8, '\0'));
    return writer.data;
}

}  // namespace tessera
