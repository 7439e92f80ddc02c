// The HDF5 library, held safely: one caller at a time, no file but the one that was opened, small values.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <hdf5.h>

#include <mutex>
#include <utility>
#include <vector>

namespace tessera {

/// The right to call HDF5, which may be built without support for threads, and keeps tables for the whole
/// process in any case. Its own messages are off, and it loads no plugins. Whoever holds one may take
/// another.
class CHdf5Lock {
public:
    CHdf5Lock();

private:
    std::unique_lock<std::recursive_mutex> m_lock;
};

/// An identifier of HDF5, closed at the end. All that goes with it needs a CHdf5Lock.
class CHdf5Id {
public:
    explicit CHdf5Id(hid_t id = -1) : m_id(id) {}
    CHdf5Id(CHdf5Id&& other) noexcept : m_id(std::exchange(other.m_id, -1)) {}
    CHdf5Id& operator=(CHdf5Id&& other) noexcept
    {
        std::swap(m_id, other.m_id);
        return *this;
    }
    ~CHdf5Id();
    operator hid_t() const { return m_id; }
    bool isOpen() const { return m_id >= 0; }

private:
    hid_t m_id;
};

/// Opens a regular file for reading, without locks of the file system.
/// @return a closed one with the reason
CHdf5Id openHdf5(const QString& strFileName, QString& strReason);

/// Opens a group or a data set. Soft links are followed within the file, no link ever to another one.
CHdf5Id openObject(hid_t idWhere, const QByteArray& strPath);

/// Opens a data set whose elements lie in this file alone: what is spread over others is left closed.
CHdf5Id openDataSet(hid_t idWhere, const QByteArray& strPath);

/// Where a link to another file leads.
struct Hdf5External {
    QString strFile;  ///< as it stands in the link
    QByteArray strPath;
};

/// Reads a link that leads to another file, which is not opened.
/// @param strName  of a member of the group, no path
/// @return false for any other link
bool readExternal(hid_t idGroup, const QByteArray& strName, Hdf5External& external);

/// Names of what a group holds, in their order, up to a number of them.
std::vector<QByteArray> namesIn(hid_t idGroup, size_t nMost);

/// Lengths along the axes. Empty for a scalar, and where there are more than eight.
std::vector<hsize_t> dimensionsOf(hid_t idDataSet);

/// A text of an attribute or a data set of one element, in any of HDF5's kinds; empty when there is none.
QString textAttribute(hid_t idObject, const char* pszName);
QString textIn(hid_t idWhere, const QByteArray& strPath);

/// Up to 64 numbers of an attribute; empty when there are none.
std::vector<double> numberAttribute(hid_t idObject, const char* pszName);

/// Factor from the unit in the attribute "units" of a data set: to metres, seconds, degrees, electron volts
/// or ångströms, whichever it belongs to; 1 without one, NaN for an unknown one.
double unitFactor(const QString& strUnit);

}  // namespace tessera
