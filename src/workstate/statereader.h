// CStateReader: reads values from bytes that may be damaged or hostile.
#pragma once

#include "workstate/recordmembers.h"

#include <QByteArray>
#include <QDataStream>
#include <QtEndian>

#include <array>
#include <cstring>
#include <type_traits>

namespace tessera {

/// Reads what CStateWriter wrote. Each count is checked against the number of bytes that remain before memory
/// is allocated, so that memory stays within a few times the size of the input, whatever the input says.
/// After the first value that is missing or invalid, nothing more is read.
class CStateReader {
public:
    /// @param bytes  must outlive the reader
    explicit CStateReader(const QByteArray& bytes) : m_pNext(bytes.constData()), m_nLeft(size_t(bytes.size()))
    {}

    /// Whether all values so far were present and valid.
    bool isGood() const { return m_bGood; }
    /// Whether, moreover, no bytes remain.
    bool isWhole() const { return m_bGood && m_nLeft == 0; }

    /// Reads a value: a number, an enumerator, a record with Members, or a list or optional of such.
    /// @param value  has an unspecified value if the reader is not good afterwards
    template <class T>
    void take(T& value)
    {
        if constexpr (std::is_same_v<T, bool>) {
            quint8 nValue = 0;
            takeNumber(nValue);
            m_bGood = m_bGood && nValue <= 1;
            value = nValue == 1;
        } else if constexpr (std::is_enum_v<T>) {
            qint32 nValue = 0;
            takeNumber(nValue);
            takeEnumerator(nValue, value);
        } else if constexpr (std::is_arithmetic_v<T>) {
            takeNumber(value);
        } else if constexpr (Members<T>::bKnown) {
            std::apply([this](auto&... member) { (this->take(member), ...); }, Members<T>::of(value));
        } else {
            takeValue(value);
        }
    }

private:
    template <class... T>
    static constexpr size_t sumOfLeast(const std::tuple<T&...>*)
    {
        return (leastBytes<T>() + ... + 0);
    }
    /// The smallest number of bytes that a value can occupy.
    template <class T>
    static constexpr size_t leastBytes()
    {
        if constexpr (std::is_same_v<T, bool>) {
            return 1;
        } else if constexpr (std::is_enum_v<T>) {
            return 4;
        } else if constexpr (std::is_arithmetic_v<T>) {
            return sizeof(T);
        } else if constexpr (Members<T>::bKnown) {
            using Tuple = decltype(Members<T>::of(std::declval<T&>()));
            return sumOfLeast(static_cast<Tuple*>(nullptr));
        } else {
            return leastOf(static_cast<T*>(nullptr));
        }
    }
    template <class T, size_t N>
    static constexpr size_t leastOf(T (*)[N])
    {
        return N * leastBytes<T>();
    }
    template <class T, size_t N>
    static constexpr size_t leastOf(std::array<T, N>*)
    {
        return N * leastBytes<T>();
    }
    static constexpr size_t leastOf(QPoint*) { return 8; }
    static constexpr size_t leastOf(QPointF*) { return 16; }
    static constexpr size_t leastOf(QSize*) { return 8; }
    static constexpr size_t leastOf(QColor*) { return g_nColorBytes; }
    static constexpr size_t leastOf(Eigen::Matrix3d*) { return 9 * sizeof(double); }
    static constexpr size_t leastOf(void*) { return 1; }  // at the very least

