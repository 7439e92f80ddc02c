#include "exchange/dialsfiles.h"
#include "exchange/dialsidentifier.h"
#include "exchange/messagepack.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

namespace tessera {

namespace {

enum ReflectionBit : quint64 { BitIndexed = 4, BitStrong = 32 };

/// Packs numbers little-endian.
class CColumnBytes {
public:
    void add(double dfValue)
    {
        quint64 nBits = 0;
        std::memcpy(&nBits, &dfValue, sizeof nBits);
        add(nBits);
    }
    void add(quint64 nValue) { append(nValue); }
    void add(qint32 nValue) { append(nValue); }
    void add(bool bValue) { m_bytes += char(bValue ? 1 : 0); }
    void add(const DoubleVector& vec)
    {
        for (const double dfValue : vec) {
            add(dfValue);
        }
    }
    const QByteArray& bytes() const { return m_bytes; }

private:
    template <class T>
    void append(T nValue)
    {
        char achBytes[sizeof(T)];
        qToLittleEndian(nValue, achBytes);
        m_bytes.append(achBytes, sizeof achBytes);
    }

    QByteArray m_bytes;
};

using FnRow = std::function<void(const ExchangeReflection&, CColumnBytes&)>;

/// A column of the table.
struct Column {
    const char* pszName;
    const char* pszType;
    FnRow fnRow;
};

/// Converts a place to the coordinates of DIALS, in which the first pixel extends from 0 to 1, and so does
/// the image of number 1.
DoubleVector inPixels(const ExchangeGeometry& geometry, const Passage& passage)
{
    return {passage.place.dfX + 0.5, passage.place.dfY + 0.5,
            geometry.numbering.first() - 1 + (passage.dfAngle - geometry.dfStart) / geometry.dfWidth};
}

DoubleVector inMillimetres(const ExchangeGeometry& geometry, const Passage& passage)
{
    return {(passage.place.dfX + 0.5) * geometry.dfPixel, (passage.place.dfY + 0.5) * geometry.dfPixel,
            radians(passage.dfAngle)};
}

/// The point of a passage, turned back to angle 0.
DoubleVector pointOf(const ExchangeGeometry& geometry, const Passage& passage)
{
    DoubleVector vec = passage.s1;
    vec[2] += 1 / geometry.dfWavelength;
    return turned(vec, geometry.axis, -passage.dfAngle);
}

/// Adds the range of pixels and images of a spot, of which the ends are excluded.
void addBox(const ExchangeGeometry& geometry, const ExchangeReflection& one, int nHalf, CColumnBytes& bytes)
{
    const auto limit = [](double dfValue, int nMost) {
        return qint32(std::clamp(std::floor(dfValue), 0.0, double(nMost)));
    };
    const int nWidth = geometry.sizeFrame.width(), nHeight = geometry.sizeFrame.height();
    bytes.add(limit(one.seen.place.dfX + 0.5 - nHalf, nWidth));
    bytes.add(limit(one.seen.place.dfX + 1.5 + nHalf, nWidth));
    bytes.add(limit(one.seen.place.dfY + 0.5 - nHalf, nHeight));
    bytes.add(limit(one.seen.place.dfY + 1.5 + nHalf, nHeight));
    bytes.add(qint32(one.nFirst - 1));
    bytes.add(qint32(one.nLast));
}

std::vector<Column> indexColumns()
{
    const auto constant = [](auto value) {
        return [value](const ExchangeReflection&, CColumnBytes& bytes) { bytes.add(value); };
    };
    return {{"id", "int", constant(qint32(0))},
            {"imageset_id", "int", constant(qint32(0))},
            {"panel", "std::size_t", constant(quint64(0))},
            {"flags", "std::size_t", constant(quint64(BitIndexed | BitStrong))},
            {"miller_index", "cctbx::miller::index<>",
             [](const ExchangeReflection& one, CColumnBytes& bytes) {
                 for (const int nIndex : one.anIndex) {
                     bytes.add(qint32(nIndex));
                 }
             }},
            {"intensity.sum.value", "double",
             [](const ExchangeReflection& one, CColumnBytes& bytes) { bytes.add(one.dfIntensity); }},
            {"intensity.sum.variance", "double",  // variance of counts
             [](const ExchangeReflection& one, CColumnBytes& bytes) {
                 bytes.add(std::max(one.dfIntensity, 1.0));
             }},
            {"entering", "bool",
             [](const ExchangeReflection& one, CColumnBytes& bytes) { bytes.add(one.bEntering); }}};
}

std::vector<Column> placeColumns(const ExchangeGeometry& geometry, const DialsOptions& options,
                                 const Scatter& scatter)
{
    const double dfPlace = std::max(scatter.dfPlace, 0.01), dfImages = scatter.dfAngle / geometry.dfWidth;
    const double dfPlaceVariance = dfPlace * dfPlace;
    const double dfImagesVariance = std::max(dfImages * dfImages, 1e-4);
    const double dfPixel = geometry.dfPixel, dfTurn = radians(geometry.dfWidth);
    const DoubleVector vecPixels = {dfPlaceVariance, dfPlaceVariance, dfImagesVariance};
    const DoubleVector vecMillimetres = {dfPlaceVariance * dfPixel * dfPixel,
                                         dfPlaceVariance * dfPixel * dfPixel,
                                         dfImagesVariance * dfTurn * dfTurn};
    const int nHalf = int(std::ceil(3 * (options.dfSpotSigma > 0 ? options.dfSpotSigma : 1.5)));
    const auto row = [&geometry](auto fnVector) {
        return [&geometry, fnVector](const ExchangeReflection& one, CColumnBytes& bytes) {
            bytes.add(fnVector(geometry, one));
        };
    };
    using G = const ExchangeGeometry&;
    using R = const ExchangeReflection&;
    return {{"xyzobs.px.value", "vec3<double>", row([](G g, R one) { return inPixels(g, one.seen); })},
            {"xyzobs.px.variance", "vec3<double>", row([vecPixels](G, R) { return vecPixels; })},
            {"xyzobs.mm.value", "vec3<double>", row([](G g, R one) { return inMillimetres(g, one.seen); })},
            {"xyzobs.mm.variance", "vec3<double>", row([vecMillimetres](G, R) { return vecMillimetres; })},
            {"xyzcal.px", "vec3<double>", row([](G g, R one) { return inPixels(g, one.expected); })},
            {"xyzcal.mm", "vec3<double>", row([](G g, R one) { return inMillimetres(g, one.expected); })},
            {"s1", "vec3<double>", row([](G, R one) { return one.seen.s1; })},
            {"rlp", "vec3<double>", row([](G g, R one) { return pointOf(g, one.seen); })},
            {"bbox", "int6",
             [&geometry, nHalf](R one, CColumnBytes& bytes) { addBox(geometry, one, nHalf, bytes); }}};
}

}  // namespace

QByteArray dialsReflections(const ExchangeGeometry& geometry, const DialsOptions& options,
                            const std::vector<ExchangeReflection>& listReflection)
{
    std::vector<Column> listColumn = indexColumns();
    for (Column& column : placeColumns(geometry, options, scatterOf(listReflection))) {
        listColumn.push_back(std::move(column));
    }
    CMessagePack pack;
    pack.beginArray(3);
    pack.text("dials::af::reflection_table");
    pack.number(1);
    pack.beginMap(3);
    pack.text("identifiers");
    pack.beginMap(1);
    pack.number(0);
    pack.text(dialsIdentifier(geometry).toLatin1());
    pack.text("nrows");
    pack.number(listReflection.size());
    pack.text("data");
    pack.beginMap(quint32(listColumn.size()));
    for (const Column& column : listColumn) {
        CColumnBytes bytes;
        for (const ExchangeReflection& one : listReflection) {
            column.fnRow(one, bytes);
        }
        pack.text(column.pszName);
        pack.beginArray(2);
        pack.text(column.pszType);
        pack.beginArray(2);
        pack.number(listReflection.size());
        pack.binary(bytes.bytes());
    }
    return pack.bytes();
}

}  // namespace tessera
