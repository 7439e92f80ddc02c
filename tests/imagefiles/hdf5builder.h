// HDF5 files for tests, written by the library's own functions.
#pragma once

#include "imagefiles/hdf5library.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <vector>

namespace tessera {

/// A file that is written as long as the object lives.
class CHdf5Builder {
public:
    explicit CHdf5Builder(const QString& strFile)
        : m_idFile(
              H5Fcreate(QFile::encodeName(strFile).constData(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT)),
          m_idParents(H5Pcreate(H5P_LINK_CREATE))
    {
        H5Pset_create_intermediate_group(m_idParents, 1);
    }

    hid_t file() const { return m_idFile; }

    /// A data set of numbers of type T; without lengths a scalar.
    template <class T>
    void set(const char* pszPath, hid_t idType, const std::vector<hsize_t>& vecLength,
             const std::vector<T>& vecValue, hid_t idCreate = H5P_DEFAULT)
    {
        const CHdf5Id idSpace = space(vecLength);
        const CHdf5Id idSet(
            H5Dcreate2(m_idFile, pszPath, idType, idSpace, m_idParents, idCreate, H5P_DEFAULT));
        if (!vecValue.empty()) {
            H5Dwrite(idSet, memoryType(T()), H5S_ALL, H5S_ALL, H5P_DEFAULT, vecValue.data());
        }
    }

    void number(const char* pszPath, double df, const char* pszUnit = nullptr)
    {
        set<double>(pszPath, H5T_IEEE_F64LE, {}, {df});
        if (pszUnit) {
            attribute(pszPath, "units", pszUnit);
        }
    }

    /// A text, of fixed or of variable length.
    void text(const char* pszPath, const QByteArray& strText, bool bVariable)
    {
        const CHdf5Id idType = textType(strText, bVariable), idSpace = space({});
        const CHdf5Id idSet(
            H5Dcreate2(m_idFile, pszPath, idType, idSpace, m_idParents, H5P_DEFAULT, H5P_DEFAULT));
        const char* psz = strText.constData();
        H5Dwrite(idSet, idType, H5S_ALL, H5S_ALL, H5P_DEFAULT,
                 bVariable ? static_cast<const void*>(&psz) : psz);
    }

    void attribute(const char* pszPath, const char* pszName, const QByteArray& strText)
    {
        const CHdf5Id idType = textType(strText, false), idSpace = space({});
        const CHdf5Id idAttribute(H5Acreate_by_name(m_idFile, pszPath, pszName, idType, idSpace, H5P_DEFAULT,
                                                    H5P_DEFAULT, H5P_DEFAULT));
        H5Awrite(idAttribute, idType, strText.constData());
    }

    void numbers(const char* pszPath, const char* pszName, const std::vector<double>& vecNumber)
    {
        const CHdf5Id idSpace = space({vecNumber.size()});
        const CHdf5Id idAttribute(H5Acreate_by_name(m_idFile, pszPath, pszName, H5T_IEEE_F64LE, idSpace,
                                                    H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT));
        H5Awrite(idAttribute, H5T_NATIVE_DOUBLE, vecNumber.data());
    }

    void link(const char* pszPath, const char* pszFile, const char* pszTarget)
    {
        H5Lcreate_external(pszFile, pszTarget, m_idFile, pszPath, m_idParents, H5P_DEFAULT);
    }

    static CHdf5Id space(const std::vector<hsize_t>& vecLength)
    {
        return CHdf5Id(vecLength.empty()
                           ? H5Screate(H5S_SCALAR)
                           : H5Screate_simple(int(vecLength.size()), vecLength.data(), nullptr));
    }

private:
    static CHdf5Id textType(const QByteArray& strText, bool bVariable)
    {
        CHdf5Id idType(H5Tcopy(H5T_C_S1));
        H5Tset_size(idType, bVariable ? H5T_VARIABLE : size_t(strText.size()) + 1);
        return idType;
    }
    static hid_t memoryType(double) { return H5T_NATIVE_DOUBLE; }
    static hid_t memoryType(int) { return H5T_NATIVE_INT; }
    static hid_t memoryType(uint8_t) { return H5T_NATIVE_UINT8; }
    static hid_t memoryType(uint32_t) { return H5T_NATIVE_UINT32; }

    CHdf5Lock m_lock;
    CHdf5Id m_idFile;
    CHdf5Id m_idParents;
};

}  // namespace tessera
