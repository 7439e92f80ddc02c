// CRunFlag: the flag of a run, by which a second call stops the first.
#pragma once

namespace tessera {

/// Sets a run's flag for as long as it lives. A flag that was set already belongs to a run under way: it is
/// cleared, which that run takes for the wish to stop, and the new object holds nothing.
class CRunFlag {
public:
    /// Sets the flag, or clears the one of another run.
    explicit CRunFlag(bool& bFlag) : m_bFlag(bFlag), m_bHeld(!bFlag) { m_bFlag = m_bHeld; }
    /// Clears the flag that it has set.
    ~CRunFlag() { release(); }
    CRunFlag(const CRunFlag&) = delete;
    CRunFlag& operator=(const CRunFlag&) = delete;

    /// False where the call was the wish to stop another run.
    bool isHeld() const { return m_bHeld; }
    /// Whether the run is under way and nobody asked it to stop.
    bool isSet() const { return m_bHeld && m_bFlag; }
    /// The wish to stop from within.
    void clear()
    {
        if (m_bHeld) {
            m_bFlag = false;
        }
    }
    /// Clears the flag before the object goes, for good.
    void release()
    {
        clear();
        m_bHeld = false;
    }

private:
    bool& m_bFlag;
    bool m_bHeld;
};

}  // namespace tessera
