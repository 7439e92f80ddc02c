// Random work states: every member of every record holds something.
#pragma once

#include "workstate/recordmembers.h"

#include <cstring>
#include <random>

namespace tessera {

/// Fills values with bits by chance: numbers that are none, infinite or −0 among them, lists that are empty.
class CStateFiller {
public:
    explicit CStateFiller(unsigned nSeed) : m_random(nSeed) {}

    template <class T>
    void fill(T& value)
    {
        if constexpr (std::is_same_v<T, bool>) {
            value = below(2) == 1;
        } else if constexpr (std::is_enum_v<T>) {
            value = T(below(2));
        } else if constexpr (std::is_integral_v<T>) {
            value = T(m_random());
        } else if constexpr (std::is_floating_point_v<T>) {
            const quint64 nBits = m_random();  // of NaNs, too
            std::memcpy(&value, &nBits, sizeof value);
            const T aSpecial[] = {T(0), -T(0), std::numeric_limits<T>::infinity(),
                                  -std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::denorm_min()};
            value = below(4) == 0 ? aSpecial[below(5)] : value;
        } else if constexpr (Members<T>::bKnown) {
            std::apply([this](auto&... member) { (this->fill(member), ...); }, Members<T>::of(value));
        } else {
            fillValue(value);
        }
    }

private:
    int below(int n) { return int(m_random() % quint64(n)); }

    template <class T, size_t N>
    void fillValue(T (&aValue)[N])
    {
        for (T& value : aValue) {
            fill(value);
        }
    }
    template <class T, size_t N>
    void fillValue(std::array<T, N>& aValue)
    {
        for (T& value : aValue) {
            fill(value);
        }
    }
    template <class T>
    auto fillValue(T& list) -> decltype(list.clear(), void())
    {
        list.clear();
        for (int i = below(4); i > 0; --i) {
            typename T::value_type value{};
            fill(value);
            list.push_back(value);
        }
    }
    template <class T>
    void fillValue(std::optional<T>& value)
    {
        value.reset();
        if (below(3) > 0) {
            fill(value.emplace());
        }
    }
    template <class T>
    void fillValue(std::shared_ptr<const T>& pValue)
    {
        const auto pNew = std::make_shared<T>();
        fill(*pNew);
        pValue = pNew;
    }
    void fillValue(QChar& ch) { ch = QChar(ushort(m_random())); }
    void fillValue(QPoint& pt)
    {
        fill(pt.rx());
        fill(pt.ry());
    }
    void fillValue(QPointF& pt)
    {
        fill(pt.rx());
        fill(pt.ry());
    }
    void fillValue(QSize& size)
    {
        fill(size.rwidth());
        fill(size.rheight());
    }
    void fillValue(QColor& color)
    {
        const double df = below(256) / 255.0;
        const QColor aColor[] = {QColor(), QColor::fromRgbF(df, 1, 0, df), QColor::fromHsvF(df, 0.3, df),
                                 QColor::fromCmykF(df, 1, 0, df), QColor::fromHslF(df, df, df)};
        color = aColor[below(5)];
    }
    void fillValue(Eigen::Matrix3d& matrix)
    {
        for (double& df : matrix.reshaped()) {
            fill(df);
        }
    }
    void fillValue(CellForm& form)
    {
        std::optional<CellConstraint> constraint;
        Eigen::Matrix3d matOrientation;
        fill(constraint);
        fill(matOrientation);
        form = CellForm(constraint, matOrientation, {});
    }

    std::mt19937_64 m_random;
};

inline WorkState randomState(unsigned nSeed)
{
    WorkState state;
    CStateFiller(nSeed).fill(state);
    return state;
}

}  // namespace tessera
