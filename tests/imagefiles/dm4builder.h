// Builds DM4 files byte by byte, sound and broken ones.
#pragma once

#include "tests/imagefiles/dm3builder.h"

#include <QString>

namespace tessera {

namespace dm4 {

inline QByteArray big(quint64 n)
{
    QByteArray bytes(8, 0);
    qToBigEndian(n, bytes.data());
    return bytes;
}

inline QByteArray tag(char chKind, const QByteArray& strLabel, const QByteArray& body)
{
    return chKind + dm3::label(strLabel) + big(quint64(body.size())) + body;
}

inline QByteArray group(const QByteArray& strLabel, const std::vector<QByteArray>& vecChild)
{
    QByteArray body = QByteArray("\1\0", 2) + big(vecChild.size());
    for (const QByteArray& child : vecChild) {
        body += child;
    }
    return tag('\x14', strLabel, body);
}

inline QByteArray entry(const QByteArray& strLabel, const std::vector<quint64>& vecInfo,
                        const QByteArray& data)
{
    QByteArray body = "%%%%" + big(vecInfo.size());
    for (quint64 nWord : vecInfo) {
        body += big(nWord);
    }
    return tag('\x15', strLabel, body + data);
}

inline QByteArray integer(const QByteArray& strLabel, quint32 nValue, quint32 nOrder = 1)
{
    return entry(strLabel, {5}, dm3::number(nValue, nOrder));
}

inline QByteArray real(const QByteArray& strLabel, double dfValue, quint32 nOrder = 1)
{
    return entry(strLabel, {7}, dm3::number(dfValue, nOrder));
}

inline QByteArray text(const QByteArray& strLabel, const QString& str, quint32 nOrder = 1)
{
    QByteArray bytes;
    for (const QChar c : str) {
        bytes += dm3::number(c.unicode(), nOrder);
    }
    return entry(strLabel, {20, 4, quint64(str.size())}, bytes);
}

inline QByteArray array(quint64 nType, quint64 nCount, const QByteArray& data)
{
    return entry("Data", {20, nType, nCount}, data);
}

inline QByteArray file(const std::vector<QByteArray>& vecTag, quint32 nOrder = 1)
{
    const QByteArray bytes = dm3::big(nOrder) + group("", vecTag).mid(11) + QByteArray(8, 0);
    return dm3::big(4) + big(quint64(bytes.size() - 12)) + bytes;
}

/// One child of "ImageList"; the tags after the dimensions belong to its "ImageTags".
inline QByteArray image(const std::vector<quint32>& vecSize, quint32 nDataType, const QByteArray& tagData,
                        quint32 nOrder = 1, const std::vector<QByteArray>& vecTag = {},
                        const std::vector<QByteArray>& vecCalibration = {})
{
    std::vector<QByteArray> vecDimension;
    for (quint32 nSize : vecSize) {
        vecDimension.push_back(integer("", nSize, nOrder));
    }
    return group(
        "", {group("ImageData", {group("Calibrations", vecCalibration), tagData,
                                 integer("DataType", nDataType, nOrder), group("Dimensions", vecDimension)}),
             group("ImageTags", vecTag), text("Name", "abc", nOrder)});
}

}  // namespace dm4

}  // namespace tessera
