// HDF5 library: safe use of the library: by one thread at a time, without access to other files, with
// limited sizes.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <hdf5.h>

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace tessera {

/// The right to call the library, which may be built without support for threads and has tables for the
/// whole process in any case. It makes the library print no messages and load no plugins. A thread may have
/// several of these objects.
class CHdf5Lock {
public:
    /// Waits until no other thread has one.
    CHdf5Lock();

private:
    std::unique_lock<std::recursive_mutex> m_lock;
};

/// Owns an identifier of HDF5 and closes it at the end. All functions need a CHdf5Lock.
class CHdf5Id {
public:
    /// Takes an identifier; −1: none.
    explicit CHdf5Id(hid_t id = -1) : m_id(id) {}
    /// Takes the identifier of another object.
    CHdf5Id(CHdf5Id&& other) noexcept : m_id(std::exchange(other.m_id, -1)) {}
    /// Exchanges the identifiers.
    CHdf5Id& operator=(CHdf5Id&& other) noexcept
    {
        std::swap(m_id, other.m_id);
        return *this;
    }
    /// Closes the identifier.
    ~CHdf5Id();
    /// The identifier for functions of the library.
    operator hid_t() const { return m_id; }
    /// Whether there is an identifier.
    bool isOpen() const { return m_id >= 0; }

private:
    hid_t m_id;
};

/// Opens a regular file for reading, without locks of the file system.
/// @return not open, with the reason, on failure
CHdf5Id openHdf5(const QString& strFileName, QString& strReason);

/// Opens a group or a data set. Soft links are followed within the file; links to other files never are.
CHdf5Id openObject(hid_t idWhere, const QByteArray& strPath);

/// Opens a data set whose elements are stored in this file. One with elements in other files is not opened.
CHdf5Id openDataSet(hid_t idWhere, const QByteArray& strPath);

/// The target of a link to another file.
struct Hdf5External {
    QString strFile;     ///< file name as in the link
    QByteArray strPath;  ///< path of the object in that file
};

/// Reads a link to another file, which is not opened.
/// @param strName  name of a member of the group, not a path
/// @return nothing for any other link
std::optional<Hdf5External> readExternal(hid_t idGroup, const QByteArray& strName);

/// The names of up to nMost members of a group, in their order.
std::vector<QByteArray> namesIn(hid_t idGroup, size_t nMost);

/// The lengths along the axes; empty for a scalar, and where there are more than eight axes.
std::vector<hsize_t> dimensionsOf(hid_t idDataSet);

/// The text of an attribute, in any of the string types; empty when there is none.
QString textAttribute(hid_t idObject, const char* pszName);
/// The text of a data set of one element, likewise.
QString textIn(hid_t idWhere, const QByteArray& strPath);

/// The numbers of an attribute, at most 64; empty when there are none.
std::vector<double> numberAttribute(hid_t idObject, const char* pszName);

/// The factor that converts a unit from an attribute "units" to metres, seconds, degrees, electron volts or
/// ångströms, whichever it is a unit of; 1 for no unit, NaN for an unknown one.
double unitFactor(const QString& strUnit);

}  // namespace tessera
