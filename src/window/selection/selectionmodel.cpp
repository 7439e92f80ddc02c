#include "window/selection/selectionmodel.h"

#include <algorithm>
#include <iterator>

namespace tessera {

namespace {

std::vector<int> chosen(const std::vector<int>& vecBefore, std::vector<int> vecNew, SelectionModel::Way way)
{
    std::sort(vecNew.begin(), vecNew.end());
    vecNew.erase(std::unique(vecNew.begin(), vecNew.end()), vecNew.end());
    std::vector<int> vecResult;
    const auto to = std::back_inserter(vecResult);
    switch (way) {
        case SelectionModel::Way::Add:
            std::set_union(vecBefore.begin(), vecBefore.end(), vecNew.begin(), vecNew.end(), to);
            return vecResult;
        case SelectionModel::Way::Toggle:
            std::set_symmetric_difference(vecBefore.begin(), vecBefore.end(), vecNew.begin(), vecNew.end(),
                                          to);
            return vecResult;
        default:
            return vecNew;
    }
}

bool holds(const std::vector<int>& vec, int n)
{
    return std::binary_search(vec.begin(), vec.end(), n);
}

}  // namespace

void SelectionModel::choose(const std::vector<int>& vecReflection, const std::vector<int>& vecLonePeak,
                            const CurrentSpot& current, Way way, const QObject* pSource)
{
    m_vecReflection = chosen(m_vecReflection, vecReflection, way);
    m_vecLonePeak = chosen(m_vecLonePeak, vecLonePeak, way);
    m_current = current;
    const bool bThere = current.nReflection >= 0 ? holds(m_vecReflection, current.nReflection)
                                                 : holds(m_vecLonePeak, current.nPeak);
    if (!bThere) {
        m_current = {};
        if (!m_vecReflection.empty()) {
            m_current.nReflection = m_vecReflection.back();
        } else if (!m_vecLonePeak.empty()) {
            m_current.nPeak = m_vecLonePeak.back();
        }
    }
    emit changed(pSource);
}

void SelectionModel::setCurrent(const CurrentSpot& current, const QObject* pSource)
{
    m_current = current;
    emit changed(pSource);
}

void SelectionModel::clear(const QObject* pSource)
{
    m_vecReflection.clear();
    m_vecLonePeak.clear();
    m_current = {};
    emit changed(pSource);
}

}  // namespace tessera
