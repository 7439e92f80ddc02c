// CRunGate: whether a run is under way, and what waits for its end.
#pragma once

namespace tessera {

/// What the user asked for while a run had the data in use.
struct RunWishes {
    int nFrame = 0;             ///< number of the frame to show, from 1; 0 none
    bool bClose = false;        ///< the window was closed
    bool bRemap = false;        ///< a mapping parameter was changed
    bool bShow = false;         ///< a limit of what is shown in 3D was changed
    bool bEndCellTest = false;  ///< what a cell is tested with was changed
    bool bRegion = false;       ///< a reference region was chosen
};

/// Counts the runs of the window and the reports that handle events for them.
///
/// The slot of a run is on the stack until its end, and lets waiting events through meanwhile. A
/// call that comes from such events must not change what the run has in use: isPumping() tells it apart from
/// a call that the run makes itself. Such a call is refused, or leaves its wish here for the end of the run.
class CRunGate {
public:
    /// A run begins, maybe inside another one, or from the events that the end of another one lets through.
    /// @return for leave()
    int enter();
    /// The run that enter() has begun ends.
    /// @return true when it was the outermost: the wishes are due
    bool leave(int nOuterPump);
    /// Handles the waiting events of the application.
    void pumpEvents();

    bool isRunning() const { return m_nRunDepth > 0; }  ///< a run is under way
    /// The call comes from the event pump of a run.
    bool isPumping() const { return m_nRunDepth > 0 && m_nPumpDepth > 0; }

    RunWishes& wishes() { return m_wishes; }              ///< for slots to add to
    const RunWishes& wishes() const { return m_wishes; }  ///< as they stand
    /// Hands the wishes over, of which none is left.
    RunWishes takeWishes();

private:
    int m_nRunDepth = 0;   ///< runs under way, one inside the other
    int m_nPumpDepth = 0;  ///< calls of pumpEvents() that belong to the innermost run
    RunWishes m_wishes;
};

}  // namespace tessera
