// StepsList: the dock's list of the steps, of which a click goes to one.
#pragma once

#include <QWidget>

class QLabel;
class QListWidget;

namespace tessera {

class WorkHistory;

/// The steps from the oldest to the latest. The one in force is bold, those taken back are grey. A line below
/// says where the oldest had to go. During a run the list waits.
class StepsList : public QWidget {
    Q_OBJECT

public:
    /// Follows a history, which outlives this.
    explicit StepsList(WorkHistory& history, QWidget* pParent = nullptr);

    QListWidget* m_pList;
    QLabel* m_pLabelDropped;  ///< hidden while all are kept

private:
    void renew();

    WorkHistory& m_history;
};

}  // namespace tessera
