#include "imagefiles/mrcwriter.h"

#include "records/reason.h"

#include <QtEndian>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

namespace tessera {

namespace {

constexpr int g_nHeaderSize = 1024;

template <class T>
constexpr int modeOf()
{
    return std::is_same<T, float>::value ? 2 : std::is_same<T, short>::value ? 1 : 6;
}

void floatToBytes(float fValue, uint8_t* p)
{
    uint32_t nBits;
    std::memcpy(&nBits, &fValue, sizeof(nBits));
    qToLittleEndian(nBits, p);
}

void headerToBytes(int32_t nX, int32_t nY, int32_t nZ, int32_t nMode, uint8_t* pHeader)
{
    std::memset(pHeader, 0, g_nHeaderSize);
    const struct {
        int nOffset;
        int32_t nValue;
    } aField[] = {{0, nX},  {4, nY},  {8, nZ}, {12, nMode}, {28, nX},
                  {32, nY}, {36, nZ}, {64, 1}, {68, 2},     {72, 3}};
    for (const auto& field : aField) {
        qToLittleEndian(field.nValue, pHeader + field.nOffset);
    }
    floatToBytes(static_cast<float>(nX), pHeader + 40);  // the cell, one unit per pixel
    floatToBytes(static_cast<float>(nY), pHeader + 44);
    floatToBytes(static_cast<float>(nZ), pHeader + 48);
    pHeader[212] = 0x44;  // machine stamp: little-endian
    pHeader[213] = 0x41;
}

/// Writes the fields of the notes, as in the format of 2014.
void notesToBytes(const MrcNotes& notes, const int32_t (&anSize)[3], uint8_t* pHeader)
{
    const int nVersion = 20140;
    const int nMostLabels = 10, nLabelSize = 80;
    qToLittleEndian(int32_t(notes.nStartX), pHeader + 16);
    qToLittleEndian(int32_t(notes.nStartY), pHeader + 20);
    for (int n = 0; n < 3; ++n) {
        floatToBytes(float(anSize[n] * notes.dfPixelSize), pHeader + 40 + 4 * n);
        floatToBytes(90.f, pHeader + 52 + 4 * n);
    }
    floatToBytes(notes.fMinimum, pHeader + 76);
    floatToBytes(notes.fMaximum, pHeader + 80);
    floatToBytes(notes.fMean, pHeader + 84);
    qToLittleEndian(int32_t(nVersion), pHeader + 108);
    std::copy_n("MAP ", 4, pHeader + 208);
    floatToBytes(notes.fDeviation, pHeader + 216);
    const int nLabels = std::min(int(notes.listLabel.size()), nMostLabels);
    qToLittleEndian(int32_t(nLabels), pHeader + 220);
    for (int n = 0; n < nLabels; ++n) {
        const QByteArray bytes = notes.listLabel[n].toLatin1().left(nLabelSize).leftJustified(nLabelSize);
        std::memcpy(pHeader + 224 + nLabelSize * n, bytes.constData(), size_t(nLabelSize));
    }
}

}  // namespace

template <class T>
bool CMrcWriter<T>::open(const QString& strFileName, int nX, int nY, int nZ, const MrcNotes* pNotes)
{
    m_nX = nX;
    m_nY = nY;
    m_nMissing = nZ;
    m_pMirrored.reset(new (std::nothrow) T[static_cast<size_t>(nX) * static_cast<size_t>(nY)]);
    if (!m_file.open(strFileName) || !m_pMirrored) {
        return false;
    }
    uint8_t aHeader[g_nHeaderSize];
    headerToBytes(nX, nY, nZ, modeOf<T>(), aHeader);
    if (pNotes) {
        notesToBytes(*pNotes, {nX, nY, nZ}, aHeader);
    }
    return m_bOk = m_file.write(aHeader, g_nHeaderSize);
}

template <class T>
bool CMrcWriter<T>::addSection(const T* pData)
{
    if (!m_bOk) {
        return false;
    }
    const size_t nRow = static_cast<size_t>(m_nX);
    T* pRow = m_pMirrored.get();
    for (int y = m_nY - 1; y >= 0; --y, pRow += nRow) {
        const T* pSource = pData + static_cast<size_t>(y) * nRow;
        if constexpr (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
            std::memcpy(pRow, pSource, nRow * sizeof(T));
        } else {
            qToLittleEndian<T>(pSource, m_nX, pRow);
        }
    }
    const qint64 nBytes = static_cast<qint64>(m_nX) * m_nY * static_cast<qint64>(sizeof(T));
    --m_nMissing;
    return m_bOk = m_file.write(m_pMirrored.get(), nBytes);
}

template <class T>
bool CMrcWriter<T>::commit(QString* pstrReason)
{
    if (m_bOk && m_nMissing == 0) {
        return m_file.commit(pstrReason);
    }
    if (!m_file.reason().isEmpty()) {
        return giveReason(pstrReason, m_file.reason());
    }
    return giveReason(pstrReason, m_file.fileName(), QStringLiteral("the sections are not all there"));
}

template class CMrcWriter<float>;
template class CMrcWriter<short>;
template class CMrcWriter<unsigned short>;

}  // namespace tessera
