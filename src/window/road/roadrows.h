// CRoadRows: the road as the window shows it, one row a step, by what the road tells as it goes.
#pragma once

#include "road/roadresults.h"
#include "road/roadstep.h"
#include "road/verdict.h"

#include <QString>

#include <optional>
#include <vector>

namespace tessera {

/// Beginnings that the user knows by these names. A stage of the road may have two rows, as its axis and its
/// lattice are judged by themselves.
enum class RoadRowKind { Drift, Peaks, Axis, Merging, Cell, Lattice, Indexing, Geometry, Integration };

/// How far a row has come.
enum class RoadRowState {
    Waiting,  ///< not begun
    Running,
    Done,     ///< its stage has finished; without a judgement there was nothing to judge
    Earlier,  ///< its results are those of a former run, from their files
    Found,    ///< its results are there, from a file or made by hand
    Ended,    ///< its stage did not finish
};

/// One part of the road as the user sees it.
struct RoadRow {
    RoadRowKind kind = RoadRowKind::Drift;
    RoadRowState state = RoadRowState::Waiting;
    std::optional<Judgement> judgement;
    QString strText;  ///< a sentence: the judgement's, or why the stage ended
};

/// What the user calls a row.
QString roadRowName(RoadRowKind kind);
/// The stage that makes its result.
RoadStage stageOfRow(RoadRowKind kind);

/// All rows in their order, and what becomes of them.
class CRoadRows {
public:
    /// All rows, waiting.
    CRoadRows();

    /// A road begins at that stage: the rows of it and behind it wait, those before keep what they show.
    void begin(RoadStage stageFrom);
    /// The road has begun or ended a part.
    void take(const RoadStep& step, const RoadResults& results);
    /// The road is over: what still waits or runs did not come to its turn.
    void end();
    /// A result that no road of this window has made, but that is there: from its file, or made by hand. A
    /// row that shows a road's own result stays as it is.
    ///
    /// @param strText  what there is; empty: nothing, and the row waits again
    void setFound(RoadRowKind kind, const QString& strText);

    /// The rows in their order.
    const std::vector<RoadRow>& rows() const { return m_listRow; }

private:
    std::vector<RoadRow> m_listRow;
    RoadStage m_stageFrom = RoadStage::Shifts;
};

}  // namespace tessera
