// WorkHistory: the steps of a user's work, noted as they are made, taken back and made again.
#pragma once

#include "workstate/workdifferences.h"
#include "workstate/worksteps.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <functional>

namespace tessera {

/// What the history asks of the window.
struct WorkHistoryHost {
    std::function<WorkState()> fnState;              ///< the present state of pages, views and members
    std::function<bool(const WorkState&)> fnShow;    ///< puts a state into all of them; false: it cannot now
    std::function<bool()> fnBusy;                    ///< a run is under way
    std::function<void(const QString&)> fnSay = {};  ///< to the status bar; may be none
};

/// Notes the state of the window whenever it has come to rest after a change.
///
/// Nobody has to tell what was changed: each time that the event loop has nothing left to do, the state is
/// compared with the last one (differences()). A run is one step, however much it changes. A number that is
/// typed or turned, and anything else that is changed bit by bit, is one step as long as no pause lies
/// between.
class WorkHistory : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Begins with the state of the window, and looks by itself from now on. Until then nothing is noted.
    void start(const WorkHistoryHost& host);
    /// The next state is one to begin with: a series was opened.
    void beginAnew() { m_bAnew = true; }
    /// What the step is to be called that the change under way will be.
    void nameNextStep(const QString& strName) { m_strNextName = strName; }

    /// Compares the state of the window with the last one and notes a step where it is another. Nothing
    /// during a run, or while a CHold lives.
    void look();
    /// A run has begun or ended.
    void busyChanged() { emit changed(); }

    const CWorkSteps& steps() const { return m_steps; }  ///< those noted
    bool isBusy() const { return !isReady(); }           ///< nothing can be gone to
    bool canUndo() const;                                ///< there is a step to take back, and no run
    bool canRedo() const;                                ///< likewise one that was taken back

    /// While one lives, nothing is noted: for a change of several parts, each of which would be a step.
    class CHold {
    public:
        /// @param strName  of the step that the change is
        CHold(WorkHistory& history, const QString& strName) : m_history(history)
        {
            history.look();  // what was changed before it
            ++history.m_nHold;
            history.nameNextStep(strName);
        }
        ~CHold() { --m_history.m_nHold; }
        CHold(const CHold&) = delete;
        CHold& operator=(const CHold&) = delete;

    private:
        WorkHistory& m_history;
    };

public slots:
    /// Goes to the step before; nothing where canUndo() is false.
    void undo();
    /// Goes to the step that was taken back last; nothing where canRedo() is false.
    void redo();
    /// Puts the state of a step into the window.
    /// @param nStep  from 0, of steps(); one that is in force already changes nothing
    void goTo(int nStep);

signals:
    /// A step has been made, undone or redone; `state` is what the window holds from now on.
    void stepNoted(const tessera::WorkState& state, const QString& strStep);
    /// The list of the steps, the one in force, or whether the window is busy.
    void changed();

private:
    void compare();
    void begin(const WorkState& state);
    void note(const WorkState& state, const WorkDifferences& found);
    bool isReady() const;

    WorkHistoryHost m_host;
    CWorkSteps m_steps{0};
    int m_nHold = 0;
    bool m_bAnew = false;
    QString m_strNextName;
    QString m_strKey;       ///< of the last step, WorkDifferences::strKey
    QElapsedTimer m_clock;  ///< since it was made
};

}  // namespace tessera
