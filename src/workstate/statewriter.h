// CStateWriter: values as bytes, exact to the bit.
#pragma once

#include "workstate/recordmembers.h"

#include <QByteArray>
#include <QDataStream>
#include <QtEndian>

#include <array>
#include <cstring>
#include <limits>
#include <type_traits>

namespace tessera {

/// Serializes the values of a work state: numbers in little-endian order, a bool as one byte, an enumerator
/// as a number of four bytes, a list after its count, an optional value after a bool that tells whether it is
/// present.
class CStateWriter {
public:
    /// The bytes written so far; empty if they exceed the limit of a QByteArray (2 GB).
    QByteArray bytes() const { return m_bFits ? m_bytes.left(m_nUsed) : QByteArray(); }

    /// Appends a value: a number, an enumerator, a record with Members, or a list or optional of such.
    template <class T>
    void put(const T& value)
    {
        if constexpr (std::is_same_v<T, bool>) {
            putNumber(quint8(value ? 1 : 0));
        } else if constexpr (std::is_enum_v<T>) {
            putNumber(qint32(value));
        } else if constexpr (std::is_arithmetic_v<T>) {
            putNumber(value);
        } else if constexpr (Members<T>::bKnown) {
            std::apply([this](const auto&... member) { (this->put(member), ...); }, Members<T>::of(value));
        } else {
            putValue(value);
        }
    }

private:
    template <class T, size_t N>
    void putValue(const T (&aValue)[N])
    {
        for (const T& value : aValue) {
            put(value);
        }
    }
    template <class T, size_t N>
    void putValue(const std::array<T, N>& aValue)
    {
        for (const T& value : aValue) {
            put(value);
        }
    }
    template <class T>
    void putList(const T& list)
    {
        putNumber(quint32(list.size()));
        for (const auto& value : list) {
            put(value);
        }
    }
    template <class T>
    void putValue(const QList<T>& list)
    {
        putList(list);
    }
    template <class T>
    void putValue(const QVector<T>& list)
    {
        putList(list);
    }
    template <class T>
    void putValue(const std::vector<T>& list)
    {
        putList(list);
    }
    template <class T>
    void putValue(const std::optional<T>& value)
    {
        put(value.has_value());
        if (value) {
            put(*value);
        }
    }
    template <class T>
    void putValue(const std::shared_ptr<const T>& pValue)
    {
        put(pValue != nullptr);
        if (pValue) {
            put(*pValue);
        }
    }
    void putValue(const QString& str)
    {
        putNumber(quint32(str.size()));
        for (const QChar& ch : str) {
            putNumber(ch.unicode());
        }
    }
    void putValue(const QPoint& pt)
    {
        put(pt.x());
        put(pt.y());
    }
    void putValue(const QPointF& pt)
    {
        put(pt.x());
        put(pt.y());
    }
    void putValue(const QSize& size)
    {
        put(size.width());
        put(size.height());
    }
    void putValue(const QColor& color);
    void putValue(const Eigen::Matrix3d& matrix)
    {
        for (int n = 0; n < 9; ++n) {
            put(matrix(n / 3, n % 3));
        }
    }
    void putValue(const CellForm& form)
    {
        put(form.constraint());
        put(form.orientation());
    }

    template <class T>
    void putNumber(T number)
    {
        static_assert(std::is_arithmetic_v<T> && std::numeric_limits<double>::is_iec559);
        using Bits = std::conditional_t<
            sizeof(T) == 8, quint64,
            std::conditional_t<sizeof(T) == 4, quint32, std::conditional_t<sizeof(T) == 2, quint16, quint8>>>;
        static_assert(sizeof(Bits) == sizeof(T));
        Bits nBits = 0;
        std::memcpy(&nBits, &number, sizeof number);
        if (char* pPlace = place(int(sizeof nBits))) {
            qToLittleEndian(nBits, pPlace);
        }
    }

    /// Makes room for the next bytes; null if they do not fit.
    char* place(int nBytes)
    {
        const qint64 nMost = std::numeric_limits<int>::max() - 1024;  // Qt has a head before the bytes
        const qint64 nWanted = qint64(m_nUsed) + nBytes;
        if (nWanted > nMost) {
            m_bFits = false;
            return nullptr;
        }
        if (nWanted > m_bytes.size()) {
            m_bytes.resize(int(qMin(nMost, nWanted + nWanted / 2 + 4096)));
        }
        char* pPlace = m_bytes.data() + m_nUsed;
        m_nUsed = int(nWanted);
        return pPlace;
    }

    QByteArray m_bytes;
    int m_nUsed = 0;
    bool m_bFits = true;
};

/// Stores the colour model and its five components of 16 bits.
inline void CStateWriter::putValue(const QColor& color)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    stream << color;
    if (char* pPlace = place(bytes.size())) {
        std::memcpy(pPlace, bytes.constData(), size_t(bytes.size()));
    }
}

}  // namespace tessera
