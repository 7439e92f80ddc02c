#include "imagefiles/hdf5library.h"

#include "records/pi.h"
#include "records/regularfile.h"

#include <QFile>

#include <cmath>
#include <limits>
#include <map>

namespace tessera {

namespace {

constexpr size_t g_nLongestText = 65536;
constexpr hssize_t g_nMostNumbers = 64;

/// Called by HDF5 before it follows a link to another file.
/// @return always a failure
herr_t refuseExternal(const char*, const char*, const char*, const char*, unsigned*, hid_t, void*)
{
    return -1;
}

CHdf5Id noExternalLinks()
{
    CHdf5Id idAccess(H5Pcreate(H5P_LINK_ACCESS));
    H5Pset_elink_cb(idAccess, refuseExternal, nullptr);
    return idAccess;
}

struct NameList {
    std::vector<QByteArray> vecName;
    size_t nMost;
};

herr_t addName(hid_t, const char* pszName, const H5L_info_t*, void* p)
{
    auto* pList = static_cast<NameList*>(p);
    pList->vecName.push_back(pszName);
    return pList->vecName.size() < pList->nMost ? 0 : 1;
}

/// Reads a text by a function that reads elements of a given type.
template <class READ>
QString oneText(hid_t idType, hid_t idSpace, const READ& read)
{
    if (H5Tget_class(idType) != H5T_STRING || H5Sget_simple_extent_npoints(idSpace) != 1) {
        return {};
    }
    const CHdf5Id idMemory(H5Tcopy(H5T_C_S1));
    H5Tset_cset(idMemory, H5Tget_cset(idType));
    if (H5Tis_variable_str(idType) > 0) {
        H5Tset_size(idMemory, H5T_VARIABLE);
        char* psz = nullptr;
        if (read(idMemory, &psz) < 0 || !psz) {
            return {};
        }
        const QString strText = QString::fromUtf8(psz, int(qstrnlen(psz, g_nLongestText)));
        H5free_memory(psz);
        return strText;
    }
    const size_t nSize = H5Tget_size(idType);
    if (nSize < 1 || nSize > g_nLongestText) {
        return {};
    }
    QByteArray bytes(int(nSize) + 1, 0);
    H5Tset_size(idMemory, nSize + 1);
    return read(idMemory, bytes.data()) >= 0 ? QString::fromUtf8(bytes.constData()).trimmed() : QString();
}

/// Whether a data set is stored in this file, and small enough that the library, which does not check
/// sizes, is safe.
bool isPlain(hid_t idDataSet)
{
    const CHdf5Id idCreate(H5Dget_create_plist(idDataSet));
    return H5Pget_nfilters(idCreate) == 0;
}

}  // namespace

CHdf5Lock::CHdf5Lock()
{
    static std::recursive_mutex s_mutex;
    m_lock = std::unique_lock<std::recursive_mutex>(s_mutex);
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);  // for this thread
    static const bool s_bNoPlugins = H5PLset_loading_state(0) >= 0;
    Q_UNUSED(s_bNoPlugins)
}

CHdf5Id::~CHdf5Id()
{
    if (m_id >= 0) {
        H5Idec_ref(m_id);
    }
}

CHdf5Id openHdf5(const QString& strFileName, QString& strReason)
{
    QFile file(strFileName);
    if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        return CHdf5Id();
    }
    file.close();
    const CHdf5Id idAccess(H5Pcreate(H5P_FILE_ACCESS));
    H5Pset_file_locking(idAccess, false, true);
    CHdf5Id idFile(H5Fopen(QFile::encodeName(strFileName).constData(), H5F_ACC_RDONLY, idAccess));
    if (!idFile.isOpen()) {
        strReason = QStringLiteral("no HDF5 file, or truncated, or still being written");
    }
    return idFile;
}

CHdf5Id openObject(hid_t idWhere, const QByteArray& strPath)
{
    return CHdf5Id(H5Oopen(idWhere, strPath.constData(), noExternalLinks()));
}

CHdf5Id openDataSet(hid_t idWhere, const QByteArray& strPath)
{
    CHdf5Id idDataSet = openObject(idWhere, strPath);
    if (!idDataSet.isOpen() || H5Iget_type(idDataSet) != H5I_DATASET) {
        return CHdf5Id();
    }
    const CHdf5Id idCreate(H5Dget_create_plist(idDataSet));
    if (!idCreate.isOpen() || H5Pget_layout(idCreate) == H5D_VIRTUAL ||
        H5Pget_external_count(idCreate) != 0) {
        return CHdf5Id();
    }
    return idDataSet;
}

std::optional<Hdf5External> readExternal(hid_t idGroup, const QByteArray& strName)
{
    constexpr size_t nLongestLink = 8192;
    if (strName.contains('/')) {  // a damaged name, which HDF5 would take for a path through other files
        return {};
    }
    const CHdf5Id idAccess = noExternalLinks();
    H5L_info_t info;
    if (H5Lget_info(idGroup, strName.constData(), &info, idAccess) < 0 || info.type != H5L_TYPE_EXTERNAL ||
        info.u.val_size < 1 || info.u.val_size > nLongestLink) {
        return {};
    }
    QByteArray bytes(int(info.u.val_size), 0);
    const char *pszFile = nullptr, *pszPath = nullptr;
    if (H5Lget_val(idGroup, strName.constData(), bytes.data(), info.u.val_size, idAccess) < 0 ||
        H5Lunpack_elink_val(bytes.constData(), info.u.val_size, nullptr, &pszFile, &pszPath) < 0) {
        return {};
    }
    return Hdf5External{QFile::decodeName(pszFile), pszPath};
}

