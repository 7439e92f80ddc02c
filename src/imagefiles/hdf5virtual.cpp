// HDF5 virtual data sets: images that are stored in other data sets.
#include "imagefiles/hdf5finding.h"

#include <algorithm>
#include <limits>
#include <map>

namespace tessera {

namespace {

/// A selection that is a single box.
struct Box {
    std::vector<hsize_t> vecFirst, vecLast;
};

bool isUnlimited(hid_t idSpace, size_t nAxes)
{
    if (H5Sis_regular_hyperslab(idSpace) <= 0) {
        return false;
    }
    std::vector<hsize_t> vecStart(nAxes), vecStride(nAxes), vecCount(nAxes), vecBlock(nAxes);
    H5Sget_regular_hyperslab(idSpace, vecStart.data(), vecStride.data(), vecCount.data(), vecBlock.data());
    const auto isEndless = [](hsize_t n) { return n == H5S_UNLIMITED; };
    return std::any_of(vecCount.begin(), vecCount.end(), isEndless) ||
           std::any_of(vecBlock.begin(), vecBlock.end(), isEndless);
}

bool boxOf(hid_t idSpace, Box& box)
{
    constexpr int nMostAxes = 8;
    const int nAxes = H5Sget_simple_extent_ndims(idSpace);
    if (nAxes < 2 || nAxes > nMostAxes || isUnlimited(idSpace, size_t(nAxes))) {
        return false;
    }
    box.vecFirst.assign(size_t(nAxes), 0);
    box.vecLast.assign(size_t(nAxes), 0);
    if (H5Sget_select_bounds(idSpace, box.vecFirst.data(), box.vecLast.data()) < 0) {
        return false;
    }
    hsize_t nElements = 1;
    for (size_t i = 0; i < box.vecFirst.size(); ++i) {
        const hsize_t nAlong = box.vecLast[i] - box.vecFirst[i] + 1;
        if (nAlong == 0 || nElements > std::numeric_limits<hsize_t>::max() / nAlong) {
            return false;
        }
        nElements *= nAlong;
    }
    return H5Sget_select_npoints(idSpace) == hssize_t(nElements);
}

/// The images that an entry of the virtual data set maps.
struct Mapping {
    hsize_t nFirst = 0, nCount = 0, nFirstOfSource = 0;
    std::vector<hsize_t> vecImage;  ///< rows and columns of the virtual image that it covers
    Hdf5External source;
};

template <class GET>
QByteArray textOf(const GET& get)
{
    constexpr ssize_t nLongest = 8192;
    const ssize_t nLength = get(nullptr, size_t(0));
    if (nLength < 1 || nLength > nLongest) {
        return {};
    }
    QByteArray bytes(int(nLength), 0);
    get(bytes.data(), size_t(nLength) + 1);
    return bytes;
}

/// Finds where the images of a source begin.
/// @return false when the selection is not as many complete images. If the whole source is selected, the
///         file does not tell its size
bool takeSource(hid_t idSource, Mapping& mapping)
{
    if (H5Sget_select_type(idSource) == H5S_SEL_ALL) {
        return true;
    }
    Box source;
    if (!boxOf(idSource, source) || source.vecFirst.size() > 3) {
        return false;
    }
    const size_t nRow = source.vecFirst.size() - 2;
    for (size_t i = 0; i < 2; ++i) {
        if (source.vecFirst[nRow + i] != 0 || source.vecLast[nRow + i] + 1 != mapping.vecImage[i]) {
            return false;
        }
    }
    mapping.nFirstOfSource = nRow == 1 ? source.vecFirst[0] : 0;
    return mapping.nCount == (nRow == 1 ? source.vecLast[0] - source.vecFirst[0] + 1 : 1);
}

bool mappingOf(hid_t idCreate, size_t n, Mapping& mapping)
{
    const CHdf5Id idTarget(H5Pget_virtual_vspace(idCreate, n)),
        idSource(H5Pget_virtual_srcspace(idCreate, n));
    Box target;
    if (!boxOf(idTarget, target) || target.vecFirst.size() != 3) {
        return false;
    }
    mapping.nFirst = target.vecFirst[0];
    mapping.nCount = target.vecLast[0] - target.vecFirst[0] + 1;
    for (size_t i = 1; i < 3; ++i) {
        if (target.vecFirst[i] != 0) {
            return false;
        }
        mapping.vecImage.push_back(target.vecLast[i] + 1);
    }
    mapping.source.strFile = QString::fromUtf8(
        textOf([&](char* p, size_t nSize) { return H5Pget_virtual_filename(idCreate, n, p, nSize); }));
    mapping.source.strPath = textOf(
        [&](char* p, size_t nSize) { return H5Pget_virtual_dsetname(idCreate, n, p, nSize); });
    return takeSource(idSource, mapping) && !mapping.source.strPath.isEmpty();
}

Hdf5Block missingBlock(const QString& strFile, int nCount, const QString& strReason)
{
    Hdf5Block block;
    block.strFile = strFile;
    block.strMissing = strReason;
    block.nCount = nCount;
    return block;
}

/// The images of a mapping. The data set is opened once for all mappings that use it.
Hdf5Block blockOfMapping(hid_t idDataSet, const QString& strFile, const Mapping& mapping,
                         std::map<std::pair<QString, QByteArray>, Hdf5Block>& mapKnown)
{
    const auto key = std::make_pair(mapping.source.strFile, mapping.source.strPath);
    auto it = mapKnown.find(key);
    if (it == mapKnown.end()) {
        Hdf5Block block;
        if (mapping.source.strFile == QLatin1String(".")) {
            const CHdf5Id idFile(H5Iget_file_id(idDataSet));
            block = blockOf(idFile, strFile, mapping.source.strPath, false);
        } else {
            block = linkedBlock(strFile, mapping.source);
        }
        const size_t nAxes = block.layout.vecLength.size();
        if (block.strMissing.isEmpty() && (block.layout.vecLength[nAxes - 2] != mapping.vecImage[0] ||
                                           block.layout.vecLength[nAxes - 1] != mapping.vecImage[1])) {
            block.strMissing = QStringLiteral("its virtual data set takes parts of images");
        }
        it = mapKnown.emplace(key, block).first;
    }
    Hdf5Block block = it->second;
    block.nFirst = int(mapping.nFirstOfSource);
    block.nCount = int(mapping.nCount);
    return block;
}

}  // namespace

std::vector<Hdf5Block> virtualBlocks(hid_t idDataSet, const QString& strFile, QString& strReason)
{
    constexpr size_t nMostMappings = 20000;
    constexpr hsize_t nMostImages = 100000;  // limit, as images never written cost the file no bytes
    const CHdf5Id idCreate(H5Dget_create_plist(idDataSet));
    size_t nMappings = 0;
    strReason = QStringLiteral("a virtual data set that is not put together of whole images is not read");
    if (H5Pget_virtual_count(idCreate, &nMappings) < 0 || nMappings < 1 || nMappings > nMostMappings) {
        return {};
    }
    std::vector<Mapping> vecMapping(nMappings);
    for (size_t i = 0; i < nMappings; ++i) {
        if (!mappingOf(idCreate, i, vecMapping[i]) || vecMapping[i].nFirst > nMostImages ||
            vecMapping[i].nCount > nMostImages || vecMapping[i].nFirstOfSource > nMostImages ||
            vecMapping[i].vecImage != vecMapping[0].vecImage) {
            return {};
        }
    }
    std::stable_sort(vecMapping.begin(), vecMapping.end(),
                     [](const Mapping& a, const Mapping& b) { return a.nFirst < b.nFirst; });
    std::vector<Hdf5Block> vecBlock;
    std::map<std::pair<QString, QByteArray>, Hdf5Block> mapKnown;
    hsize_t nDone = 0;
    for (const Mapping& mapping : vecMapping) {
        if (mapping.nFirst < nDone) {
            return {};
        }
        if (mapping.nFirst > nDone) {
            vecBlock.push_back(missingBlock(strFile, int(mapping.nFirst - nDone),
                                            QStringLiteral("its virtual data set has a gap")));
        }
        vecBlock.push_back(blockOfMapping(idDataSet, strFile, mapping, mapKnown));
        nDone = mapping.nFirst + mapping.nCount;
    }
    strReason.clear();
    return vecBlock;
}

}  // namespace tessera
