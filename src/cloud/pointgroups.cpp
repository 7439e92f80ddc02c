#include "cloud/pointgroups.h"

#include <QtAlgorithms>

#include <algorithm>

namespace tessera {

int CPointGroups::s_nGroupColorIndex = -1;  // so that the first colour is number 0: nextGroupColor()
int CPointGroups::s_nGroupLabelNumber = 0;

void CPointGroups::reset(int nPointCount)
{
    m_vecSelected.assign(size_t(nPointCount), 0);
    m_listSelected.clear();
    setGroups({{QStringLiteral("Unlabeled"), {}, Qt::white}});
}

bool CPointGroups::setGroups(const QList<PointGroup>& listGroup)
{
    if (listGroup.isEmpty()) {
        return false;
    }
    m_listGroupLabel.clear();
    m_listGroupPoint.clear();
    m_listGroupBits.clear();
    m_listGroupColor.clear();
    m_listGroupVisible.clear();
    for (const PointGroup& group : listGroup) {
        putGroup(groupCount(), group);
    }
    updateGroupZero();
    return true;
}

void CPointGroups::insertGroup(int nIndex, const QString& strLabel, const QList<int>& listPoint,
                               const QColor& color)
{
    putGroup(std::clamp(nIndex, 0, groupCount()), {strLabel, listPoint, color});
    updateGroupZero();
}

void CPointGroups::putGroup(int nIndex, const PointGroup& group)
{
    // The bits also mark points that were already taken, so that repetitions are dropped.
    Bits bits((m_vecSelected.size() + 63) / 64, 0);
    QList<int> listPoint;
    listPoint.reserve(group.listPoint.size());
    for (int nPoint : group.listPoint) {
        if (nPoint < 0 || nPoint >= pointCount()) {
            continue;
        }
        quint64& nWord = bits[size_t(nPoint) / 64];
        const quint64 nBit = quint64(1) << (nPoint % 64);
        if (!(nWord & nBit)) {
            listPoint.append(nPoint);
        }
        nWord |= nBit;
    }
    m_listGroupLabel.insert(nIndex, group.strLabel);
    m_listGroupPoint.insert(nIndex, listPoint);
    m_listGroupBits.insert(nIndex, bits);
    m_listGroupColor.insert(nIndex, group.color);
    m_listGroupVisible.insert(nIndex, group.bVisible);
}

bool CPointGroups::removeGroups(const QList<int>& listGroup)
{
    if (groupCount() < 2 || listGroup.isEmpty()) {
        return false;
    }
    // From the end, so that the indices of the groups still to be removed stay valid.
    for (int i = groupCount() - 1; i > 0; --i) {
        if (listGroup.contains(i)) {
            m_listGroupLabel.removeAt(i);
            m_listGroupPoint.removeAt(i);
            m_listGroupBits.removeAt(i);
            m_listGroupColor.removeAt(i);
            m_listGroupVisible.removeAt(i);
        }
    }
    updateGroupZero();
    return true;
}

bool CPointGroups::mergeGroups(const QList<int>& listGroup)
{
    QList<int> listSorted;
    for (int i = 0; i < groupCount(); ++i) {
        if (listGroup.contains(i)) {
            listSorted.append(i);
        }
    }
    if (listSorted.size() < 2) {
        return false;
    }
    const int nFirst = listSorted.first();
    const QColor color = m_listGroupColor[nFirst];
    const QString strLabel = m_listGroupLabel[nFirst];
    std::vector<char> vecMember(m_vecSelected.size(), 0);
    for (int nGroup : listSorted) {
        for (int nPoint : m_listGroupPoint[nGroup]) {
            vecMember[nPoint] = 1;
        }
    }
    QList<int> listUnion;
    for (size_t i = 0; i < vecMember.size(); ++i) {
        if (vecMember[i]) {
            listUnion.append(int(i));
        }
    }
    // removeGroups() keeps group 0, which takes the points that no group holds any more. If group 0 is among
    // the merged groups, the new group is inserted at place 0 and moves it to place 1, where it keeps these
    // points.
    removeGroups(listSorted);
    insertGroup(nFirst, strLabel, listUnion, color);
    return true;
}

bool CPointGroups::setLabel(int nIndex, const QString& strLabel)
{
    if (nIndex < 0 || nIndex >= groupCount()) {
        return false;
    }
    m_listGroupLabel[nIndex] = strLabel;
    return true;
}

bool CPointGroups::setColor(int nIndex, const QColor& color)
{
    if (nIndex < 0 || nIndex >= groupCount()) {
        return false;
    }
    m_listGroupColor[nIndex] = color;
    return true;
}

bool CPointGroups::setVisible(int nIndex, bool bVisible)
{
    if (nIndex < 0 || nIndex >= groupCount()) {
        return false;
    }
    m_listGroupVisible[nIndex] = bVisible;
    return true;
}

void CPointGroups::clearSelection()
{
    m_listSelected.clear();
    std::fill(m_vecSelected.begin(), m_vecSelected.end(), 0);
}

void CPointGroups::select(const QList<int>& listPoint, bool bAdd)
{
    if (!bAdd) {
        clearSelection();
    }
    for (int nPoint : listPoint) {
        if (nPoint >= 0 && nPoint < pointCount()) {
            m_vecSelected[nPoint] = 1;
        }
    }
    m_listSelected.clear();
    for (int i = 0; i < pointCount(); ++i) {
        if (m_vecSelected[i]) {
            m_listSelected.append(i);
        }
    }
}

bool CPointGroups::addSelectedAsNewGroup()
{
    if (m_listSelected.isEmpty()) {
        return false;
    }
    const QColor color = nextGroupColor();
    insertGroup(groupCount(), QStringLiteral("Label%1").arg(s_nGroupLabelNumber), m_listSelected, color);
    ++s_nGroupLabelNumber;
    clearSelection();
    return true;
}

QColor CPointGroups::nextGroupColor()
{
    static const Qt::GlobalColor aColor[] = {Qt::green,   Qt::cyan,       Qt::blue,
                                             Qt::magenta, Qt::yellow,     Qt::darkCyan,
                                             Qt::gray,    Qt::darkYellow, Qt::darkMagenta};
    // Neighbours in the list look alike. So the counter goes on by two with each call, before and after its
    // use, and takes every second colour: 0, 2, 4, 6, 8, then 1, 3, 5, 7.
    ++s_nGroupColorIndex;
    const QColor color(aColor[s_nGroupColorIndex % 9]);
    ++s_nGroupColorIndex;
    return color;
}

void CPointGroups::updateGroupZero()
{
    if (groupCount() == 0) {
        return;
    }
    Bits& bits = m_listGroupBits[0];
    QList<int>& listPoint = m_listGroupPoint[0];
    listPoint.clear();
    for (size_t nWord = 0; nWord < bits.size(); ++nWord) {
        quint64 nHeld = 0;  // the points of this word that other groups hold
        for (int k = 1; k < groupCount(); ++k) {
            nHeld |= m_listGroupBits.at(k)[nWord];
        }
        // The last word has bits beyond the last point, which must stay 0.
        const size_t nCount = std::min<size_t>(64, m_vecSelected.size() - nWord * 64);
        bits[nWord] = ~nHeld & (~quint64(0) >> (64 - nCount));
        // Each turn takes the lowest bit that is set, and clears it.
        for (quint64 nRest = bits[nWord]; nRest; nRest &= nRest - 1) {
            listPoint.append(int(nWord * 64 + qCountTrailingZeroBits(nRest)));
        }
    }
}

void CPointGroups::makeDisplay(PointDisplay& display) const
{
    const size_t nPoints = m_vecSelected.size();
    display.m_pbPointVisible.assign(nPoints, 0);
    display.m_pfRed.assign(nPoints, 0.f);
    display.m_pfGreen.assign(nPoints, 0.f);
    display.m_pfBlue.assign(nPoints, 0.f);
    const auto show = [&display](size_t nPoint, int nRed, int nGreen, int nBlue) {
        display.m_pbPointVisible[nPoint] = 1;
        display.m_pfRed[nPoint] = float(nRed) / 255.f;
        display.m_pfGreen[nPoint] = float(nGreen) / 255.f;
        display.m_pfBlue[nPoint] = float(nBlue) / 255.f;
    };
    // The loop takes 64 points at a time, those of one word of bits. Group 0 is treated like the others: it
    // shares no point with them, so the mean colour of one of its points is that of group 0.
    for (size_t nWord = 0; nWord * 64 < nPoints; ++nWord) {
        int aSum[64][4] = {};  // per point: sums of red, green and blue (0 to 255), number of groups
        quint64 nShown = 0;    // the points that some shown group holds
        for (int k = 0; k < groupCount(); ++k) {
            if (!m_listGroupVisible[k]) {
                continue;
            }
            const QColor& color = m_listGroupColor[k];
            const quint64 nBits = m_listGroupBits[k][nWord];
            nShown |= nBits;
            for (quint64 nRest = nBits; nRest; nRest &= nRest - 1) {
                int* pSum = aSum[qCountTrailingZeroBits(nRest)];
                pSum[0] += color.red();
                pSum[1] += color.green();
                pSum[2] += color.blue();
                ++pSum[3];
            }
        }
        for (quint64 nRest = nShown; nRest; nRest &= nRest - 1) {
            const uint nBit = qCountTrailingZeroBits(nRest);
            const int* pSum = aSum[nBit];
            show(nWord * 64 + nBit, pSum[0] / pSum[3], pSum[1] / pSum[3], pSum[2] / pSum[3]);
        }
    }
    // Selected points last, as they are shown whatever their groups are.
    for (int nPoint : m_listSelected) {
        show(size_t(nPoint), 255, 0, 0);
    }
}

}  // namespace tessera
