// CRawGroups: the point groups of the raw view while the points in it come and go.
#pragma once

#include "cloud/pointgroups.h"
#include "dataset/dataset.h"
#include "records/runparameters.h"

#include <QColor>
#include <QList>
#include <QStringList>

#include <vector>

namespace tessera {

class ED3DWidget;

/// Whether the raw view shows the peaks of the data set, and labels, colours and visibility of its groups
/// while it shows other points. The masks of the peaks keep meanwhile which peak is in which group.
///
/// The same peaks under other limits or another geometry keep the groups that the user has made: keep()
/// before the points change, take() for the points that come.
class CRawGroups {
public:
    /// The points of the view are peaks of m_listPeakFrame as it stands, and not a list that is only looked
    /// at.
    bool holdsPeaks() const { return m_bHoldsPeaks; }
    void setHoldsPeaks(bool bHolds) { m_bHoldsPeaks = bHolds; }  ///< says so, after the points have changed

    /// Notes the groups of the view, and in the masks of the peaks who is in them, where it holds peaks.
    void keep(DataSet& data, const ED3DWidget& view);
    /// The kept groups for some or all of the peaks, which are kept no longer; empty when there are none.
    QList<PointGroup> take(const DataSet& data, const QList<Peak3D>& listPeak);
    /// Those that take() would give, which stay kept.
    QList<PointGroup> kept(const DataSet& data, const QList<Peak3D>& listPeak) const;
    /// One flag per nID of the peaks: whether it is a point of the view's group `nGroup`, or would be if the
    /// limits did not hide it. Empty where no point of the group is a peak.
    std::vector<char> flags(const DataSet& data, const ED3DWidget& view, int nGroup,
                            const MappingParameters& limits) const;
    /// The peaks of the data set are others now: groups of the former ones go with them.
    void forget();

private:
    struct Kept {
        QStringList listLabel;
        QList<QColor> listColor;
        QList<bool> listVisible;
    };
    Kept m_kept;
    bool m_bHoldsPeaks = false;
};

}  // namespace tessera