std::vector<QByteArray> namesIn(hid_t idGroup, size_t nMost)
{
    NameList list = {{}, nMost};
    hsize_t nIndex = 0;
    // When a link of a small group is damaged, asking HDF5 1.10 for all links makes it free memory that it
    // has never set. Looking for a name visits all links as well, but only fails.
    const bool bSound = H5Lexists(idGroup, "\x01", H5P_DEFAULT) >= 0;
    if (bSound && (H5Iget_type(idGroup) == H5I_GROUP || H5Iget_type(idGroup) == H5I_FILE)) {
        H5Literate(idGroup, H5_INDEX_NAME, H5_ITER_INC, &nIndex, addName, &list);
    }
    return list.vecName;
}

std::vector<hsize_t> dimensionsOf(hid_t idDataSet)
{
    constexpr int nMostAxes = 8;
    const CHdf5Id idSpace(H5Dget_space(idDataSet));
    const int nAxes = H5Sget_simple_extent_ndims(idSpace);
    if (nAxes < 1 || nAxes > nMostAxes) {
        return {};
    }
    std::vector<hsize_t> vecLength(static_cast<size_t>(nAxes));
    H5Sget_simple_extent_dims(idSpace, vecLength.data(), nullptr);
    return vecLength;
}

QString textAttribute(hid_t idObject, const char* pszName)
{
    if (H5Aexists(idObject, pszName) <= 0) {
        return {};
    }
    const CHdf5Id idAttribute(H5Aopen(idObject, pszName, H5P_DEFAULT));
    const CHdf5Id idType(H5Aget_type(idAttribute)), idSpace(H5Aget_space(idAttribute));
    return oneText(idType, idSpace,
                   [&](hid_t idMemory, void* p) { return H5Aread(idAttribute, idMemory, p); });
}

QString textIn(hid_t idWhere, const QByteArray& strPath)
{
    const CHdf5Id idDataSet = openDataSet(idWhere, strPath);
    if (!idDataSet.isOpen() || !isPlain(idDataSet)) {
        return {};
    }
    const CHdf5Id idType(H5Dget_type(idDataSet)), idSpace(H5Dget_space(idDataSet));
    return oneText(idType, idSpace, [&](hid_t idMemory, void* p) {
        return H5Dread(idDataSet, idMemory, H5S_ALL, H5S_ALL, H5P_DEFAULT, p);
    });
}

std::vector<double> numberAttribute(hid_t idObject, const char* pszName)
{
    if (H5Aexists(idObject, pszName) <= 0) {
        return {};
    }
    const CHdf5Id idAttribute(H5Aopen(idObject, pszName, H5P_DEFAULT));
    const CHdf5Id idType(H5Aget_type(idAttribute)), idSpace(H5Aget_space(idAttribute));
    const H5T_class_t type = H5Tget_class(idType);
    const hssize_t nCount = H5Sget_simple_extent_npoints(idSpace);
    if ((type != H5T_INTEGER && type != H5T_FLOAT) || nCount < 1 || nCount > g_nMostNumbers) {
        return {};
    }
    std::vector<double> vecNumber(static_cast<size_t>(nCount));
    return H5Aread(idAttribute, H5T_NATIVE_DOUBLE, vecNumber.data()) >= 0 ? vecNumber : std::vector<double>();
}

double unitFactor(const QString& strUnit)
{
    static const std::map<QString, double> s_mapFactor = {{"", 1},
                                                          {"m", 1},
                                                          {"meter", 1},
                                                          {"metre", 1},
                                                          {"mm", 1e-3},
                                                          {"cm", 1e-2},
                                                          {"um", 1e-6},
                                                          {"\u00b5m", 1e-6},
                                                          {"nm", 1e-9},
                                                          {"micron", 1e-6},
                                                          {"s", 1},
                                                          {"ms", 1e-3},
                                                          {"us", 1e-6},
                                                          {"ns", 1e-9},
                                                          {"second", 1},
                                                          {"seconds", 1},
                                                          {"deg", 1},
                                                          {"degree", 1},
                                                          {"degrees", 1},
                                                          {"\u00b0", 1},
                                                          {"rad", 180 / g_dfPi},
                                                          {"radian", 180 / g_dfPi},
                                                          {"ev", 1},
                                                          {"kev", 1e3},
                                                          {"angstrom", 1},
                                                          {"angstroms", 1},
                                                          {"a", 1},
                                                          {"\u00e5", 1},
                                                          {"pixel", 1},
                                                          {"pixels", 1},
                                                          {"microns", 1e-6},
                                                          {"counts", 1}};
    const auto it = s_mapFactor.find(strUnit.trimmed().toLower());
    return it != s_mapFactor.end() ? it->second : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace tessera
