// TIFF files byte by byte, in either byte order and with either size of offsets.
#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace tessera {

class CTiffBuilder {
public:
    explicit CTiffBuilder(bool bBigEndian = false, bool bBigTiff = false)
        : m_bBigEndian(bBigEndian), m_bBig(bBigTiff)
    {
        m_bytes = bBigEndian ? "MM" : "II";
        m_bytes += number(bBigTiff ? 43 : 42, 2) + (bBigTiff ? number(8, 2) + number(0, 2) : QByteArray());
        m_nLink = m_bytes.size();
        m_bytes += number(0, word());
    }
    QByteArray number(quint64 n, int nBytes) const
    {
        QByteArray bytes;
        for (int i = 0; i < nBytes; ++i) {
            bytes += char(n >> 8 * (m_bBigEndian ? nBytes - 1 - i : i));
        }
        return bytes;
    }
    /// Any element in the file's byte order.
    template <class T>
    QByteArray element(T value) const
    {
        quint64 n = 0;
        std::memcpy(&n, &value, sizeof(T));  // tests run on little-endian machines
        return number(n, int(sizeof(T)));
    }
    /// Appends bytes and gives their place.
    quint64 add(const QByteArray& bytes)
    {
        m_bytes += bytes;
        return quint64(m_bytes.size() - bytes.size());
    }
    /// A tag of words, of shorts, and of text.
    void tag(int nTag, const std::vector<quint64>& vecWord, int nType = 4)
    {
        const int nSize = nType == 3 ? 2 : nType == 12 || nType == 16 ? 8 : 4;
        QByteArray bytes;
        for (quint64 n : vecWord) {
            bytes += number(n, nSize);
        }
        // a rational has two words
        m_vecTag.push_back({nTag, nType, quint64(nType == 5 ? vecWord.size() / 2 : vecWord.size()), bytes});
    }
    void text(int nTag, const QByteArray& bytes)
    {
        m_vecTag.push_back({nTag, 2, quint64(bytes.size() + 1), bytes + '\0'});
    }
    /// The tags that every page has; other tags of before are kept.
    void page(int nWidth, int nHeight, int nBits, int nFormat, const std::vector<quint64>& vecPlace,
              quint64 nStripBytes, int nRowsPerStrip, int nPhotometric = 1)
    {
        tag(256, {quint64(nWidth)});
        tag(257, {quint64(nHeight)});
        tag(258, {quint64(nBits)}, 3);
        tag(262, {quint64(nPhotometric)}, 3);
        tag(273, vecPlace, m_bBig ? 16 : 4);
        tag(278, {quint64(nRowsPerStrip)});
        tag(279, std::vector<quint64>(vecPlace.size(), nStripBytes));
        tag(339, {quint64(nFormat)}, 3);
    }
    /// Writes the directory of the tags since the last one, behind which the next one is linked.
    /// @param nNext  where it leads to meanwhile
    quint64 directory(quint64 nNext = 0)
    {
        std::stable_sort(m_vecTag.begin(), m_vecTag.end(),
                         [](const Tag& a, const Tag& b) { return a.nTag < b.nTag; });
        std::vector<QByteArray> vecEntry;
        for (const Tag& t : m_vecTag) {
            QByteArray value = t.bytes;
            if (value.size() > word()) {
                value = number(add(value), word());
            }
            vecEntry.push_back(number(quint64(t.nTag), 2) + number(quint64(t.nType), 2) +
                               number(t.nCount, word()) + value.leftJustified(word(), '\0'));
        }
        QByteArray bytes = number(vecEntry.size(), m_bBig ? 8 : 2);
        for (const QByteArray& entry : vecEntry) {
            bytes += entry;
        }
        const quint64 nPlace = add(bytes + number(nNext, word()));
        m_bytes.replace(m_nLink, word(), number(nPlace, word()));
        m_nLink = m_bytes.size() - word();
        m_vecTag.clear();
        return nPlace;
    }
    const QByteArray& bytes() const { return m_bytes; }

private:
    struct Tag {
        int nTag, nType;
        quint64 nCount;
        QByteArray bytes;
    };
    int word() const { return m_bBig ? 8 : 4; }
    bool m_bBigEndian, m_bBig;
    QByteArray m_bytes;
    int m_nLink;
    std::vector<Tag> m_vecTag;
};

}  // namespace tessera
