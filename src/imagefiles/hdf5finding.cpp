#include "imagefiles/hdf5finding.h"

#include "imagefiles/hdf5emd.h"
#include "imagefiles/hdf5nexus.h"

#include <QFileInfo>

#include <algorithm>
#include <set>

namespace tessera {

namespace {

constexpr size_t g_nMostNames = 20000;  ///< members of a group

/// Visits all groups of a file, each once even if several links lead to it.
class CWalk {
public:
    explicit CWalk(hid_t idFile) : m_idFile(idFile) {}

    /// Calls fnGroup(path) for the groups and fnSet(path, id) for the data sets.
    template <class GROUP, class SET>
    void go(const QByteArray& strGroup, int nDepth, const GROUP& fnGroup, const SET& fnSet)
    {
        constexpr int nDeepest = 12;
        const CHdf5Id idGroup = openObject(m_idFile, strGroup);
        H5O_info_t info;
        if (!idGroup.isOpen() || nDepth > nDeepest || H5Oget_info2(idGroup, &info, H5O_INFO_BASIC) < 0 ||
            !m_setSeen.insert(info.addr).second) {
            return;
        }
        fnGroup(strGroup, idGroup);
        for (const QByteArray& strName : namesIn(idGroup, g_nMostNames)) {
            if (++m_nObjects > g_nMostNames) {
                return;
            }
            const QByteArray strPath = (strGroup == "/" ? strGroup : strGroup + '/') + strName;
            const CHdf5Id idObject = openObject(m_idFile, strPath);
            const H5I_type_t type = idObject.isOpen() ? H5Iget_type(idObject) : H5I_BADID;
            if (type == H5I_GROUP) {
                go(strPath, nDepth + 1, fnGroup, fnSet);
            } else if (type == H5I_DATASET) {
                fnSet(strPath);
            }
        }
    }

private:
    hid_t m_idFile;
    std::set<haddr_t> m_setSeen;
    size_t m_nObjects = 0;
};

/// Finds the largest readable data set of two or three axes; in EMD files, only in groups that are marked
/// as data.
bool findLargest(hid_t idFile, const QString& strPath, Hdf5Series& series, QString& strReason)
{
    uint64_t nLargest = 0;
    Hdf5Block largest;
    QString strFault;
    bool bMarkedGroup = false;
    const auto consider = [&](const QByteArray& strSet) {
        Hdf5Block block = blockOf(idFile, strPath, strSet, false);
        const size_t nAxes = block.layout.vecLength.size();
        if (!block.strMissing.isEmpty()) {
            strFault = block.strMissing;
        } else if (nAxes >= 2 && (nAxes <= 3 || bMarkedGroup)) {
            const uint64_t nBytes = uint64_t(block.nCount) * block.layout.vecLength[nAxes - 1] *
                                    block.layout.vecLength[nAxes - 2] * block.layout.nElementSize;
            if (nBytes > nLargest) {
                nLargest = nBytes;
                largest = block;
            }
        }
    };
    const auto nothing = [](const QByteArray&) {};
    bMarkedGroup = true;
    CWalk(idFile).go(
        "/", 0,
        [&](const QByteArray& strGroup, hid_t idGroup) {
            const std::vector<double> vecType = numberAttribute(idGroup, "emd_group_type");
            if (!vecType.empty() && vecType[0] == 1) {
                consider(strGroup + "/data");
                consider(strGroup + "/datacube");
            }
        },
        nothing);
    if (nLargest > 0) {
        series.kind = Hdf5Series::Kind::BERKELEY;
    } else {
        bMarkedGroup = false;
        strFault.clear();
        CWalk(idFile).go(
            "/", 0, [](const QByteArray&, hid_t) {}, consider);
    }
    if (nLargest == 0) {
        strReason = strFault.isEmpty() ? QStringLiteral("no data set of numbers with two or three axes")
                                       : strFault;
        return false;
    }
    series.vecBlock = {largest};
    return true;
}

/// Refuses blocks whose images do not have the size of the first readable one.
void refuseOtherSizes(Hdf5Series& series)
{
    QSize size;
    for (Hdf5Block& block : series.vecBlock) {
        if (!block.strMissing.isEmpty()) {
            continue;
        }
        const Hdf5Plane plane = planeOf(block.layout, series.bFramesLast, 0);
        const uint64_t nWidth = columnsOf(block.layout, plane), nHeight = rowsOf(block.layout, plane);
        constexpr uint64_t nMost = std::numeric_limits<int>::max();
        const QSize sizeOfBlock(int(std::min(nWidth, nMost)), int(std::min(nHeight, nMost)));
        if (!size.isValid()) {
            size = sizeOfBlock;
        } else if (sizeOfBlock != size) {
            block.strMissing = QStringLiteral("images of %1 x %2 pixels among others of %3 x %4")
                                   .arg(nWidth)
                                   .arg(nHeight)
                                   .arg(size.width())
                                   .arg(size.height());
        }
    }
    series.header.size = size;
}

}  // namespace

Hdf5Block blockOf(hid_t idFile, const QString& strFile, const QByteArray& strPath, bool bFramesLast)
{
    Hdf5Block block;
    block.strFile = strFile;
    block.strPath = strPath;
    const CHdf5Id idDataSet = openDataSet(idFile, strPath);
    const QString strFileName = QFileInfo(strFile).fileName();
    if (!idDataSet.isOpen()) {
        block.strMissing = QStringLiteral("%1 has no data set \"%2\" with elements of its own")
                               .arg(strFileName, QString::fromUtf8(strPath.left(200)));
        return block;
    }
    QString strReason;
    if (!describeDataSet(idDataSet, uint64_t(QFileInfo(strFile).size()), block.layout, strReason)) {
        block.strMissing = strReason;
        return block;
    }
    block.nCount = imagesIn(block.layout, bFramesLast);
    if (block.nCount < 1) {
        block.strMissing = QStringLiteral("\"%1\" holds no images").arg(QString::fromUtf8(strPath.left(200)));
    }
    const std::vector<double> vecLow = numberAttribute(idDataSet, "image_nr_low");
    if (vecLow.size() == 1 && vecLow[0] >= 1 && vecLow[0] < std::numeric_limits<int>::max()) {
        block.nNumber = int(vecLow[0]);
    }
    return block;
}

Hdf5Block linkedBlock(const QString& strMaster, const Hdf5External& external)
{
    Hdf5Block block;
    QString strReason;
    const QString strFile = pathBesideMaster(strMaster, external.strFile, strReason);
    if (strFile.isEmpty()) {
        block.strFile = strMaster;
        block.strMissing = strReason;
        return block;
    }
    CHdf5Id idFile;
    if (!QFileInfo::exists(strFile)) {
        strReason = QStringLiteral("its data file %1 is missing").arg(external.strFile);
    } else {
        idFile = openHdf5(strFile, strReason);
        strReason = QStringLiteral("its data file %1: %2").arg(external.strFile, strReason);
    }
    if (!idFile.isOpen()) {
        block.strFile = strFile;
        block.strMissing = strReason;
        return block;
    }
    return blockOf(idFile, strFile, external.strPath, false);
}

std::vector<QByteArray> groupsOfClass(hid_t idWhere, const QByteArray& strWhere, const char* pszClass,
                                      const char* pszName)
{
    std::vector<QByteArray> vecGroup;
    const CHdf5Id idParent = openObject(idWhere, strWhere);
    for (const QByteArray& strName : namesIn(idParent, g_nMostNames)) {
        const QByteArray strPath = strWhere == "/" ? '/' + strName : strWhere + '/' + strName;
        const CHdf5Id idGroup = openObject(idWhere, strPath);
        if (idGroup.isOpen() && H5Iget_type(idGroup) == H5I_GROUP) {
            const QString strClass = textAttribute(idGroup, "NX_class");
            if (strClass == QLatin1String(pszClass) || (strClass.isEmpty() && strName == pszName)) {
                vecGroup.push_back(strPath);
            }
        }
    }
    return vecGroup;
}

bool findSeries(const QString& strPath, Hdf5Series& series, QString& strReason)
{
    const CHdf5Id idFile = openHdf5(strPath, strReason);
    if (!idFile.isOpen()) {
        return false;
    }
    qint64 nTotal = 0;
    const bool bFound = findVelox(idFile, strPath, series) || findNexus(idFile, strPath, series, nTotal) ||
                        findLargest(idFile, strPath, series, strReason);
    if (!bFound) {
        return false;
    }
    series.strReason = countMissing(series.vecBlock, nTotal);
    refuseOtherSizes(series);
    qint64 nImages = 0;
    bool bAny = false;
    for (const Hdf5Block& block : series.vecBlock) {
        nImages += block.nCount;
        bAny = bAny || block.strMissing.isEmpty();
    }
    if (!bAny) {
        strReason = series.strReason.isEmpty() ? QStringLiteral("no images") : series.strReason;
        return false;
    }
    series.header.nImages = int(nImages);
    switch (series.kind) {
        case Hdf5Series::Kind::NEXUS:
            readNexus(idFile, strPath, series);
            break;
        case Hdf5Series::Kind::VELOX:
            break;  // each image has its own
        case Hdf5Series::Kind::BERKELEY:
            readBerkeley(idFile, strPath, series);
            break;
        case Hdf5Series::Kind::PLAIN:
            series.header.listDoubt.append(
                QStringLiteral("The images were taken from the largest data set, \"%1\": the file has no "
                               "layout that is known, and its first row was put on top.")
                    .arg(QString::fromUtf8(series.vecBlock[0].strPath.left(200))));
            break;
    }
    return true;
}

}  // namespace tessera
