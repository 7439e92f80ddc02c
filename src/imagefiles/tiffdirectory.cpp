#include "imagefiles/tiffdirectory.h"

#include "records/regularfile.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>

namespace tessera {

namespace {

constexpr uint64_t g_nMostText = uint64_t(1) << 20;
constexpr uint64_t g_nMostEntries = 65535;  ///< in a classic file, which counts them with two bytes

/// The types of values by their numbers in the file.
enum : uint16_t {
    BYTE = 1,
    ASCII,
    SHORT,
    LONG,
    RATIONAL,
    SBYTE,
    UNDEFINED,
    SSHORT,
    SLONG,
    SRATIONAL,
    FLOAT,
    DOUBLE,
    IFD,
    LONG8 = 16,
    SLONG8,
    IFD8
};

/// The bytes of a value; 0 for an unknown type.
uint64_t sizeOfType(uint16_t nType)
{
    const uint8_t anSize[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return nType < std::size(anSize) ? anSize[nType] : 0;
}

bool isWhole(uint16_t nType)
{
    return nType == BYTE || nType == SHORT || nType == LONG || nType == IFD || nType == LONG8 ||
           nType == IFD8;
}

template <class TFloat, class TBits>
double floatOf(TBits nBits)
{
    TFloat value;
    static_assert(sizeof(value) == sizeof(nBits));
    std::memcpy(&value, &nBits, sizeof(value));
    return double(value);
}

}  // namespace

const TiffEntry* TiffDirectory::find(TiffTag tag) const
{
    const auto it = std::find_if(vecEntry.begin(), vecEntry.end(),
                                 [&](const TiffEntry& entry) { return entry.nTag == uint16_t(tag); });
    return it != vecEntry.end() ? &*it : nullptr;
}

bool CTiffBytes::open(QString& strReason)
{
    if (!openRegularFile(m_file, QIODevice::ReadOnly | QIODevice::Unbuffered, strReason)) {
        return false;
    }
    m_nSize = uint64_t(std::max(m_file.size(), qint64(0)));
    const QByteArray head = bytesAt(0, 8);
    m_bBigEndian = head.startsWith("MM");
    const uint64_t nMagic = head.isEmpty() ? 0 : number(head.constData() + 2, 2);
    m_bBigTiff = nMagic == 43;
    if (!(m_bBigEndian || head.startsWith("II")) || !(nMagic == 42 || m_bBigTiff)) {
        strReason = head.isEmpty() ? QStringLiteral("truncated: %1 of 8 header bytes").arg(m_nSize)
                                   : QStringLiteral("not a TIFF file");
        return false;
    }
    m_nFirst = number(head.constData() + 4, 4);
    if (m_bBigTiff) {
        const QByteArray place = bytesAt(8, 8);
        if (place.isEmpty() || number(head.constData() + 4, 2) != 8) {
            strReason = place.isEmpty() ? QStringLiteral("truncated: %1 of 16 header bytes").arg(m_nSize)
                                        : QStringLiteral("BigTIFF with offsets of other than 8 bytes");
            return false;
        }
        m_nFirst = number(place.constData(), 8);
    }
    return true;
}

bool CTiffBytes::read(uint64_t nPlace, uint64_t nBytes, uint8_t* p)
{
    return nPlace <= m_nSize && nBytes <= m_nSize - nPlace && m_file.seek(qint64(nPlace)) &&
           m_file.read(reinterpret_cast<char*>(p), qint64(nBytes)) == qint64(nBytes);
}

QByteArray CTiffBytes::bytesAt(uint64_t nPlace, uint64_t nBytes)
{
    if (nPlace > m_nSize || nBytes > m_nSize - nPlace ||
        nBytes > uint64_t(std::numeric_limits<int>::max() / 2)) {
        return {};
    }
    QByteArray bytes(int(nBytes), Qt::Uninitialized);
    return read(nPlace, nBytes, reinterpret_cast<uint8_t*>(bytes.data())) ? bytes : QByteArray();
}

uint64_t CTiffBytes::number(const char* p, int nBytes) const
{
    switch (nBytes) {
        case 1:
            return uint8_t(*p);
        case 2:
            return m_bBigEndian ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
        case 4:
            return m_bBigEndian ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
        default:
            return m_bBigEndian ? qFromBigEndian<quint64>(p) : qFromLittleEndian<quint64>(p);
    }
}

std::optional<TiffDirectory> CTiffBytes::directory(uint64_t nPlace)
{
    const uint64_t nCountSize = m_bBigTiff ? 8 : 2, nEntrySize = m_bBigTiff ? 20 : 12,
                   nWord = m_bBigTiff ? 8 : 4;
    if (nPlace < 8 || nPlace >= m_nSize) {
        return std::nullopt;
    }
    // A directory of usual length is read at once.
    QByteArray bytes = bytesAt(nPlace, std::min(uint64_t(512), m_nSize - nPlace));
    if (uint64_t(bytes.size()) < nCountSize) {
        return std::nullopt;
    }
    const uint64_t nEntries = number(bytes.constData(), int(nCountSize));
    if (nEntries == 0 || nEntries > g_nMostEntries) {
        return std::nullopt;
    }
    const uint64_t nSize = nCountSize + nEntries * nEntrySize + nWord;
    if (uint64_t(bytes.size()) < nSize) {
        bytes = bytesAt(nPlace, nSize);
        if (bytes.isEmpty()) {
            return std::nullopt;
        }
    }
    TiffDirectory directory;
    directory.nPlace = nPlace;
    directory.nBytes = nSize;
    directory.nNext = number(bytes.constData() + nSize - nWord, int(nWord));
    directory.vecEntry.reserve(nEntries);
    for (uint64_t i = 0; i < nEntries; ++i) {
        const uint64_t nAt = nCountSize + i * nEntrySize;
        const char* const p = bytes.constData() + nAt;
        TiffEntry entry = {};
        entry.nTag = uint16_t(number(p, 2));
        entry.nType = uint16_t(number(p + 2, 2));
        entry.nCount = number(p + 4, int(nWord));
        entry.nPlace = nPlace + nAt + 4 + nWord;
        const uint64_t nType = sizeOfType(entry.nType);
        if (nType == 0 || entry.nCount == 0 || entry.nCount > m_nSize / nType) {
            continue;
        }
        entry.bInside = entry.nCount * nType <= nWord;
        if (entry.bInside) {
            std::memcpy(entry.aValue.data(), p + 4 + nWord, nWord);
        } else {
            entry.nPlace = number(p + 4 + nWord, int(nWord));
        }
        if (entry.nPlace <= m_nSize && entry.nCount * nType <= m_nSize - entry.nPlace) {
            directory.vecEntry.push_back(entry);
        }
    }
    return directory;
}

QByteArray CTiffBytes::valueBytes(const TiffEntry& entry, uint64_t nBytes)
{
    return entry.bInside ? QByteArray(entry.aValue.data(), int(nBytes)) : bytesAt(entry.nPlace, nBytes);
}

std::vector<uint64_t> CTiffBytes::wholeNumbers(const TiffEntry* pEntry, uint64_t nMost)
{
    std::vector<uint64_t> vecNumber;
    if (!pEntry || !isWhole(pEntry->nType)) {
        return vecNumber;
    }
    const uint64_t nType = sizeOfType(pEntry->nType), nCount = std::min(nMost, pEntry->nCount);
    const QByteArray bytes = valueBytes(*pEntry, nCount * nType);
    vecNumber.reserve(uint64_t(bytes.size()) / nType);
    for (int n = 0; n < bytes.size(); n += int(nType)) {
        vecNumber.push_back(number(bytes.constData() + n, int(nType)));
    }
    return vecNumber;
}

uint64_t CTiffBytes::wholeNumber(const TiffDirectory& directory, TiffTag tag, uint64_t nDefault)
{
    const std::vector<uint64_t> vecNumber = wholeNumbers(directory.find(tag), 1);
    return vecNumber.empty() ? nDefault : vecNumber.front();
}

double CTiffBytes::real(const TiffDirectory& directory, TiffTag tag)
{
    const TiffEntry* const pEntry = directory.find(tag);
    const QByteArray bytes = pEntry ? valueBytes(*pEntry, sizeOfType(pEntry->nType)) : QByteArray();
    if (bytes.isEmpty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const char* const p = bytes.constData();
    switch (pEntry->nType) {
        case FLOAT:
            return floatOf<float>(uint32_t(number(p, 4)));
        case DOUBLE:
            return floatOf<double>(number(p, 8));
        case RATIONAL:
            return double(number(p, 4)) / double(number(p + 4, 4));
        case SRATIONAL:
            return double(int32_t(number(p, 4))) / double(int32_t(number(p + 4, 4)));
        default:
            return isWhole(pEntry->nType) ? double(number(p, bytes.size()))
                                          : std::numeric_limits<double>::quiet_NaN();
    }
}

QByteArray CTiffBytes::text(const TiffDirectory& directory, TiffTag tag)
{
    const TiffEntry* const pEntry = directory.find(tag);
    if (!pEntry || sizeOfType(pEntry->nType) != 1) {
        return {};
    }
    const QByteArray bytes = valueBytes(*pEntry, std::min(pEntry->nCount, g_nMostText));
    return bytes.left(int(qstrnlen(bytes.constData(), uint(bytes.size()))));
}

}  // namespace tessera
