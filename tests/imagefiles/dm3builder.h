// Builds DM3 files byte by byte, sound and broken ones.
#pragma once

#include <QByteArray>
#include <QtEndian>

#include <vector>

namespace tessera {

namespace dm3 {

inline QByteArray big(quint32 n)
{
    QByteArray bytes(4, 0);
    qToBigEndian(n, bytes.data());
    return bytes;
}

/// A number as the data of a file; `nOrder` is the byte order word of the file: 1 little, others big.
template <class T>
QByteArray number(T value, quint32 nOrder)
{
    QByteArray bytes(sizeof(T), 0);
    nOrder == 1 ? qToLittleEndian(value, bytes.data()) : qToBigEndian(value, bytes.data());
    return bytes;
}

inline QByteArray label(const QByteArray& strLabel)
{
    return big(static_cast<quint32>(strLabel.size())).right(2) + strLabel;
}

inline QByteArray group(const QByteArray& strLabel, const std::vector<QByteArray>& vecChild)
{
    QByteArray bytes = '\x14' + label(strLabel) + '\1' + '\0' + big(static_cast<quint32>(vecChild.size()));
    for (const QByteArray& child : vecChild) {
        bytes += child;
    }
    return bytes;
}

inline QByteArray entry(const QByteArray& strLabel, const std::vector<quint32>& vecInfo,
                        const QByteArray& data)
{
    QByteArray bytes = '\x15' + label(strLabel) + "%%%%" + big(static_cast<quint32>(vecInfo.size()));
    for (quint32 nWord : vecInfo) {
        bytes += big(nWord);
    }
    return bytes + data;
}

inline QByteArray integer(const QByteArray& strLabel, qint32 nValue, quint32 nOrder = 1)
{
    return entry(strLabel, {5}, number(nValue, nOrder));
}

inline QByteArray array(const QByteArray& strLabel, quint32 nType, quint32 nCount, const QByteArray& data)
{
    return entry(strLabel, {20, nType, nCount}, data);
}

/// The file; some zero bytes follow the tree, as in files from a camera.
inline QByteArray file(const std::vector<QByteArray>& vecTag, quint32 nOrder = 1)
{
    QByteArray bytesTags = group("", vecTag).mid(3);  // from the flags on
    return big(3) + big(static_cast<quint32>(bytesTags.size())) + big(nOrder) + bytesTags + QByteArray(8, 0);
}

/// One child of "ImageList", with the tags that cameras put around those that matter.
inline QByteArray image(qint32 nWidth, qint32 nHeight, qint32 nDataType, const QByteArray& tagData,
                        quint32 nOrder = 1)
{
    return group(
        "",
        {group("ImageData",
               {group("Calibrations", {integer("Unit", 0)}), tagData, integer("DataType", nDataType, nOrder),
                group("Dimensions", {integer("", nWidth, nOrder), integer("", nHeight, nOrder)})}),
         array("Name", 4, 3, QByteArray("a\0b\0c\0", 6))});
}

/// The bytes of values of one type.
template <class T>
QByteArray numbers(const std::vector<double>& vecValue, quint32 nOrder)
{
    QByteArray data;
    for (double dfValue : vecValue) {
        data += number(static_cast<T>(dfValue), nOrder);
    }
    return data;
}

}  // namespace dm3

}  // namespace tessera