    template <class T, size_t N>
    void takeValue(T (&aValue)[N])
    {
        for (T& value : aValue) {
            take(value);
        }
    }
    template <class T, size_t N>
    void takeValue(std::array<T, N>& aValue)
    {
        for (T& value : aValue) {
            take(value);
        }
    }
    template <class T>
    void takeValue(QList<T>& list)
    {
        list.clear();
        const size_t nCount = takeCount(leastBytes<T>());
        list.reserve(int(nCount));
        for (size_t i = 0; i < nCount && m_bGood; ++i) {
            T value{};
            take(value);
            list.append(value);
        }
    }
    template <class T>
    void takeArray(T& list)
    {
        list.clear();
        const size_t nCount = takeCount(leastBytes<typename T::value_type>());
        list.resize(static_cast<decltype(list.size())>(nCount));
        for (auto it = list.begin(); it != list.end() && m_bGood; ++it) {
            take(*it);
        }
    }
    template <class T>
    void takeValue(QVector<T>& list)
    {
        takeArray(list);
    }
    template <class T>
    void takeValue(std::vector<T>& list)
    {
        takeArray(list);
    }
    template <class T>
    void takeValue(std::optional<T>& value)
    {
        bool bThere = false;
        take(bThere);
        value.reset();
        if (bThere && m_bGood) {
            take(value.emplace());
        }
    }
    template <class T>
    void takeValue(std::shared_ptr<const T>& pValue)
    {
        bool bThere = false;
        take(bThere);
        pValue.reset();
        if (bThere && m_bGood) {
            const auto pNew = std::make_shared<T>();
            take(*pNew);
            pValue = pNew;
        }
    }
    void takeValue(QString& str)
    {
        str.resize(int(takeCount(sizeof(quint16))));
        for (QChar& ch : str) {
            ushort nUnit = 0;
            takeNumber(nUnit);
            ch = QChar(nUnit);
        }
    }
    void takeValue(QPoint& pt)
    {
        take(pt.rx());
        take(pt.ry());
    }
    void takeValue(QPointF& pt)
    {
        take(pt.rx());
        take(pt.ry());
    }
    void takeValue(QSize& size)
    {
        take(size.rwidth());
        take(size.rheight());
    }
    void takeValue(QColor& color)
    {
        const char* pBytes = taken(g_nColorBytes);
        m_bGood = pBytes && *pBytes >= 0 && *pBytes <= QColor::ExtendedRgb;
        if (m_bGood) {
            QDataStream stream(QByteArray::fromRawData(pBytes, int(g_nColorBytes)));
            stream.setVersion(QDataStream::Qt_5_15);
            stream >> color;
        }
    }
    void takeValue(Eigen::Matrix3d& matrix)
    {
        for (int n = 0; n < 9; ++n) {
            take(matrix(n / 3, n % 3));
        }
    }
    void takeValue(CellForm& form)
    {
        std::optional<CellConstraint> constraint;
        Eigen::Matrix3d matOrientation = Eigen::Matrix3d::Identity();
        take(constraint);
        take(matOrientation);
        form = CellForm(constraint, matOrientation, {});
    }

    void takeEnumerator(qint32 nValue, Qt::FillRule& rule)
    {
        m_bGood = m_bGood && (nValue == Qt::OddEvenFill || nValue == Qt::WindingFill);
        rule = nValue == Qt::WindingFill ? Qt::WindingFill : Qt::OddEvenFill;
    }
    template <class T>
    void takeEnumerator(qint32 nValue, T& value)
    {
        m_bGood = m_bGood && isKnown(T(nValue));
        value = m_bGood ? T(nValue) : T();
    }

    template <class T>
    void takeNumber(T& number)
    {
        using Bits = std::conditional_t<
            sizeof(T) == 8, quint64,
            std::conditional_t<sizeof(T) == 4, quint32, std::conditional_t<sizeof(T) == 2, quint16, quint8>>>;
        static_assert(sizeof(Bits) == sizeof(T));
        if (const char* pBytes = taken(sizeof(Bits))) {
            const Bits nBits = qFromLittleEndian<Bits>(pBytes);
            std::memcpy(&number, &nBits, sizeof number);
        }
    }
    /// Reads the count of a list; 0 if so many values, of at least nLeast bytes each, cannot remain.
    size_t takeCount(size_t nLeast)
    {
        quint32 nCount = 0;
        takeNumber(nCount);
        m_bGood = m_bGood && nCount <= m_nLeft / nLeast;
        return m_bGood ? nCount : 0;
    }
    /// The next nBytes bytes; null if fewer remain.
    const char* taken(size_t nBytes)
    {
        m_bGood = m_bGood && nBytes <= m_nLeft;
        if (!m_bGood) {
            return nullptr;
        }
        const char* pTaken = m_pNext;
        m_pNext += nBytes;
        m_nLeft -= nBytes;
        return pTaken;
    }

    static constexpr size_t g_nColorBytes = 11;

    const char* m_pNext;
    size_t m_nLeft;
    bool m_bGood = true;
};

}  // namespace tessera
