// CPointGroups: the named, coloured groups of a cloud of points, and the selection.
#pragma once

#include <QColor>
#include <QList>
#include <QStringList>

#include <vector>

namespace tessera {

/// What the groups and the selection make of each point.
struct PointDisplay {
    std::vector<char> m_pbPointVisible;               ///< 1 where drawn
    std::vector<float> m_pfRed, m_pfGreen, m_pfBlue;  ///< 0 to 1
};

/// A group as it is handed over.
struct PointGroup {
    QString strLabel;      ///< its name in tables
    QList<int> listPoint;  ///< point indices
    QColor color;          ///< of its points
    bool bVisible = true;  ///< its points are drawn
};

/// Groups of point indices with label, colour and visibility, and the selected indices.
///
/// Group 0 is "Unlabeled" and holds every point that no other group holds; each change of the others keeps
/// it so. A point may stand in several other groups. Indices of points that don't exist, and second
/// mentions within one group, are dropped.
class CPointGroups {
public:
    /// Group 0 alone, white and shown, with all points; nothing selected.
    void reset(int nPointCount);
    int pointCount() const { return int(m_vecSelected.size()); }  ///< of the cloud
    int groupCount() const { return m_listGroupLabel.size(); }    ///< with group 0

    /// Replaces all groups at once, in a fraction of the time that one after the other would take. The first
    /// becomes group 0, whatever its points. The selection stays. False, and nothing done, for an empty list.
    bool setGroups(const QList<PointGroup>& listGroup);
    /// Inserts a shown group before nIndex (below 0 as 0, past the end at the end).
    void insertGroup(int nIndex, const QString& strLabel, const QList<int>& listPoint, const QColor& color);
    /// Removes the given groups but group 0. False, and nothing done, with no group beside group 0 or an
    /// empty list.
    bool removeGroups(const QList<int>& listGroup);
    /// Unites the given groups under label, colour and place of the one with the least index. With group 0
    /// among them a new group is put ahead of it under its name. False, and nothing done, with fewer than
    /// two.
    bool mergeGroups(const QList<int>& listGroup);
    /// Name of a group; false for a bad index.
    bool setLabel(int nIndex, const QString& strLabel);
    bool setColor(int nIndex, const QColor& color);  ///< colour of a group; false for a bad index
    bool setVisible(int nIndex, bool bVisible);      ///< shows or hides its points; false for a bad index

    void clearSelection();  ///< selects no point
    /// Selects the given points in place of, or with bAdd beside, those selected.
    void select(const QList<int>& listPoint, bool bAdd);
    /// The selection becomes the last group, under the next label and colour, and ends. False with nothing
    /// selected, which uses up neither.
    bool addSelectedAsNewGroup();
    /// The colour of the next new group. Counted for as long as the program runs, over all clouds.
    static QColor nextGroupColor();

    /// Visibility and colour of all points: of points in groups beside group 0 the mean colour (in whole
    /// numbers) of those that are shown, hidden where none is; of selected points red, whatever their groups.
    void makeDisplay(PointDisplay& display) const;

    const QStringList& labels() const { return m_listGroupLabel; }        ///< per group
    const QList<QColor>& colors() const { return m_listGroupColor; }      ///< per group
    const QList<bool>& visible() const { return m_listGroupVisible; }     ///< per group
    const QList<QList<int>>& points() const { return m_listGroupPoint; }  ///< per group, point indices
    const QList<int>& selected() const { return m_listSelected; }         ///< point indices

private:
    typedef std::vector<quint64> Bits;  // bit i % 64 of word i / 64 is point i

    void putGroup(int nIndex, const PointGroup& group);
    void updateGroupZero();

    QStringList m_listGroupLabel;
    QList<QList<int>> m_listGroupPoint;
    QList<Bits> m_listGroupBits;
    QList<QColor> m_listGroupColor;
    QList<bool> m_listGroupVisible;
    std::vector<int> m_vecSelected;  // 1 where selected
    QList<int> m_listSelected;       // ascending

    static int s_nGroupColorIndex;
    static int s_nGroupLabelNumber;
};

}  // namespace tessera
