#include "imagefiles/hdf5layout.h"

#include "imagefiles/pixelconvert.h"

#include <algorithm>

namespace tessera {

namespace {

bool describeType(hid_t idDataSet, Hdf5Layout& layout, QString& strReason)
{
    const CHdf5Id idType(H5Dget_type(idDataSet));
    const H5T_class_t type = H5Tget_class(idType);
    layout.bFloat = type == H5T_FLOAT;
    layout.nElementSize = H5Tget_size(idType);
    const size_t n = layout.nElementSize;
    const H5T_order_t order = H5Tget_order(idType);
    layout.bBigEndian = order == H5T_ORDER_BE;
    bool bGood = (n == 4 || n == 8 || (!layout.bFloat && (n == 1 || n == 2))) &&
                 (order == H5T_ORDER_LE || order == H5T_ORDER_BE);
    if (bGood && type == H5T_INTEGER) {
        layout.bSigned = H5Tget_sign(idType) == H5T_SGN_2;
        bGood = H5Tget_precision(idType) == 8 * n && H5Tget_offset(idType) == 0;
    } else if (bGood && type == H5T_FLOAT) {
        const hid_t idLike = n == 4 ? (layout.bBigEndian ? H5T_IEEE_F32BE : H5T_IEEE_F32LE)
                                    : (layout.bBigEndian ? H5T_IEEE_F64BE : H5T_IEEE_F64LE);
        bGood = H5Tequal(idType, idLike) > 0;
    } else {
        bGood = false;
    }
    if (!bGood) {
        strReason = QStringLiteral("elements of HDF5 that are no plain numbers");
    }
    return bGood;
}

std::vector<Hdf5Filter> filtersOf(hid_t idCreate)
{
    std::vector<Hdf5Filter> vecFilter;
    const int nFilters = H5Pget_nfilters(idCreate);
    for (int i = 0; i < nFilters; ++i) {
        constexpr size_t nMostValues = 16;
        Hdf5Filter filter;
        filter.vecClient.assign(nMostValues, 0);
        unsigned nFlags = 0, nConfig = 0;
        size_t nValues = nMostValues;
        filter.nId = H5Pget_filter2(idCreate, unsigned(i), &nFlags, &nValues, filter.vecClient.data(), 0,
                                    nullptr, &nConfig);
        vecFilter.push_back(filter);
    }
    return vecFilter;
}

}  // namespace

uint64_t productOf(const std::vector<hsize_t>& vecLength)
{
    uint64_t nProduct = 1;
    for (hsize_t n : vecLength) {
        if (n != 0 && nProduct > std::numeric_limits<uint64_t>::max() / n) {
            return std::numeric_limits<uint64_t>::max();
        }
        nProduct *= n;
    }
    return nProduct;
}

bool describeDataSet(hid_t idDataSet, uint64_t nFileSize, Hdf5Layout& layout, QString& strReason)
{
    layout = Hdf5Layout();
    strReason.clear();
    layout.nFileSize = nFileSize;
    const CHdf5Id idCreate(H5Dget_create_plist(idDataSet));
    if (!idCreate.isOpen() || !describeType(idDataSet, layout, strReason)) {
        return false;
    }
    const CHdf5Id idSpace(H5Dget_space(idDataSet));
    layout.vecLength = dimensionsOf(idDataSet);
    layout.vecFilter = filtersOf(idCreate);
    layout.nStored = std::min<uint64_t>(H5Dget_storage_size(idDataSet), nFileSize);
    const uint64_t nElements = productOf(layout.vecLength);
    if (nElements == 0 || H5Sget_simple_extent_npoints(idSpace) < 1 ||
        (layout.vecLength.empty() && H5Sget_simple_extent_ndims(idSpace) != 0)) {
        strReason = QStringLiteral("a data set without elements, or with more than eight axes");
        return false;
    }
    const bool bTooMany = nElements > std::numeric_limits<int64_t>::max() / layout.nElementSize;
    const uint64_t nBytes = bTooMany ? 0 : nElements * layout.nElementSize;
    const H5D_layout_t kind = H5Pget_layout(idCreate);
    layout.bCompact = kind == H5D_COMPACT;
    if (kind == H5D_CHUNKED) {
        layout.vecChunk.assign(layout.vecLength.size(), 1);
        const CHdf5Id idType(H5Dget_type(idDataSet));
        H5Pget_fill_value(idCreate, idType, &layout.nFill);
        if (H5Pget_chunk(idCreate, int(layout.vecChunk.size()), layout.vecChunk.data()) !=
                int(layout.vecChunk.size()) ||
            productOf(layout.vecChunk) == 0 ||
            productOf(layout.vecChunk) > std::numeric_limits<uint32_t>::max() / layout.nElementSize) {
            strReason = QStringLiteral("chunks of HDF5 of an impossible size");
            return false;
        }
        strReason = unknownFilter(layout.vecFilter);
        return strReason.isEmpty();
    }
    const haddr_t nOffset = kind == H5D_CONTIGUOUS ? H5Dget_offset(idDataSet) : 0;
    layout.nOffset = nOffset;
    if (nOffset == HADDR_UNDEF) {
        strReason = QStringLiteral("a data set that was never written");
    } else if ((kind != H5D_CONTIGUOUS && kind != H5D_COMPACT) || bTooMany || nBytes > nFileSize ||
               nOffset > nFileSize - nBytes) {
        strReason = QStringLiteral("truncated: %1 bytes do not hold %2 elements of %3 bytes")
                        .arg(nFileSize)
                        .arg(nElements)
                        .arg(layout.nElementSize);
    }
    return strReason.isEmpty();
}

double elementAt(const Hdf5Layout& layout, const uint8_t* pElement)
{
    const bool bSwap = layout.bBigEndian != (Q_BYTE_ORDER == Q_BIG_ENDIAN);
    const auto numberAs = [&](auto value) {
        using T = decltype(value);
        return double(bSwap ? elementFromBytes<T, true>(pElement) : elementFromBytes<T, false>(pElement));
    };
    switch (layout.nElementSize) {
        case 1:
            return layout.bSigned ? numberAs(int8_t()) : numberAs(uint8_t());
        case 2:
            return layout.bSigned ? numberAs(int16_t()) : numberAs(uint16_t());
        case 4:
            return layout.bFloat    ? numberAs(float())
                   : layout.bSigned ? numberAs(int32_t())
                                    : numberAs(uint32_t());
        default:
            return layout.bFloat    ? numberAs(double())
                   : layout.bSigned ? numberAs(int64_t())
                                    : numberAs(uint64_t());
    }
}

}  // namespace tessera
