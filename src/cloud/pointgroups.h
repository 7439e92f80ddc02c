// CPointGroups: the named, coloured groups of a cloud of points, and the selection.
#pragma once

#include <QColor>
#include <QList>
#include <QStringList>

#include <vector>

namespace tessera {

/// Visibility and colour of each point, as they follow from the groups and the selection.
struct PointDisplay {
    std::vector<char> m_pbPointVisible;               ///< 1: drawn
    std::vector<float> m_pfRed, m_pfGreen, m_pfBlue;  ///< 0 to 1
};

/// A group, for CPointGroups::setGroups().
struct PointGroup {
    QString strLabel;      ///< its name in tables
    QList<int> listPoint;  ///< point indices
    QColor color;          ///< colour of its points
    bool bVisible = true;  ///< its points are drawn
};

/// Groups of point indices with label, colour and visibility, and the selected indices.
///
/// Group 0, "Unlabeled" after reset(), holds every point that no other group holds: its points are determined
/// again after each change of the others, and a list of points given for it is ignored. A point may be in
/// several of the other groups. Indices of points that do not exist, and repetitions within one group, are
/// dropped.
class CPointGroups {
public:
    /// Starts a cloud: group 0 alone, white and shown, with all points; nothing selected.
    void reset(int nPointCount);
    int pointCount() const { return int(m_vecSelected.size()); }  ///< points in the cloud
    int groupCount() const { return m_listGroupLabel.size(); }    ///< including group 0

    /// Replaces all groups, which is much faster than inserting them one by one. The first becomes group 0.
    /// The selection stays.
    /// @return false, with nothing changed, for an empty list
    bool setGroups(const QList<PointGroup>& listGroup);
    /// Inserts a group, which is shown.
    /// @param nIndex     its place: the group that is there, and those behind, move up by one. Below 0 counts
    ///                   as 0, past the end as the end. At 0 the new group becomes group 0.
    /// @param listPoint  point indices
    void insertGroup(int nIndex, const QString& strLabel, const QList<int>& listPoint, const QColor& color);
    /// Removes the given groups except group 0, which stays.
    /// @return false, with nothing changed, if the list is empty or there is only group 0
    bool removeGroups(const QList<int>& listGroup);
    /// Unites the given groups into one, which is shown, with label, colour and place of the one with the
    /// least index.
    ///
    /// If group 0 is among them, it is not removed but moves to place 1 with all the points that it then
    /// holds, and a new group 0 of the same label and colour takes its place, which has no points.
    /// @return false, with nothing changed, for fewer than two groups
    bool mergeGroups(const QList<int>& listGroup);
    /// Renames a group; false if there is no such group.
    bool setLabel(int nIndex, const QString& strLabel);
    bool setColor(int nIndex, const QColor& color);  ///< false if there is no such group
    bool setVisible(int nIndex, bool bVisible);      ///< false if there is no such group

    void clearSelection();  ///< no point is selected any more
    /// Selects points.
    /// @param bAdd  true: in addition to those that are selected; false: instead of them
    void select(const QList<int>& listPoint, bool bAdd);
    /// Appends a group of the selected points with the next label ("Label0", "Label1" …) and colour, and
    /// clears the selection.
    /// @return false if nothing is selected; label and colour are then left for the next group
    bool addSelectedAsNewGroup();
    /// The colour for a new group; each call gives the next one. Colours and labels are counted for the whole
    /// program, over all clouds.
    static QColor nextGroupColor();

    /// Sets visibility and colour of all points. A point has the mean colour, in whole numbers of 0 to 255,
    /// of those of its groups that are shown, and is hidden if none is. Selected points are drawn in red,
    /// whatever their groups.
    void makeDisplay(PointDisplay& display) const;

    const QStringList& labels() const { return m_listGroupLabel; }        ///< per group
    const QList<QColor>& colors() const { return m_listGroupColor; }      ///< per group
    const QList<bool>& visible() const { return m_listGroupVisible; }     ///< per group
    const QList<QList<int>>& points() const { return m_listGroupPoint; }  ///< per group, point indices
    const QList<int>& selected() const { return m_listSelected; }         ///< point indices

private:
    typedef std::vector<quint64> Bits;  // bit i % 64 of word i / 64 is point i

    void putGroup(int nIndex, const PointGroup& group);  // inserts a group, without an update of group 0
    void updateGroupZero();                              // gives group 0 all points that no other group holds

    QStringList m_listGroupLabel;
    QList<QList<int>> m_listGroupPoint;
    QList<Bits> m_listGroupBits;  // the points of m_listGroupPoint as bits
    QList<QColor> m_listGroupColor;
    QList<bool> m_listGroupVisible;
    std::vector<int> m_vecSelected;  // per point: 1 if it is selected
    QList<int> m_listSelected;       // the same as point indices, ascending

    static int s_nGroupColorIndex;   // see nextGroupColor()
    static int s_nGroupLabelNumber;  // number in the next label
};

}  // namespace tessera
