// RoadDock: what "Solve" does, step by step, with the way to each step's view and numbers.
#pragma once

#include "window/road/roadrows.h"

#include <QElapsedTimer>
#include <QWidget>

#include <vector>

class QGridLayout;
class QLabel;
class QProgressBar;
class QPushButton;
class QToolButton;

namespace tessera {

/// Shows rows and progress; what a click asks for it only says.
class RoadDock : public QWidget {
    Q_OBJECT

public:
    /// No rows yet.
    explicit RoadDock(QWidget* pParent = nullptr);

    /// The rows to show, in this order.
    void setRows(const std::vector<RoadRow>& listRow);
    /// The rows that are shown.
    const std::vector<RoadRow>& rows() const { return m_listRow; }
    /// Whether a road is under way: no step can be begun then, and the bar of progress is shown.
    void setRunning(bool bRunning);
    /// How far the step under way has come.
    /// @param strFormat  as QProgressBar has it
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum);
    /// From the minimum to the maximum of startProgress().
    void setProgress(int nValue);
    /// The step is over.
    void endProgress();
    /// A line under all rows, as the end of the road has it.
    void setClosingText(const QString& strText);

    QPushButton* m_pSolveButton = nullptr;  ///< "Solve"; "Stop" during a run

signals:
    void showWanted(RoadRowKind kind);      ///< the view that shows the result of a row
    void settingsWanted(RoadRowKind kind);  ///< the page with the numbers of a row
    void roadWanted(RoadStage stageFrom);   ///< the road from a row on

private:
    struct Line {
        QLabel* pLight;
        QLabel* pName;
        QLabel* pText;
        QToolButton* pShow;
        QToolButton* pSettings;
        QToolButton* pFrom;
    };
    void addLine(RoadRowKind kind, QGridLayout* pGrid);
    void showRow(const RoadRow& row, Line& line);

    std::vector<Line> m_listLine;
    std::vector<RoadRow> m_listRow;
    QWidget* m_pProgressRow;
    QProgressBar* m_pProgress;
    QLabel* m_pLeft;
    QLabel* m_pClosing;
    QElapsedTimer m_timer;
    bool m_bRunning = false;
};

}  // namespace tessera
