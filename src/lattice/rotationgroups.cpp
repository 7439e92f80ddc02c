#include "lattice/rotationgroups.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <numeric>

namespace tessera {

namespace {

constexpr size_t g_nMostOperations = 24;

using Key = std::array<int, 9>;

Key keyOf(const Eigen::Matrix3i& matOperation)
{
    Key key;
    std::copy(matOperation.data(), matOperation.data() + key.size(), key.begin());
    return key;
}

bool contains(const std::vector<Eigen::Matrix3i>& listOperation, const Eigen::Matrix3i& matOperation)
{
    return std::find(listOperation.begin(), listOperation.end(), matOperation) != listOperation.end();
}

/// The group that matrices generate; empty where it would be larger than that of any lattice.
std::vector<Eigen::Matrix3i> generated(const std::vector<Eigen::Matrix3i>& listGenerator)
{
    std::vector<Eigen::Matrix3i> list = {Eigen::Matrix3i::Identity()};
    for (size_t n = 0; n < list.size(); ++n) {
        for (const Eigen::Matrix3i& matGenerator : listGenerator) {
            const Eigen::Matrix3i matProduct = list[n] * matGenerator;
            if (contains(list, matProduct)) {
                continue;
            }
            if (list.size() == g_nMostOperations || orderOf(matProduct) == 0) {
                return {};
            }
            list.push_back(matProduct);
        }
    }
    return list;
}

class CGroupCollector {
public:
    explicit CGroupCollector(const std::vector<TwofoldAxis>& listAxis)
    {
        for (const TwofoldAxis& axis : listAxis) {
            m_mapObliquity[keyOf(axis.matOperation)] = axis.dfObliquity;
        }
    }

    /// Keeps a group unless it is known already, is infinite, or has a twofold axis that is not in the
    /// list.
    void add(const std::vector<Eigen::Matrix3i>& listGenerator)
    {
        RotationGroup group{generated(listGenerator), 0};
        std::vector<Key> listKey;
        for (const Eigen::Matrix3i& matOperation : group.listOperation) {
            const Key key = keyOf(matOperation);
            listKey.push_back(key);
            if (orderOf(matOperation) == 2) {
                const auto it = m_mapObliquity.find(key);
                if (it == m_mapObliquity.end()) {
                    return;
                }
                group.dfObliquity = std::max(group.dfObliquity, it->second);
            }
        }
        std::sort(listKey.begin(), listKey.end());
        if (!listKey.empty()) {
            m_mapGroup.emplace(std::make_pair(listKey.size(), listKey), group);
        }
    }

    std::vector<RotationGroup> groups() const
    {
        std::vector<RotationGroup> list;
        for (const auto& entry : m_mapGroup) {
            list.push_back(entry.second);
        }
        return list;
    }

private:
    std::map<Key, double> m_mapObliquity;
    std::map<std::pair<size_t, std::vector<Key>>, RotationGroup> m_mapGroup;
};

}  // namespace

int orderOf(const Eigen::Matrix3i& matOperation)
{
    if (matOperation == Eigen::Matrix3i::Identity()) {
        return 1;
    }
    // The trace of a rotation is 1 + 2 cos of its angle.
    const std::array<int, 4> aOrderOfTrace = {2, 3, 4, 6};  // for the traces −1, 0, 1, 2
    const int nTrace = matOperation.trace();
    if (nTrace < -1 || nTrace > 2) {
        return 0;
    }
    const int nOrder = aOrderOfTrace[nTrace + 1];
    Eigen::Matrix3i matPower = matOperation;
    for (int n = 1; n < nOrder; ++n) {
        matPower = matPower * matOperation;
    }
    return matPower == Eigen::Matrix3i::Identity() ? nOrder : 0;  // a shear can have the same trace
}

Eigen::Vector3i axisOf(const Eigen::Matrix3i& matOperation)
{
    // The sum of all powers projects onto the axis, so each of its columns that is not zero is along the
    // axis.
    Eigen::Matrix3i matSum = Eigen::Matrix3i::Identity();
    Eigen::Matrix3i matPower = matOperation;
    for (int n = 1; n < orderOf(matOperation); ++n) {
        matSum += matPower;
        matPower = matPower * matOperation;
    }
    for (int n = 0; n < 3; ++n) {
        const Eigen::Vector3i axis = matSum.col(n);
        const int nDivisor = std::gcd(std::gcd(axis.x(), axis.y()), axis.z());
        if (nDivisor != 0) {
            return axis / nDivisor;
        }
    }
    return Eigen::Vector3i::Zero();
}

std::vector<RotationGroup> rotationGroups(const std::vector<TwofoldAxis>& listAxis)
{
    CGroupCollector collector(listAxis);
    collector.add({Eigen::Matrix3i::Identity()});
    for (auto it = listAxis.begin(); it != listAxis.end(); ++it) {
        for (auto itOther = it; itOther != listAxis.end(); ++itOther) {
            if (orderOf(it->matOperation * itOther->matOperation) != 0) {
                collector.add({it->matOperation, itOther->matOperation});
            }
        }
    }
    // Two twofold axes generate every group with one main axis. Only 432 needs a third one.
    const size_t nTetragonal = 8;
    for (const RotationGroup& group : collector.groups()) {
        for (const TwofoldAxis& axis : listAxis) {
            if (group.listOperation.size() == nTetragonal &&
                !contains(group.listOperation, axis.matOperation)) {
                std::vector<Eigen::Matrix3i> listGenerator = group.listOperation;
                listGenerator.push_back(axis.matOperation);
                collector.add(listGenerator);
            }
        }
    }
    return collector.groups();
}

}  // namespace tessera
