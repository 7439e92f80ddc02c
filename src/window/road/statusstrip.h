// StatusStrip: a slim row that says what is done, stale or missing, with the button that makes it good.
#pragma once

#include "workstate/workstatus.h"

#include <QString>
#include <QWidget>

#include <vector>

class QPushButton;
class QToolButton;

namespace tessera {

/// What a user calls a stage, in the words of the dock "Road".
QString workStageName(WorkStage stage);

/// Shows states; what a click asks for it only says.
class StatusStrip : public QWidget {
    Q_OBJECT

public:
    /// Shows no states yet.
    explicit StatusStrip(QWidget* pParent = nullptr);

    /// @param strSteps  what the button would run; empty: nothing, and there is no button
    void setStatus(const std::vector<StageStatus>& listStatus, const QString& strSteps);
    /// Whether the button's run is under way: it asks for its end then.
    void setRunning(bool bRunning);
    /// The states that are shown.
    const std::vector<StageStatus>& status() const { return m_listStatus; }

    QPushButton* m_pUpdateButton = nullptr;
    std::vector<QToolButton*> m_listChip;  ///< by stage

signals:
    /// The user asked for the page of a stage.
    void showWanted(WorkStage stage);

protected:
    void changeEvent(QEvent* pEvent) override;

private:
    void showStatus();
    void showButton();

    std::vector<StageStatus> m_listStatus;
    QString m_strSteps;
    bool m_bRunning = false;
};

}  // namespace tessera
